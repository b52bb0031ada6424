#pragma once

#include "ui/style/Theme.h"

#include <QPointer>
#include <QScrollBar>

namespace zelvane {

/// A vertical scroll bar that is a rounded handle and nothing else.
class SlimScrollBar final : public QScrollBar
{
    Q_OBJECT

public:
    /// `theme` must outlive the scroll bar.
    explicit SlimScrollBar(const Theme& theme, QWidget* parent = nullptr);

    /// Stands in for `inner`, the hidden scroll bar of an area, and shows only while there is
    /// something to scroll. `inner` must belong to the same window.
    void follow(QScrollBar& inner);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void initStyleOption(QStyleOptionSlider* option) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QRect handleRect() const;

    const Theme& m_theme;
    QPointer<QScrollBar> m_inner;
};

} // namespace zelvane
