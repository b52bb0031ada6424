#pragma once

#include "ui/components/ControlPainting.h"
#include "ui/style/Theme.h"

#include <QAbstractButton>

namespace zelvane {

/// A button with a text, and a symbol before it if it has one.
class TextButton final : public QAbstractButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the button.
    TextButton(const Theme& theme, ControlKind kind, QWidget* parent = nullptr);

    /// A name of the icon set; empty for none.
    void setSymbol(const QString& name);
    [[nodiscard]] QString symbol() const { return m_symbol; }

    void setKind(ControlKind kind);
    [[nodiscard]] ControlKind kind() const { return m_kind; }

    /// The key that presses the button, shown behind its text: "⌘C". Display only.
    void setKeyHint(const QString& hint);
    [[nodiscard]] QString keyHint() const { return m_keyHint; }

    /// A text for which the button keeps room besides its own, so that a change between both moves
    /// nothing.
    void setAlternativeText(const QString& text);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] int textWidth(const QString& text) const;
    [[nodiscard]] int symbolSize() const;
    [[nodiscard]] int leadingWidth() const;
    [[nodiscard]] int trailingWidth() const;
    [[nodiscard]] QFont keyHintFont() const;

    const Theme& m_theme;
    ControlKind m_kind;
    QString m_symbol;
    QString m_keyHint;
    QString m_alternativeText;
};

/// A small square button that shows nothing but a symbol. A checkable one shows the accent while it
/// is checked.
class IconButton final : public QAbstractButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the button. `symbol` is a name of the icon set.
    IconButton(const Theme& theme, QString symbol, QWidget* parent = nullptr,
               ControlKind kind = ControlKind::bordered);

    void setSymbol(const QString& name);
    [[nodiscard]] QString symbol() const { return m_symbol; }

    /// What a screen reader says and the tool tip shows; `hint` only the latter, after the label.
    void setLabel(const QString& label, const QString& hint = {});

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] QColor symbolColor() const;

    const Theme& m_theme;
    QString m_symbol;
    ControlKind m_kind;
};

} // namespace zelvane
