#pragma once

#include "ui/style/Theme.h"

#include <QAbstractButton>
#include <QWidget>

namespace zelvane {

/// A symbol that steps through pages, faint while it can't act.
class ChevronButton final : public QAbstractButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the button. `symbol` is a name of the icon set.
    ChevronButton(const Theme& theme, QString symbol, QWidget* parent = nullptr);

    [[nodiscard]] QString symbol() const { return m_symbol; }
    /// How strongly the symbol shows, 0 to 1.
    [[nodiscard]] double symbolOpacity() const;

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const Theme& m_theme;
    QString m_symbol;
};

/// A row of dots, one for each page, of which that of the current page stands out.
class PageDots final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the dots.
    PageDots(const Theme& theme, int count, QWidget* parent = nullptr);

    [[nodiscard]] int count() const { return m_count; }
    [[nodiscard]] int index() const { return m_index; }
    void setIndex(int index);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    /// Says in words which page it is.
    void rename();

    const Theme& m_theme;
    int m_count;
    int m_index = 0;
};

} // namespace zelvane
