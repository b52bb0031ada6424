#include "main/ProgramCore.h"

#include "desktop/RetiredModelFolders.h"
#include "glossary/GlossaryNames.h"
#include "main/Platform.h"
#include "settings/SystemLanguage.h"

namespace zelvane {

ProgramCore::ProgramCore(UserStore& store, const QString& key, Clock& clock, StopSequence& stop)
    : m_keyOfThisRun(key)
    , m_clock(clock)
    , m_stop(stop)
    , m_defaults(store.defaults())
    , m_applicationSupport(store.locations().applicationSupportDirectory())
    , m_secretBackend(openSecretStore())
    , m_secrets(m_defaults, *m_secretBackend)
    , m_settings(m_defaults, m_secrets, systemLanguage(currentSystemLocale()).name, &m_worker)
    , m_trace(clock)
    , m_engines(clock, m_defaults, m_trace, {m_defaults, m_secrets})
    , m_machineEngines({store.locations(), m_engines.transport(), clock, m_defaults, m_settings,
                        OfflineEngines::AtCreation::sweep})
    , m_glossary(glossaryFolder(store.applicationSupport()))
    , m_glossaryManager({m_defaults, m_engines.transport(), clock, store.applicationSupport(),
                         glossarySystemLanguage(currentSystemLocale())})
    , m_dispatch(m_settings, m_defaults, m_trace,
                 m_machineEngines.among(m_engines.forDispatch(&m_glossary)))
    , m_hostedStartUp(m_engines.hosted(), m_settings)
{
    QObject::connect(&m_glossaryManager, &GlossaryManager::directionChanged, &m_glossaryManager,
                     [this](const QString& direction) { m_glossary.invalidate(direction); });
    if (!key.isEmpty()) {
        m_settings.setApiKey(key);
    }
    OfflineEngines& engines = m_machineEngines.engines();
    QObject::connect(&m_settings, &AppSettings::providerSwitched, &m_settings,
                     [&engines](AIProvider provider) { engines.providerSwitched(provider); });
    m_stop.aboutToStop([&engines] { return engines.shutDown(); });
}

void ProgramCore::deleteRetiredModels()
{
    m_tasks.start([this](std::stop_token stop) {
        const auto folder = m_applicationSupport;
        return m_worker.run([folder] { deleteRetiredModelFolders(folder); }, std::move(stop));
    });
}

} // namespace zelvane
