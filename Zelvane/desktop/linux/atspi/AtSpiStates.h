#pragma once

#include <cstdint>

#include <atspi/atspi-constants.h>

namespace zelvane {

[[nodiscard]] constexpr std::uint64_t stateBit(AtspiStateType state)
{
    return std::uint64_t{1} << static_cast<unsigned>(state);
}

/// Whether a set of states, bit n being state n, has this one.
[[nodiscard]] constexpr bool hasState(std::uint64_t states, AtspiStateType state)
{
    return (states & stateBit(state)) != 0;
}

/// Whether an object has the keyboard focus, and still exists.
[[nodiscard]] constexpr bool hasFocus(std::uint64_t states)
{
    return hasState(states, ATSPI_STATE_FOCUSED) && !hasState(states, ATSPI_STATE_DEFUNCT);
}

} // namespace zelvane
