#pragma once

#include "foundation/DescribedError.h"

#include <cstdlib>

namespace zelvane::fuzz {

/// Ends the program if something doesn't hold that must.
inline void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

/// Makes a call that may fail, but only with a failure that has a text.
template <typename Call>
void survive(const Call& call)
{
    try {
        call();
    } catch (const DescribedError& failure) {
        require(!failure.description().isEmpty());
    }
}

} // namespace zelvane::fuzz
