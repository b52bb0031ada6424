#include "ui/components/SlimScrollBar.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace zelvane {

namespace {

constexpr int barWidth = 10;
constexpr double handleWidth = 4;
constexpr double hoveredHandleWidth = 6;

} // namespace

SlimScrollBar::SlimScrollBar(const Theme& theme, QWidget* parent)
    : QScrollBar(Qt::Vertical, parent)
    , m_theme(theme)
{
    setAttribute(Qt::WA_Hover);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    connect(&theme, &Theme::changed, this, [this] { update(); });
}

void SlimScrollBar::follow(QScrollBar& inner)
{
    m_inner = &inner;
    const auto adopt = [this, &inner] {
        setRange(inner.minimum(), inner.maximum());
        setPageStep(inner.pageStep());
        setSingleStep(inner.singleStep());
        setVisible(inner.maximum() > inner.minimum());
    };
    connect(&inner, &QScrollBar::rangeChanged, this, adopt);
    connect(&inner, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
    connect(this, &QScrollBar::valueChanged, &inner, &QScrollBar::setValue);
    adopt();
}

QSize SlimScrollBar::sizeHint() const
{
    return {barWidth, barWidth};
}

void SlimScrollBar::initStyleOption(QStyleOptionSlider* option) const
{
    QScrollBar::initStyleOption(option);
    // No signal tells when the page changes, and it does so after the range.
    if (m_inner) {
        option->pageStep = m_inner->pageStep();
    }
}

QRect SlimScrollBar::handleRect() const
{
    // The style's own handle, so that dragging hits what is painted.
    QStyleOptionSlider option;
    initStyleOption(&option);
    return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
}

void SlimScrollBar::paintEvent(QPaintEvent*)
{
    if (minimum() == maximum()) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor color = m_theme.colors().scrollHandle;
    const bool hovered = underMouse() || isSliderDown();
    if (hovered) {
        color.setAlphaF(std::min(1.0F, color.alphaF() * 1.6F));
    }
    painter.setBrush(color);
    const double thickness = hovered ? hoveredHandleWidth : handleWidth;
    QRectF handle = handleRect();
    handle.adjust(0, 2, 0, -2);
    handle.setX((width() - thickness) / 2);
    handle.setWidth(thickness);
    painter.drawRoundedRect(handle, thickness / 2, thickness / 2);
}

} // namespace zelvane
