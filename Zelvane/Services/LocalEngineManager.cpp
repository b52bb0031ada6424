#include "Services/LocalEngineManager.h"

#include "Services/EngineFiles.h"
#include "Services/EngineRecord.h"
#include "pipeline/TranslationError.h"

#include <QFileInfo>

namespace zelvane {

namespace {

QString folderOf(LocalEngineManager::Variant variant)
{
    return variant == LocalEngineManager::Variant::standard ? QStringLiteral("nllb")
                                                            : QStringLiteral("madlad-7b");
}

qint64 revisionOf(LocalEngineManager::Variant variant)
{
    return variant == LocalEngineManager::Variant::standard ? 3 : 2;
}

bool isComplete(const QString& folder, qint64 revision)
{
    const auto recorded = readEngineRevision(folder + QStringLiteral("/READY"));
    return recorded && *recorded == revision &&
           QFileInfo::exists(folder + QStringLiteral("/model")) &&
           QFileInfo::exists(folder + QStringLiteral("/python/bin/python3"));
}

} // namespace

LocalEngineManager::LocalEngineManager(Variant variant, const QString& root)
    : m_variant(variant)
    , m_folder(root + u'/' + folderOf(variant))
{
    refreshStatus();
}

void LocalEngineManager::refreshStatus()
{
    m_state.diskUsageBytes = folderSize(m_folder);
    // Nothing installs this engine, so that its status is never another one than these.
    if (isComplete(m_folder, revisionOf(m_variant))) {
        m_state.status = engine_status::Ready{};
    } else {
        m_state.status = engine_status::NotInstalled{};
    }
}

void LocalEngineManager::hold(std::unique_ptr<LocalEngineChild> child)
{
    m_process = std::move(child);
}

void LocalEngineManager::await(const QString& request, const Completion<QString>& reply)
{
    m_pending.insert(request, reply);
}

void LocalEngineManager::stop()
{
    if (m_process && m_process->isRunning()) {
        m_process->write("{\"id\":\"unload\",\"cmd\":\"unload\"}\n");
        m_process->terminate();
    }
    m_process.reset();
    // Emptied first: who waited may ask again.
    const auto pending = std::exchange(m_pending, {});
    for (const Completion<QString>& reply : pending) {
        reply.fail(TranslationError(TranslationError::Code::offlineEngineBusy));
    }
}

} // namespace zelvane
