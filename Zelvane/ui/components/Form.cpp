#include "ui/components/Form.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"
#include "ui/style/Symbols.h"
#include "ui/style/ViewStyles.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr int formSymbol = 18;
constexpr int bannerSymbol = 22;
/// From the card's edge to what stands in it.
constexpr int cardInset = 14;
constexpr int rowPadding = 10;

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* section = qobject_cast<Section*>(object);
    return section ? new QAccessibleWidget(section, QAccessible::Grouping) : nullptr;
}

ThemedLabel* wrappedNote(const Theme& theme)
{
    auto* note = new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary);
    note->setWordWrap(true);
    note->hide();
    return note;
}

void showText(ThemedLabel& label, const QString& text)
{
    label.setText(text);
    label.setVisible(!text.isEmpty());
}

} // namespace

Divider::Divider(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] { update(); });
}

void Divider::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), m_theme.colors().hairline);
}

Card::Card(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_layout(new QVBoxLayout(this))
{
    m_layout->setSpacing(1);
    m_layout->setContentsMargins(0, 1, 0, 1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    keepStyled(*this, theme, [this] { update(); });
}

void Card::addRow(QWidget* row)
{
    insertRow(m_layout->count(), row);
}

void Card::insertRow(int index, QWidget* row)
{
    const int side = cardInset;
    row->setContentsMargins(side, rowPadding, side, rowPadding);
    m_layout->insertWidget(index, row);
}

bool Card::event(QEvent* event)
{
    // A row has come, gone or changed its height.
    if (event->type() == QEvent::LayoutRequest) {
        update();
    }
    return QWidget::event(event);
}

void Card::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    QPainter painter(this);
    paintRounded(painter, rect(), m_theme.tokens().wellRadius(), colors.card, colors.cardBorder);
    bool first = true;
    for (int i = 0; i < m_layout->count(); ++i) {
        const QWidget* row = m_layout->itemAt(i)->widget();
        if (!row || row->isHidden()) {
            continue;
        }
        if (!first) {
            painter.fillRect(cardInset, row->y() - 1, width() - 2 * cardInset, 1, colors.hairline);
        }
        first = false;
    }
}

Section::Section(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_layout(new QVBoxLayout(this))
    , m_title(new ThemedLabel(theme, &TypographyTokens::sectionLabel, TextTone::secondary))
    , m_card(new Card(theme))
    , m_note(wrappedNote(theme))
{
    [[maybe_unused]] static const bool installed =
        (QAccessible::installFactory(makeAccessible), true);
    m_title->setWordWrap(true);
    m_title->hide();
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addWidget(m_title);
    m_layout->addWidget(m_card);
    m_layout->addWidget(m_note);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    keepStyled(*this, theme, [this, &theme] {
        const SpacingTokens spacing = theme.tokens().spacing();
        m_layout->setSpacing(qRound(spacing.sm) - 1);
        m_title->setContentsMargins(qRound(spacing.xs), 0, qRound(spacing.xs), 0);
        m_note->setContentsMargins(qRound(spacing.xs), 0, qRound(spacing.xs), 0);
    });
}

void Section::setTitle(const QString& title)
{
    showText(*m_title, title);
    setAccessibleName(title);
}

void Section::setNote(const QString& note)
{
    showText(*m_note, note);
    setAccessibleDescription(note);
}

FormRow::FormRow(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_layout(new RowLayout(this))
    , m_words(new QHBoxLayout)
    , m_symbolLabel(new QLabel)
    , m_title(new ThemedLabel(theme, StyleFontRole::body, TextTone::primary))
    , m_note(wrappedNote(theme))
{
    auto* words = new QVBoxLayout;
    words->setContentsMargins(0, 0, 0, 0);
    words->setSpacing(2);
    words->addStretch(1);
    words->addWidget(m_title);
    words->addWidget(m_note);
    words->addStretch(1);
    m_title->setWordWrap(true);
    m_title->hide();
    m_symbolLabel->hide();
    m_words->addWidget(m_symbolLabel);
    m_words->addLayout(words, 1);
    m_layout->setContent(m_words);
    keepStyled(*this, theme, [this] { restyle(); });
}

void FormRow::setTitle(const QString& title)
{
    m_title->setText(title);
    m_title->setVisible(!title.isEmpty());
    nameControl();
}

void FormRow::setNote(const QString& note, TextTone tone)
{
    m_note->setTone(tone);
    showText(*m_note, note);
    nameControl();
}

void FormRow::setSymbol(const QString& name, TextTone tone)
{
    m_symbol = name;
    m_symbolTone = tone;
    restyle();
}

void FormRow::addControl(QWidget* control)
{
    m_layout->addWidget(control);
    const bool isText = qobject_cast<QLabel*>(control) != nullptr;
    if (!m_control && !isText) {
        m_control = control;
        nameControl();
    }
}

void FormRow::nameControl()
{
    if (!m_control) {
        return;
    }
    // A control that says what it does keeps its own name.
    const QString present = m_control->accessibleName();
    const auto* button = qobject_cast<QAbstractButton*>(m_control);
    const bool speaksForItself = button && !button->text().isEmpty();
    if ((present.isEmpty() || present == m_givenName) && !speaksForItself) {
        m_givenName = m_title->text();
        m_control->setAccessibleName(m_givenName);
    }
    m_control->setAccessibleDescription(m_note->text());
}

void FormRow::restyle()
{
    const int gap = qRound(m_theme.tokens().spacing().md);
    m_layout->setSpacing(gap);
    m_words->setSpacing(gap);
    m_symbolLabel->setVisible(!m_symbol.isEmpty());
    if (!m_symbol.isEmpty()) {
        m_symbolLabel->setPixmap(symbolPixmap(m_symbol, toneColor(m_theme.colors(), m_symbolTone),
                                              formSymbol, devicePixelRatioF()));
    }
}

void FormRow::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

void FormRow::mouseReleaseEvent(QMouseEvent* event)
{
    auto* button = qobject_cast<QAbstractButton*>(m_control);
    const bool onText = m_title->geometry().united(m_note->geometry()).contains(event->pos());
    if (button && button->isCheckable() && onText && event->button() == Qt::LeftButton) {
        button->click();
    }
}

ProgressRow::ProgressRow(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_head(new FormRow(theme))
    , m_bar(new ProgressBar(theme))
    , m_percentage(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    , m_details(new SymbolLines(theme))
    , m_cancel(new TextButton(theme, ControlKind::bordered))
{
    m_head->addControl(m_cancel);
    auto* share = new QHBoxLayout;
    share->addWidget(m_bar, 1, Qt::AlignVCenter);
    share->addWidget(m_percentage);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_head);
    column->addLayout(share);
    column->addWidget(m_details);
    m_cancel->hide();
    connect(m_cancel, &QAbstractButton::clicked, this, &ProgressRow::cancelRequested);
    keepStyled(*this, theme, [share, column, &theme] {
        const SpacingTokens spacing = theme.tokens().spacing();
        share->setSpacing(qRound(spacing.md));
        column->setSpacing(qRound(spacing.sm));
    });
}

void ProgressRow::setMessage(const QString& message)
{
    m_head->setTitle(message);
    m_bar->setAccessibleName(message);
}

void ProgressRow::setNote(const QString& note)
{
    m_head->setNote(note);
    m_bar->setAccessibleDescription(note);
}

void ProgressRow::setFraction(std::optional<double> fraction)
{
    m_bar->setFraction(fraction);
    setPercentage(fraction ? percentageText(*fraction) : QString());
}

void ProgressRow::setPercentage(const QString& text)
{
    showText(*m_percentage, text);
}

void ProgressRow::setDetails(const QList<SymbolLine>& lines)
{
    m_details->setLines(lines);
}

void ProgressRow::setCancelText(const QString& text)
{
    m_cancel->setText(text);
    m_cancel->setVisible(!text.isEmpty());
}

Banner::Banner(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_layout(new RowLayout(this))
    , m_words(new QHBoxLayout)
    , m_symbol(new QLabel)
    , m_title(new ThemedLabel(theme, StyleFontRole::bodySemibold, TextTone::primary))
    , m_body(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
{
    m_title->setWordWrap(true);
    m_body->setWordWrap(true);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addStretch(1);
    words->addWidget(m_title);
    words->addWidget(m_body);
    words->addStretch(1);
    m_words->addWidget(m_symbol);
    m_words->addLayout(words, 1);
    m_layout->setContent(m_words);
    keepStyled(*this, theme, [this] {
        const SpacingTokens spacing = m_theme.tokens().spacing();
        const int side = qRound(spacing.md) + 2;
        m_layout->setContentsMargins(side, side, side, side);
        m_layout->setSpacing(qRound(spacing.md));
        m_words->setSpacing(qRound(spacing.md));
        m_symbol->setPixmap(symbolPixmap(QStringLiteral("exclamationmark.triangle.fill"),
                                         m_theme.colors().warning, bannerSymbol,
                                         devicePixelRatioF()));
        update();
    });
}

void Banner::setTexts(const QString& title, const QString& body)
{
    m_title->setText(title);
    m_body->setText(body);
}

void Banner::addButton(QWidget* button)
{
    m_layout->addWidget(button);
}

void Banner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor ground = m_theme.colors().warning;
    QColor border = ground;
    ground.setAlphaF(0.12F);
    border.setAlphaF(0.35F);
    paintRounded(painter, rect(), m_theme.tokens().wellRadius(), ground, border);
}

} // namespace zelvane
