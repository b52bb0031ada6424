#include "ui/style/DesktopAppearance.h"

namespace zelvane {

DesktopAppearance::DesktopAppearance(QObject* parent)
    : QObject(parent)
{
}

} // namespace zelvane
