#include "ui/manual/ManualTranslationModel.h"

#include "foundation/Completion.h"
#include "foundation/DescribedError.h"
#include "pipeline/TranslationError.h"
#include "support/FakeSecretBackend.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// A translator that answers when the test says so.
struct ScriptedTranslator
{
    QCoro::Task<QString> ask(QString asked, QString from, QString to, std::stop_token token)
    {
        ++calls;
        text = asked;
        source = from;
        target = to;
        stop = token;
        answer = Completion<QString>();
        const Completion<QString> mine = *answer;
        const std::stop_callback onStop(token, [mine] { mine.fail(CancellationError()); });
        const QString translated = co_await mine.result();
        co_return translated;
    }

    int calls = 0;
    QString text;
    QString source;
    QString target;
    std::stop_token stop;
    std::optional<Completion<QString>> answer;
};

LanguagePair pair(const QString& target, bool enabled = true)
{
    LanguagePair pair = pairFromAnyLanguage(target);
    pair.enabled = enabled;
    return pair;
}

class ManualTranslationModelTest : public ::testing::Test
{
protected:
    ManualTranslationModelTest()
    {
        settings.setProvider(AIProvider::mistral);
        QCoreApplication::processEvents();
        settings.setModel(QStringLiteral("mistral-x"));
        settings.setPairs({pair(QStringLiteral("German"))});
        model = std::make_unique<ManualTranslationModel>(
            settings, trace,
            ManualTranslationModel::Services{
                [this](QString text, QString source, QString target, std::stop_token stop) {
                    return translator.ask(text, source, target, stop);
                },
                [this](const QString& text) { clipboard = text; }});
    }

    [[nodiscard]] std::string report() const { return trace.report().toStdString(); }

    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    VirtualClock clock;
    TranslationTrace trace{clock};
    ScriptedTranslator translator;
    std::optional<QString> clipboard;
    std::unique_ptr<ManualTranslationModel> model;
};

TEST(ManualWindowSize, followsTheSetting)
{
    EXPECT_EQ(manualWindowContentSize(TranslationWindowSize::extraSmall), QSize(430, 390));
    EXPECT_EQ(manualWindowContentSize(TranslationWindowSize::small), QSize(520, 470));
    EXPECT_EQ(manualWindowContentSize(TranslationWindowSize::medium), QSize(640, 560));
    EXPECT_EQ(manualWindowContentSize(TranslationWindowSize::large), QSize(780, 680));
    EXPECT_EQ(manualWindowContentSize(TranslationWindowSize::extraLarge), QSize(940, 800));
}

TEST(DefaultManualTarget, isThatOfTheFirstPairThatNamesALanguage)
{
    EXPECT_EQ(defaultManualTarget({}), QStringLiteral("English (US)"));
    EXPECT_EQ(defaultManualTarget({pair(QStringLiteral("Any Language")),
                                   pair(QStringLiteral("French")), pair(QStringLiteral("German"))}),
              QStringLiteral("French"));
    EXPECT_EQ(defaultManualTarget({pair(QStringLiteral("Any Language"))}),
              QStringLiteral("English (US)"));
}

TEST_F(ManualTranslationModelTest, startsEmptyFromAnyLanguage)
{
    EXPECT_EQ(model->sourceLanguage(), QStringLiteral("Any Language"));
    EXPECT_EQ(model->targetLanguage(), QStringLiteral("German"));
    EXPECT_FALSE(model->isPinned());
    EXPECT_FALSE(model->canTranslate());
    EXPECT_FALSE(model->canCopy());
    EXPECT_EQ(model->statusText(), QStringLiteral("Esc to close"));
}

TEST_F(ManualTranslationModelTest, translatesBetweenTheChosenLanguages)
{
    model->setSourceBlank(false);
    EXPECT_TRUE(model->canTranslate());
    model->setSourceLanguage(QStringLiteral("Polish"));
    model->translate(QStringLiteral(" Cześć\n"));

    EXPECT_EQ(translator.text, QStringLiteral(" Cześć\n"));
    EXPECT_EQ(translator.source, QStringLiteral("Polish"));
    EXPECT_EQ(translator.target, QStringLiteral("German"));
    EXPECT_TRUE(model->isTranslating());
    EXPECT_FALSE(model->canTranslate());
    EXPECT_EQ(model->statusText(), QStringLiteral("Translating…"));

    translator.answer->succeed(QStringLiteral("Hallo!"));
    EXPECT_FALSE(model->isTranslating());
    EXPECT_EQ(model->translatedText(), QStringLiteral("Hallo!"));
    EXPECT_EQ(model->errorText(), QString());
    EXPECT_TRUE(model->canCopy());
}

TEST_F(ManualTranslationModelTest, leavesItsTrace)
{
    model->translate(QStringLiteral("Cześć"));
    EXPECT_THAT(report(), HasSubstr("manual"));
    EXPECT_THAT(report(), HasSubstr("mistral-x"));
    EXPECT_THAT(report(), HasSubstr("API begin"));
    EXPECT_THAT(report(), HasSubstr("chars: 5"));

    translator.answer->succeed(QStringLiteral("Hallo!"));
    EXPECT_THAT(report(), HasSubstr("API end"));
    EXPECT_THAT(report(), HasSubstr("6 chars"));
}

TEST_F(ManualTranslationModelTest, ignoresASecondPressWhileItTranslates)
{
    model->translate(QStringLiteral("one"));
    model->translate(QStringLiteral("two"));
    EXPECT_EQ(translator.calls, 1);
    EXPECT_EQ(translator.text, QStringLiteral("one"));
}

TEST_F(ManualTranslationModelTest, showsAFailureInsteadOfATranslation)
{
    model->translate(QStringLiteral("one"));
    translator.answer->succeed(QStringLiteral("eins"));
    model->translate(QStringLiteral("two"));
    EXPECT_EQ(model->translatedText(), QString());

    translator.answer->fail(TranslationError(TranslationError::Code::missingAPIKey));
    EXPECT_EQ(model->errorText(),
              QStringLiteral("API key is not set. Open Settings and add your key."));
    EXPECT_FALSE(model->isTranslating());
    EXPECT_FALSE(model->canCopy());
    EXPECT_THAT(report(), HasSubstr("error"));

    model->translate(QStringLiteral("three"));
    EXPECT_EQ(model->errorText(), QString());
}

TEST_F(ManualTranslationModelTest, anEmptyResultIsNoFailure)
{
    model->translate(QStringLiteral("one"));
    translator.answer->succeed(QString());
    EXPECT_EQ(model->errorText(), QString());
    EXPECT_FALSE(model->canCopy());
}

TEST_F(ManualTranslationModelTest, copiesUntilTheNextTranslation)
{
    model->copy();
    EXPECT_EQ(clipboard, std::nullopt);

    model->translate(QStringLiteral("one"));
    translator.answer->succeed(QStringLiteral("eins"));
    model->copy();
    EXPECT_EQ(clipboard, QStringLiteral("eins"));
    EXPECT_TRUE(model->copied());
    EXPECT_EQ(model->statusText(), QStringLiteral("Copied"));

    model->translate(QStringLiteral("two"));
    EXPECT_FALSE(model->copied());
}

TEST_F(ManualTranslationModelTest, closingCancelsTheTranslation)
{
    model->translate(QStringLiteral("one"));
    const auto answer = translator.answer;
    model.reset();
    EXPECT_TRUE(translator.stop.stop_requested());
    EXPECT_THAT(report(), HasSubstr("cancelled"));

    answer->succeed(QStringLiteral("eins"));
    EXPECT_THAT(report(), Not(HasSubstr("API end")));
    EXPECT_THAT(report(), Not(HasSubstr("error")));
}

TEST_F(ManualTranslationModelTest, anEngineThatCancelsByItselfIsNoFailure)
{
    model->translate(QStringLiteral("one"));
    translator.answer->fail(CancellationError());
    EXPECT_EQ(model->errorText(), QString());
    EXPECT_FALSE(model->isTranslating());
    EXPECT_THAT(report(), HasSubstr("cancelled"));
    EXPECT_THAT(report(), Not(HasSubstr("error")));
}

TEST_F(ManualTranslationModelTest, namesTheProvidersDefaultModelWhereNoneIsChosen)
{
    settings.setProvider(AIProvider::deepL);
    QCoreApplication::processEvents();
    settings.setModel(QString());
    model->translate(QStringLiteral("one"));
    EXPECT_THAT(report(), HasSubstr("model: deepl"));
}

} // namespace
} // namespace zelvane::test
