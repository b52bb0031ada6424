#include "ui/components/RowLayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace zelvane {

namespace {

/// A text narrower than so many letters is hard to read.
constexpr int leastLetters = 12;
constexpr int lineGap = 8;

QSize wantedSize(const QLayoutItem& item, int width)
{
    const QSize wanted = item.sizeHint().expandedTo(item.minimumSize());
    return {std::min(wanted.width(), width), wanted.height()};
}

} // namespace

RowLayout::RowLayout(QWidget* parent)
    : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
}

RowLayout::~RowLayout()
{
    while (QLayoutItem* item = takeAt(0)) {
        delete item;
    }
}

void RowLayout::setContent(QLayout* content)
{
    addChildLayout(content);
    addItem(content);
    m_content = content;
}

void RowLayout::addItem(QLayoutItem* item)
{
    m_items.push_back(item);
    invalidate();
}

QLayoutItem* RowLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items[std::size_t(index)] : nullptr;
}

QLayoutItem* RowLayout::takeAt(int index)
{
    QLayoutItem* item = itemAt(index);
    if (item) {
        m_items.erase(m_items.begin() + index);
        m_content = item == m_content ? nullptr : m_content;
        invalidate();
    }
    return item;
}

bool RowLayout::isControl(const QLayoutItem& item) const
{
    // Qt asks an item without widgets for its emptiness: the content always counts.
    return &item != m_content && !item.isEmpty();
}

int RowLayout::controlsWidth() const
{
    int width = 0;
    for (const QLayoutItem* item : m_items) {
        if (isControl(*item)) {
            width += wantedSize(*item, QLAYOUTSIZE_MAX).width() + spacing();
        }
    }
    return width;
}

int RowLayout::contentHeight(int width) const
{
    if (!m_content) {
        return 0;
    }
    return m_content->hasHeightForWidth()
               ? std::max(m_content->heightForWidth(width), m_content->minimumSize().height())
               : m_content->sizeHint().height();
}

void RowLayout::invalidate()
{
    m_arrangedWidth = -1;
    QLayout::invalidate();
}

const RowLayout::Arrangement& RowLayout::arranged(int width) const
{
    if (m_arrangedWidth != width) {
        m_arrangement = arrange(width);
        m_arrangedWidth = width;
    }
    return m_arrangement;
}

RowLayout::Arrangement RowLayout::arrange(int width) const
{
    Arrangement arrangement{std::vector<QRect>(m_items.size()), 0};
    const int controls = controlsWidth();
    const int letters = leastLetters * parentWidget()->fontMetrics().averageCharWidth();
    const int room = width - controls;
    const int needed = m_content ? std::max(m_content->minimumSize().width(),
                                            std::min(letters, m_content->sizeHint().width()))
                                 : 0;
    if (m_content && (controls == 0 || room >= needed)) {
        arrangeBeside(arrangement, width);
    } else {
        arrangeBelow(arrangement, width);
    }
    return arrangement;
}

void RowLayout::arrangeBeside(Arrangement& arrangement, int width) const
{
    const int room = width - controlsWidth();
    int height = contentHeight(room);
    for (const QLayoutItem* item : m_items) {
        if (isControl(*item)) {
            height = std::max(height, wantedSize(*item, width).height());
        }
    }
    int x = room + spacing();
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i] == m_content) {
            arrangement.places[i] = QRect(0, 0, room, height);
        } else if (isControl(*m_items[i])) {
            const QSize size = wantedSize(*m_items[i], width);
            arrangement.places[i] = QRect(QPoint(x, (height - size.height()) / 2), size);
            x += size.width() + spacing();
        }
    }
    arrangement.height = height;
}

void RowLayout::arrangeBelow(Arrangement& arrangement, int width) const
{
    int y = contentHeight(width);
    int x = 0;
    int lineHeight = 0;
    y += y > 0 ? lineGap : 0;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i] == m_content) {
            arrangement.places[i] = QRect(0, 0, width, contentHeight(width));
        } else if (isControl(*m_items[i])) {
            const QSize size = wantedSize(*m_items[i], width);
            if (x > 0 && x + size.width() > width) {
                x = 0;
                y += lineHeight + lineGap;
                lineHeight = 0;
            }
            arrangement.places[i] = QRect(QPoint(x, y), size);
            x += size.width() + spacing();
            lineHeight = std::max(lineHeight, size.height());
        }
    }
    arrangement.height = y + lineHeight;
}

QSize RowLayout::sizeHint() const
{
    const QMargins margins = contentsMargins();
    const int content = m_content ? m_content->sizeHint().width() : 0;
    const int width = content + controlsWidth();
    return {width + margins.left() + margins.right(),
            arrange(width).height + margins.top() + margins.bottom()};
}

QSize RowLayout::minimumSize() const
{
    const QMargins margins = contentsMargins();
    QSize least(0, m_content ? m_content->minimumSize().height() : 0);
    for (const QLayoutItem* item : m_items) {
        if (item == m_content || isControl(*item)) {
            least = least.expandedTo(item->minimumSize());
        }
    }
    return least + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

int RowLayout::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    return arranged(width - margins.left() - margins.right()).height + margins.top() +
           margins.bottom();
}

void RowLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    const QRect inside = rect.marginsRemoved(contentsMargins());
    const Arrangement arrangement = arranged(inside.width());
    // What the row is higher than it needs to be goes to both of its sides.
    const int spare = std::max(0, (inside.height() - arrangement.height) / 2);
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        const QRect place = arrangement.places[i].translated(inside.x(), inside.y() + spare);
        if (!place.isEmpty()) {
            m_items[i]->setGeometry(
                QStyle::visualRect(parentWidget()->layoutDirection(), inside, place));
        }
    }
}

} // namespace zelvane
