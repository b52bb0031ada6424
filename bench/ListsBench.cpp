// What the lists of languages and of dictionaries cost while a user types and scrolls, and while
// dictionaries are downloaded.

#include "foundation/SystemClock.h"
#include "glossary/GlossaryManager.h"
#include "http/NetworkHttpTransport.h"
#include "settings/AppSettings.h"
#include "settings/LanguageNames.h"
#include "settings/Localization.h"
#include "support/FakeSecretBackend.h"
#include "ui/components/OptionList.h"
#include "ui/glossary/GlossaryDownloadsView.h"
#include "ui/language/LanguagePickerModel.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScrollBar>
#include <QTemporaryDir>

namespace zelvane {
namespace {

/// The platform without a display: what is measured is the program's own work.
void needApplication()
{
    static int argc = 3;
    static char name[] = "bench";
    static char option[] = "-platform";
    static char platform[] = "offscreen";
    static char* argv[] = {name, option, platform, nullptr};
    static const QApplication application(argc, argv);
}

struct Dressing
{
    StyleTweaker tokens;
    DesktopAppearance appearance;
    Theme theme{tokens, appearance};
};

void filter(benchmark::State& state, const char* language, const char* query)
{
    needApplication();
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.appLanguage"), QString::fromLatin1(language));
    installLocalization(&defaults);
    const LanguagePickerChoice choice{.options = offeredLanguages(), .allowsCustom = true};
    const QString typed = QString::fromUtf8(query);
    for (auto _ : state) {
        benchmark::DoNotOptimize(choice.rows(typed));
    }
    installLocalization(nullptr);
}
BENCHMARK_CAPTURE(filter, all, "en", "")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(filter, oneLetter, "en", "e")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(filter, aName, "en", "portu")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(filter, aNameInHindi, "hi", "जर्म")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(filter, nothing, "en", "zzz")->Unit(benchmark::kMicrosecond);

QList<ListOption> languageOptions()
{
    QList<ListOption> options;
    for (const QString& language : offeredLanguages()) {
        options.append({language, {}, {}});
    }
    return options;
}

void paintList(benchmark::State& state)
{
    needApplication();
    const Dressing dressing;
    OptionList list(dressing.theme);
    list.setOptions(languageOptions());
    list.resize(240, 300);
    QImage picture(list.size(), QImage::Format_ARGB32_Premultiplied);
    QScrollBar& bar = *list.verticalScrollBar();
    for (auto _ : state) {
        bar.setValue(bar.value() == bar.maximum() ? 0 : bar.value() + bar.singleStep());
        list.render(&picture);
    }
}
BENCHMARK(paintList)->Unit(benchmark::kMicrosecond);

/// The first `count` of all packages, as the settings keep them.
QByteArray packages(int64_t count)
{
    QJsonArray list;
    const QStringList& languages = GlossaryDownloadsModel::glossaryLanguageOptions();
    for (const QString& source : languages) {
        for (const QString& target : languages) {
            if (source < target && list.size() < count) {
                list.append(QJsonObject{
                    {QStringLiteral("sourceCode"), resolveGlossaryLanguage(source)->code},
                    {QStringLiteral("targetCode"), resolveGlossaryLanguage(target)->code}});
            }
        }
    }
    return QJsonDocument(list).toJson();
}

/// As on each step of a download: the rows are worked out and put into the view anew.
void followDownloads(benchmark::State& state)
{
    needApplication();
    const Dressing dressing;
    const QTemporaryDir folder;
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.glossaryPackages.wikdict-2_2026-06"),
                      packages(state.range(0)));
    test::FakeSecretBackend backend;
    SecretStore secrets(defaults, backend);
    const AppSettings settings(defaults, secrets, QStringLiteral("German"));
    SystemClock clock;
    NetworkHttpTransport transport(clock);
    GlossaryManager manager({defaults,
                             transport,
                             clock,
                             folder.path(),
                             {QStringLiteral("de"), QStringLiteral("German")}});
    GlossaryDownloadsView view(dressing.theme, settings, manager);
    view.adjustSize();
    for (auto _ : state) {
        Q_EMIT view.model().changed();
    }
}
BENCHMARK(followDownloads)->Arg(3)->Arg(50)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace zelvane
