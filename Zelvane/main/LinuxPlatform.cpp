#include "Services/linux/LinuxChildProcesses.h"
#include "Services/linux/PsProcessTable.h"
#include "desktop/AbsentDesktop.h"
#include "desktop/linux/AutostartLoginItem.h"
#include "desktop/linux/ClipboardExchange.h"
#include "desktop/linux/KeyCodes.h"
#include "desktop/linux/X11AccessibilityPlatform.h"
#include "desktop/linux/X11HotKeyRegistrar.h"
#include "desktop/linux/X11KeystrokePoster.h"
#include "desktop/linux/X11MouseTap.h"
#include "desktop/linux/X11Pasteboard.h"
#include "desktop/linux/X11Session.h"
#include "desktop/linux/atspi/AtSpiFocusInspector.h"
#include "main/Platform.h"
#include "settings/linux/LibSecretBackend.h"
#include "ui/linux/SessionEnd.h"
#include "ui/linux/XcbEventFilter.h"
#include "ui/linux/XcbSession.h"

#include <QDBusConnection>

#include <expected>
#include <utility>

namespace zelvane {

namespace {

/// The connection of the interface, null if that isn't on X11.
xcb_connection_t* interfaceConnection()
{
    const auto session = currentXcbSession();
    return session ? session->connection : nullptr;
}

/// A session whose desktop the program can work in: keys go over one connection to the X server,
/// the clipboard is served over another one. Right clicks are taken over that of the interface,
/// whose menu they open.
struct X11Adapters
{
    X11Adapters(std::unique_ptr<X11Session> opened, Clock& clock)
        : session(std::move(opened))
        , keystrokes(*session, exchange, clock)
        , hotKeys(*session)
        , mouseTap(*session, interfaceConnection())
        , mouseEvents(
              [this](const xcb_generic_event_t& event) { return mouseTap.handleEvent(event); })
    {
    }

    std::unique_ptr<X11Session> session;
    ClipboardExchange exchange;
    std::unique_ptr<X11Pasteboard> pasteboard;
    X11KeystrokePoster keystrokes;
    X11HotKeyRegistrar hotKeys;
    X11MouseTap mouseTap;
    XcbEventFilter mouseEvents;
};

/// The adapters, or a sentence about what of them can't be had.
std::expected<std::unique_ptr<X11Adapters>, QString> openX11(Clock& clock)
{
    auto session = X11Session::open();
    if (!session) {
        return std::unexpected(session.error());
    }
    auto adapters = std::make_unique<X11Adapters>(std::move(*session), clock);
    auto pasteboard = X11Pasteboard::open(adapters->exchange);
    if (!pasteboard) {
        return std::unexpected(pasteboard.error());
    }
    adapters->pasteboard = std::move(*pasteboard);
    return adapters;
}

/// What there is where not all can be had, for telling the user.
InputAbilities abilitiesOfServer()
{
    const auto has = [](XExtension extension) {
        return XcbConnection::open({}, {extension}).has_value();
    };
    return {has(XExtension::xtest), has(XExtension::xinput2)};
}

struct AbsentAdapters
{
    AbsentPasteboard pasteboard;
    AbsentKeystrokes keystrokes;
    AbsentHotKeys hotKeys;
    AbsentMouseTap mouseTap;
};

class LinuxDesktop final : public Desktop
{
public:
    LinuxDesktop(Clock& clock, DesktopRequests requests)
        : m_x11(openX11(clock))
        , m_focus(clock)
        , m_abilities(m_x11 ? InputAbilities{true, true} : abilitiesOfServer())
        , m_accessibility(m_x11 ? (*m_x11)->session.get() : nullptr,
                          {std::move(requests.showPrompt), std::move(requests.relaunch)})
    {
    }

    [[nodiscard]] Pasteboard& pasteboard() override
    {
        return m_x11 ? static_cast<Pasteboard&>(*(*m_x11)->pasteboard) : m_absent.pasteboard;
    }
    [[nodiscard]] KeystrokePoster& keystrokes() override
    {
        return m_x11 ? static_cast<KeystrokePoster&>((*m_x11)->keystrokes) : m_absent.keystrokes;
    }
    [[nodiscard]] HotKeyRegistrar& hotKeys() override
    {
        return m_x11 ? static_cast<HotKeyRegistrar&>((*m_x11)->hotKeys) : m_absent.hotKeys;
    }
    [[nodiscard]] FocusInspector& focus() override { return m_focus; }
    [[nodiscard]] MouseTap& mouseTap() override
    {
        return m_x11 ? static_cast<MouseTap&>((*m_x11)->mouseTap) : m_absent.mouseTap;
    }
    [[nodiscard]] AccessibilityPlatform& accessibility() override { return m_accessibility; }

    [[nodiscard]] InputAbilities inputAbilities() const override { return m_abilities; }

    [[nodiscard]] std::optional<QString> shortcoming() const override
    {
        return m_x11 ? m_focus.unavailable() : m_x11.error();
    }

private:
    std::expected<std::unique_ptr<X11Adapters>, QString> m_x11;
    AbsentAdapters m_absent;
    AtSpiFocusInspector m_focus;
    InputAbilities m_abilities;
    X11AccessibilityPlatform m_accessibility;
};

} // namespace

std::unique_ptr<SecretBackend> openSecretStore()
{
    return std::make_unique<LibSecretBackend>();
}

std::unique_ptr<ChildProcessLauncher> openChildProcesses()
{
    return std::make_unique<LinuxChildProcesses>();
}

std::unique_ptr<ProcessTable> openProcessTable(ChildProcessLauncher& launcher, Clock& clock)
{
    return std::make_unique<PsProcessTable>(launcher, clock);
}

std::unique_ptr<QObject> watchSessionEnd(std::function<void()> onEnd)
{
    return std::make_unique<SessionEnd>(QDBusConnection::sessionBus(), QDBusConnection::systemBus(),
                                        std::move(onEnd));
}

std::unique_ptr<LoginItem> openLoginItem(const QStringList& command, Worker& worker)
{
    return std::make_unique<AutostartLoginItem>(AutostartFile(autostartFolder(), command), worker);
}

std::unique_ptr<Desktop> openDesktop(Clock& clock, DesktopRequests requests)
{
    return std::make_unique<LinuxDesktop>(clock, std::move(requests));
}

std::optional<quint32> virtualCodeOfKeyEvent(const QKeyEvent& event)
{
    // The symbol says which key the user means on this layout; with Shift it is that of another
    // one, and the key's place decides.
    if (const auto code = virtualCodeForSymbol(event.nativeVirtualKey())) {
        return code;
    }
    return virtualCodeForPosition(xcb_keycode_t(event.nativeScanCode()));
}

} // namespace zelvane
