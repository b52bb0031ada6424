#pragma once

#include "ui/style/DesktopAppearance.h"
#include "ui/style/StyleTweaker.h"
#include "ui/style/ThemeColors.h"

#include <QFont>
#include <QObject>

namespace zelvane {

/// What a view needs to look right: the tokens, the colours and the fonts of this moment.
///
/// Views hold a reference and repaint on `changed`. Main thread only; a QGuiApplication must exist.
class Theme final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object.
    Theme(StyleTweaker& tokens, DesktopAppearance& appearance);

    [[nodiscard]] const StyleTweaker& tokens() const { return m_tokens; }
    [[nodiscard]] const DesktopAppearance& appearance() const { return m_appearance; }
    [[nodiscard]] const ThemeColors& colors() const { return m_colors; }
    /// Whether panels hide what is behind them: no blur takes the edge off it, or the user wants
    /// so.
    [[nodiscard]] bool opaquePanels() const;
    /// Scales with the font that the user set for the system.
    [[nodiscard]] QFont font(StyleFontRole role) const;

Q_SIGNALS:
    /// Tokens, colours or the abilities of the desktop have changed.
    void changed();

private:
    void update();

    StyleTweaker& m_tokens;
    DesktopAppearance& m_appearance;
    ThemeColors m_colors;
};

/// The font of a role beside a body text in `systemFont`.
[[nodiscard]] QFont fontForRole(StyleFontRole role, const QFont& systemFont,
                                const QFont& monospacedFont);

} // namespace zelvane
