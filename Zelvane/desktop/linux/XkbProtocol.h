#pragma once

// The protocol header names a member "explicit", which is a word of C++. Nothing here uses that
// member.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#pragma clang diagnostic pop
