#pragma once

#include "ui/components/AnimatedValue.h"

#include <QAbstractButton>

namespace zelvane {

/// A row to be pressed or chosen: a symbol, a text, and something at the end. A checkable row shows
/// its selection. The arrow keys go from row to row.
class ListRow final : public QAbstractButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the row. `text` is its name for screen readers as well.
    ListRow(const Theme& theme, const QString& text, QWidget* parent = nullptr);

    /// A name of the icon set; empty for none.
    void setSymbol(const QString& name);
    /// A text at the end of the row, and a symbol of the icon set behind it.
    void setTrailing(const QString& text, const QString& symbol = {});

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const Theme& m_theme;
    QString m_symbol;
    QString m_trailing;
    QString m_trailingSymbol;
    AnimatedValue m_hover;
};

/// Paints what a row shows, for rows that aren't widgets.
struct RowContent
{
    QString symbol;
    QString text;
    QString trailing;
    QString trailingSymbol;
    QColor color;
    QColor trailingColor;
};

void paintRowContent(QPainter& painter, const QRect& row, const RowContent& content,
                     Qt::LayoutDirection direction);

} // namespace zelvane
