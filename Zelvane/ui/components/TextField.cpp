#include "ui/components/TextField.h"

#include "settings/Localization.h"
#include "ui/components/Buttons.h"
#include "ui/components/Styling.h"
#include "ui/style/Symbols.h"
#include "ui/style/ViewStyles.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace zelvane {

namespace {

constexpr int textInset = 8;
constexpr int searchSymbol = 14;
constexpr int searchInset = 9;
constexpr int clearSide = 22;

} // namespace

TextField::TextField(const Theme& theme, QWidget* parent)
    : QLineEdit(parent)
    , m_theme(theme)
{
    setFrame(false);
    setTextMargins(textInset, 0, textInset, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    prepareControl(*this, theme);
    keepStyled(*this, theme, [this] { restyle(); });
}

void TextField::setMonospaced(bool monospaced)
{
    m_monospaced = monospaced;
    restyle();
}

void TextField::restyle()
{
    const ThemeColors& colors = m_theme.colors();
    setFont(m_theme.font(m_monospaced ? StyleFontRole::monospacedBody : StyleFontRole::body));
    QPalette palette = this->palette();
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.tertiaryText);
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::PlaceholderText}) {
        palette.setColor(QPalette::Disabled, role, colors.disabledText);
    }
    palette.setColor(QPalette::Highlight, colors.textSelection);
    palette.setColor(QPalette::HighlightedText, colors.text);
    setPalette(palette);
    updateGeometry();
}

QSize TextField::sizeHint() const
{
    return {24 * fontMetrics().averageCharWidth(), controlHeight(m_theme)};
}

QSize TextField::minimumSizeHint() const
{
    return {60, controlHeight(m_theme)};
}

void TextField::paintEvent(QPaintEvent* event)
{
    {
        const ThemeColors& colors = m_theme.colors();
        QColor border = colors.controlBorder;
        if (underMouse() && isEnabled()) {
            border.setAlphaF(std::min(1.0F, border.alphaF() * 1.8F));
        }
        QPainter painter(this);
        paintRounded(painter, rect(), m_theme.tokens().controlRadius(),
                     isEnabled() ? colors.well : colors.window, border);
    }
    QLineEdit::paintEvent(event);
}

SearchField::SearchField(const Theme& theme, QWidget* parent)
    : TextField(theme, parent)
    , m_clear(new IconButton(theme, QStringLiteral("xmark.circle.fill"), this, ControlKind::plain))
{
    m_clear->setFixedSize(clearSide, clearSide);
    m_clear->setFocusPolicy(Qt::NoFocus);
    m_clear->setCursor(Qt::ArrowCursor);
    m_clear->hide();
    keepTranslated(*this, [this] { m_clear->setLabel(localizedText(QStringLiteral("Clear"))); });
    connect(m_clear, &QAbstractButton::clicked, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, m_clear,
            [this](const QString& text) { m_clear->setVisible(!text.isEmpty()); });
}

void SearchField::setPrompt(const QString& prompt)
{
    setPlaceholderText(prompt);
    setAccessibleName(prompt);
}

void SearchField::paintEvent(QPaintEvent* event)
{
    TextField::paintEvent(event);
    QPainter painter(this);
    const QRect symbol(searchInset, (height() - searchSymbol) / 2, searchSymbol, searchSymbol);
    painter.drawPixmap(QStyle::visualRect(layoutDirection(), rect(), symbol).topLeft(),
                       symbolPixmap(QStringLiteral("magnifyingglass"),
                                    theme().colors().secondaryText, searchSymbol,
                                    devicePixelRatioF()));
}

void SearchField::resizeEvent(QResizeEvent* event)
{
    TextField::resizeEvent(event);
    arrange();
}

void SearchField::changeEvent(QEvent* event)
{
    TextField::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange) {
        arrange();
    }
}

void SearchField::arrange()
{
    const int before = searchInset + searchSymbol + 5;
    const int after = clearSide + 2;
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    setTextMargins(mirrored ? after : before, 0, mirrored ? before : after, 0);
    const QRect place(width() - clearSide - 4, (height() - clearSide) / 2, clearSide, clearSide);
    m_clear->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
}

void SearchField::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clear();
        return;
    }
    TextField::keyPressEvent(event);
}

} // namespace zelvane
