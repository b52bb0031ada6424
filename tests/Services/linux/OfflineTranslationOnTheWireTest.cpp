// Whole texts through a real server process: its moods, its ends, and what a stop leaves of it.

#include "Services/CompletionRequest.h"
#include "Services/LlamaServer.h"
#include "Services/OfflineTranslator.h"
#include "Services/linux/LinuxChildProcesses.h"
#include "Services/linux/PsProcessTable.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <csignal>

namespace zelvane {
namespace {

using test::await;
using test::waitUntil;
using ::testing::SizeIs;

/// A model behind the real server's process, socket and format.
class ServedModel final : public CompletionSource
{
public:
    ServedModel(SmartOfflineVariant variant, LlamaServer& server)
        : m_variant(variant)
        , m_server(server)
    {
    }

    [[nodiscard]] SmartOfflineVariant variant() const override { return m_variant; }
    [[nodiscard]] EngineStatus status() const override { return engine_status::Ready{}; }
    [[nodiscard]] QCoro::Task<std::optional<int>> recordedRevision(std::stop_token) override
    {
        co_return std::nullopt;
    }
    [[nodiscard]] QCoro::Task<void> ensureServer(GpuLayers layers, std::stop_token stop) override
    {
        return m_server.ensure(layers, stop);
    }
    [[nodiscard]] QCoro::Task<QString> requestCompletion(ModelJob job, Attempt attempt,
                                                         std::stop_token stop) override
    {
        const QByteArray body = co_await m_server.completion(completionRequest(job, attempt), stop);
        co_return completionText(body);
    }

private:
    SmartOfflineVariant m_variant;
    LlamaServer& m_server;
};

QString numbered(int count, const QString& prefix = {})
{
    QStringList lines;
    for (int i = 1; i <= count; ++i) {
        lines += prefix + QStringLiteral("line number %1").arg(i);
    }
    return lines.join(u'\n');
}

class OfflineTranslationOnTheWire : public ::testing::Test
{
protected:
    OfflineTranslationOnTheWire()
    {
        QFile::link(QStringLiteral(ZELVANE_FAKE_LLAMA_SERVER), files.program);
        write(files.model, "GGUF" + QByteArray(60, '\0'));
    }
    ~OfflineTranslationOnTheWire() override
    {
        const auto pid = server.pid();
        server.stop();
        EXPECT_TRUE(waitUntil([&] { return !pid || ::kill(*pid, 0) != 0; }));
    }

    static void write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    void script(QByteArray json)
    {
        json.chop(1);
        write(folder.filePath(QStringLiteral("llama-script.json")),
              json + (json.size() > 1 ? "," : "") + R"("prefix":"> ","record":")" +
                  record.toUtf8() + "\"}");
    }

    QCoro::Task<QString> start(const QString& text, std::stop_token stop = {})
    {
        return translator.translateOffline(text, QStringLiteral("English (US)"),
                                           QStringLiteral("German"), {}, {}, stop);
    }
    QString translated(const QString& text) { return await(start(text)); }
    /// The translation, or the description of what it fails with.
    QString outcome(const QString& text)
    {
        try {
            return translated(text);
        } catch (const DescribedError& error) {
            return error.description();
        }
    }
    /// The requests for a completion that the server has noted.
    std::vector<QJsonObject> requests() const
    {
        QFile file(record);
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        std::vector<QJsonObject> found;
        for (const QByteArray& line : file.readAll().split('\n')) {
            const QJsonObject entry = QJsonDocument::fromJson(line).object();
            if (entry.value(u"target").toString() == u"/v1/chat/completions") {
                found.push_back(entry);
            }
        }
        return found;
    }

    QTemporaryDir folder;
    const QString record = folder.filePath(QStringLiteral("record"));
    const LlamaServerFiles files{folder.filePath(QStringLiteral("llama-server")), folder.path(),
                                 folder.filePath(QStringLiteral("model.gguf"))};
    SystemClock clock;
    LinuxChildProcesses launcher;
    NetworkHttpTransport transport{clock};
    PsProcessTable processes{launcher, clock};
    StraySweep sweep{processes, clock};
    LlamaServer server{files, {launcher, transport, clock, sweep}};
    ServedModel model{SmartOfflineVariant::hyMT2_7b, server};
    OfflineTranslator translator{model};
};

TEST_F(OfflineTranslationOnTheWire, everyFamilyUnderstandsItsWording)
{
    script("{}");
    for (const SmartOfflineVariant variant : smartOfflineVariants()) {
        ServedModel other(variant, server);
        OfflineTranslator others(other);
        const QString text = numbered(10) + QStringLiteral("\n\n") + numbered(2);
        EXPECT_EQ(await(others.translateOffline(
                      text, QStringLiteral("English (US)"), QStringLiteral("Norwegian"), {},
                      {{QStringLiteral("LINE"), {QStringLiteral("x")}}}, {})),
                  numbered(10, QStringLiteral("> ")) + QStringLiteral("\n\n") +
                      numbered(2, QStringLiteral("> ")));
    }
}

class Mood : public OfflineTranslationOnTheWire, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(Mood, isNoHindrance)
{
    script(GetParam());
    EXPECT_EQ(outcome(numbered(40)), numbered(40, QStringLiteral("> ")));
}

INSTANTIATE_TEST_SUITE_P(
    OfflineTranslationOnTheWire, Mood,
    ::testing::Values(R"({"moods":["think"]})", R"({"moods":["fence"]})",
                      R"({"moods":["reasoning"]})", R"({"moods":["drop-line"]})",
                      R"({"moods":["blank","repeat","refuse","echo"]})",
                      R"({"moods":["not-json","no-choices","cut-off","think-cut","echo"]})",
                      R"({"logFlood":65536})"));

TEST_F(OfflineTranslationOnTheWire, aStubbornModelFailsTheWholeText)
{
    script(R"({"moods":["echo","repeat"]})");
    EXPECT_EQ(outcome(numbered(40)), QStringLiteral("Unexpected response from the AI provider."));
}

TEST_F(OfflineTranslationOnTheWire, aRefusalOfTheServerIsTold)
{
    script(R"({"moods":["refuse"]})");
    const QString told = outcome(QStringLiteral("Good morning"));
    EXPECT_TRUE(told.startsWith(QStringLiteral("API error 503: "))) << told.toStdString();
    EXPECT_THAT(requests(), SizeIs(2));
}

TEST_F(OfflineTranslationOnTheWire, aServerThatDiesFailsTheTextAndServesTheNext)
{
    script(R"({"moods":["die"]})");
    EXPECT_EQ(outcome(numbered(40)), QStringLiteral("127.0.0.1 refuses the connection."));
    script("{}");
    EXPECT_EQ(translated(QStringLiteral("Good morning")), QStringLiteral("> Good morning"));
}

TEST_F(OfflineTranslationOnTheWire, aStopLeavesTheServerFreeToEnd)
{
    script(R"({"moods":["silence"]})");
    std::stop_source stop;
    auto call = start(numbered(40), stop.get_token());
    ASSERT_TRUE(waitUntil([this] { return requests().size() == 4; }));
    stop.request_stop();
    EXPECT_THROW(await(std::move(call)), CancellationError);
    EXPECT_THAT(requests(), SizeIs(4));
    // With a client that still waits it would not go.
    const qint32 pid = server.pid().value();
    ::kill(pid, SIGTERM);
    EXPECT_TRUE(waitUntil([&] { return ::kill(pid, 0) != 0; }, std::chrono::seconds(5)));
}

TEST_F(OfflineTranslationOnTheWire, aServerThatIsStoppedFailsTheText)
{
    script(R"({"answerAfterMs":50})");
    auto call = start(numbered(400));
    ASSERT_TRUE(waitUntil([this] { return requests().size() >= 8; }));
    server.stop();
    try {
        await(std::move(call));
        FAIL();
    } catch (const TranslationError& error) {
        EXPECT_EQ(error.code(), TranslationError::Code::offlineEngineBusy);
    }
}

TEST_F(OfflineTranslationOnTheWire, translatesADocument)
{
    script("{}");
    EXPECT_EQ(
        translated(QStringLiteral(
            R"({"z":"hello world","n":[1.0,1e400,12345678901234567890],"a":"two \"words\"/"})")),
        QStringLiteral(
            R"({"z":"> hello world","n":[1.0,1e400,12345678901234567890],"a":"> two \"words\"/"})"));
}

TEST_F(OfflineTranslationOnTheWire, keepsFourRequestsInFlight)
{
    script(R"({"answerAfterMs":100})");
    translated(QStringLiteral("The server starts with the first text"));
    QElapsedTimer timer;
    timer.start();
    translated(numbered(48)); // 16 chunks
    // One at a time would take 1.6 s; a busy machine may need some more than 0.4 s.
    EXPECT_LT(timer.elapsed(), 1200);
}

TEST_F(OfflineTranslationOnTheWire, survivesTextThatIsNotUnicode)
{
    script("{}");
    const QString half(QChar(0xd83d));
    EXPECT_EQ(translated(half + QStringLiteral(" world")), QStringLiteral("> \ufffd world"));
}

} // namespace
} // namespace zelvane
