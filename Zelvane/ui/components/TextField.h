#pragma once

#include "ui/style/Theme.h"

#include <QLineEdit>

namespace zelvane {

class IconButton;

/// A field for one line of text.
class TextField : public QLineEdit
{
    Q_OBJECT

public:
    /// `theme` must outlive the field.
    explicit TextField(const Theme& theme, QWidget* parent = nullptr);

    /// For identifiers and keys, whose characters must be told apart.
    void setMonospaced(bool monospaced);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

    [[nodiscard]] const Theme& theme() const { return m_theme; }

private:
    void restyle();

    const Theme& m_theme;
    bool m_monospaced = false;
};

/// A field that narrows down what is listed, with a button that empties it. Esc empties it first,
/// and only then leaves.
class SearchField final : public TextField
{
    Q_OBJECT

public:
    /// `theme` must outlive the field. The placeholder is its name for screen readers as well.
    explicit SearchField(const Theme& theme, QWidget* parent = nullptr);

    void setPrompt(const QString& prompt);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void arrange();

    IconButton* m_clear; ///< owned by Qt's tree
};

} // namespace zelvane
