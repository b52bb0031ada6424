#pragma once

#include "Services/ChildProcess.h"
#include "Services/EngineFiles.h"
#include "Services/EngineState.h"
#include "Services/QwenModelDownload.h"
#include "foundation/Clock.h"
#include "foundation/TaskScope.h"
#include "foundation/Worker.h"
#include "http/HttpTransport.h"
#include "settings/UserDefaults.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace zelvane {

/// What a status shows of a failure: the last line of `text` that isn't blank, of a long one the
/// beginning.
[[nodiscard]] QString summarizeFailure(const QString& text);

/// Brings an engine to the disk and takes it away: the runtime out of an archive, the model from
/// the network, and last the record that proves that all is there.
///
/// Whatever ends the program in the middle, what is left is no complete engine and doesn't stand in
/// the way of the next installation. One process at a time installs an engine. Main thread, which
/// is not held up; removed folders go at once and lose their content later.
class SmartEngineInstaller
{
public:
    /// All must outlive the installer.
    struct Parts
    {
        EngineState& state; ///< where progress and outcome are told
        HttpTransport& transport;
        ChildProcessLauncher& launcher;
        Clock& clock;
        const UserDefaults& defaults; ///< may name a mirror of the models
        QStringList archiveFolders;   ///< see `runtimeArchiveFolders`
        /// Ends a server that uses the files.
        std::function<void()> stopServer;
        /// An installation has succeeded.
        std::function<void()> installed;
    };

    SmartEngineInstaller(EngineFiles files, Parts parts);
    /// Ends an installation that is under way, without a further word about it.
    ~SmartEngineInstaller();
    Q_DISABLE_COPY_MOVE(SmartEngineInstaller)

    /// Installs what is missing. Does nothing while an installation is under way. Throws nothing:
    /// the outcome is in the state. `stop` cancels like `cancelInstall`.
    [[nodiscard]] QCoro::Task<void> install(std::stop_token stop = {});

    /// Ends the installation that is under way, if there is one, and removes all of the engine.
    void cancelInstall();

    /// Removes all of the engine, and ends an installation if need be, of another process as well.
    void deleteEngine();

private:
    struct Run;
    using RunPointer = std::shared_ptr<Run>;

    [[nodiscard]] RunPointer beginRun();
    [[nodiscard]] QCoro::Task<void> installFiles(RunPointer run);
    [[nodiscard]] QCoro::Task<void> lock(RunPointer run);
    [[nodiscard]] QCoro::Task<void> prepareRuntime(std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> prepareModel(std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> downloadModel(std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> runProcess(QString executable, QStringList arguments,
                                               std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> takeLeave(RunPointer run, std::exception_ptr error);
    /// False if the failure was no cancellation.
    [[nodiscard]] QCoro::Task<bool> handleCancelledInstall(RunPointer run,
                                                           std::exception_ptr error);
    void finish(const RunPointer& run);
    /// Has `call`, which touches nothing but the disk, run on the worker.
    [[nodiscard]] QCoro::Task<void> onDisk(std::function<void()> call, std::stop_token stop);
    void removeLater(const QString& path);
    void showDownload(const QwenModelDownload::Progress& progress);
    void removeEngine();
    void forgetRun();
    [[nodiscard]] bool isPresent(const RunPointer& run) const { return m_installTask == run; }

    const EngineFiles m_files;
    Parts m_parts;
    /// The installation under way; none if the latest has ended or been cancelled.
    RunPointer m_installTask;
    /// The latest one, which may still be cleaning up.
    std::weak_ptr<Run> m_latest;
    bool m_installCancelledByUser = false;
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
    TaskScope m_removals;
    Worker m_disk;
};

} // namespace zelvane
