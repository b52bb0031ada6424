// Starts a child that would run for long, prints its process identifier, and waits to be killed.

#include "Services/linux/LinuxChildProcesses.h"

#include <QCoreApplication>

#include <cstdio>

namespace zelvane {
namespace {

QCoro::Task<void> startChild(ChildProcessLauncher& launcher, std::unique_ptr<ChildProcess>& child)
{
    ChildProcessCommand command;
    command.executable = QStringLiteral("/bin/sleep");
    command.arguments = {QStringLiteral("60")};
    ChildProcess::Listener listener;
    child = co_await launcher.launch(std::move(command), std::move(listener));
    std::printf("%d\n", child->pid());
    std::fflush(stdout);
}

} // namespace
} // namespace zelvane

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    zelvane::LinuxChildProcesses launcher;
    std::unique_ptr<zelvane::ChildProcess> child;
    zelvane::startChild(launcher, child);
    return QCoreApplication::exec();
}
