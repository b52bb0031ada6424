#pragma once

#include <cstdint>

#include <atspi/atspi-constants.h>

namespace zelvane {

/// Whether a set of states, bit n being state n, has this one.
[[nodiscard]] constexpr bool hasState(std::uint64_t states, AtspiStateType state)
{
    return ((states >> static_cast<unsigned>(state)) & 1U) != 0;
}

} // namespace zelvane
