#include "ui/components/TextWell.h"

#include "foundation/Text.h"
#include "ui/components/LongParagraphs.h"
#include "ui/components/SlimScrollBar.h"
#include "ui/components/Styling.h"
#include "ui/components/TextMeasure.h"
#include "ui/style/ViewStyles.h"

#include <QFocusEvent>
#include <QMimeData>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextDocumentFragment>

#include <cmath>
#include <utility>

namespace zelvane {

namespace {

/// Between the well's edge and its text.
constexpr int horizontalPadding = 12;
constexpr int verticalPadding = 9;
/// The scroll bar lies in the padding, so that the text wraps alike with and without it.
constexpr int scrollBarInset = 1;
/// A plain text area takes a text for too high that fills it to the last pixel.
constexpr int slack = 2;
/// Longer texts are laid out as they come into view.
constexpr int layOutLimit = 100'000;

/// A document's own text as it was put in. Its plain text would lose the spaces that don't break.
QString fromDocument(QString raw)
{
    raw.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
    return withParagraphsJoined(std::move(raw));
}

/// A text area whose caret, where the text can't be changed, is only there for users who came to it
/// by keyboard. Everyone else's arrow keys scroll.
class WellEditor final : public QPlainTextEdit
{
public:
    using QPlainTextEdit::QPlainTextEdit;

protected:
    void insertFromMimeData(const QMimeData* source) override
    {
        if (source->hasText()) {
            textCursor().insertText(withLongParagraphsBroken(source->text()));
            ensureCursorVisible();
        }
    }

    [[nodiscard]] QMimeData* createMimeDataFromSelection() const override
    {
        auto* data = new QMimeData;
        data->setText(fromDocument(textCursor().selection().toRawText()));
        return data;
    }

    void focusInEvent(QFocusEvent* event) override
    {
        const bool byKeyboard =
            event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
        if (isReadOnly() && event->reason() != Qt::ActiveWindowFocusReason) {
            setTextInteractionFlags(byKeyboard
                                        ? Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard
                                        : Qt::TextSelectableByMouse);
        }
        QPlainTextEdit::focusInEvent(event);
    }

    void resizeEvent(QResizeEvent* event) override
    {
        QPlainTextEdit::resizeEvent(event);
        layOutAll();
    }

private:
    /// Otherwise paragraphs count as one line until they come into view, and the text jumps when it
    /// is scrolled to where its end seemed to be.
    void layOutAll()
    {
        if (document()->characterCount() > layOutLimit) {
            return;
        }
        for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
            blockBoundingRect(block);
        }
    }
};

} // namespace

TextWell::TextWell(const Theme& theme, WellHeight height, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_height(height)
    , m_editor(new WellEditor(this))
    , m_scrollBar(new SlimScrollBar(theme, this))
{
    m_editor->setFrameShape(QFrame::NoFrame);
    m_editor->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_editor->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_editor->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_editor->setTabChangesFocus(true);
    m_editor->document()->setDocumentMargin(0);
    m_editor->viewport()->setAutoFillBackground(false);

    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    policy.setHeightForWidth(height == WellHeight::text);
    setSizePolicy(policy);
    setFocusProxy(m_editor);
    connect(m_editor, &QPlainTextEdit::textChanged, this, &TextWell::textChanged);
    connectScrollBar();
    keepStyled(*this, theme, [this] { restyle(); });
}

void TextWell::connectScrollBar()
{
    // The text always wraps; what may be scrolled sideways is the blank at the end of a line, and
    // showing the caret of a right-to-left text would do so.
    QScrollBar* sideways = m_editor->horizontalScrollBar();
    connect(sideways, &QScrollBar::rangeChanged, this, [sideways] { sideways->setRange(0, 0); });

    m_scrollBar->follow(*m_editor->verticalScrollBar());
}

void TextWell::setReadOnlyText(const QString& text)
{
    m_editor->setReadOnly(true);
    m_editor->setPlainText(withLongParagraphsBroken(text));
    m_text = text;
    updateGeometry();
}

void TextWell::setEditableText(const QString& text)
{
    m_editor->setReadOnly(false);
    m_editor->setPlainText(withLongParagraphsBroken(text));
    updateGeometry();
}

QString TextWell::text() const
{
    return fromDocument(m_editor->document()->toRawText());
}

bool TextWell::isBlank() const
{
    for (QTextBlock block = m_editor->document()->begin(); block.isValid(); block = block.next()) {
        // A block's end counts as a character. There may be a million empty ones.
        const bool isEmpty = block.length() <= 1;
        if (!isEmpty && !text::isBlank(withParagraphsJoined(block.text()))) {
            return false;
        }
    }
    return true;
}

void TextWell::setPlaceholder(const QString& placeholder)
{
    m_editor->setPlaceholderText(placeholder);
}

void TextWell::setMaximumSectionHeight(int height)
{
    m_maximumHeight = height;
    setMaximumHeight(height);
    updateGeometry();
}

void TextWell::setLabel(const QString& label)
{
    m_editor->setAccessibleName(label);
}

int TextWell::heightForWidth(int width) const
{
    const int padding = 2 * verticalPadding + slack;
    const int inner = width - 2 * horizontalPadding;
    const double text =
        wrappedTextHeight(m_text, m_editor->font(), std::max(1, inner), m_maximumHeight);
    return std::min(m_maximumHeight, int(std::ceil(text)) + padding);
}

QSize TextWell::sizeHint() const
{
    const int height = hasHeightForWidth() ? heightForWidth(width()) : minimumSizeHint().height();
    return {10 * fontMetrics().averageCharWidth(), height};
}

QSize TextWell::minimumSizeHint() const
{
    return {0, m_editor->fontMetrics().height() + 2 * verticalPadding + slack};
}

void TextWell::resizeEvent(QResizeEvent*)
{
    // Not by a layout, whose own idea of the height would stand in for that of the text.
    m_editor->setGeometry(
        rect().adjusted(horizontalPadding, verticalPadding, -horizontalPadding, -verticalPadding));
    const int barWidth = m_scrollBar->sizeHint().width();
    m_scrollBar->setGeometry(width() - barWidth - scrollBarInset, verticalPadding / 2, barWidth,
                             height() - verticalPadding);
}

void TextWell::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    TranslatorContentWellModifier{m_theme.tokens(), cornerRadius()}.paint(painter, rect(),
                                                                          m_theme.colors());
}

void TextWell::setInCard(bool isInCard)
{
    m_isInCard = isInCard;
    restyle();
}

double TextWell::cornerRadius() const
{
    return m_isInCard ? m_theme.tokens().controlRadius() : m_theme.tokens().wellRadius();
}

void TextWell::restyle()
{
    const ThemeColors& colors = m_theme.colors();
    m_editor->setFont(m_theme.font(StyleFontRole::body));
    QPalette palette = m_editor->palette();
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.tertiaryText);
    palette.setColor(QPalette::Disabled, QPalette::Text, colors.disabledText);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        palette.setColor(group, QPalette::Highlight, colors.textSelection);
        palette.setColor(group, QPalette::HighlightedText, colors.text);
    }
    m_editor->setPalette(palette);
    setProperty(focusRadiusProperty, cornerRadius());
    updateGeometry();
    update();
}

} // namespace zelvane
