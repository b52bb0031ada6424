#include "foundation/SystemClock.h"
#include "pipeline/Prompts.h"
#include "pipeline/TranslationTrace.h"
#include "settings/AppSettings.h"

#include <benchmark/benchmark.h>

namespace zelvane {
namespace {

void renderPromptOfTheFactory(benchmark::State& state)
{
    const QString source = QStringLiteral("English (US)");
    const QString target = QStringLiteral("German");
    for (auto _ : state) {
        benchmark::DoNotOptimize(renderPrompt(defaultPromptTemplate(), source, target));
    }
}
BENCHMARK(renderPromptOfTheFactory);

void renderPromptWithoutASource(benchmark::State& state)
{
    const QString source = QStringLiteral("Any Language");
    const QString target = QStringLiteral("German");
    for (auto _ : state) {
        benchmark::DoNotOptimize(renderPrompt(defaultPromptTemplate(), source, target));
    }
}
BENCHMARK(renderPromptWithoutASource);

/// A trace like that of a translation in place.
void fill(TranslationTrace& trace)
{
    trace.begin({{QStringLiteral("provider"), QStringLiteral("ChatGPT")},
                 {QStringLiteral("model"), QStringLiteral("gpt-5-nano")},
                 {QStringLiteral("pair"), QStringLiteral("EN-DE")},
                 {QStringLiteral("mode"), QStringLiteral("auto")},
                 {QStringLiteral("autoReplace"), QStringLiteral("true")}});
    for (const char* label :
         {"accessibility ok", "pasteboard backed up", "Cmd+C posted", "Cmd+C wait done",
          "selection read", "editable detect", "API begin", "request ready", "API HTTP begin",
          "API HTTP end", "API end", "pre-paste wait done", "Cmd+V posted", "post-paste wait done",
          "pasteboard restored", "done"}) {
        trace.mark(QString::fromLatin1(label), QStringLiteral("180 ms"));
    }
}

void reportOfATranslationInPlace(benchmark::State& state)
{
    const SystemClock clock;
    TranslationTrace trace(clock);
    fill(trace);
    for (auto _ : state) {
        benchmark::DoNotOptimize(trace.report());
    }
}
BENCHMARK(reportOfATranslationInPlace);

void tracingATranslationInPlace(benchmark::State& state)
{
    const SystemClock clock;
    TranslationTrace trace(clock);
    for (auto _ : state) {
        fill(trace);
    }
}
BENCHMARK(tracingATranslationInPlace);

} // namespace
} // namespace zelvane
