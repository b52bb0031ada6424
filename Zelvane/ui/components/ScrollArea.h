#pragma once

#include "ui/style/Theme.h"

#include <QScrollArea>

namespace zelvane {

class SlimScrollBar;

/// A content that scrolls up and down, with a thin scroll bar over its edge. What gets the keyboard
/// comes into view.
class ScrollArea final : public QScrollArea
{
    Q_OBJECT

public:
    /// `theme` must outlive the area.
    explicit ScrollArea(const Theme& theme, QWidget* parent = nullptr);
    ~ScrollArea() override;

    /// Shows `content` at the area's width, and takes it over.
    void setContent(QWidget* content);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void follow(const QWidget* before, QWidget* now);
    void fitContent();
    void placeBar();

    SlimScrollBar* m_bar; ///< owned by Qt's tree
};

} // namespace zelvane
