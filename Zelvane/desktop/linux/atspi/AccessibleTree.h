#pragma once

#include "desktop/linux/atspi/BusConnection.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zelvane {

/// Questions to the objects that programs expose for assistive technology.
///
/// A missing answer is an ordinary one: programs end, hang and change while they are asked.
class AccessibleTree
{
public:
    using Moment = BusConnection::Moment;

    struct Node
    {
        BusObject object;
        std::uint64_t states = 0;
    };

    /// `bus` must outlive this object.
    explicit AccessibleTree(BusConnection& bus);

    /// The objects that programs register at the start: their roots.
    [[nodiscard]] std::vector<BusObject> programs(Moment deadline);

    /// The root of the program that owns `object`.
    [[nodiscard]] static BusObject rootOf(const BusObject& object);

    /// Whether to ask twice for the one child that programs of GTK leave out of the list: the view
    /// of another process in theirs.
    enum class Embedded {
        skip,
        include,
    };

    /// The children of all objects, in one row, without those of objects that didn't answer.
    [[nodiscard]] std::vector<BusObject> children(const std::vector<BusObject>& objects,
                                                  Moment deadline,
                                                  Embedded embedded = Embedded::skip);
    [[nodiscard]] std::optional<BusObject> parent(const BusObject& object, Moment deadline);

    /// The objects that tell their states. Doesn't wait for the rest once one has them all of
    /// `enough`, unless that is 0.
    [[nodiscard]] std::vector<Node> nodes(const std::vector<BusObject>& objects, Moment deadline,
                                          std::uint64_t enough = 0);
    [[nodiscard]] std::optional<std::uint64_t> states(const BusObject& object, Moment deadline);

    struct Description
    {
        std::uint32_t role = 0;
        std::uint64_t states = 0;
    };
    /// Role and states, asked together.
    [[nodiscard]] std::optional<Description> describe(const BusObject& object, Moment deadline);

private:
    [[nodiscard]] std::vector<BusObject> firstChildren(const std::vector<BusObject>& objects,
                                                       Moment deadline);

    BusConnection& m_bus;
};

} // namespace zelvane
