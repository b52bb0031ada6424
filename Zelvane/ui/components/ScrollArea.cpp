#include "ui/components/ScrollArea.h"

#include "ui/components/SlimScrollBar.h"

#include <QStyle>

namespace zelvane {

ScrollArea::ScrollArea(const Theme& theme, QWidget* parent)
    : QScrollArea(parent)
    , m_bar(new SlimScrollBar(theme, this))
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    viewport()->setAutoFillBackground(false);
    m_bar->follow(*verticalScrollBar());
}

void ScrollArea::setContent(QWidget* content)
{
    setWidget(content);
    content->setAutoFillBackground(false);
}

void ScrollArea::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    placeBar();
}

void ScrollArea::placeBar()
{
    const int barWidth = m_bar->sizeHint().width();
    const QRect place(width() - barWidth - 1, 2, barWidth, height() - 4);
    m_bar->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
    m_bar->raise();
}

} // namespace zelvane
