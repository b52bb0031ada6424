#include "desktop/linux/ClipboardExchange.h"
#include "desktop/linux/X11AccessibilityPlatform.h"
#include "desktop/linux/X11HotKeyRegistrar.h"
#include "desktop/linux/X11KeystrokePoster.h"
#include "desktop/linux/X11MouseTap.h"
#include "desktop/linux/X11Pasteboard.h"
#include "desktop/linux/X11Session.h"
#include "desktop/linux/atspi/AtSpiFocusInspector.h"
#include "main/Platform.h"
#include "settings/linux/LibSecretBackend.h"
#include "ui/linux/XcbEventFilter.h"
#include "ui/linux/XcbSession.h"

#include <xcb/xcb.h>

namespace zelvane {

namespace {

/// The connection of the interface, null if that isn't on X11.
xcb_connection_t* interfaceConnection()
{
    const auto session = currentXcbSession();
    return session ? session->connection : nullptr;
}

/// A desktop under X11. Keys go over one connection; the clipboard is served over another one.
/// Right clicks are taken over that of the interface, whose menu they open.
class LinuxDesktop final : public Desktop
{
public:
    LinuxDesktop(std::unique_ptr<X11Session> session, Clock& clock,
                 std::function<void()> showPrompt)
        : m_session(std::move(session))
        , m_keystrokes(*m_session, m_exchange, clock)
        , m_hotKeys(*m_session)
        , m_mouseTap(*m_session, interfaceConnection())
        , m_mouseEvents(
              [this](const xcb_generic_event_t& event) { return m_mouseTap.handleEvent(event); })
        , m_focus(clock)
        , m_accessibility(m_session.get(), std::move(showPrompt))
    {
    }

    /// A sentence if the clipboard can't be served.
    [[nodiscard]] std::optional<QString> openPasteboard()
    {
        auto pasteboard = X11Pasteboard::open(m_exchange);
        if (!pasteboard) {
            return pasteboard.error();
        }
        m_pasteboard = std::move(*pasteboard);
        return std::nullopt;
    }

    [[nodiscard]] Pasteboard& pasteboard() override { return *m_pasteboard; }
    [[nodiscard]] KeystrokePoster& keystrokes() override { return m_keystrokes; }
    [[nodiscard]] HotKeyRegistrar& hotKeys() override { return m_hotKeys; }
    [[nodiscard]] FocusInspector& focus() override { return m_focus; }
    [[nodiscard]] MouseTap& mouseTap() override { return m_mouseTap; }
    [[nodiscard]] AccessibilityPlatform& accessibility() override { return m_accessibility; }

    [[nodiscard]] std::optional<QString> shortcoming() const override
    {
        return m_focus.unavailable();
    }

private:
    std::unique_ptr<X11Session> m_session;
    ClipboardExchange m_exchange;
    std::unique_ptr<X11Pasteboard> m_pasteboard;
    X11KeystrokePoster m_keystrokes;
    X11HotKeyRegistrar m_hotKeys;
    X11MouseTap m_mouseTap;
    XcbEventFilter m_mouseEvents;
    AtSpiFocusInspector m_focus;
    X11AccessibilityPlatform m_accessibility;
};

} // namespace

std::unique_ptr<SecretBackend> openSecretStore()
{
    return std::make_unique<LibSecretBackend>();
}

std::optional<QString> whyNoWindows()
{
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool reached = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    if (reached) {
        return std::nullopt;
    }
    const QString display = qEnvironmentVariable("DISPLAY");
    const QString what = display.isEmpty()
                             ? QStringLiteral("there is no X display (DISPLAY is not set)")
                             : QStringLiteral("the X display \"%1\" can't be reached").arg(display);
    return what + QStringLiteral("; \"zelvane-desk translate\" and \"zelvane-desk defaults\" work "
                                 "without one");
}

std::expected<std::unique_ptr<Desktop>, QString> openDesktop(Clock& clock,
                                                             std::function<void()> showPrompt)
{
    auto session = X11Session::open();
    if (!session) {
        return std::unexpected(session.error());
    }
    auto desktop =
        std::make_unique<LinuxDesktop>(std::move(*session), clock, std::move(showPrompt));
    if (const auto problem = desktop->openPasteboard()) {
        return std::unexpected(*problem);
    }
    return desktop;
}

} // namespace zelvane
