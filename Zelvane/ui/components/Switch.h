#pragma once

#include "ui/components/AnimatedValue.h"

#include <QCheckBox>

namespace zelvane {

/// Something that is on or off, at once. It shows no text: a row beside it says what it is, and its
/// accessible name says it to screen readers.
class Switch final : public QCheckBox
{
    Q_OBJECT

public:
    /// `theme` must outlive the switch.
    explicit Switch(const Theme& theme, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    [[nodiscard]] bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    /// Where the knob is: 0 off, 1 on.
    AnimatedValue m_knob;
};

} // namespace zelvane
