#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zelvane {

/// What an object of another program's interface says of itself, in the terms of the flow.
struct AtSpiElement
{
    /// Whether its text can be changed, also by a paste; none if it doesn't say.
    std::optional<bool> editable;
    /// The role in the names of Apple's accessibility interface; empty if there is none for it.
    std::string_view role;

    friend bool operator==(const AtSpiElement&, const AtSpiElement&) = default;
};

/// Translates a role (`AtspiRole`) and a set of states (bit n is `AtspiStateType` n).
///
/// The states decide and not the interfaces: a read-only view of GTK and a text browser of Qt both
/// offer the interface for editing. Only an object that shows text is taken for read-only when it
/// doesn't call itself editable; terminals, the cells of a spreadsheet and unknown kinds take
/// pasted text without a word about it.
[[nodiscard]] AtSpiElement describeElement(std::uint32_t role, std::uint64_t states);

} // namespace zelvane
