#pragma once

#include "Services/ChildProcess.h"
#include "Services/ProcessTable.h"
#include "cli/RunningProgram.h"
#include "desktop/AccessibilityPermission.h"
#include "desktop/FocusInspector.h"
#include "desktop/HotKeyRegistrar.h"
#include "desktop/KeystrokePoster.h"
#include "desktop/LoginItem.h"
#include "desktop/MouseTap.h"
#include "desktop/Pasteboard.h"
#include "desktop/ProgramControl.h"
#include "desktop/ServicesProvider.h"
#include "foundation/Clock.h"
#include "foundation/Worker.h"
#include "settings/SecretBackend.h"

#include <QKeyEvent>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace zelvane {

/// What the session's input can be made to do.
struct InputAbilities
{
    bool pressesKeys = false;
    bool watchesKeys = false;
};

/// The desktop that the program runs on, through this platform's adapters.
class Desktop
{
public:
    Desktop() = default;
    virtual ~Desktop() = default;
    Q_DISABLE_COPY_MOVE(Desktop)

    [[nodiscard]] virtual Pasteboard& pasteboard() = 0;
    [[nodiscard]] virtual KeystrokePoster& keystrokes() = 0;
    [[nodiscard]] virtual HotKeyRegistrar& hotKeys() = 0;
    [[nodiscard]] virtual FocusInspector& focus() = 0;
    [[nodiscard]] virtual MouseTap& mouseTap() = 0;
    [[nodiscard]] virtual AccessibilityPlatform& accessibility() = 0;

    [[nodiscard]] virtual InputAbilities inputAbilities() const = 0;

    /// What the desktop lacks, and what works all the same, in a sentence; none while nothing is
    /// known to be missing.
    [[nodiscard]] virtual std::optional<QString> shortcoming() const = 0;
};

/// Calls `onEnd` when the desktop session or the machine is about to end, for as long as the result
/// lives. The application object must exist.
[[nodiscard]] std::unique_ptr<QObject> watchSessionEnd(std::function<void()> onEnd);

/// The record by which the desktop starts the program with the session. `command` is what it is to
/// run: a file and its arguments. `worker` must outlive the record.
[[nodiscard]] std::unique_ptr<LoginItem> openLoginItem(const QStringList& command, Worker& worker);

/// The user's store of secrets.
[[nodiscard]] std::unique_ptr<SecretBackend> openSecretStore();

/// What starts other programs. None is started before it is asked to.
[[nodiscard]] std::unique_ptr<ChildProcessLauncher> openChildProcesses();

/// The processes of this machine, which `launcher` asks for. Both must outlive it.
[[nodiscard]] std::unique_ptr<ProcessTable> openProcessTable(ChildProcessLauncher& launcher,
                                                             Clock& clock);

/// Has Qt show its windows where the program can do most, unless the user has chosen. Yields why
/// this session can't show windows, and what works all the same, in a sentence; none if it can.
/// To be called before the application object is made, which ends the process in that case.
[[nodiscard]] std::optional<QString> chooseDisplay();

/// What the desktop has the program do for the user.
struct DesktopRequests
{
    /// Tells how to let the program press keys.
    std::function<void()> showPrompt;
    /// Starts the program anew when this one has ended, and ends it.
    std::function<void()> relaunch;
};

/// The session's desktop. Where a session lets no program press keys it stands for that: the
/// permission is denied, and `shortcoming` says what is missing. `clock` must outlive the desktop.
[[nodiscard]] std::unique_ptr<Desktop> openDesktop(Clock& clock, DesktopRequests requests);

/// Keeps this process the only running program of its profile.
class OnlyInstance
{
public:
    OnlyInstance() = default;
    virtual ~OnlyInstance() = default;
    Q_DISABLE_COPY_MOVE(OnlyInstance)
};

/// Null if the program runs already; it has then been told that it was started again. The error is
/// a sentence: it runs and can't be told. Waits for some seconds at most. The application object
/// must exist.
[[nodiscard]] std::expected<std::unique_ptr<OnlyInstance>, QString>
becomeOnlyInstance(const QString& profile);

/// The program as the other programs of the session find it, as long as this object lives.
class SessionPresence
{
public:
    SessionPresence() = default;
    virtual ~SessionPresence() = default;
    Q_DISABLE_COPY_MOVE(SessionPresence)

    /// What other programs can't do, in a sentence; none if nothing is missing.
    [[nodiscard]] virtual std::optional<QString> shortcoming() const = 0;
};

/// Offers the services and the control to the session. Both must outlive what is returned.
[[nodiscard]] std::unique_ptr<SessionPresence>
offerToSession(const QString& profile, ServicesProvider& services, ProgramControl& control);

/// The program that runs in the desktop session. The error is a sentence: there is no way to it.
/// The application object must exist.
[[nodiscard]] std::expected<std::unique_ptr<RunningProgram>, QString>
reachRunningProgram(const QString& profile);

/// The virtual code, as stored chords have it, of the key of a press in one of the program's
/// windows; none for a key that chords can't be made of.
[[nodiscard]] std::optional<quint32> virtualCodeOfKeyEvent(const QKeyEvent& event);

} // namespace zelvane
