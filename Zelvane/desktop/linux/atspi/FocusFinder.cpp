#include "desktop/linux/atspi/FocusFinder.h"

#include "desktop/linux/atspi/AtSpiStates.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A program that answers at all answers well within this.
constexpr milliseconds programLimit{120};
/// Deeper trees aren't interfaces but loops.
constexpr int mostAncestors = 100;

AccessibleTree::Moment soon(AccessibleTree::Moment deadline)
{
    return std::min(deadline, steady_clock::now() + programLimit);
}

bool isActive(const AccessibleTree::Node& node)
{
    return hasState(node.states, ATSPI_STATE_ACTIVE);
}

} // namespace

FocusFinder::FocusFinder(AccessibleTree& tree)
    : m_tree(tree)
{
}

void FocusFinder::noteFocus(const BusObject& object, bool gained)
{
    if (!gained) {
        // Another program may have announced its gain before this one its loss.
        forget(object);
    } else if (m_focused != object) {
        m_focused = object;
        m_window.reset();
    }
}

void FocusFinder::forget(const BusObject& object)
{
    if (m_focused == object) {
        m_focused.reset();
        m_window.reset();
    }
}

std::optional<AtSpiElement> FocusFinder::inspect(Moment deadline)
{
    if (auto element = inspectAnnounced(soon(deadline))) {
        return element;
    }
    const auto found = search(deadline);
    if (!found || !hasFocus(found->description.states)) {
        return std::nullopt;
    }
    if (!m_focused) {
        m_focused = found->object;
    }
    return describeElement(found->description.role, found->description.states);
}

std::optional<AtSpiElement> FocusFinder::inspectAnnounced(Moment deadline)
{
    // A copy: the next announcement may come while this waits.
    const auto object = m_focused;
    if (!object) {
        return std::nullopt;
    }
    const auto description = m_tree.describe(*object, deadline);
    if (!description || !hasFocus(description->states) || !isInActiveWindow(*object, deadline)) {
        forget(*object);
        return std::nullopt;
    }
    return describeElement(description->role, description->states);
}

bool FocusFinder::isInActiveWindow(const BusObject& object, Moment deadline)
{
    if (const auto window = m_window) {
        const auto states = m_tree.states(*window, deadline);
        if (states && hasState(*states, ATSPI_STATE_ACTIVE)) {
            return true;
        }
    }
    const auto window = activeWindow(object, deadline);
    if (window && m_focused == object) {
        m_window = window;
    }
    return window.has_value();
}

std::optional<BusObject> FocusFinder::activeWindow(const BusObject& object, Moment deadline)
{
    // The windows of the object's program are two questions away. The object's ancestors, of which
    // there may be dozens, matter only for what one program shows inside another's window: the
    // pages of a web view.
    BusObject ancestor = object;
    if (auto window = activeWindowAmong({AccessibleTree::rootOf(object)}, deadline, deadline)) {
        return window;
    }
    for (int i = 0; i < mostAncestors && steady_clock::now() < deadline; ++i) {
        auto parent = m_tree.parent(ancestor, deadline);
        if (!parent) {
            return std::nullopt;
        }
        if (parent->owner != ancestor.owner) {
            auto window = activeWindowAmong({AccessibleTree::rootOf(*parent)}, deadline, deadline);
            if (window) {
                return window;
            }
        }
        ancestor = std::move(*parent);
    }
    return std::nullopt;
}

std::optional<BusObject> FocusFinder::activeWindowAmong(const std::vector<BusObject>& programs,
                                                        Moment answersBy, Moment deadline)
{
    const auto windows = m_tree.children(programs, answersBy);
    const auto nodes = m_tree.nodes(windows, soon(deadline), stateBit(ATSPI_STATE_ACTIVE));
    const auto active = std::ranges::find_if(nodes, isActive);
    return active == nodes.end() ? std::nullopt : std::optional(active->object);
}

std::optional<FocusSearch::Found> FocusFinder::search(Moment deadline)
{
    // Programs that hang must not take the time of those that don't.
    const auto programs = m_tree.programs(soon(deadline));
    const auto window = activeWindowAmong(programs, soon(deadline), deadline);
    return window ? FocusSearch(m_tree).run(*window, deadline) : std::nullopt;
}

} // namespace zelvane
