#include "ui/settings/AccessibilityPage.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"
#include "ui/permission/PermissionView.h"

#include <QVBoxLayout>

namespace zelvane {

AccessibilityPage::AccessibilityPage(const Theme& theme, SettingsServices& services)
    : SettingsPage(theme, SettingsCategory::accessibility)
{
    auto* why = new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary);
    why->setWordWrap(true);
    auto* here = new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::primary);
    here->setWordWrap(true);
    auto* words = new QWidget;
    auto* column = new QVBoxLayout(words);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(qRound(theme.tokens().spacing().sm));
    column->addWidget(why);
    column->addWidget(here);
    addSection(words);
    addSection(new PermissionView(services.permission, theme));
    keepTranslated(*this, [why, here] {
        why->setText(localizedText(QStringLiteral(
            "Zelvane Desk copies your selection with ⌘C and pastes the translation back with ⌘V, "
            "which macOS only allows for apps trusted in Privacy & Security → Accessibility. "
            "Without it, hotkeys and the ⌥ + right-click menu cannot read the selected text.")));
        here->setText(localizedText(QStringLiteral(
            "On Linux there is nothing to switch on: what works depends on your session, as shown "
            "here.")));
    });
}

} // namespace zelvane
