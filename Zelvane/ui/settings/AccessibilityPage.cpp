#include "ui/settings/AccessibilityPage.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"
#include "ui/permission/PermissionView.h"

namespace zelvane {

AccessibilityPage::AccessibilityPage(const Theme& theme, SettingsServices& services)
    : SettingsPage(theme, SettingsCategory::accessibility)
{
    auto* why = new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary);
    why->setWordWrap(true);
    addSection(why);
    addSection(new PermissionView(services.permission, theme));
    keepTranslated(*this, [why] {
        why->setText(localizedText(QStringLiteral(
            "Zelvane Desk copies your selection with ⌘C and pastes the translation back with ⌘V, "
            "which macOS only allows for apps trusted in Privacy & Security → Accessibility. "
            "Without it, hotkeys and the ⌥ + right-click menu cannot read the selected text.")));
    });
}

} // namespace zelvane
