#include "ui/gallery/SettingsExhibit.h"

#include "settings/Localization.h"
#include "ui/components/LinkLabel.h"
#include "ui/components/Switch.h"
#include "ui/components/TextWell.h"
#include "ui/language/SearchableLanguagePicker.h"
#include "ui/settings/LanguagePairRow.h"

#include <QTimer>

namespace zelvane::gallery {

namespace {

using enum SettingsCategory;
using State = AccessibilityPermission::State;

/// Room for a page that would scroll otherwise.
constexpr int tall = 840;

EngineDownloadProgress halfway()
{
    EngineDownloadProgress progress;
    progress.downloadedBytes = 1'900'000'000;
    progress.totalBytes = 4'624'648'896;
    progress.bytesPerSecond = 11'500'000;
    progress.remainingBytes = 2'724'648'896;
    progress.etaSeconds = 236;
    progress.elapsedSeconds = 165;
    return progress;
}

EngineDownloadProgress stalled()
{
    EngineDownloadProgress progress = halfway();
    progress.bytesPerSecond = 0;
    progress.etaSeconds.reset();
    progress.idleSeconds = 42;
    return progress;
}

EngineDownloadProgress ofUnknownSize()
{
    EngineDownloadProgress progress = halfway();
    progress.totalBytes.reset();
    progress.remainingBytes.reset();
    progress.etaSeconds.reset();
    return progress;
}

SessionCapabilities barrenSession()
{
    return {SessionKind::wayland,  Availability::missing, Availability::missing,
            Availability::missing, Availability::missing, Availability::missing};
}

Scene withKey(const QString& name, ModelListing listing,
              std::function<void(AppSettings&)> prepare = {})
{
    return settingsScene(
        QStringLiteral("translation-") + name,
        {.provider = AIProvider::chatGPT, .listing = listing, .prepare = std::move(prepare)});
}

QList<Scene> translationScenes()
{
    const engine_status::Installing unpacking{localizedText(QStringLiteral("Unpacking llama.cpp…")),
                                              0.04};
    const engine_status::Installing installing{
        localizedText(QStringLiteral("Downloading Hy-MT2 model…")), 0.45};
    const engine_status::Failed failed{QStringLiteral("hymt2-7b-q4-k-m download size mismatch: "
                                                      "expected 4624648896, got 4624648895.")};
    const auto scene = [](const QString& name, const Situation& situation) {
        return settingsScene(QStringLiteral("translation") + name, situation);
    };
    return {
        scene({}, {}),
        scene(QStringLiteral("-hosted"), {.provider = AIProvider::zelvane, .useOwnAI = false}),
        withKey(QStringLiteral("key"), ModelListing::comes),
        withKey(QStringLiteral("no-key"), ModelListing::comes,
                [](AppSettings& settings) { settings.setApiKey({}); }),
        withKey(QStringLiteral("models-loading"), ModelListing::isAwaited),
        withKey(QStringLiteral("models-failed"), ModelListing::fails),
        withKey(QStringLiteral("models-empty"), ModelListing::isEmpty),
        withKey(QStringLiteral("model-saved"), ModelListing::comes,
                [](AppSettings& settings) {
                    settings.setModel(QStringLiteral("gpt-4o-2024-08-06-long-context"));
                }),
        scene(QStringLiteral("-deepl"), {.provider = AIProvider::deepL}),
        scene(QStringLiteral("-unpacking"), {.engine = unpacking}),
        scene(QStringLiteral("-installing"), {.engine = installing, .download = halfway()}),
        scene(QStringLiteral("-stalled"), {.engine = installing, .download = stalled()}),
        scene(QStringLiteral("-unknown-size"), {.engine = installing, .download = ofUnknownSize()}),
        scene(QStringLiteral("-failed"), {.engine = failed}),
        scene(QStringLiteral("-ready"), {.engine = engine_status::Ready{}}),
        scene(QStringLiteral("-denied"), {.permission = State::denied}),
    };
}

/// A page of pairs that have all that a pair can have, or nothing.
void fill(AppSettings& settings)
{
    while (settings.pairs().size() < maximalPairCount) {
        settings.addPair();
    }
    QList<LanguagePair> pairs = settings.pairs();
    pairs[0].useCustomPrompt = true;
    pairs[0].customPrompt = QStringLiteral("Translate into {{target}}.");
    pairs[1].enabled = false;
    pairs[1].source = QStringLiteral("Chinese (Simplified)");
    pairs[1].target = QStringLiteral("Portuguese (Brazil)");
    settings.setPairs(pairs);
}

/// One glossary that can't be downloaded and one that is on its way, beside one that is there.
void workOnGlossaries(SettingsExhibit& exhibit)
{
    const auto package = [](const char* from, const char* to) {
        return GlossaryPackage{*resolveGlossaryLanguage(QString::fromLatin1(from)),
                               *resolveGlossaryLanguage(QString::fromLatin1(to))};
    };
    QObject* const shown = &exhibit.view();
    exhibit.transport().fail(
        TransportError(TransportError::Kind::connection, QStringLiteral("Connection refused")));
    exhibit.glossaries().install(package("es", "en-US"));
    QTimer::singleShot(100, shown, [&exhibit, package] {
        exhibit.transport().holdDownloads();
        exhibit.glossaries().install(package("de", "en-US"));
    });
    QTimer::singleShot(200, shown, [&exhibit] {
        for (const test::HeldDownload& held : exhibit.transport().heldDownloads()) {
            held.progress({3'100'000, 12'400'000});
        }
    });
}

void proposeGlossaries(AppSettings& settings)
{
    QList<LanguagePair> pairs = settings.pairs();
    pairs.resize(1);
    pairs[0].source = QStringLiteral("Spanish");
    pairs[0].target = QStringLiteral("English (US)");
    settings.setPairs(pairs);
    settings.addPair();
    pairs = settings.pairs();
    pairs[1].source = QStringLiteral("Welsh");
    pairs[1].target = QStringLiteral("German");
    settings.setPairs(pairs);
}

/// The picker of a pair's source, open, with something typed into it.
std::function<void(SettingsExhibit&)> opensPicker(const QString& query)
{
    return [query](SettingsExhibit& exhibit) {
        QTimer::singleShot(100, &exhibit.view(), [&exhibit, query] {
            auto& picker = exhibit.control<LanguagePairRow>().sourcePicker();
            picker.togglePopup();
            picker.searchField()->setText(query);
        });
    };
}

/// The picker of the row for any other glossary, which takes none but the languages that it lists.
void findNoLanguage(SettingsExhibit& exhibit)
{
    QTimer::singleShot(100, &exhibit.view(), [&exhibit] {
        auto& picker = exhibit.control<SearchableLanguagePicker>(4);
        picker.togglePopup();
        picker.searchField()->setText(QStringLiteral("Quenya"));
    });
}

QList<Scene> languagesScenes()
{
    const auto scene = [](const QString& name, Situation situation) {
        situation.category = languages;
        return settingsScene(QStringLiteral("languages") + name, situation);
    };
    return {
        scene({}, {}),
        scene(QStringLiteral("-whole"), {.height = tall}),
        scene(QStringLiteral("-ten"), {.height = tall, .prepare = fill}),
        scene(QStringLiteral("-none"),
              {.prepare = [](AppSettings& settings) { settings.setPairs({}); }}),
        scene(QStringLiteral("-deepl"), {.provider = AIProvider::deepL}),
        scene(QStringLiteral("-glossaries"),
              {.height = tall, .prepare = proposeGlossaries, .open = workOnGlossaries}),
        scene(QStringLiteral("-fifty-glossaries"), {.height = tall, .glossaries = 50}),
        scene(QStringLiteral("-picker"), {.open = opensPicker({})}),
        scene(QStringLiteral("-picker-query"), {.open = opensPicker(QStringLiteral("an"))}),
        scene(QStringLiteral("-picker-custom"), {.open = opensPicker(QStringLiteral("Quenya"))}),
        scene(QStringLiteral("-picker-nothing"), {.height = tall, .open = findNoLanguage}),
    };
}

void pressReset(SettingsExhibit& exhibit)
{
    for (auto* button : exhibit.view().findChildren<TextButton*>()) {
        if (button->text() == localizedText(QStringLiteral("Reset translation windows location"))) {
            button->click();
        }
    }
}

QList<Scene> otherScenes()
{
    const auto scene = [](SettingsCategory category, const QString& name, Situation situation) {
        situation.category = category;
        return settingsScene(name, situation);
    };
    const auto turnOff = [](AppSettings& settings) { settings.setAutoReplace(false); };
    return {
        scene(behavior, QStringLiteral("behavior"), {}),
        scene(behavior, QStringLiteral("behavior-reset"),
              {.height = tall, .prepare = turnOff, .open = pressReset}),
        scene(behavior, QStringLiteral("behavior-denied"), {.permission = State::denied}),
        scene(accessibility, QStringLiteral("accessibility"), {}),
        scene(accessibility, QStringLiteral("accessibility-denied"),
              {.permission = State::denied, .session = barrenSession(), .height = tall}),
        scene(accessibility, QStringLiteral("accessibility-stale"),
              {.permission = State::stale, .height = tall}),
        scene(general, QStringLiteral("about"), {}),
    };
}

/// The keyboard in a control, as Tab brings it there.
template <typename Control>
Scene focusScene(const QString& name, SettingsCategory category, int index = 0)
{
    return settingsScene(QStringLiteral("focus-") + name,
                         {.category = category,
                          .provider = AIProvider::chatGPT,
                          .open = [index](SettingsExhibit& exhibit) {
                              QTimer::singleShot(100, &exhibit.view(), [&exhibit, index] {
                                  exhibit.control<Control>(index).setFocus(Qt::TabFocusReason);
                              });
                          }});
}

QList<Scene> focusScenes()
{
    return {
        focusScene<ListRow>(QStringLiteral("category"), translation, 1),
        focusScene<Picker>(QStringLiteral("picker"), translation),
        focusScene<LinkLabel>(QStringLiteral("link"), translation),
        focusScene<TextButton>(QStringLiteral("button"), translation),
        focusScene<TextWell>(QStringLiteral("well"), translation),
        focusScene<TextField>(QStringLiteral("field"), translation),
        focusScene<Switch>(QStringLiteral("switch"), languages),
        focusScene<SearchableLanguagePicker>(QStringLiteral("language"), languages),
        focusScene<IconButton>(QStringLiteral("icon"), languages),
    };
}

} // namespace

QList<Scene> settingsScenes()
{
    return translationScenes() + languagesScenes() + otherScenes() + focusScenes() + sheetScenes();
}

} // namespace zelvane::gallery
