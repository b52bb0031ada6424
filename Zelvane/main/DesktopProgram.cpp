#include "main/DesktopProgram.h"

#include "foundation/EndDeadline.h"
#include "foundation/StopSequence.h"
#include "foundation/SystemClock.h"
#include "foundation/UnixSignals.h"
#include "main/DesktopParts.h"
#include "main/DesktopReport.h"
#include "main/Platform.h"
#include "main/ProgramCore.h"
#include "main/ProgramFile.h"
#include "main/UserStore.h"
#include "settings/Localization.h"

#include <QApplication>

#include <tuple>
#include <utility>

namespace zelvane {

namespace {

/// How a run ended.
struct End
{
    int status = 0;
    /// The user wants the program back.
    bool relaunch = false;
};

void nameApplication()
{
    QApplication::setApplicationName(QStringLiteral("Zelvane Desk"));
    QApplication::setApplicationVersion(QStringLiteral(ZELVANE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.zelvane.desk"));
    QApplication::setQuitOnLastWindowClosed(false);
}

/// What starts the program as it runs now, with the session.
QStringList loginCommand(const CommandLine& line)
{
    QStringList command{programFile(), QStringLiteral("--quiet")};
    if (!line.profile.isEmpty()) {
        command << QStringLiteral("--profile") << line.profile;
    }
    return command;
}

QCoro::Task<void> limitTheEnd()
{
    beginEndDeadline();
    co_return;
}

QCoro::Task<void> nothing()
{
    co_return;
}

/// Offers the program to the session until it stops: a start from then on waits for its end.
void offerUntilStop(std::unique_ptr<SessionPresence>& presence, const QString& profile,
                    DesktopParts& parts, StopSequence& stop)
{
    presence = offerToSession(profile, parts.services(), parts.control());
    if (const auto shortcoming = presence->shortcoming()) {
        complain(*shortcoming);
    }
    stop.aboutToStop([&presence] {
        presence.reset();
        return nothing();
    });
}

End runToTheEnd(const CommandLine& line, const QString& key, int argc, char** argv)
{
    SystemClock clock;
    UserStore store(line.profile);
    installLocalization(&store.defaults());
    if (const auto reason = chooseDisplay()) {
        complain(*reason);
        return {.status = int(ExitStatus::failure)};
    }
    QApplication application(argc, argv);
    nameApplication();
    const auto instance = becomeOnlyInstance(line.profile);
    if (!instance) {
        complain(instance.error());
        return {.status = int(ExitStatus::failure)};
    }
    if (!*instance) {
        return {.status = int(ExitStatus::success)};
    }
    // Not by way of "quit", which every window could refuse.
    StopSequence stop(clock, [] { QApplication::exit(int(ExitStatus::success)); });
    stop.aboutToStop([] { return limitTheEnd(); });
    const UnixSignals endInOrder([&stop](int) { stop.begin(); }, beginEndDeadline);
    const auto sessionEnd = watchSessionEnd([&stop] { stop.begin(); });

    End end;
    DesktopParts* running = nullptr;
    DesktopRequests requests{.showPrompt = [&running] { running->showPermission(); },
                             .relaunch =
                                 [&end, &stop] {
                                     end.relaunch = true;
                                     stop.begin();
                                 }};

    // What is made first ends last: the clipboard is handed over before engines are waited for.
    ProgramCore core(store, key, clock, stop);
    const auto desktop = openDesktop(clock, std::move(requests));
    DesktopParts parts(core, *desktop,
                       line.quiet ? DesktopParts::Start::quiet : DesktopParts::Start::byUser,
                       loginCommand(line));
    running = &parts;
    if (line.report) {
        reportOn(parts.model());
    }
    parts.launch();
    std::unique_ptr<SessionPresence> presence;
    offerUntilStop(presence, line.profile, parts, stop);
    const ShortcomingNotice notice(*desktop, clock);
    end.status = QApplication::exec();
    return end;
}

/// The arguments of this start, for another one that the user asks for.
QStringList argumentsForAnother(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    arguments.removeAll(QStringLiteral("--quiet")); // the user asks for it
    return arguments;
}

} // namespace

int runDesktopProgram(const CommandLine& line, const QString& key, int argc, char** argv)
{
    std::ignore = programFile(); // while it can't have been replaced
    const QStringList arguments = argumentsForAnother(argc, argv);
    const End end = runToTheEnd(line, key, argc, argv);
    if (end.relaunch) {
        // Now that its shortcuts, its clipboard and its name on the bus are free.
        startProgramAgain(arguments, key);
    }
    return end.status;
}

} // namespace zelvane
