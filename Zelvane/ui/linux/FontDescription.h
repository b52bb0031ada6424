#pragma once

#include <QFont>
#include <QString>

#include <optional>

namespace zelvane {

/// The font of a description as desktops of the GNOME family store it: "Cantarell 11", "Noto Sans
/// Semi-Bold Italic 10.5". None without a family and a size.
[[nodiscard]] std::optional<QFont> fontFromDescription(const QString& description);

/// Whether Qt leaves the font of this desktop to plug-ins that may be missing, so that the setting
/// has to be read. `currentDesktop` is the value of XDG_CURRENT_DESKTOP.
[[nodiscard]] bool keepsFontInDescription(const QString& currentDesktop);

} // namespace zelvane
