#pragma once

#include "Services/CompletionSource.h"
#include "Services/EngineFiles.h"
#include "Services/EngineState.h"
#include "Services/LlamaServer.h"
#include "Services/OfflineTranslator.h"
#include "Services/SmartEngineInstaller.h"
#include "foundation/TaskScope.h"

#include <functional>
#include <stop_token>

namespace zelvane {

/// One translation model on this machine: what is on the disk of it, and its server. Main thread.
class SmartOfflineEngineManager final : public CompletionSource
{
public:
    /// All must outlive this object.
    struct Parts
    {
        LlamaServer::Parts server;
        const UserDefaults& defaults; ///< may name a mirror of the models
        QStringList archiveFolders;   ///< see `runtimeArchiveFolders`
        /// Whether the user works with this engine, so that it is warmed up once it is installed.
        std::function<bool()> isSelected;
        /// Stops the servers of all other engines: only one model may sit in memory.
        std::function<void()> stopOthers;
    };

    /// Looks at the disk.
    SmartOfflineEngineManager(SmartOfflineVariant variant, EngineFiles files, const Parts& parts);

    [[nodiscard]] SmartOfflineVariant variant() const override { return m_variant; }
    [[nodiscard]] const EngineFiles& files() const { return m_files; }

    /// For those who show it.
    [[nodiscard]] const EngineState& state() const { return m_state; }
    [[nodiscard]] EngineStatus status() const override { return m_state.status; }
    [[nodiscard]] const LlamaServer& server() const { return m_server; }

    /// Brings the state up to what the disk tells. Looks at a handful of files.
    void refreshStatus();
    /// The size to show for the engine, in bytes: on the disk, or to be downloaded.
    [[nodiscard]] qint64 displaySizeBytes() const;

    /// Installs what is missing; see `SmartEngineInstaller`, as for the next two.
    [[nodiscard]] QCoro::Task<void> install(std::stop_token stop = {});
    void cancelInstall() { m_installer.cancelInstall(); }
    void deleteEngine() { m_installer.deleteEngine(); }

    /// Ends servers that an earlier run of the program left, in the background.
    void sweepStrays();

    /// Loads the model in the background, if it is there; a load under way goes on. Says in the log
    /// why it could not be done.
    void scheduleWarmUp();
    /// Ends the warm-up; the server stays as it is.
    void cancelWarmUp();

    [[nodiscard]] QCoro::Task<void> ensureServer(GpuLayers layers, std::stop_token stop) override;
    void stopServer() { m_server.stop(); }

    [[nodiscard]] QCoro::Task<std::optional<int>> recordedRevision(std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<QString> requestCompletion(ModelJob job, Attempt attempt,
                                                         std::stop_token stop) override;

    [[nodiscard]] OfflineTranslator& translator() { return m_translator; }

private:
    [[nodiscard]] SmartEngineInstaller::Parts installerParts(const Parts& parts);
    [[nodiscard]] QCoro::Task<void> warmUp(std::stop_token stop);

    const SmartOfflineVariant m_variant;
    const EngineFiles m_files;
    const std::function<bool()> m_isSelected;
    const std::function<void()> m_stopOthers;
    EngineState m_state;
    LlamaServer m_server;
    SmartEngineInstaller m_installer;
    OfflineTranslator m_translator;
    TaskScope m_warmUpTask;
    TaskScope m_sweepTask;
};

} // namespace zelvane
