#include "ui/components/AnimatedValue.h"

namespace zelvane {

AnimatedValue::AnimatedValue(QWidget& owner, const Theme& theme, std::chrono::milliseconds duration,
                             double start)
    : QObject(&owner)
    , m_owner(owner)
    , m_theme(theme)
    , m_value(start)
{
    m_animation.setDuration(int(duration.count()));
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { apply(value.toDouble()); });
}

void AnimatedValue::moveTo(double target)
{
    const bool moves = m_owner.isVisible() && !m_theme.appearance().reducedMotion();
    if (!moves) {
        jumpTo(target);
        return;
    }
    m_animation.stop();
    m_animation.setStartValue(m_value);
    m_animation.setEndValue(target);
    m_animation.start();
}

void AnimatedValue::jumpTo(double target)
{
    m_animation.stop();
    apply(target);
}

void AnimatedValue::apply(double value)
{
    if (m_value != value) {
        m_value = value;
        m_owner.update();
    }
}

} // namespace zelvane
