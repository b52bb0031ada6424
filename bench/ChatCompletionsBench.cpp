#include "online/ChatCompletionsClient.h"
#include "settings/AppSettings.h"

#include <benchmark/benchmark.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane {
namespace {

/// Text of about `size` characters.
QString textOf(qsizetype size)
{
    const QString sentence = QStringLiteral("Größe is “not” everything, she said. 日本語\n");
    return sentence.repeated(size / sentence.size() + 1);
}

void buildingARequest(benchmark::State& state)
{
    const QString text = textOf(state.range(0));
    const QString model = QStringLiteral("gpt-5-nano");
    for (auto _ : state) {
        benchmark::DoNotOptimize(QJsonDocument(chatRequestBody(text, defaultPromptTemplate(), model,
                                                               chatParameters(model)))
                                     .toJson(QJsonDocument::Compact));
    }
    state.SetBytesProcessed(state.iterations() * text.toUtf8().size());
}
BENCHMARK(buildingARequest)->Arg(100)->Arg(10'000);

void parsingAResponse(benchmark::State& state)
{
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("assistant")},
                              {QStringLiteral("content"), textOf(state.range(0))}};
    const QJsonObject choice{{QStringLiteral("index"), 0},
                             {QStringLiteral("message"), message},
                             {QStringLiteral("finish_reason"), QStringLiteral("stop")}};
    const QJsonObject answer{{QStringLiteral("id"), QStringLiteral("chatcmpl-1")},
                             {QStringLiteral("object"), QStringLiteral("chat.completion")},
                             {QStringLiteral("choices"), QJsonArray{choice}}};
    const QByteArray body = QJsonDocument(answer).toJson(QJsonDocument::Compact);
    for (auto _ : state) {
        benchmark::DoNotOptimize(chatResponseText(body));
    }
    state.SetBytesProcessed(state.iterations() * body.size());
}
BENCHMARK(parsingAResponse)->Arg(100)->Arg(10'000);

} // namespace
} // namespace zelvane
