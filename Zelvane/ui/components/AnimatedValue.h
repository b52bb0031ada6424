#pragma once

#include "ui/style/Theme.h"

#include <QVariantAnimation>
#include <QWidget>

#include <chrono>

namespace zelvane {

/// A number that moves smoothly to where it is sent, and repaints its widget on the way. It jumps
/// where motion is unwanted and while the widget can't be seen.
class AnimatedValue final : public QObject
{
    Q_OBJECT

public:
    /// Belongs to `owner`. `theme` must outlive it.
    AnimatedValue(QWidget& owner, const Theme& theme, std::chrono::milliseconds duration,
                  double start = 0);

    [[nodiscard]] double value() const { return m_value; }
    void moveTo(double target);
    void jumpTo(double target);

private:
    void apply(double value);

    QWidget& m_owner;
    const Theme& m_theme;
    QVariantAnimation m_animation;
    double m_value;
};

} // namespace zelvane
