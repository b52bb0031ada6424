#pragma once

#include "ui/components/ThemedLabel.h"

#include <QList>
#include <QWidget>

class QGridLayout;

namespace zelvane {

/// A short text with the symbol that stands before it.
struct SymbolLine
{
    QString symbol; ///< a name of the icon set
    QString text;

    friend bool operator==(const SymbolLine&, const SymbolLine&) = default;
};

/// Small facts, each with its symbol, two beside each other. A text that is too long for that gets
/// the whole width, and wraps if it must.
class SymbolLines final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the lines.
    explicit SymbolLines(const Theme& theme, QWidget* parent = nullptr);

    /// Shows these, in reading order; hides itself if there are none.
    void setLines(const QList<SymbolLine>& lines);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    class Line;

    void restyle();
    void arrange();

    const Theme& m_theme;
    qsizetype m_shown = 0;
    // All owned by Qt's tree.
    QList<Line*> m_lines;
    QGridLayout* m_grid;
};

} // namespace zelvane
