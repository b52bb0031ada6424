#pragma once

#include "ui/settings/SettingsPage.h"
#include "ui/settings/SettingsServices.h"

namespace zelvane {

/// What the program needs of the desktop to read and replace selected text.
class AccessibilityPage final : public SettingsPage
{
    Q_OBJECT

public:
    /// Both must outlive the page.
    AccessibilityPage(const Theme& theme, SettingsServices& services);
};

} // namespace zelvane
