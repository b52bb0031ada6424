#include "ui/gallery/Scenes.h"

#include "foundation/SystemClock.h"
#include "glossary/GlossaryManager.h"
#include "support/FakeHttpTransport.h"
#include "support/FakeSecretBackend.h"
#include "ui/settings/SettingsView.h"
#include "ui/sheets/APIKeyEditSheet.h"
#include "ui/sheets/HotKeyBindSheet.h"
#include "ui/sheets/PromptEditSheet.h"

#include "ui/licenses/ModelLicensesSheet.h"

#include <QTemporaryDir>

namespace zelvane::gallery {

namespace {

using State = AccessibilityPermission::State;

class NoInspector final : public SessionInspector
{
public:
    [[nodiscard]] QCoro::Task<SessionCapabilities> inspect() override
    {
        const SessionCapabilities found{SessionKind::x11,        Availability::available,
                                        Availability::available, Availability::available,
                                        Availability::available, Availability::available};
        co_return found;
    }
};

/// How the scene differs from a fresh profile.
struct Situation
{
    SettingsCategory category = SettingsCategory::translation;
    AIProvider provider = AIProvider::smartOffline;
    EngineStatus engine = engine_status::NotInstalled{};
    bool downloads = false;
    State permission = State::granted;
    std::function<void(const Theme&, SettingsView&)> open = {};
};

class SettingsExhibit final : public Exhibit
{
public:
    SettingsExhibit(const Stage& stage, const Situation& situation)
        : m_permission(situation.permission)
    {
        m_settings.setUseOwnAI(true);
        m_settings.setProvider(situation.provider);
        QCoreApplication::processEvents();
        m_settings.setApiKey(QStringLiteral("sk-0123456789abcdef"));
        QList<LanguagePair> pairs = m_settings.pairs();
        pairs[0].hotKey = KeyChord{17, KeyChord::control | KeyChord::option};
        m_settings.setPairs(pairs);
        m_engine.status = situation.engine;
        m_engine.diskUsageBytes = 4'700'000'000;
        if (situation.downloads) {
            EngineDownloadProgress progress;
            progress.downloadedBytes = 1'900'000'000;
            progress.totalBytes = 4'624'648'896;
            progress.bytesPerSecond = 11'500'000;
            progress.remainingBytes = 2'724'648'896;
            progress.etaSeconds = 236;
            progress.elapsedSeconds = 165;
            m_engine.downloadProgress = progress;
        }
        m_view = std::make_unique<SettingsView>(stage.theme, m_services, m_clock);
        m_view->select(situation.category);
        m_view->resize(m_view->minimumSize());
        m_view->show();
        if (situation.open) {
            situation.open(stage.theme, *m_view);
        }
    }

    [[nodiscard]] QWidget* window() override { return m_view.get(); }

private:
    static QCoro::Task<QList<RemoteModel>> models(AIProvider, QString, std::stop_token)
    {
        const QList<RemoteModel> listed{{QStringLiteral("gpt-a"), QStringLiteral("gpt-a")}};
        co_return listed;
    }

    static QCoro::Task<QString> installId(std::stop_token)
    {
        co_return QStringLiteral("5f0c1a52-9f6e-4c55-9a0b-6f4a5f2f5c11");
    }

    QTemporaryDir m_folder;
    OverlayUserDefaults m_defaults;
    test::FakeSecretBackend m_backend;
    SecretStore m_secrets{m_defaults, m_backend};
    AppSettings m_settings{m_defaults, m_secrets, QStringLiteral("German")};
    SystemClock m_clock;
    test::FakeHttpTransport m_transport;
    GlossaryManager m_glossaries{{m_defaults,
                                  m_transport,
                                  m_clock,
                                  m_folder.path(),
                                  {QStringLiteral("de"), QStringLiteral("German")}}};
    EngineState m_engine;
    QProperty<State> m_permission;
    NoInspector m_inspector;
    PermissionModel m_permissionModel{
        &m_permission, m_inspector, m_clock, {[] {}, [](const QString&) {}}};
    SettingsServices m_services{
        .settings = m_settings,
        .defaults = m_defaults,
        .fetchModels = &SettingsExhibit::models,
        .engine =
            [this](SmartOfflineVariant) {
                return EngineControls{&m_engine, [] {}, [] {}, [] {},
                                      [] { return qint64(4'624'648'896); }};
            },
        .providerPicked = [](AIProvider) {},
        .glossaries = m_glossaries,
        .reloadHotKeys = [] {},
        .suspendHotKeys = [] {},
        .isHeldElsewhere = {},
        .optionMenuChanged = [] {},
        .permissionState = QBindable<State>(&m_permission),
        .permission = m_permissionModel,
        .resetWindowLocations = [] {},
        .installId = &SettingsExhibit::installId,
        .writeToClipboard = [](const QString&) {},
    };
    std::unique_ptr<SettingsView> m_view;
};

Scene scene(const QString& name, const Situation& situation)
{
    return {QStringLiteral("settings-") + name, [situation](const Stage& stage) {
                return std::make_unique<SettingsExhibit>(stage, situation);
            }};
}

} // namespace

QList<Scene> settingsScenes()
{
    using enum SettingsCategory;
    const engine_status::Installing installing{QStringLiteral("Downloading Hy-MT2 model…"), 0.45};
    const engine_status::Failed failed{QStringLiteral("hymt2-7b-q4-k-m download size mismatch: "
                                                      "expected 4624648896, got 4624648895.")};
    return {
        scene(QStringLiteral("translation"), {}),
        scene(QStringLiteral("translation-key"), {.provider = AIProvider::chatGPT}),
        scene(QStringLiteral("translation-deepl"), {.provider = AIProvider::deepL}),
        scene(QStringLiteral("translation-installing"), {.engine = installing, .downloads = true}),
        scene(QStringLiteral("translation-failed"), {.engine = failed}),
        scene(QStringLiteral("translation-ready"), {.engine = engine_status::Ready{}}),
        scene(QStringLiteral("languages"), {.category = languages}),
        scene(QStringLiteral("behavior"), {.category = behavior}),
        scene(QStringLiteral("behavior-denied"),
              {.category = behavior, .permission = State::denied}),
        scene(QStringLiteral("accessibility"), {.category = accessibility}),
        scene(QStringLiteral("accessibility-stale"),
              {.category = accessibility, .permission = State::stale}),
        scene(QStringLiteral("about"), {.category = general}),
        scene(QStringLiteral("sheet-keys"),
              {.category = languages,
               .open =
                   [](const Theme& theme, SettingsView& view) {
                       (new HotKeyBindSheet(
                            theme, view,
                            std::make_unique<HotKeyBindModel>(QStringLiteral("ANY-DE"),
                                                              std::nullopt, QSet<KeyChord>())))
                           ->present();
                   }}),
        scene(QStringLiteral("sheet-prompt"),
              {.open =
                   [](const Theme& theme, SettingsView& view) {
                       (new PromptEditSheet(
                            theme, view,
                            std::make_unique<PromptEditModel>(QStringLiteral("ANY-DE"), QString())))
                           ->present();
                   }}),
        scene(QStringLiteral("sheet-key"),
              {.provider = AIProvider::chatGPT,
               .open =
                   [](const Theme& theme, SettingsView& view) {
                       (new APIKeyEditSheet(
                            theme, view,
                            APIKeyEditModel(QStringLiteral("ChatGPT"), QStringLiteral("sk-123"))))
                           ->present();
                   }}),
        scene(
            QStringLiteral("sheet-licenses"),
            {.category = general,
             .open = [](const Theme& theme,
                        SettingsView& view) { (new ModelLicensesSheet(theme, view))->present(); }}),
    };
}

} // namespace zelvane::gallery
