#include "ui/components/Switch.h"

#include "ui/components/Styling.h"
#include "ui/style/ViewStyles.h"

namespace zelvane {

namespace {

using namespace std::chrono_literals;

constexpr QSize trackSize(38, 22);
constexpr double knobInset = 2;
constexpr double disabledOpacity = 0.55;

/// Between two opaque colours.
QColor mixed(QColor over, const QColor& under, double share)
{
    over.setAlphaF(float(share));
    return blended(over, under);
}

} // namespace

Switch::Switch(const Theme& theme, QWidget* parent)
    : QCheckBox(parent)
    , m_theme(theme)
    , m_knob(*this, theme, 160ms)
{
    prepareControl(*this, theme, [] { return trackSize.height() / 2.0; });
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &QCheckBox::toggled, this, [this](bool on) { m_knob.moveTo(on ? 1 : 0); });
}

QSize Switch::sizeHint() const
{
    return trackSize;
}

QSize Switch::minimumSizeHint() const
{
    return trackSize;
}

bool Switch::hitButton(const QPoint& position) const
{
    return rect().contains(position);
}

void Switch::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    const bool hovered = underMouse() && isEnabled();
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);

    const QColor on =
        isDown() ? colors.accentPressed : (hovered ? colors.accentHovered : colors.accent);
    const QColor off = hovered ? mixed(colors.text, colors.track, 0.12) : colors.track;
    const QRectF track(rect());
    const QColor border =
        m_theme.appearance().highContrast() ? colors.controlBorder : QColor(Qt::transparent);
    paintRounded(painter, track, track.height() / 2, mixed(on, off, m_knob.value()), border);

    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const double side = track.height() - 2 * knobInset;
    const double travel = track.width() - 2 * knobInset - side;
    const double place = mirrored ? 1 - m_knob.value() : m_knob.value();
    const QRectF knob(knobInset + travel * place, knobInset, side, side);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 38));
    painter.drawEllipse(knob.translated(0, 0.75));
    painter.setBrush(m_knob.value() > 0.5 ? colors.onAccent : colors.knob);
    painter.drawEllipse(knob);
}

} // namespace zelvane
