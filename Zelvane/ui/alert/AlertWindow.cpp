#include "ui/alert/AlertWindow.h"

#include "ui/components/Styling.h"
#include "ui/components/TextMeasure.h"
#include "ui/components/TextWell.h"
#include "ui/style/Symbols.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr int symbolSide = 36;
/// A longer text scrolls, so that the buttons stay on the screen.
constexpr int maximalInformationHeight = 200;

int alertWidth(const Theme& theme)
{
    return qRound(theme.tokens().sheets().minWidth);
}

int textWidth(const Theme& theme)
{
    const int padding = qRound(theme.tokens().sheets().padding);
    return alertWidth(theme) - 2 * padding - symbolSide - qRound(theme.tokens().spacing().lg);
}

} // namespace

AlertWindow::AlertWindow(const Alert& alert, const Theme& theme, WindowSystem& windows)
    : TranslatorKeyablePanel(theme, windows, PanelRole::alert)
    , m_theme(theme)
    , m_symbol(new QLabel)
    , m_message(new ThemedLabel(theme, StyleFontRole::headline, TextTone::primary))
    , m_information(makeInformation(alert))
    , m_buttonArea(new QWidget)
{
    Q_ASSERT(!alert.buttons.isEmpty());
    setWindowTitle(alert.messageText);
    setAccessibleDescription(alert.informativeText);
    m_message->setText(alert.messageText);
    m_message->setWordWrap(true);

    auto* content = new QWidget;
    m_layout = new QVBoxLayout(content);
    arrangeMessage();
    m_layout->addWidget(m_buttonArea);
    setContent(content);
    addButtons(alert.buttons);

    connect(this, &TranslatorKeyablePanel::closeRequested, this,
            [this] { Q_EMIT answered(int(m_buttons.size()) - 1); });
    keepStyled(*this, theme, [this] { restyle(); });
}

QWidget* AlertWindow::makeInformation(const Alert& alert)
{
    const QString& text = alert.informativeText;
    const double height = wrappedTextHeight(text, m_theme.font(StyleFontRole::body),
                                            textWidth(m_theme), maximalInformationHeight);
    if (height > maximalInformationHeight) {
        auto* well = new TextWell(m_theme);
        well->setReadOnlyText(text);
        well->setLabel(alert.messageText);
        well->setMaximumSectionHeight(maximalInformationHeight);
        return well;
    }
    auto* label = new ThemedLabel(m_theme, StyleFontRole::body, TextTone::secondary);
    label->setText(text);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setVisible(!text.isEmpty());
    return label;
}

void AlertWindow::arrangeMessage()
{
    m_words = new QVBoxLayout;
    m_words->addWidget(m_message);
    m_words->addWidget(m_information);
    m_row = new QHBoxLayout;
    m_row->addWidget(m_symbol, 0, Qt::AlignTop);
    m_row->addLayout(m_words, 1);
    m_layout->addLayout(m_row);
}

void AlertWindow::addButtons(const QStringList& titles)
{
    for (const QString& title : titles) {
        const bool first = m_buttons.isEmpty();
        auto* button = new TextButton(
            m_theme, first ? ControlKind::prominent : ControlKind::bordered, m_buttonArea);
        button->setText(title);
        const int index = int(m_buttons.size());
        connect(button, &QAbstractButton::clicked, this, [this, index] { Q_EMIT answered(index); });
        m_buttons.append(button);
    }
}

/// Buttons that fit stand in a row, the first at its end; others stand below one another.
void AlertWindow::arrangeButtons()
{
    const int spacing = qRound(m_theme.tokens().spacing().footerSpacing);
    int needed = -spacing;
    for (const TextButton* button : m_buttons) {
        needed += button->sizeHint().width() + spacing;
    }
    const int padding = qRound(m_theme.tokens().sheets().padding);
    const bool inRow = needed <= alertWidth(m_theme) - 2 * padding;

    delete m_buttonArea->layout();
    auto* layout =
        new QBoxLayout(inRow ? QBoxLayout::RightToLeft : QBoxLayout::TopToBottom, m_buttonArea);
    layout->setContentsMargins(0, qRound(m_theme.tokens().spacing().xl), 0, 0);
    layout->setSpacing(spacing);
    for (TextButton* button : m_buttons) {
        layout->addWidget(button);
    }
    if (inRow) {
        layout->addStretch(1);
    }
}

void AlertWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT answered(int(m_buttons.size()) - 1);
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // The first button is the default, unless the user has gone on to another one.
        const auto focused = m_buttons.indexOf(qobject_cast<TextButton*>(focusWidget()));
        Q_EMIT answered(int(std::max<qsizetype>(focused, 0)));
        return;
    }
    TranslatorKeyablePanel::keyPressEvent(event);
}

void AlertWindow::showEvent(QShowEvent* event)
{
    TranslatorKeyablePanel::showEvent(event);
    m_buttons.first()->setFocus(Qt::OtherFocusReason);
}

void AlertWindow::restyle()
{
    const int padding = qRound(m_theme.tokens().sheets().padding);
    m_layout->setContentsMargins(padding, padding, padding, padding);
    m_layout->setSpacing(0);
    const SpacingTokens spacing = m_theme.tokens().spacing();
    m_row->setSpacing(qRound(spacing.lg));
    const bool boxed = qobject_cast<TextWell*>(m_information);
    m_words->setSpacing(qRound(boxed ? spacing.md : spacing.xs));
    m_symbol->setPixmap(symbolPixmap(QStringLiteral("exclamationmark.triangle.fill"),
                                     m_theme.colors().warning, symbolSide, devicePixelRatioF()));
    arrangeButtons();
    const int width = alertWidth(m_theme);
    setContentSize({width, fittingHeight(*m_layout->parentWidget(), width)});
}

} // namespace zelvane
