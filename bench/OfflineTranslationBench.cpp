// What the offline engines add to the time that their server takes, and what their work on the text
// costs the main thread.

#include "Services/LocalModelPrompts.h"
#include "Services/ModelOutput.h"
#include "Services/OfflineTranslator.h"
#include "Services/PromptGlossary.h"
#include "Services/StructuredDocument.h"
#include "Services/TextChunks.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "support/LoopbackHttpServer.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

namespace zelvane {
namespace {

using test::Answer;
using test::LoopbackHttpServer;
using namespace std::chrono_literals;

/// Event loops need an application; it lives as long as the process.
void needApplication()
{
    static int argc = 1;
    static char name[] = "bench";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
}

/// Answers each request after 100 milliseconds with the text that it was sent, in a thread of its
/// own.
class SlowServer
{
public:
    SlowServer()
    {
        m_context.moveToThread(&m_thread);
        m_thread.start();
        onThread([this] {
            m_server = std::make_unique<LoopbackHttpServer>();
            m_server->setHandler([](const test::RecordedRequest& request) {
                return Answer().pause(100ms).send(test::httpMessage(200, request.body));
            });
            m_url = m_server->url();
        });
    }
    ~SlowServer()
    {
        onThread([this] { m_server.reset(); });
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY_MOVE(SlowServer)

    [[nodiscard]] const QUrl& url() const { return m_url; }

private:
    template <typename Action>
    void onThread(const Action& action)
    {
        QMetaObject::invokeMethod(&m_context, action, Qt::BlockingQueuedConnection);
    }

    QThread m_thread;
    QObject m_context;
    std::unique_ptr<LoopbackHttpServer> m_server;
    QUrl m_url;
};

/// Asks the slow server as a real one would be asked.
class SlowModel final : public CompletionSource
{
public:
    [[nodiscard]] SmartOfflineVariant variant() const override
    {
        return SmartOfflineVariant::hyMT2_7b;
    }
    [[nodiscard]] EngineStatus status() const override { return engine_status::Ready{}; }
    [[nodiscard]] QCoro::Task<std::optional<int>> recordedRevision(std::stop_token) override
    {
        co_return 1;
    }
    [[nodiscard]] QCoro::Task<void> ensureServer(GpuLayers, std::stop_token) override { co_return; }

    [[nodiscard]] QCoro::Task<QString> requestCompletion(ModelJob job, Attempt,
                                                         std::stop_token stop) override
    {
        const ChatMessages messages = buildChatMessages(job);
        HttpRequest request;
        request.method = "POST";
        request.url = m_server.url();
        request.headers = {{"Content-Type", "application/json"}};
        request.body =
            QJsonDocument(QJsonObject{{QStringLiteral("prompt"), messages.user},
                                      {QStringLiteral("content"), job.lines.join(u'\n')}})
                .toJson(QJsonDocument::Compact);
        const HttpResponse response = co_await m_transport.send(request, stop);
        co_return extractMessageText(QJsonDocument::fromJson(response.body).object()).value();
    }

private:
    SlowServer m_server;
    SystemClock m_clock;
    NetworkHttpTransport m_transport{m_clock};
};

QStringList numberedLines(qsizetype count)
{
    QStringList lines;
    for (qsizetype i = 0; i < count; ++i) {
        lines += QStringLiteral("This is line %1 of the text").arg(i);
    }
    return lines;
}

QCoro::Task<void> thenQuit(QCoro::Task<QString> translation, QString expected, QEventLoop* loop)
{
    const QString text = co_await translation;
    if (text != expected) {
        qFatal("another translation");
    }
    loop->quit();
}

/// The counter is the measured time over that of four requests in flight and nothing else.
void wholeText(benchmark::State& state)
{
    needApplication();
    const QString text = numberedLines(state.range(0)).join(u'\n');
    SlowModel model;
    OfflineTranslator translator(model);
    const auto translate = [&](const QString& source) {
        QEventLoop loop;
        thenQuit(translator.translateOffline(source, QStringLiteral("English"),
                                             QStringLiteral("German"), {}, {}, {}),
                 source, &loop);
        loop.exec();
    };
    translate(QStringLiteral("The first exchange of a process takes longer"));
    const SystemClock clock;
    const auto begin = clock.monotonicNow();
    for (auto _ : state) {
        translate(text);
    }
    const auto chunks = (state.range(0) + 2) / 3; // a list of short lines goes by threes
    const auto ideal = 100ms * ((chunks + 3) / 4) * state.iterations();
    state.counters["of ideal"] = double((clock.monotonicNow() - begin).count()) /
                                 double(std::chrono::nanoseconds(ideal).count());
}
BENCHMARK(wholeText)->Arg(40)->Arg(400)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(wholeText)->Arg(5000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

enum class Script { latin, cyrillic };

/// A megabyte (of UTF-8) in lines of some 90 characters.
QStringList megabyte(Script script)
{
    const QString line =
        script == Script::latin
            ? QStringLiteral("It was the best of times, it was the worst of times, it was the age "
                             "of wisdom, it was %1")
            : QStringLiteral("Все счастливые семьи похожи друг на друга, каждая несчастливая семья "
                             "несчастлива по %1");
    QStringList lines;
    for (qsizetype bytes = 0; bytes < 1'000'000; bytes += lines.last().toUtf8().size() + 1) {
        lines += line.arg(lines.size());
    }
    return lines;
}

void chunking(benchmark::State& state, Script script)
{
    const QString text = megabyte(script).join(u'\n');
    for (auto _ : state) {
        benchmark::DoNotOptimize(chunkLines(text.split(u'\n'), 25));
    }
}
BENCHMARK_CAPTURE(chunking, latinMegabyte, Script::latin)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(chunking, cyrillicMegabyte, Script::cyrillic)->Unit(benchmark::kMillisecond);

void merging(benchmark::State& state, Script script)
{
    const QList<QStringList> chunks = chunkLines(megabyte(script), 25);
    for (auto _ : state) {
        for (const QStringList& chunk : chunks) {
            QList<qsizetype> positions;
            for (qsizetype i = 0; i < chunk.size(); ++i) {
                positions += i;
            }
            benchmark::DoNotOptimize(mergeModelOutput(chunk.join(u'\n'), chunk, positions));
        }
    }
    state.counters["chunks"] = double(chunks.size());
}
BENCHMARK_CAPTURE(merging, latinMegabyte, Script::latin)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(merging, cyrillicMegabyte, Script::cyrillic)->Unit(benchmark::kMillisecond);

void readingADocument(benchmark::State& state)
{
    QJsonArray array;
    for (const QString& line : megabyte(Script::cyrillic)) {
        array += QJsonObject{{QStringLiteral("text"), line}, {QStringLiteral("number"), 1.5}};
    }
    const QString text = QString::fromUtf8(QJsonDocument(array).toJson());
    for (auto _ : state) {
        const auto document = StructuredDocument::parse(text);
        benchmark::DoNotOptimize(document->written(StructuredDocument::Layout::indented));
    }
}
BENCHMARK(readingADocument)->Unit(benchmark::kMillisecond);

/// One request's search for the terms of a dictionary of so many.
void findingTerms(benchmark::State& state)
{
    GlossaryHints hints;
    for (int i = 0; i < state.range(0); ++i) {
        hints.insert(QStringLiteral("Begriff Nummer %1").arg(i), {QStringLiteral("term")});
    }
    const QStringList lines = megabyte(Script::cyrillic).first(13);
    for (auto _ : state) {
        benchmark::DoNotOptimize(matchingHints(hints, lines, QLocale(QLocale::German)));
    }
}
BENCHMARK(findingTerms)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace zelvane
