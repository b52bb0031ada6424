#pragma once

#include "foundation/StopSequence.h"
#include "foundation/TaskScope.h"
#include "foundation/Worker.h"
#include "glossary/GlossaryManager.h"
#include "glossary/GlossaryStore.h"
#include "main/MachineEngines.h"
#include "main/OnlineEngines.h"
#include "main/UserStore.h"
#include "online/HostedStartUp.h"
#include "pipeline/TranslationDispatch.h"
#include "pipeline/TranslationTrace.h"
#include "settings/AppSettings.h"
#include "settings/SecretStore.h"

#include <QString>

#include <memory>

namespace zelvane {

/// What the program in the desktop session has that needs no window: the settings and all engines,
/// in the order in which they are made. Everything here lives until the program ends.
class ProgramCore
{
public:
    /// `key` is the engine's key for this run; empty if there is none but the stored one. All must
    /// outlive this object.
    ProgramCore(UserStore& store, const QString& key, Clock& clock, StopSequence& stop);

    [[nodiscard]] Clock& clock() { return m_clock; }
    [[nodiscard]] StopSequence& stop() { return m_stop; }
    [[nodiscard]] UserDefaults& defaults() { return m_defaults; }
    /// For calls that may have to wait for another program or the disk.
    [[nodiscard]] Worker& worker() { return m_worker; }
    [[nodiscard]] AppSettings& settings() { return m_settings; }
    /// The key that the program was given for this run; empty if there is none.
    [[nodiscard]] const QString& keyOfThisRun() const { return m_keyOfThisRun; }
    [[nodiscard]] TranslationTrace& trace() { return m_trace; }
    [[nodiscard]] GlossaryStore& glossary() { return m_glossary; }
    [[nodiscard]] GlossaryManager& glossaryManager() { return m_glossaryManager; }
    [[nodiscard]] TranslationDispatch& dispatch() { return m_dispatch; }
    [[nodiscard]] OnlineEngines& onlineEngines() { return m_engines; }
    [[nodiscard]] OfflineEngines& offlineEngines() { return m_machineEngines.engines(); }
    [[nodiscard]] HostedStartUp& hostedStartUp() { return m_hostedStartUp; }

    /// Deletes what older versions downloaded, in the background.
    void deleteRetiredModels();

private:
    const QString m_keyOfThisRun;
    Clock& m_clock;
    StopSequence& m_stop;
    UserDefaults& m_defaults;
    QString m_applicationSupport;
    std::unique_ptr<SecretBackend> m_secretBackend;
    SecretStore m_secrets;
    Worker m_worker;
    AppSettings m_settings;
    TranslationTrace m_trace;
    OnlineEngines m_engines;
    MachineEngines m_machineEngines;
    GlossaryStore m_glossary;
    GlossaryManager m_glossaryManager;
    TranslationDispatch m_dispatch;
    HostedStartUp m_hostedStartUp;
    TaskScope m_tasks;
};

} // namespace zelvane
