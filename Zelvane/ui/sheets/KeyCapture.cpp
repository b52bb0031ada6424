#include "ui/sheets/KeyCapture.h"

#include "ui/sheets/HotKeyBindModel.h"

#include <utility>

namespace zelvane {

namespace {

VirtualCodeOf& translation()
{
    static VirtualCodeOf installed;
    return installed;
}

bool isModifier(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
        return true;
    default:
        return false;
    }
}

} // namespace

void installKeyTranslation(VirtualCodeOf virtualCodeOf)
{
    translation() = std::move(virtualCodeOf);
}

CapturedKey capturedKey(const QKeyEvent& event)
{
    CapturedKey captured;
    const Qt::KeyboardModifiers held = event.modifiers();
    const auto flag = [&](Qt::KeyboardModifier modifier, quint64 bit) {
        captured.eventFlags |= held.testFlag(modifier) ? bit : 0;
    };
    flag(Qt::ShiftModifier, 0x20000);
    flag(Qt::ControlModifier, 0x40000);
    flag(Qt::AltModifier, 0x80000);
    flag(Qt::MetaModifier, 0x100000);
    captured.isModifier = isModifier(event.key());
    if (event.key() == Qt::Key_Escape) {
        captured.code = HotKeyBindModel::escapeKeyCode;
    } else if (const auto code = translation() ? translation()(event) : std::nullopt) {
        captured.code = *code;
    } else {
        captured.eventFlags = 0; // a key of no code makes no chord
    }
    return captured;
}

} // namespace zelvane
