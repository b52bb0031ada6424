#pragma once

#include <chrono>

namespace zelvane {

/// How long the program may take to end once it has been asked to.
inline constexpr std::chrono::milliseconds endLimit{2800};

/// The process ends at the latest `endLimit` from the first call, with status 1, whatever hangs by
/// then: a thread that waits for a dead server, the main thread itself, a destructor. May be called
/// from a signal handler.
void beginEndDeadline();

/// Takes the deadline back, for tests.
void cancelEndDeadline();

} // namespace zelvane
