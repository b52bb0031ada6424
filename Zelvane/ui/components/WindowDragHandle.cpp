#include "ui/components/WindowDragHandle.h"

#include <QMouseEvent>
#include <QWindow>

namespace zelvane {

WindowDragHandle::WindowDragHandle(QWidget* parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void WindowDragHandle::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    QWindow* handle = window()->windowHandle();
    if (!handle || !handle->startSystemMove()) {
        m_grip = event->globalPosition().toPoint() - window()->pos();
    }
}

void WindowDragHandle::mouseMoveEvent(QMouseEvent* event)
{
    if (m_grip) {
        window()->move(event->globalPosition().toPoint() - *m_grip);
    }
}

void WindowDragHandle::mouseReleaseEvent(QMouseEvent*)
{
    m_grip.reset();
}

} // namespace zelvane
