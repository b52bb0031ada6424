#include "desktop/linux/atspi/FocusSearch.h"

#include "desktop/linux/atspi/AtSpiStates.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

/// So many objects of a window are looked at. Editors have about a hundred, mail programs some
/// hundreds, long pages thousands.
constexpr std::size_t mostNodes = 3000;
/// And so many within one that has the focus.
constexpr std::size_t mostInnerNodes = 500;

} // namespace

FocusSearch::FocusSearch(AccessibleTree& tree)
    : m_tree(tree)
    , m_left(mostNodes)
{
}

std::optional<FocusSearch::Found> FocusSearch::run(const BusObject& window, Moment deadline)
{
    m_level = {window};
    while (m_left > 0 && std::chrono::steady_clock::now() < deadline) {
        if (!m_level.empty()) {
            expand(std::exchange(m_level, {}), AccessibleTree::Embedded::skip, deadline);
        } else if (!m_later.empty()) {
            expand(std::exchange(m_later, {}), AccessibleTree::Embedded::include, deadline);
        } else {
            break;
        }
    }
    return m_found;
}

void FocusSearch::expand(const std::vector<BusObject>& parents, AccessibleTree::Embedded embedded,
                         Moment deadline)
{
    auto children = m_tree.children(parents, deadline, embedded);
    children.resize(std::min(children.size(), m_left));
    m_left -= children.size();
    auto nodes = m_tree.nodes(children, deadline, stateBit(ATSPI_STATE_FOCUSED));
    const auto focused = std::ranges::find_if(
        nodes, [](const AccessibleTree::Node& node) { return hasFocus(node.states); });
    if (focused != nodes.end()) {
        take(focused->object, deadline);
        keep(std::move(*focused));
    } else {
        for (auto& node : nodes) {
            keep(std::move(node));
        }
    }
}

void FocusSearch::take(const BusObject& focused, Moment deadline)
{
    // Described now: the search within it may take all the time that is left.
    if (const auto description = m_tree.describe(focused, deadline)) {
        m_found = Found{focused, *description};
    }
    m_level.clear();
    m_later.clear();
    m_left = std::min(m_left, mostInnerNodes);
}

void FocusSearch::keep(AccessibleTree::Node node)
{
    // Thousands of cells: the focus is at their container.
    if (hasState(node.states, ATSPI_STATE_MANAGES_DESCENDANTS)) {
        return;
    }
    if (hasState(node.states, ATSPI_STATE_SHOWING) || hasFocus(node.states)) {
        m_level.push_back(std::move(node.object));
    } else if (!hasState(node.states, ATSPI_STATE_VISIBLE)) {
        // The frame around another process's view says nothing of itself. What is visible but
        // doesn't show lies behind something, like the pages of a notebook.
        m_later.push_back(std::move(node.object));
    }
}

} // namespace zelvane
