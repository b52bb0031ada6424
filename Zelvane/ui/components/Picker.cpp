#include "ui/components/Picker.h"

#include "ui/components/ControlPainting.h"
#include "ui/components/Styling.h"
#include "ui/style/Symbols.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QStyle>

#include <cmath>

namespace zelvane {

namespace {

constexpr int textInset = 10;
constexpr int symbolSide = 14;
constexpr int symbolInset = 7;
constexpr int textEnd = symbolSide + symbolInset + 6;

/// A combo box without a text field, to screen readers.
class PickerAccessible final : public QAccessibleWidget
{
public:
    explicit PickerAccessible(PickerButton* picker)
        : QAccessibleWidget(picker, QAccessible::ComboBox)
    {
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? picker()->valueText() : QAccessibleWidget::text(kind);
    }

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = true;
        state.expandable = true;
        state.expanded = openChoice() != nullptr;
        state.collapsed = !state.expanded;
        return state;
    }

    // Qt leaves popups out of what it exposes; the choice belongs to its control.
    [[nodiscard]] int childCount() const override { return openChoice() ? 1 : 0; }

    [[nodiscard]] QAccessibleInterface* child(int index) const override
    {
        return index == 0 ? QAccessible::queryAccessibleInterface(openChoice()) : nullptr;
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override
    {
        return child && openChoice() && child->object() == openChoice() ? 0 : -1;
    }

    [[nodiscard]] QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (picker()->isEnabled()) {
            names.prepend(showMenuAction());
        }
        return names;
    }

    void doAction(const QString& name) override
    {
        if (name == showMenuAction() || name == pressAction()) {
            picker()->togglePopup();
            return;
        }
        QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] PickerButton* picker() const { return static_cast<PickerButton*>(widget()); }

    [[nodiscard]] QWidget* openChoice() const
    {
        QWidget* popup = picker()->popup();
        return popup && popup->isVisible() ? popup : nullptr;
    }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* picker = qobject_cast<PickerButton*>(object);
    return picker ? new PickerAccessible(picker) : nullptr;
}

QString withoutMnemonics(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

PickerButton::PickerButton(const Theme& theme, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme)
{
    [[maybe_unused]] static const bool installed =
        (QAccessible::installFactory(makeAccessible), true);
    prepareControl(*this, theme);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] {
        setFont(m_theme.font(StyleFontRole::body));
        updateGeometry();
    });
    connect(this, &QAbstractButton::clicked, this, [this] { togglePopup(); });
}

void PickerButton::setPreferredWidth(int width)
{
    m_preferredWidth = width;
    updateGeometry();
}

void PickerButton::valueChanged()
{
    QAccessibleValueChangeEvent event(this, valueText());
    QAccessible::updateAccessibility(&event);
    updateGeometry();
    update();
}

QSize PickerButton::sizeHint() const
{
    const int width = m_preferredWidth > 0 ? m_preferredWidth : widestText() + textInset + textEnd;
    return {width, controlHeight(m_theme)};
}

QSize PickerButton::minimumSizeHint() const
{
    return {std::min(sizeHint().width(), 80), controlHeight(m_theme)};
}

void PickerButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintControl(painter, *this, m_theme, ControlKind::bordered);
    const QColor color = controlTextColor(*this, m_theme, ControlKind::bordered);
    painter.setPen(color);
    const auto mirrored = [this](const QRect& place) {
        return QStyle::visualRect(layoutDirection(), rect(), place);
    };
    const QRect room(textInset, 0, width() - textInset - textEnd, height());
    const auto begin = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft);
    const QString value = valueText();
    const QString shown = fontMetrics().elidedText(value, Qt::ElideRight, room.width());
    painter.drawText(mirrored(room), int(begin | Qt::AlignVCenter) | Qt::TextSingleLine, shown);
    setToolTip(shown == value ? QString() : value);

    const QRect symbol(width() - symbolInset - symbolSide, (height() - symbolSide) / 2, symbolSide,
                       symbolSide);
    const QColor faint = isEnabled() ? m_theme.colors().secondaryText : color;
    painter.drawPixmap(mirrored(symbol).topLeft(),
                       symbolPixmap(QStringLiteral("chevron.up.chevron.down"), faint, symbolSide,
                                    devicePixelRatioF()));
}

void PickerButton::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Up:
    case Qt::Key_Down:
        togglePopup();
        return;
    default:
        QAbstractButton::keyPressEvent(event);
    }
}

Picker::Picker(const Theme& theme, QWidget* parent)
    : PickerButton(theme, parent)
{
}

void Picker::setItems(const QStringList& texts)
{
    m_items = texts;
    m_current = -1;
    valueChanged();
}

void Picker::setCurrentIndex(int index)
{
    const int next = index >= 0 && index < m_items.size() ? index : -1;
    if (next != m_current) {
        m_current = next;
        valueChanged();
    }
}

void Picker::setPlaceholder(const QString& text)
{
    m_placeholder = text;
    valueChanged();
}

QString Picker::valueText() const
{
    return m_current >= 0 ? m_items[m_current] : m_placeholder;
}

int Picker::widestText() const
{
    const QFontMetricsF metrics(font());
    double widest = metrics.horizontalAdvance(m_placeholder);
    for (const QString& item : m_items) {
        widest = std::max(widest, metrics.horizontalAdvance(item));
    }
    return int(std::ceil(widest));
}

void Picker::togglePopup()
{
    if (m_menu) {
        m_menu->close();
        return;
    }
    if (m_items.isEmpty()) {
        return;
    }
    m_menu = new QMenu(this);
    m_menu->setAttribute(Qt::WA_DeleteOnClose);
    m_menu->setAccessibleName(accessibleName());
    m_menu->setMinimumWidth(width());
    for (int i = 0; i < m_items.size(); ++i) {
        QAction* action = m_menu->addAction(withoutMnemonics(m_items[i]));
        action->setCheckable(true);
        action->setChecked(i == m_current);
        connect(action, &QAction::triggered, this, [this, i] {
            setCurrentIndex(i);
            Q_EMIT activated(i);
        });
        if (i == m_current) {
            m_menu->setActiveAction(action);
        }
    }
    // The present value lies over the control, so that choosing it again moves nothing.
    QAction* present = m_current >= 0 ? m_menu->actions()[m_current] : nullptr;
    const QRect row = present ? m_menu->actionGeometry(present) : QRect();
    const int y = present ? (height() - row.height()) / 2 - row.top() : height() + 2;
    m_menu->popup(mapToGlobal(QPoint(0, y)));
}

} // namespace zelvane
