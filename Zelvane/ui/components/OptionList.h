#pragma once

#include "ui/style/Theme.h"

#include <QAbstractListModel>
#include <QListView>

namespace zelvane {

class SlimScrollBar;

/// An entry of an `OptionList`.
struct ListOption
{
    QString text;
    /// Names of the icon set; empty for none.
    QString symbol;
    QString trailingSymbol;

    friend bool operator==(const ListOption&, const ListOption&) = default;
};

/// A scrolling list of which one entry is chosen by a click or with Return. It paints its entries
/// only while they are in view.
class OptionList final : public QListView
{
    Q_OBJECT

public:
    /// `theme` must outlive the list.
    explicit OptionList(const Theme& theme, QWidget* parent = nullptr);
    ~OptionList() override;
    Q_DISABLE_COPY_MOVE(OptionList)

    void setOptions(const QList<ListOption>& options);
    [[nodiscard]] int count() const;
    /// The entry that Return chooses; -1 for none.
    [[nodiscard]] int currentRow() const { return currentIndex().row(); }
    /// Brings the entry into view as well, the first one into the middle of it.
    void setCurrentRow(int row);

Q_SIGNALS:
    void chosen(int row);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    class Options;
    class Painter;

    const Theme& m_theme;
    // All owned by Qt's tree.
    Options* m_options;
    SlimScrollBar* m_bar;
};

} // namespace zelvane
