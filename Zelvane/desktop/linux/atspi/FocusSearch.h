#pragma once

#include "desktop/linux/atspi/AccessibleTree.h"

#include <optional>
#include <vector>

namespace zelvane {

/// Looks for the object with the focus among all objects of a window. To be used once.
///
/// Level by level, since the questions of one level are asked together and take hardly longer than
/// those of one object. What shows comes first.
class FocusSearch
{
public:
    using Moment = AccessibleTree::Moment;

    /// `tree` must outlive this object.
    explicit FocusSearch(AccessibleTree& tree);

    struct Found
    {
        BusObject object;
        AccessibleTree::Description description;
    };

    /// The innermost object with the focus, as far as it was found by `deadline`: a page and the
    /// scrolled area around it may have the focus as well as the entry in it.
    [[nodiscard]] std::optional<Found> run(const BusObject& window, Moment deadline);

private:
    void expand(const std::vector<BusObject>& parents, AccessibleTree::Embedded embedded,
                Moment deadline);
    void take(const BusObject& focused, Moment deadline);
    void keep(AccessibleTree::Node node);

    AccessibleTree& m_tree;
    std::optional<Found> m_found;
    std::vector<BusObject> m_level;
    std::vector<BusObject> m_later;
    std::size_t m_left;
};

} // namespace zelvane
