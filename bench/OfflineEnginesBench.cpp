// What the engines on this machine cost a launch that has none installed, and one that has all.

#include "Services/OfflineEngines.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "settings/UserDefaults.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace zelvane {
namespace {

/// Nothing is started here: a launch without strays and translations starts only `ps`, elsewhere.
class NoProcesses final : public ChildProcessLauncher, public ProcessTable
{
public:
    [[nodiscard]] QCoro::Task<std::unique_ptr<ChildProcess>>
    launch(ChildProcessCommand command, ChildProcess::Listener /*listener*/) override
    {
        throw ChildLaunchError(command.executable, QString());
    }
    [[nodiscard]] QCoro::Task<std::optional<QByteArray>> listing(std::stop_token /*stop*/) override
    {
        co_return std::nullopt;
    }
    [[nodiscard]] bool isRunning(qint32 /*pid*/) const override { return false; }
    void terminate(qint32 /*pid*/) override {}
    void kill(qint32 /*pid*/) override {}
};

/// A runtime of forty libraries and a model that takes no room on the disk.
void install(const QString& root, SmartOfflineVariant variant)
{
    const EngineFiles files(root, factsOf(variant));
    QDir().mkpath(files.serverFolder());
    QDir().mkpath(files.modelFolder());
    QFile server(files.server());
    server.open(QIODevice::WriteOnly);
    server.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (int i = 0; i < 40; ++i) {
        QFile library(files.serverFolder() + QStringLiteral("/lib%1.so").arg(i));
        library.open(QIODevice::WriteOnly);
    }
    QFile model(files.model());
    model.open(QIODevice::WriteOnly);
    model.resize(files.facts().expectedModelBytes);
    (void)files.writeReadyRecord();
}

/// What the launch does: all engines are made, and told to stop.
void launchOfOfflineEngines(benchmark::State& state)
{
    static int argc = 1;
    static char name[] = "bench";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    const QTemporaryDir root;
    if (state.range(0) != 0) {
        for (const SmartOfflineVariant variant : smartOfflineVariants()) {
            install(root.path(), variant);
        }
    }
    SystemClock clock;
    NetworkHttpTransport transport(clock);
    NoProcesses processes;
    StraySweep sweep(processes, clock);
    const OverlayUserDefaults defaults;
    for (auto _ : state) {
        OfflineEngines engines({.root = root.path(),
                                .server = {processes, transport, clock, sweep},
                                .defaults = defaults,
                                .archiveFolders = {},
                                .selectedProvider = [] { return AIProvider::zelvane; },
                                .atCreation = OfflineEngines::AtCreation::sweep});
        engines.stopAllOfflineEngines();
        engines.stopLocalEngines();
    }
}
BENCHMARK(launchOfOfflineEngines)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace zelvane
