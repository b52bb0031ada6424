#include "ui/components/SymbolLines.h"

#include "ui/components/Styling.h"
#include "ui/style/Symbols.h"

#include <QGridLayout>
#include <QHBoxLayout>

namespace zelvane {

namespace {

constexpr int columns = 2;
constexpr int symbolGap = 6;
constexpr int lineGap = 4;

/// The symbol is as high as a line of the text, so that both stand on one level.
int symbolSide(const QFont& font)
{
    return QFontMetrics(font).height();
}

} // namespace

class SymbolLines::Line final : public QWidget
{
public:
    explicit Line(const Theme& theme)
        : m_theme(theme)
        , m_symbol(new QLabel)
        , m_text(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    {
        m_text->setWordWrap(true);
        auto* row = new QHBoxLayout(this);
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(symbolGap);
        row->addWidget(m_symbol, 0, Qt::AlignTop);
        row->addWidget(m_text, 1);
    }

    void show(const SymbolLine& line)
    {
        m_name = line.symbol;
        m_text->setText(line.text);
        restyle();
        setVisible(true);
    }

    void restyle()
    {
        m_symbol->setPixmap(symbolPixmap(m_name, m_theme.colors().secondaryText,
                                         symbolSide(m_text->font()), devicePixelRatioF()));
    }

    /// What it takes to stay on one line.
    [[nodiscard]] int fullWidth() const
    {
        return symbolSide(m_text->font()) + symbolGap +
               m_text->fontMetrics().horizontalAdvance(m_text->text()) + 1;
    }

private:
    const Theme& m_theme;
    QString m_name;
    // All owned by Qt's tree.
    QLabel* m_symbol;
    ThemedLabel* m_text;
};

SymbolLines::SymbolLines(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setVerticalSpacing(lineGap);
    for (int column = 0; column < columns; ++column) {
        m_grid->setColumnStretch(column, 1);
        m_grid->setColumnMinimumWidth(column, 1);
    }
    hide();
    keepStyled(*this, theme, [this] { restyle(); });
}

void SymbolLines::setLines(const QList<SymbolLine>& lines)
{
    while (m_lines.size() < lines.size()) {
        m_lines.append(new Line(m_theme));
    }
    m_shown = lines.size();
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        if (i < m_shown) {
            m_lines[i]->show(lines[i]);
        } else {
            m_lines[i]->hide();
        }
    }
    setVisible(!lines.isEmpty());
    arrange();
}

void SymbolLines::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void SymbolLines::restyle()
{
    m_grid->setHorizontalSpacing(qRound(m_theme.tokens().spacing().md));
    for (Line* line : std::as_const(m_lines)) {
        line->restyle();
    }
    arrange();
}

void SymbolLines::arrange()
{
    const int columnWidth = (width() - m_grid->horizontalSpacing()) / columns;
    int place = 0;
    for (qsizetype i = 0; i < m_shown; ++i) {
        const bool isWide = m_lines[i]->fullWidth() > columnWidth;
        if (isWide && place % columns != 0) {
            ++place; // it begins a row
        }
        m_grid->addWidget(m_lines[i], place / columns, place % columns, 1, isWide ? columns : 1);
        place += isWide ? columns : 1;
    }
}

} // namespace zelvane
