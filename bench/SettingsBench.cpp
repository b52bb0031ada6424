#include "settings/AppSettings.h"
#include "settings/FileUserDefaults.h"
#include "settings/Localization.h"
#include "support/FakeSecretBackend.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace zelvane {
namespace {

/// Ten pairs, each with a shortcut and a prompt of its own, and `foreignKeys` values besides.
void store(const QString& directory, int foreignKeys)
{
    FileUserDefaults defaults(directory);
    QList<LanguagePair> pairs;
    for (quint32 i = 0; i < 10; ++i) {
        LanguagePair pair = pairFromAnyLanguage(QStringLiteral("German"));
        pair.hotKey = KeyChord{i, KeyChord::option};
        pair.useCustomPrompt = true;
        pair.customPrompt = defaultPromptTemplate();
        pairs += pair;
    }
    defaults.setValue(QStringLiteral("zv.pairs"), encodePairs(pairs));
    for (int i = 0; i < foreignKeys; ++i) {
        defaults.setValue(QStringLiteral("other.%1").arg(i), QStringLiteral("value %1").arg(i));
    }
}

/// From the file to all settings: what the start of the program waits for.
void loadSettings(benchmark::State& state)
{
    const QTemporaryDir root;
    store(root.path(), static_cast<int>(state.range(0)));
    for (auto _ : state) {
        FileUserDefaults defaults(root.path());
        test::FakeSecretBackend backend;
        SecretStore secrets(defaults, backend);
        const AppSettings settings(defaults, secrets, QStringLiteral("German"));
        benchmark::DoNotOptimize(settings.pairs());
        state.PauseTiming(); // the end waits for the disk
        defaults.flush();
        state.ResumeTiming();
    }
}
BENCHMARK(loadSettings)->Arg(0)->Arg(10000)->Unit(benchmark::kMillisecond);

/// What the main thread pays for a change while the disk is busy with those before.
void setWithoutWaiting(benchmark::State& state)
{
    const QTemporaryDir root;
    store(root.path(), static_cast<int>(state.range(0)));
    FileUserDefaults defaults(root.path());
    qint64 value = 0;
    for (auto _ : state) {
        defaults.setValue(QStringLiteral("zv.value"), ++value);
    }
}
BENCHMARK(setWithoutWaiting)->Arg(0)->Arg(10000)->Unit(benchmark::kMicrosecond);

/// A change until it has reached the disk.
void setDurably(benchmark::State& state)
{
    const QTemporaryDir root;
    store(root.path(), static_cast<int>(state.range(0)));
    FileUserDefaults defaults(root.path());
    qint64 value = 0;
    for (auto _ : state) {
        defaults.setValue(QStringLiteral("zv.value"), ++value);
        defaults.flush();
    }
}
BENCHMARK(setDurably)->Arg(0)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

void lookUpText(benchmark::State& state)
{
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("de"));
    installLocalization(&defaults, {});
    const QString key = QStringLiteral("Cancel");
    for (auto _ : state) {
        benchmark::DoNotOptimize(localizedText(key));
    }
    installLocalization(nullptr);
}
BENCHMARK(lookUpText);

} // namespace
} // namespace zelvane
