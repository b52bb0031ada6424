#include "desktop/FocusInspector.h"

#include <QSet>

namespace zelvane {

namespace {

const QSet<QString>& staticRoles()
{
    static const QSet<QString> roles{
        QStringLiteral("AXStaticText"), QStringLiteral("AXHeading"),
        QStringLiteral("AXImage"),      QStringLiteral("AXLink"),
        QStringLiteral("AXMenuItem"),   QStringLiteral("AXMenuButton"),
        QStringLiteral("AXCheckBox"),   QStringLiteral("AXRadioButton"),
    };
    return roles;
}

} // namespace

bool isStatic(const std::optional<FocusedElement>& element)
{
    if (!element || element->editable == true || element->selectedTextSettable ||
        element->valueSettable) {
        return false;
    }
    return element->editable == false || staticRoles().contains(element->role);
}

} // namespace zelvane
