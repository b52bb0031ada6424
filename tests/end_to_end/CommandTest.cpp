// The commands of the program's own binary, without a display, a session bus or a desktop.

#include "end_to_end/CommandFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(Commands, translatePrintsTheTranslationAlone)
{
    answer("Hallo Welt");
    const Ended ended = run({"translate", "--from", "English", "--to", "German", "hello world"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "Hallo Welt\n");
    EXPECT_EQ(ended.errors, "");
    ASSERT_EQ(provider.requests().size(), 1u);
    EXPECT_EQ(provider.requests().front().header("Authorization"), "Bearer command-key");
}

TEST_F(Commands, translateReadsStandardInput)
{
    answer("Grüße");
    const Ended ended = run({"translate", "--to", "German", "-"}, "greetings\n");
    EXPECT_EQ(ended.output, "Grüße\n");
    EXPECT_THAT(provider.requests().front().body.toStdString(), HasSubstr(R"("greetings")"));
}

TEST_F(Commands, translateReportsOnStandardErrorWithoutKeyAndText)
{
    answer("Hallo");
    const Ended ended = run({"translate", "--to", "German", "--trace", "private text"});
    EXPECT_EQ(ended.output, "Hallo\n");
    EXPECT_THAT(ended.errors, HasSubstr("Zelvane · translation timing\n"));
    EXPECT_THAT(ended.errors, HasSubstr("verdict: "));
    EXPECT_THAT(ended.errors, Not(HasSubstr("command-key")));
    EXPECT_THAT(ended.errors, Not(HasSubstr("private text")));
}

TEST_F(Commands, translateChoosesTheEngineForOneCall)
{
    run({"defaults", "write", "zv.endpoint.ChatGPT",
         provider.url().toString().toUtf8().constData()});
    answer("Hallo");
    const Ended ended = run({"translate", "--to", "German", "--engine", "ChatGPT", "--model",
                             "gpt-5-mini", "--prompt", "To {{target}}!", "hello"});
    EXPECT_EQ(ended.output, "Hallo\n");
    const std::string body = provider.requests().front().body.toStdString();
    EXPECT_THAT(body, HasSubstr(R"("model":"gpt-5-mini")"));
    EXPECT_THAT(body, HasSubstr(R"("To German!")"));
    EXPECT_EQ(run({"defaults", "read", "zv.provider"}).output, "Mistral\n");
    EXPECT_EQ(run({"defaults", "read", "zv.model.ChatGPT"}).status, 1);
}

struct EngineCase
{
    const char* name;
    const char* endpoint; ///< the setting with its address
    const char* answer;
    const char* requestLine;
};

class EngineCommand : public Commands, public ::testing::WithParamInterface<EngineCase>
{
};

TEST_P(EngineCommand, translatesInItsOwnProtocol)
{
    run({"defaults", "write", GetParam().endpoint, provider.url().toString().toUtf8().constData()});
    provider.enqueue(Answer::json(200, GetParam().answer));
    const Ended ended = run({"translate", "--from", "English", "--to", "German", "--engine",
                             GetParam().name, "--trace", "hello"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "Hallo\n");
    EXPECT_THAT(ended.errors, Not(HasSubstr("command-key")));
    ASSERT_EQ(provider.requests().size(), 1u);
    EXPECT_EQ(provider.requests().front().requestLine, GetParam().requestLine);
}

TEST_P(EngineCommand, failsInTheWordsOfItsProvider)
{
    run({"defaults", "write", GetParam().endpoint, provider.url().toString().toUtf8().constData()});
    provider.enqueue(Answer::json(403, "no command-key"));
    const Ended ended =
        run({"translate", "--to", "German", "--engine", GetParam().name, "--trace", "hello"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, StartsWith("zelvane-desk: API error 403: no ***\n"));
    EXPECT_THAT(ended.errors, Not(HasSubstr("command-key")));
}

INSTANTIATE_TEST_SUITE_P(
    Engines, EngineCommand,
    ::testing::Values(
        EngineCase{"chatgpt", "zv.endpoint.ChatGPT",
                   R"({"choices":[{"message":{"content":"Hallo"}}]})",
                   "POST /v1/chat/completions HTTP/1.1"},
        EngineCase{"deepseek", "zv.endpoint.DeepSeek",
                   R"({"choices":[{"message":{"content":"Hallo"}}]})",
                   "POST /chat/completions HTTP/1.1"},
        EngineCase{"mistral", "zv.endpoint.Mistral",
                   R"({"choices":[{"message":{"content":"Hallo"}}]})",
                   "POST /v1/chat/completions HTTP/1.1"},
        EngineCase{"grok", "zv.endpoint.Grok", R"({"choices":[{"message":{"content":"Hallo"}}]})",
                   "POST /v1/chat/completions HTTP/1.1"},
        EngineCase{"gemini", "zv.endpoint.Gemini",
                   R"({"candidates":[{"content":{"parts":[{"text":"Hallo"}]}}]})",
                   "POST /v1beta/models/gemini-2.0-flash:generateContent?key=command-key HTTP/1.1"},
        EngineCase{"claude", "zv.endpoint.Claude",
                   R"({"content":[{"type":"text","text":"Hallo"}]})", "POST /v1/messages HTTP/1.1"},
        EngineCase{"deepl", "zv.endpoint.DeepL", R"({"translations":[{"text":"Hallo"}]})",
                   "POST /v2/translate HTTP/1.1"}),
    [](const auto& info) { return info.param.name; });

/// What a proxy is asked for by a translation with a key in its address.
class ProxyCommand : public Commands
{
protected:
    Ended translateThrough(const QByteArray& account)
    {
        const QByteArray proxyUrl =
            "http://" + account + "127.0.0.1:" + QByteArray::number(provider.port());
        environment.insert(QStringLiteral("https_proxy"), QString::fromLatin1(proxyUrl));
        run({"defaults", "write", "zv.endpoint.Gemini", "https://provider.invalid"});
        return run({"translate", "--to", "German", "--engine", "gemini", "--trace", "hello"});
    }

    void expectNoKeyBut(const char* proxyAuthorization) const
    {
        ASSERT_FALSE(provider.requests().empty());
        EXPECT_EQ(provider.requests().back().header("Proxy-Authorization"), proxyAuthorization);
        for (const RecordedRequest& request : provider.requests()) {
            EXPECT_EQ(request.requestLine, "CONNECT provider.invalid:443 HTTP/1.1");
            EXPECT_EQ(request.body, "");
            for (const auto& [name, value] : request.headers) {
                EXPECT_FALSE(value.contains("command-key")) << name.toStdString();
            }
        }
    }
};

TEST_F(ProxyCommand, theSystemsProxyIsUsed)
{
    provider.setHandler([](const RecordedRequest&) {
        return Answer().send(httpMessage(403, "no command-key here")).close();
    });
    const Ended ended = translateThrough("");
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, StartsWith("zelvane-desk: "));
    EXPECT_THAT(ended.errors, Not(HasSubstr("command-key")));
    expectNoKeyBut(nullptr);
}

TEST_F(ProxyCommand, theSystemsProxyGetsItsOwnPassword)
{
    provider.setHandler([](const RecordedRequest& request) {
        const bool known = request.header("Proxy-Authorization") == "Basic bWU6c2VzYW1l";
        return known ? Answer().send(httpMessage(503, "")).close()
                     : Answer()
                           .send(httpMessage(407, "",
                                             {{"Proxy-Authenticate", "Basic realm=\"p\""},
                                              {"Proxy-Connection", "close"}}))
                           .close();
    });
    const Ended ended = translateThrough("me:sesame@");
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, Not(HasSubstr("sesame")));
    expectNoKeyBut("Basic bWU6c2VzYW1l");
}

TEST_F(ProxyCommand, aProxyThatWantsAPasswordIsNotToldTheKey)
{
    provider.setHandler([](const RecordedRequest&) {
        return Answer()
            .send(httpMessage(407, "", {{"Proxy-Authenticate", "Basic realm=\"p\""}}))
            .close();
    });
    const Ended ended = translateThrough("");
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors,
                StartsWith("zelvane-desk: The proxy server does not connect to provider.invalid."));
    expectNoKeyBut(nullptr);
}

TEST_F(Commands, modelsPrintsWhatTheEngineOffers)
{
    run({"defaults", "write", "zv.endpoint.Gemini",
         provider.url().toString().toUtf8().constData()});
    const Answer listing = Answer::json(
        200, R"({"models":[{"name":"models/gemini-b","displayName":"B",)"
             R"("supportedGenerationMethods":["generateContent"]},{"name":"models/gemini-a",)"
             R"("supportedGenerationMethods":["generateContent"]}]})");
    provider.enqueue(listing);
    provider.enqueue(listing);
    const Ended lines = run({"models", "--engine", "gemini"});
    EXPECT_EQ(lines.status, 0);
    EXPECT_EQ(lines.output, "gemini-a\ngemini-b\n");
    EXPECT_EQ(lines.errors, "");
    EXPECT_EQ(provider.requests().front().requestLine,
              "GET /v1beta/models?key=command-key HTTP/1.1");
    EXPECT_EQ(run({"models", "--engine=gemini", "--json"}).output,
              R"({"engine":"Gemini","models":[{"apiID":"gemini-a","label":"gemini-a"},)"
              R"({"apiID":"gemini-b","label":"B"}]})"
              "\n");
}

TEST_F(Commands, modelsAsksTheEngineOfTheSettingsUnlessToldOtherwise)
{
    provider.enqueue(Answer::json(200, R"({"data":[{"id":"mistral-a"}]})"));
    EXPECT_EQ(run({"models"}).output, "mistral-a\n");
    EXPECT_EQ(provider.requests().front().header("Authorization"), "Bearer command-key");
    EXPECT_EQ(run({"models", "--engine", "DeepL"}).output, "");
}

TEST_F(Commands, modelsFailsInWords)
{
    provider.enqueue(Answer::json(401, R"({"message":"Unauthorized"})"));
    const Ended refused = run({"models"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.errors, "zelvane-desk: API error 401: {\"message\":\"Unauthorized\"}\n");
    const Ended misused = run({"models", "--engine", "Oracle"});
    EXPECT_EQ(misused.status, 2);
    EXPECT_EQ(misused.errors,
              "zelvane-desk: there is no engine \"Oracle\" (see zelvane-desk help models)\n");
    EXPECT_THAT(run({"models", "--help"}).output, StartsWith("Usage: zelvane-desk "));
}

TEST_F(Commands, controlCEndsAListing)
{
    provider.enqueue(Answer().hold());
    const auto process = start({"models"});
    ASSERT_TRUE(waitUntil([&] { return provider.heldAnswers() == 1; }));
    ::kill(pid_t(process->processId()), SIGINT);
    EXPECT_EQ(end(*process).status, 130);
    EXPECT_TRUE(waitUntil([&] { return provider.openConnections() == 0; }));
}

TEST_F(Commands, helpTellsAboutTheCommandItIsAskedFor)
{
    EXPECT_THAT(run({"help", "translate"}).output, HasSubstr("--prompt TEMPLATE"));
    EXPECT_THAT(run({"help"}).output, HasSubstr("Commands:\n  translate"));
    EXPECT_EQ(run({"help", "defaults"}).status, 0);
}

TEST_F(Commands, aFailedTranslationIsStatusOne)
{
    provider.enqueue(Answer::json(429, R"({"message":"slow down"})"));
    const Ended ended = run({"translate", "--to", "German", "hello"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "zelvane-desk: API error 429: {\"message\":\"slow down\"}\n");
}

TEST_F(Commands, withoutAKeyAndWithoutABusTranslateSaysWhatIsMissing)
{
    environment.remove(QStringLiteral("ZELVANE_API_KEY"));
    const Ended ended = run({"translate", "--to", "German", "hello"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "zelvane-desk: there is no key for Mistral; set ZELVANE_API_KEY, or "
                            "store one in the keyring\n");
}

TEST_F(Commands, wrongUsageIsStatusTwo)
{
    EXPECT_EQ(run({"translate", "hello"}).status, 2);
    EXPECT_EQ(run({"defaults"}).status, 2);
    EXPECT_EQ(run({"nonsense"}).status, 2);
    EXPECT_EQ(run({"help", "nonsense"}).status, 2);
    EXPECT_TRUE(provider.requests().empty());
}

TEST_F(Commands, controlCEndsTheExchangeWithStatus130)
{
    provider.enqueue(Answer().hold());
    const auto process = start({"translate", "--to", "German", "hello"});
    ASSERT_TRUE(waitUntil([&] { return provider.heldAnswers() == 1; }));
    ::kill(pid_t(process->processId()), SIGINT);
    EXPECT_EQ(end(*process).status, 130);
    EXPECT_TRUE(waitUntil([&] { return provider.openConnections() == 0; }));
}

TEST_F(Commands, controlCWhileItWaitsForInputEndsIt)
{
    const auto process = start({"translate", "--to", "German"});
    ASSERT_TRUE(process->waitForStarted(5000));
    // It may still be on its way to its first read; the signal ends it at any point.
    ::kill(pid_t(process->processId()), SIGINT);
    ASSERT_TRUE(waitUntil([&] { return process->state() == QProcess::NotRunning; }));
    EXPECT_TRUE(process->exitStatus() == QProcess::CrashExit || process->exitCode() == 130);
}

TEST_F(Commands, aClosedPipeIsAFailure)
{
    answer("Hallo");
    const auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->start(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"),
         QStringLiteral("\"$0\" --profile \"$1\" translate --to German hello >/dev/full"),
         QStringLiteral(ZELVANE_PROGRAM), home.filePath(QStringLiteral("profile"))});
    const Ended ended = end(*process);
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "zelvane-desk: standard output could not be written\n");
}

TEST_F(Commands, defaultsKeepTypesBetweenCalls)
{
    EXPECT_EQ(run({"defaults", "write", "zv.autoReplace", "--bool", "false"}).status, 0);
    EXPECT_EQ(run({"defaults", "write", "zv.n", "--int", "42"}).status, 0);
    EXPECT_EQ(run({"defaults", "write", "zv.x", "--double", "1"}).status, 0);
    EXPECT_EQ(run({"defaults", "write", "zv.pairs", "--data", "[]"}).status, 0);
    EXPECT_THAT(run({"defaults", "list"}).output, HasSubstr("zv.autoReplace\tbool\tfalse\n"));
    EXPECT_EQ(run({"defaults", "read", "zv.n"}).output, "42\n");
    EXPECT_THAT(run({"defaults", "list", "zv.x"}).output, HasSubstr("zv.x\tdouble\t1"));
    EXPECT_EQ(run({"defaults", "read", "zv.pairs"}).output, "[]\n");
    EXPECT_EQ(run({"defaults", "delete", "zv.n"}).status, 0);
    EXPECT_EQ(run({"defaults", "read", "zv.n"}).status, 1);
}

TEST_F(Commands, settingsThatCannotBeStoredAreAFailure)
{
    // A file where the folder should be stands in the way even of root.
    QFile file(home.filePath(QStringLiteral("blocked")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(ZELVANE_PROGRAM),
                   {QStringLiteral("--profile"), file.fileName(), QStringLiteral("defaults"),
                    QStringLiteral("write"), QStringLiteral("zv.a"), QStringLiteral("b")});
    const Ended ended = end(*process);
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("zelvane-desk: "));
}

struct BrokenCase
{
    const char* name;
    Answer answer;
    const char* error;
};

class BrokenProvider : public Commands, public ::testing::WithParamInterface<BrokenCase>
{
};

TEST_P(BrokenProvider, isAFailureInWords)
{
    provider.enqueue(GetParam().answer);
    const Ended ended = run({"translate", "--to", "German", "hello"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr(GetParam().error));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, BrokenProvider,
    ::testing::Values(
        BrokenCase{"html",
                   Answer().send(httpMessage(200, "<html>Sign in</html>",
                                             {{"Content-Type", "text/html"}})),
                   "zelvane-desk: "},
        BrokenCase{"anotherShape", Answer::json(200, R"({"ok":true})"),
                   "zelvane-desk: Unexpected response from the AI provider.\n"},
        BrokenCase{"nullContent",
                   Answer::json(200, R"({"choices":[{"message":{"content":null}}]})"),
                   "zelvane-desk: Unexpected response from the AI provider.\n"},
        BrokenCase{"halfABody",
                   Answer().send(httpMessage(200, R"({"choices":[]})").chopped(5)).close(),
                   "zelvane-desk: "},
        BrokenCase{"deepJson", Answer::json(200, QByteArray(100'000, '[')), "zelvane-desk: "},
        BrokenCase{"hundredMegabytes",
                   Answer()
                       .send("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
                             "Content-Length: 104857600\r\n\r\n")
                       .flood(104'857'600),
                   "zelvane-desk: "}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace zelvane::test
