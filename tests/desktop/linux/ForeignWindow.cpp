#include "ForeignWindow.h"

#include <cstdlib>
#include <stdexcept>

namespace zelvane::test {

using namespace std::chrono_literals;

ForeignWindow::ForeignWindow(const QByteArray& display, const QByteArray& title)
    : ForeignProgram(display)
{
    const quint32 events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                           XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
    xcb_change_window_attributes(connection(), window(), XCB_CW_EVENT_MASK, &events);
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window(), XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, quint32(title.size()), title.constData());
    // Window managers give the keyboard only to windows that say that they want it.
    const quint32 hints[9] = {1, 1};
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window(), XCB_ATOM_WM_HINTS,
                        XCB_ATOM_WM_HINTS, 32, 9, hints);
    xcb_map_window(connection(), window());
    const auto end = std::chrono::steady_clock::now() + 3s;
    while (std::chrono::steady_clock::now() < end) {
        const auto cookie = xcb_get_window_attributes(connection(), window());
        auto* attributes = xcb_get_window_attributes_reply(connection(), cookie, nullptr);
        const bool isVisible = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
        std::free(attributes);
        if (isVisible) {
            return;
        }
        (void)nextEvent(5ms);
    }
    throw std::runtime_error("the foreign window did not appear");
}

void ForeignWindow::focus() const
{
    xcb_set_input_focus(connection(), XCB_INPUT_FOCUS_PARENT, window(), XCB_CURRENT_TIME);
    (void)clipboardOwner(); // a round trip
}

void ForeignWindow::close() const
{
    xcb_destroy_window(connection(), window());
    (void)clipboardOwner();
}

QStringList ForeignWindow::keys() const
{
    return arrived(XCB_KEY_PRESS, XCB_KEY_RELEASE);
}

QStringList ForeignWindow::clicks() const
{
    return arrived(XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE);
}

QStringList ForeignWindow::arrived(int pressKind, int releaseKind) const
{
    (void)clipboardOwner();
    QStringList events;
    while (const auto event = nextEvent(0ms)) {
        const int kind = event->response_type & 0x7f;
        if (kind == pressKind || kind == releaseKind) {
            // Events of buttons have the form of those of keys.
            const auto* key = reinterpret_cast<const xcb_key_press_event_t*>(event.get());
            events.append(QStringLiteral("%1%2:%3")
                              .arg(QChar(kind == pressKind ? u'+' : u'-'))
                              .arg(key->detail)
                              .arg(key->state & 0xff));
        }
    }
    return events;
}

} // namespace zelvane::test
