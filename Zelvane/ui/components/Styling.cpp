#include "ui/components/Styling.h"

#include <QEvent>
#include <QFontMetrics>
#include <QLayout>

#include <ranges>
#include <utility>

namespace zelvane {

namespace {

/// Runs an action whenever its parent gets an event of one type.
class EventAction final : public QObject
{
public:
    EventAction(QWidget& widget, QEvent::Type type, std::function<void()> action)
        : QObject(&widget)
        , m_type(type)
        , m_action(std::move(action))
    {
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == m_type) {
            m_action();
        }
        return false;
    }

private:
    QEvent::Type m_type;
    std::function<void()> m_action;
};

} // namespace

void keepStyled(QWidget& widget, const Theme& theme, std::function<void()> restyle)
{
    restyle();
    QObject::connect(&theme, &Theme::changed, &widget, restyle);
    new EventAction(widget, QEvent::ApplicationFontChange, std::move(restyle));
}

void keepTranslated(QWidget& widget, std::function<void()> translate)
{
    translate();
    new EventAction(widget, QEvent::LanguageChange, std::move(translate));
}

void prepareControl(QWidget& widget, const Theme& theme, std::function<double()> radius)
{
    widget.setAttribute(Qt::WA_Hover);
    widget.setFocusPolicy(Qt::StrongFocus);
    keepStyled(widget, theme, [&widget, radius = std::move(radius)] {
        widget.setProperty(focusRadiusProperty, radius());
        widget.update();
    });
}

void prepareControl(QWidget& widget, const Theme& theme)
{
    prepareControl(widget, theme, [&theme] { return theme.tokens().controlRadius(); });
}

int fittingHeight(const QWidget& widget, int width)
{
    // From the inside out: a layout hears of a change in a widget's own layout only when that one
    // has been activated, which Qt puts off.
    const QList<QWidget*> inner = widget.findChildren<QWidget*>();
    for (const QWidget* child : inner | std::views::reverse) {
        if (QLayout* layout = child->layout()) {
            layout->activate();
        }
    }
    QLayout* layout = widget.layout();
    layout->activate();
    return layout->hasHeightForWidth() ? layout->totalHeightForWidth(width)
                                       : layout->totalSizeHint().height();
}

int controlHeight(const Theme& theme)
{
    return QFontMetrics(theme.font(StyleFontRole::body)).height() + 13;
}

} // namespace zelvane
