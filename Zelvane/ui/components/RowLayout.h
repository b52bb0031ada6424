#pragma once

#include <QLayout>

#include <vector>

namespace zelvane {

/// Puts what a row is about at its beginning and its controls at its end. Where both have no room
/// beside one another, as with very large letters, the controls go below, in as many lines as they
/// need. Controls alone run on from line to line. Mirrored in languages that run from right to
/// left.
class RowLayout final : public QLayout
{
    Q_OBJECT

public:
    explicit RowLayout(QWidget* parent = nullptr);
    ~RowLayout() override;
    Q_DISABLE_COPY_MOVE(RowLayout)

    /// What the row is about: it takes the room that the controls leave. All that is added to the
    /// layout otherwise is a control.
    void setContent(QLayout* content);

    void addItem(QLayoutItem* item) override;
    [[nodiscard]] QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    [[nodiscard]] int count() const override { return int(m_items.size()); }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSize() const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    void setGeometry(const QRect& rect) override;
    void invalidate() override;

private:
    /// Where each item stands in a row at 0, 0; an empty place for those that don't show.
    struct Arrangement
    {
        std::vector<QRect> places;
        int height = 0;
    };

    [[nodiscard]] bool isControl(const QLayoutItem& item) const;
    [[nodiscard]] int controlsWidth() const;
    /// Known from the last time, if nothing has changed since: the layouts around ask often.
    [[nodiscard]] const Arrangement& arranged(int width) const;
    [[nodiscard]] Arrangement arrange(int width) const;
    void arrangeBeside(Arrangement& arrangement, int width) const;
    void arrangeBelow(Arrangement& arrangement, int width) const;
    [[nodiscard]] int contentHeight(int width) const;

    std::vector<QLayoutItem*> m_items;
    QLayoutItem* m_content = nullptr; ///< one of the items
    mutable Arrangement m_arrangement;
    mutable int m_arrangedWidth = -1; ///< the width that `m_arrangement` is for
};

} // namespace zelvane
