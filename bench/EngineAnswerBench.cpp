// Reading the answers of the engines. They are read on the main thread, so that a megabyte is to
// take less than the 16 milliseconds between two frames.

#include "online/AnthropicClient.h"
#include "online/ChatCompletionsClient.h"
#include "online/DeepLClient.h"
#include "online/GeminiClient.h"
#include "online/RemoteModels.h"

#include <benchmark/benchmark.h>

#include <QJsonDocument>

namespace zelvane {
namespace {

/// About a megabyte of text in which a little has to be escaped, as it stands in JSON.
QByteArray megabyteOfText()
{
    const QByteArray sentence = R"(Größe is “not” \"everything\", she said. 日本語\n)";
    return sentence.repeated((1 << 20) / sentence.size());
}

void reading(benchmark::State& state, QString (*read)(const QByteArray&), const char* before,
             const char* after)
{
    const QByteArray body = before + megabyteOfText() + after;
    for (auto _ : state) {
        benchmark::DoNotOptimize(read(body));
    }
    state.SetBytesProcessed(state.iterations() * body.size());
}

BENCHMARK_CAPTURE(reading, chat, chatResponseText, R"({"choices":[{"message":{"content":")",
                  R"("}}]})");
BENCHMARK_CAPTURE(reading, gemini, geminiResponseText,
                  R"({"candidates":[{"content":{"parts":[{"text":")", R"("}]}}]})");
BENCHMARK_CAPTURE(reading, claude, claudeResponseText, R"({"content":[{"type":"text","text":")",
                  R"("}]})");
BENCHMARK_CAPTURE(reading, deepL, deepLResponseText, R"({"translations":[{"text":")", R"("}]})");

/// A listing of a thousand models, some of which can't translate.
void readingAListing(benchmark::State& state)
{
    QByteArray entries;
    for (int i = 0; i < 1000; ++i) {
        entries += (i == 0 ? "" : ",") +
                   (R"({"id":"gpt-)" + QByteArray::number((i * 7919) % 1000) +
                    (i % 5 == 0 ? "-audio" : "") + R"(","object":"model","owned_by":"system"})");
    }
    const QByteArray body = R"({"object":"list","data":[)" + entries + "]}";
    for (auto _ : state) {
        benchmark::DoNotOptimize(listedModels(AIProvider::chatGPT, body));
    }
    state.SetBytesProcessed(state.iterations() * body.size());
}
BENCHMARK(readingAListing);

} // namespace
} // namespace zelvane
