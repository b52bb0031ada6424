#include "main/DesktopProgram.h"

#include "foundation/StopSequence.h"
#include "foundation/SystemClock.h"
#include "foundation/UnixSignals.h"
#include "main/DesktopParts.h"
#include "main/DesktopReport.h"
#include "main/Platform.h"
#include "main/ProgramCore.h"
#include "main/UserStore.h"
#include "settings/Localization.h"

#include <QApplication>

namespace zelvane {

namespace {

void nameApplication()
{
    QApplication::setApplicationName(QStringLiteral("Zelvane Desk"));
    QApplication::setDesktopFileName(QStringLiteral("org.zelvane.desk"));
    QApplication::setQuitOnLastWindowClosed(false);
}

} // namespace

int runDesktopProgram(const CommandLine& line, const QString& key, int argc, char** argv)
{
    SystemClock clock;
    UserStore store(line.profile);
    installLocalization(&store.defaults());
    // Before Qt, which ends the process by itself where there is no display.
    if (const auto reason = whyNoWindows()) {
        complain(*reason);
        return int(ExitStatus::failure);
    }
    QApplication application(argc, argv);
    nameApplication();
    StopSequence stop(clock, [] { QApplication::quit(); });
    const UnixSignals endInOrder([&stop](int) { stop.begin(); });

    // What is made first ends last: the clipboard is handed over before engines are waited for.
    ProgramCore core(store, key, clock, stop);
    const auto desktop = openDesktop(clock, [] {});
    if (!desktop) {
        complain(desktop.error());
        return int(ExitStatus::failure);
    }
    DesktopParts parts(core, **desktop);
    if (line.report) {
        reportOn(parts.model());
    }
    parts.launch();
    const ShortcomingNotice notice(**desktop, clock);
    return QApplication::exec();
}

} // namespace zelvane
