#pragma once

#include <QWidget>

#include <optional>

namespace zelvane {

/// An area without a look of its own that moves its window when dragged.
class WindowDragHandle final : public QWidget
{
    Q_OBJECT

public:
    explicit WindowDragHandle(QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    /// From the window's corner to the pointer while the desktop doesn't move the window for us.
    std::optional<QPoint> m_grip;
};

} // namespace zelvane
