#include "ui/settings/ModelListModel.h"

#include "foundation/Completion.h"
#include "foundation/DescribedError.h"
#include "pipeline/TranslationError.h"
#include "settings/UserDefaults.h"
#include "support/Await.h"
#include "support/FakeSecretBackend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace zelvane::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

const QString openAIAccount = QStringLiteral("zv.apiKey.ChatGPT");

/// A listing that answers when the test says so.
class ScriptedListing
{
public:
    struct Call
    {
        AIProvider provider;
        QString key;
        Completion<QList<RemoteModel>> answer;
        std::stop_token stop;
    };

    ModelListModel::Fetch fetch()
    {
        return [this](AIProvider provider, QString key, std::stop_token stop) {
            return ask(provider, std::move(key), std::move(stop));
        };
    }

    QList<Call> calls;

private:
    QCoro::Task<QList<RemoteModel>> ask(AIProvider provider, QString key, std::stop_token stop)
    {
        const Completion<QList<RemoteModel>> answer;
        calls.append({provider, key, answer, stop});
        const std::stop_callback onStop(stop, [answer] { answer.fail(CancellationError()); });
        const auto models = co_await answer.result();
        co_return models;
    }
};

const QList<RemoteModel> listed{{QStringLiteral("gpt-a"), QStringLiteral("GPT A")},
                                {QStringLiteral("gpt-b"), QStringLiteral("GPT B")}};

class ModelListModelTest : public ::testing::Test
{
protected:
    ModelListModelTest()
    {
        settings.setProvider(AIProvider::chatGPT);
        QCoreApplication::processEvents();
    }

    /// The model, of a user who has stored `key`.
    ModelListModel& opened(const QString& key = QStringLiteral(" sk-1 "))
    {
        settings.setApiKey(key);
        model = std::make_unique<ModelListModel>(settings, listing.fetch());
        model->load();
        return *model;
    }

    void answer(qsizetype call, const QList<RemoteModel>& models)
    {
        listing.calls[call].answer.succeed(models);
        QCoreApplication::processEvents();
    }

    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    ScriptedListing listing;
    std::unique_ptr<ModelListModel> model;
};

TEST_F(ModelListModelTest, loadsTheModelsOfAKeyWhenItIsOpened)
{
    ModelListModel& model = opened();
    ASSERT_THAT(listing.calls, SizeIs(1));
    EXPECT_EQ(listing.calls[0].provider, AIProvider::chatGPT);
    EXPECT_EQ(listing.calls[0].key, QStringLiteral("sk-1"));
    EXPECT_TRUE(model.isLoadingModels());

    answer(0, listed);
    EXPECT_FALSE(model.isLoadingModels());
    EXPECT_EQ(model.remoteModels(), listed);
    EXPECT_TRUE(model.apiKeyVerified());
    EXPECT_EQ(model.modelsError(), QString());
    EXPECT_FALSE(model.allowCustomModel());
    EXPECT_EQ(backend.items.value(openAIAccount), QByteArray("sk-1"));
}

TEST_F(ModelListModelTest, aKeyForThisRunIsTriedAndNotStored)
{
    settings.setApiKey(QStringLiteral("sk-1"));
    model = std::make_unique<ModelListModel>(settings, listing.fetch(), QStringLiteral("sk-1"));
    model->load();
    answer(0, listed);
    EXPECT_TRUE(model->apiKeyVerified());
    EXPECT_EQ(model->modelsError(), QString());
    EXPECT_FALSE(backend.items.contains(openAIAccount));

    model->saveKey(QStringLiteral("sk-1"));
    answer(1, listed);
    EXPECT_EQ(backend.items.value(openAIAccount), QByteArray("sk-1"));
}

TEST_F(ModelListModelTest, asksNobodyWithoutAKey)
{
    ModelListModel& model = opened(QStringLiteral(" \n"));
    EXPECT_THAT(listing.calls, IsEmpty());
    EXPECT_FALSE(model.isLoadingModels());
    EXPECT_FALSE(model.apiKeyVerified());
}

TEST_F(ModelListModelTest, asksNobodyForEnginesWithoutAListing)
{
    ModelListModel& model = opened();
    answer(0, listed);
    for (const AIProvider provider :
         {AIProvider::deepL, AIProvider::zelvane, AIProvider::smartOffline,
          AIProvider::balancedOffline, AIProvider::fastOffline}) {
        settings.setProvider(provider);
        QCoreApplication::processEvents();
        settings.setApiKey(QStringLiteral("k"));
        model.refresh();
        EXPECT_THAT(listing.calls, SizeIs(1));
        EXPECT_THAT(model.remoteModels(), IsEmpty());
        EXPECT_FALSE(model.apiKeyVerified());
    }
}

TEST_F(ModelListModelTest, aFailureTakesTheListAndTheProofAway)
{
    ModelListModel& model = opened();
    answer(0, listed);
    model.refresh();
    EXPECT_EQ(model.remoteModels(), listed);

    listing.calls[1].answer.fail(TranslationError::http(401, QStringLiteral("no")));
    QCoreApplication::processEvents();
    EXPECT_THAT(model.remoteModels(), IsEmpty());
    EXPECT_FALSE(model.apiKeyVerified());
    EXPECT_EQ(model.modelsError(), TranslationError::http(401, QStringLiteral("no")).description());
    EXPECT_FALSE(model.isLoadingModels());
}

TEST_F(ModelListModelTest, aKeyThatCannotBeStoredStaysVerified)
{
    backend.addStatus = SecretStatus::otherFailure;
    ModelListModel& model = opened();
    answer(0, listed);
    EXPECT_TRUE(model.apiKeyVerified());
    EXPECT_EQ(model.remoteModels(), listed);
    EXPECT_EQ(model.modelsError(),
              QStringLiteral("API key works, but it could not be saved to Keychain. Try saving the "
                             "key again."));
}

TEST_F(ModelListModelTest, anEmptyListLetsTheUserTypeAModel)
{
    ModelListModel& model = opened();
    answer(0, {});
    EXPECT_TRUE(model.allowCustomModel());
    EXPECT_TRUE(model.apiKeyVerified());
    EXPECT_EQ(model.modelsError(),
              QStringLiteral("No models returned. You can type a model ID manually."));
}

TEST_F(ModelListModelTest, aModelThatIsNotListedStaysTheUsersChoice)
{
    settings.setModel(QStringLiteral("gpt-old"));
    opened();
    answer(0, listed);
    EXPECT_EQ(settings.model(), QStringLiteral("gpt-old"));
}

TEST_F(ModelListModelTest, noModelBecomesTheProvidersDefault)
{
    settings.setModel(QString());
    opened();
    answer(0, listed);
    EXPECT_EQ(settings.model(), defaultModel(AIProvider::chatGPT));
    EXPECT_FALSE(settings.model().isEmpty());
}

TEST_F(ModelListModelTest, aListedModelStaysTheUsersChoice)
{
    settings.setModel(QStringLiteral("gpt-b"));
    opened();
    answer(0, listed);
    EXPECT_EQ(settings.model(), QStringLiteral("gpt-b"));
}

TEST_F(ModelListModelTest, theDefaultThatFillsAnEmptyModelIsStored)
{
    settings.setModel(QString());
    opened();
    EXPECT_EQ(defaults.string(QStringLiteral("zv.model.ChatGPT")), QString());
    answer(0, listed);
    EXPECT_EQ(settings.model(), QStringLiteral("gpt-5-nano"));
    EXPECT_EQ(defaults.string(QStringLiteral("zv.model.ChatGPT")), QStringLiteral("gpt-5-nano"));
}

TEST_F(ModelListModelTest, anEmptyListChangesNoModel)
{
    settings.setModel(QString());
    opened();
    answer(0, {});
    EXPECT_EQ(settings.model(), QString());
}

TEST_F(ModelListModelTest, thatTheListIsEmptyIsToldRatherThanThatTheKeyIsNotStored)
{
    backend.addStatus = SecretStatus::otherFailure;
    ModelListModel& model = opened();
    answer(0, {});
    EXPECT_TRUE(model.apiKeyVerified());
    EXPECT_EQ(model.modelsError(),
              QStringLiteral("No models returned. You can type a model ID manually."));
}

TEST_F(ModelListModelTest, doesNotAskTwiceAtATimeUnlessTheUserInsists)
{
    ModelListModel& model = opened();
    model.load();
    EXPECT_THAT(listing.calls, SizeIs(1));
    EXPECT_FALSE(listing.calls[0].stop.stop_requested());
    answer(0, listed);
    model.load();
    EXPECT_THAT(listing.calls, SizeIs(2));
}

TEST_F(ModelListModelTest, aFailureIsForgottenWhileTheNextLoadIsOnItsWay)
{
    ModelListModel& model = opened();
    listing.calls[0].answer.fail(TranslationError::http(503, QStringLiteral("later")));
    QCoreApplication::processEvents();
    EXPECT_NE(model.modelsError(), QString());
    EXPECT_EQ(settings.model(), QStringLiteral("gpt-5-nano"));
    model.refresh();
    EXPECT_EQ(model.modelsError(), QString());
    EXPECT_TRUE(model.isLoadingModels());
}

TEST_F(ModelListModelTest, aFailureIsForgottenWithTheKey)
{
    ModelListModel& model = opened();
    listing.calls[0].answer.fail(TranslationError::http(401, QStringLiteral("no")));
    QCoreApplication::processEvents();
    model.saveKey(QString());
    EXPECT_EQ(model.modelsError(), QString());
    EXPECT_FALSE(model.isLoadingModels());
}

TEST_F(ModelListModelTest, anotherKeyTakesThePlaceOfTheOneThatIsBeingTried)
{
    ModelListModel& model = opened();
    model.saveKey(QStringLiteral("sk-2"));
    ASSERT_THAT(listing.calls, SizeIs(2));
    EXPECT_TRUE(listing.calls[0].stop.stop_requested());
    listing.calls[1].answer.fail(TranslationError::http(401, QStringLiteral("no")));
    QCoreApplication::processEvents();
    EXPECT_FALSE(model.apiKeyVerified());
    // What was not proved is not stored.
    EXPECT_FALSE(backend.items.contains(openAIAccount));
}

/// Answers although it was asked to stop.
QCoro::Task<QList<RemoteModel>> stubborn(Completion<QList<RemoteModel>> answer)
{
    const auto models = co_await answer.result();
    co_return models;
}

TEST_F(ModelListModelTest, anAnswerForAnotherProviderChangesNothing)
{
    const Completion<QList<RemoteModel>> late;
    settings.setApiKey(QStringLiteral("sk-1"));
    model = std::make_unique<ModelListModel>(
        settings, [late](AIProvider, QString, std::stop_token) { return stubborn(late); });
    model->load();
    settings.setProvider(AIProvider::mistral);
    QCoreApplication::processEvents();
    model->saveKey(QString());
    late.succeed(listed); // which goes on inside the call
    EXPECT_THAT(model->remoteModels(), IsEmpty());
    EXPECT_FALSE(model->apiKeyVerified());
    EXPECT_FALSE(model->isLoadingModels());
    EXPECT_TRUE(backend.items.isEmpty());
}

TEST_F(ModelListModelTest, anotherProviderForgetsTheErrorAndTheProofOfTheLast)
{
    ModelListModel& model = opened();
    backend.addStatus = SecretStatus::otherFailure;
    answer(0, listed);
    EXPECT_TRUE(model.apiKeyVerified());
    EXPECT_NE(model.modelsError(), QString());
    settings.setProvider(AIProvider::mistral);
    EXPECT_FALSE(model.apiKeyVerified());
    EXPECT_EQ(model.modelsError(), QString());
    EXPECT_THAT(model.remoteModels(), IsEmpty());
}

TEST_F(ModelListModelTest, refreshingTakesThePlaceOfALoadOnItsWay)
{
    ModelListModel& model = opened();
    model.refresh();
    ASSERT_THAT(listing.calls, SizeIs(2));
    EXPECT_TRUE(listing.calls[0].stop.stop_requested());
    EXPECT_TRUE(model.isLoadingModels());
    answer(1, listed);
    EXPECT_EQ(model.remoteModels(), listed);
}

TEST_F(ModelListModelTest, anotherProviderStartsAfresh)
{
    ModelListModel& model = opened();
    settings.setProvider(AIProvider::mistral);
    QCoreApplication::processEvents();
    EXPECT_TRUE(listing.calls[0].stop.stop_requested());
    EXPECT_FALSE(model.isLoadingModels());
    EXPECT_THAT(listing.calls, SizeIs(1));

    backend.items.clear();
    model.saveKey(QStringLiteral(" m-2\n"));
    ASSERT_THAT(listing.calls, SizeIs(2));
    EXPECT_EQ(listing.calls[1].provider, AIProvider::mistral);
    EXPECT_EQ(listing.calls[1].key, QStringLiteral("m-2"));
}

TEST_F(ModelListModelTest, loadsOnceTheKeyOfANewProviderHasArrived)
{
    opened();
    answer(0, listed);
    settings.setProvider(AIProvider::mistral);
    QCoreApplication::processEvents();
    settings.setProvider(AIProvider::chatGPT);
    ASSERT_TRUE(waitUntil([this] { return listing.calls.size() == 2; }));
    EXPECT_EQ(listing.calls[1].provider, AIProvider::chatGPT);
    EXPECT_EQ(listing.calls[1].key, QStringLiteral("sk-1"));
}

TEST_F(ModelListModelTest, showsNoProviderTheKeyOfAnother)
{
    backend.items.insert(QStringLiteral("zv.apiKey.Mistral"), QByteArray("m-1"));
    defaults.setValue(QStringLiteral("zv.keychain.has.zv.apiKey.Mistral"), true);
    opened(QStringLiteral("sk-1"));
    answer(0, listed);
    settings.setProvider(AIProvider::mistral);
    ASSERT_TRUE(waitUntil([this] { return listing.calls.size() == 2; }));
    QCoreApplication::processEvents();
    ASSERT_THAT(listing.calls, SizeIs(2));
    EXPECT_EQ(listing.calls[1].provider, AIProvider::mistral);
    EXPECT_EQ(listing.calls[1].key, QStringLiteral("m-1"));
}

TEST_F(ModelListModelTest, anEmptiedKeyIsDeletedFromTheStore)
{
    ModelListModel& model = opened();
    answer(0, listed);
    ASSERT_TRUE(backend.items.contains(openAIAccount));
    model.saveKey(QStringLiteral("  "));
    EXPECT_FALSE(backend.items.contains(openAIAccount));
    EXPECT_FALSE(model.apiKeyVerified());
    EXPECT_THAT(model.remoteModels(), IsEmpty());
    EXPECT_EQ(settings.apiKey(), QString());
}

TEST_F(ModelListModelTest, aKeyThatNoListingCanProveIsStoredAsItIs)
{
    settings.setProvider(AIProvider::deepL);
    QCoreApplication::processEvents();
    ModelListModel& model = opened(QString());
    model.saveKey(QStringLiteral(" dl-1\n"));
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey.DeepL")), QByteArray("dl-1"));
    EXPECT_EQ(model.modelsError(), QString());
    EXPECT_FALSE(model.apiKeyVerified());
    EXPECT_THAT(listing.calls, IsEmpty());

    model.saveKey(QString());
    EXPECT_FALSE(backend.items.contains(QStringLiteral("zv.apiKey.DeepL")));
}

TEST_F(ModelListModelTest, tellsThatAKeyWhichNothingProvesCouldNotBeStored)
{
    backend.addStatus = SecretStatus::otherFailure;
    settings.setProvider(AIProvider::deepL);
    QCoreApplication::processEvents();
    ModelListModel& model = opened(QString());
    model.saveKey(QStringLiteral("dl-1"));
    EXPECT_EQ(model.modelsError(),
              QStringLiteral("The API key could not be saved. Try saving the key again."));
    EXPECT_EQ(settings.apiKey(), QStringLiteral("dl-1"));
}

TEST_F(ModelListModelTest, anAnswerAfterTheEndIsNobodys)
{
    opened();
    model.reset();
    EXPECT_TRUE(listing.calls[0].stop.stop_requested());
    answer(0, listed);
    EXPECT_FALSE(backend.items.contains(openAIAccount));
}

} // namespace
} // namespace zelvane::test
