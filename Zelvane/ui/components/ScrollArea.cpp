#include "ui/components/ScrollArea.h"

#include "ui/components/SlimScrollBar.h"

#include <QApplication>
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
    connect(qApp, &QApplication::focusChanged, this, &ScrollArea::follow);
}

ScrollArea::~ScrollArea()
{
    disconnect(qApp, nullptr, this, nullptr); // the focus moves once more while Qt takes it apart
}

/// Qt does this for the Tab key only, not for a screen reader.
void ScrollArea::follow(const QWidget* before, QWidget* now)
{
    const bool isMove = before && before->window() == window();
    const bool isClick = QApplication::mouseButtons() != Qt::NoButton;
    if (now && isMove && !isClick && widget() && widget()->isAncestorOf(now)) {
        ensureWidgetVisible(now);
    }
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
