#include "cli/ModelsCommand.h"

#include "cli/EngineChoice.h"
#include "support/Await.h"
#include "support/FakeHttpTransport.h"
#include "support/FakeSecretBackend.h"

#include <gtest/gtest.h>

#include <QBuffer>

namespace zelvane::test {
namespace {

std::expected<ModelsOptions, QString> parsed(std::initializer_list<const char*> words)
{
    QStringList arguments;
    for (const char* word : words) {
        arguments << QString::fromUtf8(word);
    }
    return parseModelsOptions(arguments);
}

TEST(ModelsOptions, readsEveryOption)
{
    const auto options = parsed({"--json", "--engine", "claude"});
    ASSERT_TRUE(options);
    EXPECT_EQ(options->engine, AIProvider::claude);
    EXPECT_TRUE(options->json);
    EXPECT_FALSE(options->help);
    EXPECT_EQ(parsed({"--engine=DeepL"})->engine, AIProvider::deepL);
    EXPECT_TRUE(parsed({"--help"})->help);
    EXPECT_TRUE(parsed({"-h"})->help);
}

TEST(ModelsOptions, leavesTheEngineToTheSettingsUnlessGiven)
{
    EXPECT_EQ(parsed({})->engine, std::nullopt);
    EXPECT_FALSE(parsed({})->json);
}

TEST(ModelsOptions, saysWhatIsWrong)
{
    EXPECT_EQ(parsed({"--engine"}).error(), QStringLiteral("--engine needs a value"));
    EXPECT_EQ(parsed({"--engine", "Oracle"}).error(),
              QStringLiteral("there is no engine \"Oracle\""));
    EXPECT_EQ(parsed({"--engine="}).error(), QStringLiteral("there is no engine \"\""));
    EXPECT_EQ(parsed({"--key", "x"}).error(), QStringLiteral("unknown option \"--key\""));
    EXPECT_EQ(parsed({"gemini"}).error(), QStringLiteral("models takes no argument \"gemini\""));
}

class ModelsRun : public ::testing::Test
{
protected:
    ModelsRun()
    {
        for (QBuffer* buffer : {&input, &output, &error}) {
            buffer->open(QIODevice::ReadWrite);
        }
    }

    ExitStatus run(AIProvider provider, const ModelsOptions& options = {},
                   const std::stop_token& stop = {})
    {
        OverlayUserDefaults overlay;
        chooseEngine(provider, overlay);
        SecretStore secrets(overlay, backend);
        AppSettings settings(overlay, secrets, QStringLiteral("English (US)"));
        settings.setApiKey(key);
        return await(runModelsCommand(options, settings, models, {input, output, error}, stop));
    }

    QString key = QStringLiteral("secret-key");
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    FakeHttpTransport transport;
    RemoteModels models{transport, defaults, nullptr};
    QBuffer input;
    QBuffer output;
    QBuffer error;
};

TEST_F(ModelsRun, printsOneIdentifierOnEachLine)
{
    transport.answer(200, R"({"data":[{"id":"gpt-5-nano"},{"id":"whisper-1"},{"id":"gpt-4o"}]})");
    EXPECT_EQ(run(AIProvider::chatGPT), ExitStatus::success);
    EXPECT_EQ(output.data(), "gpt-4o\ngpt-5-nano\n");
    EXPECT_EQ(error.data(), "");
    EXPECT_EQ(transport.requests().front().headers.first().second, "Bearer secret-key");
}

TEST_F(ModelsRun, printsOneJsonObjectIfAsked)
{
    transport.answer(200, R"({"data":[{"id":"claude-1","display_name":"Claude \"One\""}]})");
    EXPECT_EQ(run(AIProvider::claude, *parsed({"--json"})), ExitStatus::success);
    EXPECT_EQ(output.data(), R"({"engine":"Claude","models":[{"apiID":"claude-1",)"
                             R"("label":"Claude \"One\""}]})"
                             "\n");
}

TEST_F(ModelsRun, keepsAnIdentifierOnItsLine)
{
    transport.answer(200, R"({"data":[{"id":"grok\n\\1"}]})");
    EXPECT_EQ(run(AIProvider::grok), ExitStatus::success);
    EXPECT_EQ(output.data(), "grok\\n\\\\1\n");
}

TEST_F(ModelsRun, printsNothingForAnEngineWithoutAChoice)
{
    EXPECT_EQ(run(AIProvider::deepL), ExitStatus::success);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(run(AIProvider::smartOffline, *parsed({"--json"})), ExitStatus::success);
    EXPECT_EQ(output.data(), "{\"engine\":\"Smart Offline\",\"models\":[]}\n");
    EXPECT_TRUE(transport.requests().empty());
}

TEST_F(ModelsRun, aFailureIsASentenceOnStandardErrorAndStatusOne)
{
    transport.answer(401, "wrong key: secret-key");
    EXPECT_EQ(run(AIProvider::mistral), ExitStatus::failure);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "zelvane-desk: API error 401: wrong key: ***\n");
}

TEST_F(ModelsRun, aMissingKeyIsAFailure)
{
    key.clear();
    EXPECT_EQ(run(AIProvider::gemini), ExitStatus::failure);
    EXPECT_EQ(error.data(), "zelvane-desk: there is no key for Gemini; set ZELVANE_API_KEY, or "
                            "store one in the keyring\n");
    EXPECT_TRUE(transport.requests().empty());
}

TEST_F(ModelsRun, aCancellationSaysNothing)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(run(AIProvider::gemini, {}, stop.get_token()), ExitStatus::interrupted);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "");
}

} // namespace
} // namespace zelvane::test
