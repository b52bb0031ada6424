#pragma once

#include "ui/components/AnimatedValue.h"

#include <QList>
#include <QStringList>
#include <QWidget>

class QRadioButton;

namespace zelvane {

/// A choice among a few values that are all in view. The arrow keys go from one to the next.
class SegmentedControl final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the control.
    explicit SegmentedControl(const Theme& theme, QWidget* parent = nullptr);

    /// Replaces the segments; the first one is chosen.
    void setSegments(const QStringList& texts);
    /// Changes what the segments say; as many as there are.
    void setTexts(const QStringList& texts);

    [[nodiscard]] int count() const { return int(m_segments.size()); }
    /// -1 without segments.
    [[nodiscard]] int currentIndex() const { return m_current; }
    void setCurrentIndex(int index);

    [[nodiscard]] const QList<QRadioButton*>& segments() const { return m_segments; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user has chosen another segment.
    void activated(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void choose(int index);
    void arrange();
    [[nodiscard]] QRectF segmentRect(double place) const;

    const Theme& m_theme;
    /// Owned by Qt's tree.
    QList<QRadioButton*> m_segments;
    int m_current = -1;
    /// The place of the raised part, in segments from the leading edge.
    AnimatedValue m_place;
};

} // namespace zelvane
