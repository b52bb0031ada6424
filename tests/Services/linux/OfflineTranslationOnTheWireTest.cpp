// Whole texts through a real server process: its moods, its ends, and what a stop leaves of it.

#include "Services/SmartOfflineEngineManager.h"
#include "Services/linux/LinuxChildProcesses.h"
#include "Services/linux/PsProcessTable.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "pipeline/TranslationError.h"
#include "settings/UserDefaults.h"
#include "support/Await.h"
#include "support/llama/EngineFolder.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <csignal>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

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
    explicit OfflineTranslationOnTheWire(
        SmartOfflineVariant variant = SmartOfflineVariant::hyMT2_7b)
        : m_facts(smallFacts(variant))
        , folder(m_root.path(), m_facts.folder, m_facts.modelFile, m_facts.expectedModelBytes)
    {
        folder.writeReady();
        script("{}");
        manager = std::make_unique<SmartOfflineEngineManager>(
            variant, EngineFiles(m_root.path(), m_facts),
            SmartOfflineEngineManager::Parts{{m_launcher, m_transport, m_clock, m_sweep},
                                             m_defaults,
                                             {},
                                             [] { return false; },
                                             [] {}});
    }
    ~OfflineTranslationOnTheWire() override
    {
        const auto pid = manager->server().pid();
        manager->stopServer();
        EXPECT_TRUE(!pid || hasGone(*pid));
    }

    static bool hasGone(qint32 pid)
    {
        return waitUntil([pid] { return ::kill(pid, 0) != 0; }, 5s);
    }

    /// What the server does from its next start on, beside putting "> " before each line.
    void script(const QByteArray& json)
    {
        QJsonObject entries = QJsonDocument::fromJson(json).object();
        entries.insert(QStringLiteral("prefix"), QStringLiteral("> "));
        folder.script(QJsonDocument(entries).toJson());
    }

    QCoro::Task<QString> start(const QString& text, std::stop_token stop = {})
    {
        const QMap<QString, QStringList> hints{{QStringLiteral("LINE"), {QStringLiteral("x")}}};
        return manager->translator().translateOffline(text, QStringLiteral("English (US)"),
                                                      QStringLiteral("Norwegian"), {}, hints, stop);
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
    /// How many completions the server was asked for.
    qsizetype requests() const
    {
        return std::ranges::count_if(folder.recorded("request"), [](const QByteArray& line) {
            return line.contains("/chat/completions");
        });
    }

private:
    static SmartOfflineVariantFacts smallFacts(SmartOfflineVariant variant)
    {
        SmartOfflineVariantFacts facts = factsOf(variant);
        facts.expectedModelBytes = 100;
        return facts;
    }

    QTemporaryDir m_root;
    OverlayUserDefaults m_defaults;
    SmartOfflineVariantFacts m_facts;
    SystemClock m_clock;
    LinuxChildProcesses m_launcher;
    NetworkHttpTransport m_transport{m_clock};
    PsProcessTable m_processes{m_launcher, m_clock};
    StraySweep m_sweep{m_processes, m_clock};

protected:
    EngineFolder folder;
    std::unique_ptr<SmartOfflineEngineManager> manager;
};

class Family : public OfflineTranslationOnTheWire,
               public ::testing::WithParamInterface<SmartOfflineVariant>
{
protected:
    Family()
        : OfflineTranslationOnTheWire(GetParam())
    {
    }
};

TEST_P(Family, understandsItsWording)
{
    const QString text = numbered(10) + QStringLiteral("\n\n") + numbered(2);
    EXPECT_EQ(translated(text), numbered(10, QStringLiteral("> ")) + QStringLiteral("\n\n") +
                                    numbered(2, QStringLiteral("> ")));
    EXPECT_EQ(translated(QStringLiteral("<b>line</b>")), QStringLiteral("> <b>line</b>"));
    EXPECT_EQ(translated(QStringLiteral("Good morning")), QStringLiteral("> Good morning"));
}

INSTANTIATE_TEST_SUITE_P(OfflineTranslationOnTheWire, Family,
                         ::testing::ValuesIn(smartOfflineVariants()));

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
    EXPECT_EQ(requests(), 2);
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
    ASSERT_TRUE(waitUntil([this] { return requests() == 4; }));
    stop.request_stop();
    EXPECT_THROW(await(std::move(call)), CancellationError);
    EXPECT_EQ(requests(), 4);
    // With a client that still waits it would not go.
    const qint32 pid = manager->server().pid().value();
    ::kill(pid, SIGTERM);
    EXPECT_TRUE(hasGone(pid));
}

TEST_F(OfflineTranslationOnTheWire, aServerThatIsStoppedFailsTheText)
{
    script(R"({"answerAfterMs":50})");
    auto call = start(numbered(400));
    ASSERT_TRUE(waitUntil([this] { return requests() >= 8; }));
    manager->stopServer();
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
    const QString half(QChar(0xd83d));
    EXPECT_EQ(translated(half + QStringLiteral(" world")), QStringLiteral("> \ufffd world"));
}

} // namespace
} // namespace zelvane::test
