#include "ui/settings/HotKeyCapture.h"

#include "ui/sheets/HotKeyBindSheet.h"

#include <utility>

namespace zelvane {

void captureHotKey(const Theme& theme, SettingsServices& services, QWidget& owner,
                   HotKeyCapture capture)
{
    auto* sheet = new HotKeyBindSheet(
        theme, *owner.window(),
        std::make_unique<HotKeyBindModel>(std::move(capture.label), capture.present,
                                          std::move(capture.reserved), services.isHeldElsewhere));
    QObject::connect(sheet, &HotKeyBindSheet::saved, &owner, std::move(capture.save));
    // After the chord has been saved, so that one registration does for both.
    QObject::connect(sheet, &QObject::destroyed, &owner, [&services] { services.reloadHotKeys(); });
    services.suspendHotKeys();
    sheet->present();
}

} // namespace zelvane
