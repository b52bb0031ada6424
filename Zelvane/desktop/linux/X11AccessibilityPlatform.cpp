#include "desktop/linux/X11AccessibilityPlatform.h"

#include <QCoreApplication>
#include <QProcess>

#include <xcb/xinput.h>

namespace zelvane {

X11AccessibilityPlatform::X11AccessibilityPlatform(X11Session* session,
                                                   std::function<void()> onPrompt)
    : m_session(session)
    , m_onPrompt(std::move(onPrompt))
{
}

bool X11AccessibilityPlatform::isProcessTrusted() const
{
    return m_session && !m_session->isLost(); // a session has all extensions
}

bool X11AccessibilityPlatform::probeEventTap()
{
    // A listener rather than a grab: a grab would take a key from the user for a moment.
    return isProcessTrusted() && listenForKeys(true) && listenForKeys(false);
}

bool X11AccessibilityPlatform::listenForKeys(bool listen)
{
    const struct
    {
        xcb_input_event_mask_t head;
        quint32 events;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           listen ? quint32(XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS) : 0};
    XcbConnection& connection = m_session->connection();
    const auto request =
        xcb_input_xi_select_events_checked(connection.get(), connection.root(), 1, &mask.head);
    const XcbOwned<xcb_generic_error_t> error(xcb_request_check(connection.get(), request));
    return !error && !connection.isLost();
}

void X11AccessibilityPlatform::showPrompt()
{
    if (m_onPrompt) {
        m_onPrompt();
    }
}

void X11AccessibilityPlatform::relaunch()
{
    if (isProcessTrusted()) {
        // The new instance asks for the hotkeys while this one still ends.
        XcbConnection& connection = m_session->connection();
        xcb_ungrab_key(connection.get(), XCB_GRAB_ANY, connection.root(), XCB_MOD_MASK_ANY);
        connection.sync();
    }
    // The file of this very program, wherever it was started from.
    QProcess::startDetached(QStringLiteral("/proc/self/exe"),
                            QCoreApplication::arguments().sliced(1));
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                              Qt::QueuedConnection);
}

} // namespace zelvane
