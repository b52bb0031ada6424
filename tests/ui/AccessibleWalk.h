#pragma once

#include <QAccessible>
#include <QString>
#include <QStringList>
#include <QWidget>

namespace zelvane::test {

/// Whether users act on an element of this role, so that it needs a name to be found by.
inline bool needsName(QAccessible::Role role)
{
    switch (role) {
    case QAccessible::Button:
    case QAccessible::ButtonMenu:
    case QAccessible::CheckBox:
    case QAccessible::RadioButton:
    case QAccessible::ComboBox:
    case QAccessible::EditableText:
    case QAccessible::List:
    case QAccessible::Slider:
    case QAccessible::SpinBox:
    case QAccessible::Link:
    case QAccessible::MenuItem:
    case QAccessible::PopupMenu:
    case QAccessible::Dialog:
    case QAccessible::AlertMessage:
    case QAccessible::Window:
        return true;
    default:
        return false;
    }
}

inline void collectElements(QAccessibleInterface* element, QStringList& named, QStringList& unnamed)
{
    if (!element || element->state().invisible) {
        return;
    }
    if (needsName(element->role())) {
        const QString name = element->text(QAccessible::Name);
        if (name.isEmpty()) {
            const QObject* object = element->object();
            unnamed += object ? QString::fromLatin1(object->metaObject()->className())
                              : QStringLiteral("(no object)");
        } else {
            named += name;
        }
    }
    for (int i = 0; i < element->childCount(); ++i) {
        collectElements(element->child(i), named, unnamed);
    }
}

/// The classes of the visible controls in `window` that a screen reader has no name for.
inline QStringList unnamedControls(QWidget& window)
{
    QStringList named;
    QStringList unnamed;
    collectElements(QAccessible::queryAccessibleInterface(&window), named, unnamed);
    return unnamed;
}

/// The names that a screen reader has for the visible controls, in the order of the walk.
inline QStringList controlNames(QWidget& window)
{
    QStringList named;
    QStringList unnamed;
    collectElements(QAccessible::queryAccessibleInterface(&window), named, unnamed);
    return named;
}

} // namespace zelvane::test
