#include "desktop/Pasteboard.h"

#include "settings/Localization.h"

namespace zelvane {

QString PasteboardError::description() const
{
    return localizedText(QStringLiteral(
        "The clipboard could not be saved: the program that owns it does not answer."));
}

} // namespace zelvane
