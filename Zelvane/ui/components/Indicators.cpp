#include "ui/components/Indicators.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"
#include "ui/style/ViewStyles.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zelvane {

namespace {

using namespace std::chrono_literals;

constexpr int barHeight = 6;
constexpr int fullScale = 1000;
/// Often enough for a bar that glides.
constexpr auto barFrame = 33ms;
constexpr double barStep = 0.022;
/// The part of the bar that glides along it.
constexpr double glidingShare = 0.3;

constexpr int spinnerSide = 16;
constexpr int spokes = 8;
/// A step of one spoke: a wheel of spokes needs no smooth turn.
constexpr auto spinnerFrame = 100ms;

constexpr int badgePadding = 8;
constexpr int lightSide = 10;

} // namespace

QString percentageText(double share)
{
    // The small addition makes up for shares such as 0.29, of which 100 are 28.999….
    const double percent = std::clamp(share, 0.0, 1.0) * 100 + 1e-9;
    return localizedFormat(QStringLiteral("%lld%%"), {qlonglong(percent)});
}

ProgressBar::ProgressBar(const Theme& theme, QWidget* parent)
    : QProgressBar(parent)
    , m_theme(theme)
{
    setTextVisible(false);
    setRange(0, fullScale);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] {
        animate();
        update();
    });
}

void ProgressBar::setFraction(std::optional<double> fraction)
{
    setRange(0, fraction ? fullScale : 0);
    setValue(int(std::lround(std::clamp(fraction.value_or(0), 0.0, 1.0) * fullScale)));
    animate();
}

QSize ProgressBar::sizeHint() const
{
    return {120, barHeight};
}

QSize ProgressBar::minimumSizeHint() const
{
    return {40, barHeight};
}

void ProgressBar::animate()
{
    const bool moves = maximum() == 0 && isVisible() && !m_theme.appearance().reducedMotion();
    if (moves && !m_timer.isActive()) {
        m_timer.start(int(barFrame.count()), this);
    } else if (!moves) {
        m_timer.stop();
    }
}

void ProgressBar::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timer.timerId()) {
        QProgressBar::timerEvent(event);
        return;
    }
    m_phase = std::fmod(m_phase + barStep, 1.0);
    update();
}

void ProgressBar::showEvent(QShowEvent* event)
{
    QProgressBar::showEvent(event);
    animate();
}

void ProgressBar::hideEvent(QHideEvent* event)
{
    QProgressBar::hideEvent(event);
    animate();
}

void ProgressBar::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    const QRectF bar(rect());
    const double radius = bar.height() / 2;
    QPainter painter(this);
    paintRounded(painter, bar, radius, colors.track, Qt::transparent);

    QPainterPath outline;
    outline.addRoundedRect(bar, radius, radius);
    painter.setClipPath(outline);
    QRectF done = bar;
    if (maximum() != 0) {
        done.setWidth(bar.width() * value() / maximum());
    } else if (m_theme.appearance().reducedMotion()) {
        painter.setOpacity(0.5);
    } else {
        done.setWidth(bar.width() * glidingShare);
        done.moveLeft(-done.width() + m_phase * (bar.width() + done.width()));
    }
    if (layoutDirection() == Qt::RightToLeft) {
        done.moveLeft(bar.width() - done.right());
    }
    const QColor fill = isEnabled() ? colors.accent : colors.disabledText;
    paintRounded(painter, done, radius, fill, Qt::transparent);
}

Spinner::Spinner(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] {
        animate();
        update();
    });
}

QSize Spinner::sizeHint() const
{
    return {spinnerSide, spinnerSide};
}

void Spinner::animate()
{
    const bool turns = isVisible() && !m_theme.appearance().reducedMotion();
    if (turns && !m_timer.isActive()) {
        m_timer.start(int(spinnerFrame.count()), this);
    } else if (!turns) {
        m_timer.stop();
    }
}

void Spinner::timerEvent(QTimerEvent*)
{
    m_step = (m_step + 1) % spokes;
    update();
}

void Spinner::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    animate();
}

void Spinner::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    animate();
}

void Spinner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    const double outer = std::min(width(), height()) / 2.0 - 1;
    for (int i = 0; i < spokes; ++i) {
        QColor color = m_theme.colors().secondaryText;
        const int age = (m_step - i + spokes) % spokes;
        color.setAlphaF(float(1.0 - 0.8 * age / (spokes - 1)));
        painter.setPen(QPen(color, outer / 4, Qt::SolidLine, Qt::RoundCap));
        const double angle = 2 * std::numbers::pi * i / spokes;
        const QPointF direction(std::sin(angle), -std::cos(angle));
        painter.drawLine(direction * (outer * 0.5), direction * (outer * 0.92));
    }
}

Badge::Badge(const Theme& theme, TextTone tone, QWidget* parent)
    : QLabel(parent)
    , m_theme(theme)
    , m_tone(tone)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] {
        setFont(m_theme.font(StyleFontRole::captionSemibold));
        updateGeometry();
        update();
    });
}

void Badge::setTone(TextTone tone)
{
    m_tone = tone;
    update();
}

QSize Badge::sizeHint() const
{
    const double words = QFontMetricsF(font()).horizontalAdvance(text());
    return {int(std::ceil(words)) + 2 * badgePadding, fontMetrics().height() + 4};
}

QSize Badge::minimumSizeHint() const
{
    return sizeHint();
}

void Badge::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor color = toneColor(m_theme.colors(), m_tone);
    QColor ground = color;
    ground.setAlphaF(0.13F);
    paintRounded(painter, rect(), height() / 2.0, ground, Qt::transparent);
    painter.setPen(color);
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, text());
}

StatusLight::StatusLight(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] { update(); });
}

void StatusLight::setState(State state, const QString& label)
{
    m_state = state;
    setAccessibleName(label);
    setToolTip(label);
    update();
}

QSize StatusLight::sizeHint() const
{
    return {lightSide, lightSide};
}

void StatusLight::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    QColor color = colors.track;
    switch (m_state) {
    case State::off:
        break;
    case State::ready:
        color = colors.success;
        break;
    case State::busy:
        color = colors.accent;
        break;
    case State::warning:
        color = colors.warning;
        break;
    case State::failed:
        color = colors.danger;
        break;
    }
    QPainter painter(this);
    QColor halo = color;
    halo.setAlphaF(0.25F);
    const QRectF dot(rect());
    paintRounded(painter, dot, dot.height() / 2, halo, Qt::transparent);
    const QRectF core = dot.adjusted(1.5, 1.5, -1.5, -1.5);
    paintRounded(painter, core, core.height() / 2, color, Qt::transparent);
}

} // namespace zelvane
