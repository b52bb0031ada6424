#pragma once

#include "ui/style/Theme.h"

#include <QLabel>

#include <functional>

namespace zelvane {

/// What a text's colour says.
enum class TextTone {
    primary,
    secondary,
    tertiary,
    success,
    warning,
    danger,
    link,
};

[[nodiscard]] QColor toneColor(const ThemeColors& colors, TextTone tone);

/// A plain text in a role of the type scale. It never reads its text as markup.
class ThemedLabel final : public QLabel
{
    Q_OBJECT

public:
    using Role = StyleFontRole TypographyTokens::*;

    /// The font is what the token `role` names at each moment. `theme` must outlive the label.
    ThemedLabel(const Theme& theme, Role role, TextTone tone, QWidget* parent = nullptr);
    ThemedLabel(const Theme& theme, StyleFontRole role, TextTone tone, QWidget* parent = nullptr);

    /// Whether a text that doesn't fit ends in an ellipsis, with the whole in the tool tip, instead
    /// of widening the window. Only for labels of one line.
    void setElides(bool elides);

    void setTone(TextTone tone);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void restyle();

    const Theme& m_theme;
    std::function<StyleFontRole()> m_role;
    TextTone m_tone;
    bool m_elides = false;
};

} // namespace zelvane
