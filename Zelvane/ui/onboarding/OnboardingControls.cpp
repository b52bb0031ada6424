#include "ui/onboarding/OnboardingControls.h"

#include "settings/Localization.h"
#include "ui/components/ControlPainting.h"
#include "ui/components/Styling.h"
#include "ui/style/Symbols.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

#include <utility>

namespace zelvane {

namespace {

constexpr int chevronSide = 36;
constexpr int chevronSymbol = 20;
constexpr double faintOpacity = 0.35;

constexpr int dotSize = 8;
constexpr int dotGap = 8;

} // namespace

ChevronButton::ChevronButton(const Theme& theme, QString symbol, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme)
    , m_symbol(std::move(symbol))
{
    prepareControl(*this, theme);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

double ChevronButton::symbolOpacity() const
{
    return isEnabled() ? 1 : faintOpacity;
}

QSize ChevronButton::sizeHint() const
{
    return {chevronSide, chevronSide};
}

void ChevronButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintControl(painter, *this, m_theme, ControlKind::plain);
    painter.setOpacity(symbolOpacity());
    constexpr int inset = (chevronSide - chevronSymbol) / 2;
    painter.drawPixmap(
        inset, inset,
        symbolPixmap(m_symbol, m_theme.colors().text, chevronSymbol, devicePixelRatioF()));
}

void ChevronButton::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

PageDots::PageDots(const Theme& theme, int count, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_count(count)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
    rename();
}

void PageDots::setIndex(int index)
{
    m_index = index;
    rename();
    update();
}

QSize PageDots::sizeHint() const
{
    return {(m_count * (dotSize + dotGap)) - dotGap, dotSize};
}

void PageDots::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < m_count; ++i) {
        painter.setBrush(i == m_index ? m_theme.colors().accent : m_theme.colors().tertiaryText);
        painter.setOpacity(i == m_index ? 1 : faintOpacity);
        painter.drawEllipse(QRectF(i * (dotSize + dotGap), 0, dotSize, dotSize));
    }
}

void PageDots::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        rename();
    }
}

void PageDots::rename()
{
    setAccessibleName(localizedFormat(QStringLiteral("Page %lld of %lld"), {m_index + 1, m_count}));
}

} // namespace zelvane
