#pragma once

#include "ui/style/Theme.h"

#include <QWidget>

#include <optional>

class QVBoxLayout;

namespace zelvane {

/// Where a popover of `size` goes: below `anchor` with their leading edges in line, above it where
/// there is no room below, and always within `frame`.
[[nodiscard]] QPoint popoverOrigin(const QRect& anchor, QSize size, const QRect& frame,
                                   Qt::LayoutDirection direction);

/// A floating panel that belongs to what was clicked, and closes on Esc and on a click elsewhere.
/// It has the keyboard while it is open and takes it from no other program's window.
///
/// The shadow is part of the window; sizes and places here are those of the panel alone.
class Popover : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the popover. `parent`, if any, owns it and is where the keyboard goes
    /// afterwards. The corners are those of the tokens' panel unless `cornerRadius` is given.
    explicit Popover(const Theme& theme, QWidget* parent = nullptr,
                     std::optional<double> cornerRadius = std::nullopt);

    /// Fills the popover with `content` and takes it over.
    void setContent(QWidget* content);

    [[nodiscard]] QRect panelFrame() const;
    void setContentSize(QSize size);
    void setPanelOrigin(QPoint origin);

    /// Opens it at `anchor`, in the screen's coordinates, on the screen of it.
    void openAt(const QRect& anchor);

    /// The popovers that are open and belong to no other widget.
    [[nodiscard]] static QList<Popover*> openOnTheirOwn();

Q_SIGNALS:
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void adoptMargins();
    void describe();
    /// The panel in the window's coordinates.
    [[nodiscard]] QRect panelRect() const;

    const Theme& m_theme;
    std::optional<double> m_cornerRadius;
    QVBoxLayout* m_layout; ///< owned by Qt's tree
};

} // namespace zelvane
