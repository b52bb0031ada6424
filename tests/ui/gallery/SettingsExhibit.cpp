#include "ui/gallery/SettingsExhibit.h"

#include "foundation/Completion.h"
#include "ui/glossary/GlossaryDownloadsModel.h"

#include <QDir>

namespace zelvane::gallery {

namespace {

GlossaryLanguage language(const QString& name)
{
    return *resolveGlossaryLanguage(name);
}

/// French first, then one after the other.
QList<GlossaryPackage> somePackages(qsizetype count)
{
    QList<GlossaryPackage> packages;
    QStringList sources = GlossaryDownloadsModel::glossaryLanguageOptions();
    sources.move(sources.indexOf(QStringLiteral("French")), 0);
    for (const QString& target :
         {QStringLiteral("English (US)"), QStringLiteral("Swedish"), QStringLiteral("Turkish")}) {
        for (const QString& source : sources) {
            const GlossaryPackage package{language(source), language(target)};
            if (package.source.code.left(2) != package.target.code.left(2) &&
                packages.size() < count) {
                packages.append(package);
            }
        }
    }
    return packages;
}

/// Puts the dictionaries where the program looks for them.
UserDefaults& withGlossaries(qsizetype count, UserDefaults& defaults, const QString& folder)
{
    const QList<GlossaryPackage> packages = somePackages(count);
    QDir().mkpath(glossaryFolder(folder));
    for (const GlossaryPackage& package : packages) {
        for (const GlossaryDirection& direction : package.directions()) {
            QFile file(glossaryFile(folder, direction.key()));
            if (file.open(QIODevice::WriteOnly)) {
                file.resize(1'480'000);
            }
        }
    }
    defaults.setValue(QStringLiteral("zv.glossaryPackages.") + glossaryEdition(),
                      encodePackages(packages));
    return defaults;
}

QCoro::Task<QString> installId(std::stop_token)
{
    co_return QStringLiteral("5f0c1a52-9f6e-4c55-9a0b-6f4a5f2f5c11");
}

} // namespace

SessionCapabilities fullSession()
{
    return {SessionKind::x11,        Availability::available, Availability::available,
            Availability::available, Availability::available, Availability::available};
}

SettingsExhibit::SettingsExhibit(const Stage& stage, const Situation& situation)
    : m_theme(stage.theme)
    , m_situation(situation)
    , m_glossaries({withGlossaries(situation.glossaries, m_defaults, m_folder.path()), m_transport,
                    m_clock, m_folder.path(), language(QStringLiteral("German"))})
    , m_permission(situation.permission)
    , m_services(services())
{
    m_inspector.session = situation.session;
    m_settings.setUseOwnAI(situation.useOwnAI);
    m_settings.setProvider(situation.provider);
    QCoreApplication::processEvents();
    m_settings.setApiKey(situation.apiKey);
    QList<LanguagePair> pairs = m_settings.pairs();
    pairs[0].hotKey = KeyChord{17, KeyChord::control | KeyChord::option};
    m_settings.setPairs(pairs);
    m_engine.status = situation.engine;
    m_engine.diskUsageBytes = 4'700'000'000;
    m_engine.downloadProgress = situation.download;
    if (situation.prepare) {
        situation.prepare(m_settings);
    }
    m_view = std::make_unique<SettingsView>(stage.theme, m_services, m_clock);
    if (situation.open) {
        m_view->select(situation.category);
    }
    const QSize least = m_view->minimumSize();
    m_view->resize(least.width(), std::max(least.height(), situation.height));
    m_view->show();
}

void SettingsExhibit::takeStep()
{
    if (m_situation.open) {
        m_situation.open(*this);
    } else {
        m_view->select(m_situation.category);
    }
}

SettingsServices SettingsExhibit::services()
{
    return {
        .settings = m_settings,
        .defaults = m_defaults,
        .fetchModels =
            [this](AIProvider, const QString&, std::stop_token stop) {
                return models(m_situation.listing, std::move(stop));
            },
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
        .permissionState = QBindable<AccessibilityPermission::State>(&m_permission),
        .permission = m_permissionModel,
        .resetWindowLocations = [] {},
        .installId = &installId,
        .writeToClipboard = [](const QString&) {},
    };
}

QCoro::Task<QList<RemoteModel>> SettingsExhibit::models(ModelListing listing, std::stop_token stop)
{
    const Completion<void> answer;
    const std::stop_callback onStop(stop, [answer] { answer.fail(CancellationError()); });
    if (listing == ModelListing::isAwaited) {
        co_await answer.result();
    }
    if (listing == ModelListing::fails) {
        throw TransportError(TransportError::Kind::connection,
                             QStringLiteral("Connection refused"));
    }
    QList<RemoteModel> listed;
    if (listing == ModelListing::comes) {
        for (const QString& name : {QStringLiteral("gpt-5-nano"), QStringLiteral("gpt-5-mini")}) {
            listed.append({name, name});
        }
    }
    co_return listed;
}

Scene settingsScene(const QString& name, const Situation& situation)
{
    return {QStringLiteral("settings-") + name,
            [situation](const Stage& stage) {
                return std::make_unique<SettingsExhibit>(stage, situation);
            },
            situation.open || situation.category != SettingsCategory::translation};
}

} // namespace zelvane::gallery
