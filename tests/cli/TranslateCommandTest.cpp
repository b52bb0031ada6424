#include "cli/TranslateCommand.h"

#include "cli/EngineChoice.h"
#include "support/Await.h"
#include "support/FakeHttpTransport.h"
#include "support/FakeSecretBackend.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QBuffer>

namespace zelvane::test {
namespace {

QByteArray chatAnswer(const QByteArray& content)
{
    return R"({"choices":[{"message":{"content":")" + content + R"("}}]})";
}

std::expected<TranslateOptions, QString> parsed(std::initializer_list<const char*> words)
{
    QStringList arguments;
    for (const char* word : words) {
        arguments << QString::fromUtf8(word);
    }
    return parseTranslateOptions(arguments);
}

TEST(TranslateOptions, readsEveryOption)
{
    const auto options =
        parsed({"--from", "English", "--to=German", "--engine", "Mistral", "--model", "m-1",
                "--prompt", "To {{target}}", "--trace", "--json", "some text"});
    ASSERT_TRUE(options);
    EXPECT_EQ(options->source, QStringLiteral("English"));
    EXPECT_EQ(options->target, QStringLiteral("German"));
    EXPECT_EQ(options->engine, AIProvider::mistral);
    EXPECT_EQ(options->model, QStringLiteral("m-1"));
    EXPECT_EQ(options->prompt, QStringLiteral("To {{target}}"));
    EXPECT_TRUE(options->trace);
    EXPECT_TRUE(options->json);
    EXPECT_EQ(options->text, QStringLiteral("some text"));
}

TEST(TranslateOptions, theSourceIsAutomaticAndTheTextFromStandardInputUnlessGiven)
{
    const auto options = parsed({"--to", "German"});
    ASSERT_TRUE(options);
    EXPECT_EQ(options->source, QStringLiteral("Any Language"));
    EXPECT_EQ(options->text, std::nullopt);
    EXPECT_EQ(parsed({"--to", "German", "-"})->text, std::nullopt);
}

TEST(TranslateOptions, aTextMayBeginWithAHyphenBehindTheSeparator)
{
    EXPECT_EQ(parsed({"--to", "German", "--", "--trace"})->text, QStringLiteral("--trace"));
}

TEST(TranslateOptions, saysWhatIsWrong)
{
    EXPECT_EQ(parsed({"text"}).error(), QStringLiteral("translate needs --to LANGUAGE"));
    EXPECT_EQ(parsed({"--to"}).error(), QStringLiteral("--to needs a value"));
    EXPECT_EQ(parsed({"--to", "German", "--engine", "Oracle"}).error(),
              QStringLiteral("there is no engine \"Oracle\""));
    EXPECT_EQ(parsed({"--to", "German", "--key", "x"}).error(),
              QStringLiteral("unknown option \"--key\""));
    EXPECT_EQ(parsed({"--to", "German", "two", "texts"}).error(),
              QStringLiteral("more than one text: put it into quotation marks"));
}

TEST(TranslateOptions, engineNamesForgiveCaseAndSeparators)
{
    EXPECT_EQ(engineFromName(QStringLiteral("chatgpt")), AIProvider::chatGPT);
    EXPECT_EQ(engineFromName(QStringLiteral("smart-offline")), AIProvider::smartOffline);
    EXPECT_EQ(engineFromName(QStringLiteral("Offline (MADLAD)")), AIProvider::fastOffline);
    EXPECT_EQ(engineFromName(QString()), std::nullopt);
}

TEST(TranslateOptions, choicesOfOneCallDoNotReachTheStore)
{
    OverlayUserDefaults store;
    store.setValue(QStringLiteral("zv.provider"), QStringLiteral("ChatGPT"));
    OverlayUserDefaults overlay(&store);
    applyOptions(*parsed({"--to", "German", "--model", "gpt-5", "--prompt", "P"}), overlay);
    EXPECT_EQ(overlay.string(QStringLiteral("zv.model.ChatGPT")), QStringLiteral("gpt-5"));
    EXPECT_EQ(overlay.string(QStringLiteral("zv.prompt")), QStringLiteral("P"));
    EXPECT_EQ(store.keys(), (QStringList{QStringLiteral("zv.provider")}));
}

TEST(TranslateOptions, readsTextInUtf8Only)
{
    QBuffer good;
    good.setData("gr\xc3\xbc\xc3\x9f\n");
    good.open(QIODevice::ReadOnly);
    EXPECT_EQ(readText(good).value(), QStringLiteral("grüß\n"));
    QBuffer bad;
    bad.setData("gr\xfc\xdf");
    bad.open(QIODevice::ReadOnly);
    EXPECT_EQ(readText(bad).error(), QStringLiteral("the text on standard input is not UTF-8"));
    QBuffer large;
    large.setData(QByteArray(16 * 1024 * 1024 + 1, 'a'));
    large.open(QIODevice::ReadOnly);
    EXPECT_EQ(readText(large).error(), QStringLiteral("the text is larger than 16 MiB"));
}

class TranslateRun : public ::testing::Test
{
protected:
    TranslateRun()
    {
        output.open(QIODevice::ReadWrite);
        error.open(QIODevice::ReadWrite);
        input.open(QIODevice::ReadWrite);
        settings.setApiKey(QStringLiteral("secret-key"));
    }

    static OverlayUserDefaults& seeded(OverlayUserDefaults& empty)
    {
        empty.setValue(QStringLiteral("zv.provider"), QStringLiteral("Mistral"));
        return empty;
    }

    ExitStatus run(const TranslateOptions& options, std::stop_token stop = {},
                   const QString& text = QStringLiteral("hello"))
    {
        return await(runTranslateCommand(options, text, settings, dispatch, trace, clock,
                                         {input, output, error}, stop));
    }

    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{seeded(defaults), backend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    TranslationTrace trace{clock};
    FakeHttpTransport transport;
    ChatCompletionsClient chat{transport, trace};
    TranslationDispatch dispatch{settings, defaults, trace, {&chat, nullptr, {}, nullptr}};
    QBuffer input;
    QBuffer output;
    QBuffer error;
};

TEST_F(TranslateRun, printsTheTranslationAlone)
{
    transport.answer(200, chatAnswer("Hallo"));
    EXPECT_EQ(run(*parsed({"--to", "German"})), ExitStatus::success);
    EXPECT_EQ(output.data(), "Hallo\n");
    EXPECT_EQ(error.data(), "");
}

TEST_F(TranslateRun, printsOneJsonObjectIfAsked)
{
    transport.answer(200, chatAnswer("Hallo"));
    EXPECT_EQ(run(*parsed({"--to", "German", "--json"})), ExitStatus::success);
    EXPECT_EQ(output.data(),
              "{\"engine\":\"Mistral\",\"milliseconds\":0,\"model\":\"mistral-small-latest\","
              "\"source\":\"Any Language\",\"target\":\"German\",\"translation\":\"Hallo\"}\n");
}

TEST_F(TranslateRun, reportsTheTimingOnStandardErrorIfAsked)
{
    transport.answer(200, chatAnswer("Hallo"));
    EXPECT_EQ(run(*parsed({"--to", "German", "--trace"})), ExitStatus::success);
    EXPECT_EQ(output.data(), "Hallo\n");
    EXPECT_TRUE(error.data().startsWith("Zelvane · translation timing\n"));
    EXPECT_TRUE(error.data().contains("API end · 5 chars"));
    EXPECT_FALSE(error.data().contains("secret-key"));
    EXPECT_FALSE(error.data().contains("hello"));
}

TEST_F(TranslateRun, aFailureIsASentenceOnStandardErrorAndStatusOne)
{
    transport.answer(500, "down");
    EXPECT_EQ(run(*parsed({"--to", "German"})), ExitStatus::failure);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "zelvane-desk: API error 500: down\n");
}

TEST_F(TranslateRun, anInterruptedOneSaysNothingAndHasAStatusOfItsOwn)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(int(run(*parsed({"--to", "German"}), stop.get_token())), 130);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "");
}

TEST_F(TranslateRun, aMissingKeyIsAFailure)
{
    settings.setApiKey(QString());
    EXPECT_EQ(run(*parsed({"--to", "German"})), ExitStatus::failure);
    EXPECT_EQ(error.data(),
              "zelvane-desk: there is no key for Mistral; set ZELVANE_API_KEY, or store one in the "
              "keyring\n");
}

TEST_F(TranslateRun, aMissingTextIsAFailure)
{
    EXPECT_EQ(run(*parsed({"--to", "German"}), {}, QStringLiteral(" \n")), ExitStatus::failure);
    EXPECT_EQ(error.data(), "zelvane-desk: there is no text to translate\n");
}

TEST_F(TranslateRun, anEngineThatIsNotInstalledIsAFailure)
{
    settings.setProvider(AIProvider::smartOffline);
    EXPECT_EQ(run(*parsed({"--to", "German"})), ExitStatus::failure);
    EXPECT_TRUE(error.data().endsWith(" is not installed; choose another one with --engine NAME\n"))
        << error.data().toStdString();
}

} // namespace
} // namespace zelvane::test
