#include "ui/onboarding/OnboardingHero.h"

#include "ui/onboarding/HeroDrawing.h"

#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace zelvane {

namespace {

/// The least that the drawings need in their own units.
constexpr QSizeF drawingSize(444, 256);
constexpr std::chrono::milliseconds arrivalDuration{220};

QColor colorOf(const SrgbColor& color)
{
    return QColor::fromRgbF(float(color.red), float(color.green), float(color.blue));
}

/// A rectangle of which only the upper corners are round.
QPainterPath roundedAtTop(const QRectF& rect, double radius)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addRoundedRect(rect, radius, radius);
    path.addRect(rect.adjusted(0, radius, 0, 0));
    return path.simplified();
}

} // namespace

OnboardingHero::OnboardingHero(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_arrival(new AnimatedValue(*this, theme, arrivalDuration, 1))
{
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void OnboardingHero::setIllustration(OnboardingIllustration illustration)
{
    if (m_illustration == illustration) {
        return;
    }
    m_previous = m_illustration;
    m_illustration = illustration;
    m_arrival->jumpTo(0);
    m_arrival->moveTo(1);
    update();
}

void OnboardingHero::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_arrival->value() < 1) {
        painter.drawPixmap(0, 0, drawn(m_previous));
        painter.setOpacity(m_arrival->value());
    }
    painter.drawPixmap(0, 0, drawn(m_illustration));
}

void OnboardingHero::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        update();
    }
}

QPixmap OnboardingHero::drawn(OnboardingIllustration illustration) const
{
    const double ratio = devicePixelRatioF();
    QPixmap pixmap(size() * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);

    const auto colors = gradientOf(illustration);
    QLinearGradient gradient(QPointF(0, 0), QPointF(width(), height()));
    gradient.setColorAt(0, colorOf(colors[0]));
    gradient.setColorAt(1, colorOf(colors[1]));

    // One pixel less than the panel's own corners, since its hairline lies around this.
    const bool isRound = m_theme.appearance().compositing();
    const double radius = isRound ? m_theme.tokens().panelRadius() - 1 : 0;
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(roundedAtTop(QRectF(rect()), radius), gradient);
    painter.translate(QRectF(rect()).center());
    const double scale = std::min(width() / drawingSize.width(), height() / drawingSize.height());
    painter.scale(scale, scale);
    drawHero(painter, illustration, ratio);
    return pixmap;
}

} // namespace zelvane
