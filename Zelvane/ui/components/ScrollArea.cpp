#include "ui/components/ScrollArea.h"

#include "ui/components/SlimScrollBar.h"

#include <QEvent>
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
    fitContent();
}

/// Qt gives a content with wrapped texts the height that it had at its narrowest.
void ScrollArea::fitContent()
{
    if (QWidget* content = widget(); content && content->hasHeightForWidth()) {
        content->setMinimumHeight(content->heightForWidth(viewport()->width()));
    }
}

bool ScrollArea::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        fitContent();
    }
    return QScrollArea::eventFilter(watched, event);
}

void ScrollArea::resizeEvent(QResizeEvent* event)
{
    fitContent();
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
