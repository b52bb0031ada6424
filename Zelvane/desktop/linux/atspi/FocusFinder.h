#pragma once

#include "desktop/linux/atspi/AccessibleTree.h"
#include "desktop/linux/atspi/AtSpiElement.h"
#include "desktop/linux/atspi/FocusSearch.h"

#include <optional>

namespace zelvane {

/// Knows which object of which program has the keyboard focus.
///
/// Programs announce each move of the focus, so that usually three questions to one program are
/// enough. Only if what they announced doesn't hold any more is the tree of the active window
/// searched: after a start in the middle of a session, and behind programs that announce nothing.
class FocusFinder
{
public:
    using Moment = AccessibleTree::Moment;

    /// `tree` must outlive this object.
    explicit FocusFinder(AccessibleTree& tree);

    /// A program has announced that an object gained or lost the focus. May be called while
    /// `inspect` waits for answers.
    void noteFocus(const BusObject& object, bool gained);

    /// What has the focus in the active window; none if that can't be found out by `deadline`.
    [[nodiscard]] std::optional<AtSpiElement> inspect(Moment deadline);

private:
    [[nodiscard]] std::optional<AtSpiElement> inspectAnnounced(Moment deadline);
    [[nodiscard]] bool isInActiveWindow(const BusObject& object, Moment deadline);
    [[nodiscard]] std::optional<BusObject> activeWindow(const BusObject& object, Moment deadline);
    [[nodiscard]] std::optional<BusObject> activeWindowAmong(const std::vector<BusObject>& programs,
                                                             Moment answersBy, Moment deadline);
    [[nodiscard]] std::optional<FocusSearch::Found> search(Moment deadline);
    void forget(const BusObject& object);

    AccessibleTree& m_tree;
    std::optional<BusObject> m_focused;
    /// The active window in which `m_focused` was found; none if nobody has looked yet.
    std::optional<BusObject> m_window;
};

} // namespace zelvane
