#pragma once

#include "ui/settings/SettingsServices.h"
#include "ui/style/Theme.h"

#include <QWidget>

namespace zelvane {

/// What a shortcut is being chosen for.
struct HotKeyCapture
{
    QString label;
    std::optional<KeyChord> present;
    /// What the program uses for something else.
    QSet<KeyChord> reserved;
    /// Called with the new chord; none if it is to be removed.
    std::function<void(const std::optional<KeyChord>&)> save;
};

/// Opens the sheet that listens for a shortcut over the window of `owner`, which outlives it or
/// takes it along. The program's own shortcuts are suspended meanwhile, so that pressing one shows
/// that it is taken instead of translating.
void captureHotKey(const Theme& theme, SettingsServices& services, QWidget& owner,
                   HotKeyCapture capture);

} // namespace zelvane
