#include "ui/glossary/GlossaryDownloadsModel.h"

#include "settings/Localization.h"
#include "support/Await.h"
#include "support/FakeHttpTransport.h"
#include "support/FakeSecretBackend.h"
#include "support/PublishedDictionary.h"
#include "support/QtPrinters.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Control = GlossaryRow::Control;

GlossaryLanguage language(const char* code)
{
    return *resolveGlossaryLanguage(QString::fromUtf8(code));
}

const GlossaryPackage germanEnglish{language("de"), language("en-US")};
const GlossaryPackage frenchPolish{language("fr"), language("pl")};

class GlossaryDownloadsModelTest : public ::testing::Test
{
protected:
    GlossaryDownloadsModelTest()
    {
        settings.setPairs({});
        startWith(language("en-US"));
    }

    /// What a new process sees, for a user of this language.
    void startWith(const GlossaryLanguage& user)
    {
        model.reset();
        manager.emplace(GlossaryManager::Needs{defaults, transport, clock, folder.path(), user});
        await(manager->refreshInstalledDirections());
        open();
    }

    /// What the settings show when they are made.
    void open() { model = std::make_unique<GlossaryDownloadsModel>(settings, *manager); }

    void addPair(const char* source, const char* target, bool enabled = true)
    {
        settings.addPair();
        QList<LanguagePair> pairs = settings.pairs();
        pairs.last().source = QString::fromUtf8(source);
        pairs.last().target = QString::fromUtf8(target);
        pairs.last().enabled = enabled;
        settings.setPairs(pairs);
    }

    /// Both directions are on the disk and on the list.
    void installed(const GlossaryPackage& package)
    {
        const QString published = folder.filePath(QStringLiteral("published"));
        if (!QFile::exists(published)) {
            makeDictionary(published, "('Haus', 'house', 20.5, 0.1)");
        }
        transport.answer(200, contentsOf(published));
        transport.answer(200, contentsOf(published));
        await(manager->install(package));
        ASSERT_TRUE(manager->isInstalled(package));
    }

    QStringList labels() const
    {
        QStringList texts;
        for (const GlossaryRow& row : model->rows()) {
            texts += row.label;
        }
        return texts;
    }

    GlossaryRow only() const
    {
        const QList<GlossaryRow> rows = model->rows();
        EXPECT_EQ(rows.size(), 1);
        return rows.value(0, GlossaryRow{.package = germanEnglish, .label = {}, .detail = {}});
    }

    QTemporaryDir folder;
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    FakeHttpTransport transport;
    VirtualClock clock;
    std::optional<GlossaryManager> manager;
    std::unique_ptr<GlossaryDownloadsModel> model;
};

// --- Which packages are proposed

TEST_F(GlossaryDownloadsModelTest, proposesWhatTheEnabledPairsNeedInTheirOrder)
{
    addPair("French", "Polish");
    addPair("German", "English (US)");
    addPair("Spanish", "Italian", false);
    EXPECT_THAT(labels(), ElementsAre(QStringLiteral("French → Polish"),
                                      QStringLiteral("German → English (US)")));
}

TEST_F(GlossaryDownloadsModelTest, bothDirectionsOfAPairAreOneRow)
{
    addPair("German", "English (US)");
    addPair("English (UK)", "German");
    EXPECT_THAT(labels(), ElementsAre(QStringLiteral("German → English (US)")));
}

TEST_F(GlossaryDownloadsModelTest, anyLanguageStandsForTheUsersOwn)
{
    startWith(language("de"));
    addPair("Any Language", "French");
    EXPECT_THAT(labels(), ElementsAre(QStringLiteral("German → French"),
                                      QStringLiteral("German → English (US)")));
}

TEST_F(GlossaryDownloadsModelTest, aPairWithinOneLanguageOrWithAnUnknownOneProposesNothing)
{
    addPair("English (US)", "English (UK)");
    addPair("Any Language", "English (US)");
    addPair("Klingon", "German");
    addPair("German", "Klingon");
    EXPECT_THAT(labels(), IsEmpty());
}

TEST_F(GlossaryDownloadsModelTest, proposesTheUsersLanguageUnlessItIsEnglish)
{
    EXPECT_THAT(labels(), IsEmpty());
    startWith(language("en-GB"));
    EXPECT_THAT(labels(), IsEmpty());
    startWith(language("de"));
    EXPECT_THAT(labels(), ElementsAre(QStringLiteral("German → English (US)")));
}

TEST_F(GlossaryDownloadsModelTest, whatWasAskedForComesAfterWhatIsNeededAndBeforeWhatIsThere)
{
    installed(frenchPolish);
    addPair("Spanish", "Italian");
    model->setManualSource(QStringLiteral("Swedish"));
    model->setManualTarget(QStringLiteral("Danish"));
    transport.holdDownloads();
    model->installManual();
    EXPECT_THAT(labels(),
                ElementsAre(QStringLiteral("Spanish → Italian"), QStringLiteral("Swedish → Danish"),
                            QStringLiteral("French → Polish")));
}

TEST_F(GlossaryDownloadsModelTest, whatIsInstalledIsSortedAsItIsShown)
{
    installed({language("es"), language("fr")});
    installed({language("de"), language("en-US")});
    installed({language("cs"), language("fr")});
    EXPECT_THAT(labels(), ElementsAre(QStringLiteral("Czech → French"),
                                      QStringLiteral("German → English (US)"),
                                      QStringLiteral("Spanish → French")));
    installLocalization(&defaults, {});
    settings.setAppLanguage(AppLanguage::german);
    EXPECT_THAT(labels(), ElementsAre(QStringLiteral("Deutsch → Englisch (US)"),
                                      QStringLiteral("Spanisch → Französisch"),
                                      QStringLiteral("Tschechisch → Französisch")));
    installLocalization(nullptr);
}

TEST_F(GlossaryDownloadsModelTest, followsThePairsThatAreEditedBesideIt)
{
    int changes = 0;
    QObject::connect(model.get(), &GlossaryDownloadsModel::changed, [&] { ++changes; });
    addPair("German", "Polish");
    EXPECT_GE(changes, 1);
    EXPECT_THAT(labels(), ElementsAre(QStringLiteral("German → Polish")));
}

// --- What a row says

TEST_F(GlossaryDownloadsModelTest, aPackageThatIsNotThereCanBeDownloaded)
{
    addPair("German", "English (US)");
    EXPECT_EQ(only().control, Control::download);
    EXPECT_EQ(only().detail, QString());
    EXPECT_FALSE(only().isBusy);
}

TEST_F(GlossaryDownloadsModelTest, tellsWhichDictionaryIsOnItsWay)
{
    addPair("German", "English (US)");
    transport.holdDownloads();
    model->install(germanEnglish);
    ASSERT_TRUE(waitUntil([this] { return !transport.heldDownloads().empty(); }));
    EXPECT_EQ(only().detail, QStringLiteral("Downloading English (US) glossary…"));
    EXPECT_TRUE(only().isBusy);
    EXPECT_FALSE(only().isFailure);
    EXPECT_EQ(only().control, Control::none);
}

TEST_F(GlossaryDownloadsModelTest, tellsWhichDictionaryIsBeingPrepared)
{
    addPair("German", "English (US)");
    QStringList details;
    QObject::connect(model.get(), &GlossaryDownloadsModel::changed,
                     [&] { details += only().detail; });
    installed(germanEnglish);
    details.removeDuplicates();
    EXPECT_EQ(details.filter(QStringLiteral("…")),
              (QStringList{QStringLiteral("Downloading English (US) glossary…"),
                           QStringLiteral("Preparing English (US) glossary…"),
                           QStringLiteral("Downloading German glossary…"),
                           QStringLiteral("Preparing German glossary…")}));
}

TEST_F(GlossaryDownloadsModelTest, aFailureStaysWithAButtonThatChangesNothing)
{
    addPair("German", "English (US)");
    transport.answer(404, {});
    await(manager->install(germanEnglish));
    EXPECT_TRUE(only().isFailure);
    EXPECT_FALSE(only().isBusy);
    EXPECT_EQ(only().control, Control::retry);
    EXPECT_TRUE(only().detail.contains(QStringLiteral("404"))) << qPrintable(only().detail);

    const auto requests = transport.requests().size();
    model->install(germanEnglish);
    QCoreApplication::processEvents();
    EXPECT_EQ(transport.requests().size(), requests);
    EXPECT_TRUE(only().isFailure);
}

TEST_F(GlossaryDownloadsModelTest, whatIsInstalledShowsItsSizeAndCanBeDeleted)
{
    installed(germanEnglish);
    EXPECT_EQ(only().detail, QStringLiteral("32 bytes"));
    EXPECT_EQ(only().control, Control::remove);

    model->remove(germanEnglish);
    EXPECT_THAT(labels(), IsEmpty());
}

TEST_F(GlossaryDownloadsModelTest, whatAPairStillNeedsStaysInTheListWhenItIsDeleted)
{
    addPair("German", "English (US)");
    installed(germanEnglish);
    EXPECT_EQ(only().control, Control::remove);
    model->remove(germanEnglish);
    EXPECT_EQ(only().label, QStringLiteral("German → English (US)"));
    EXPECT_EQ(only().control, Control::download);
}

TEST_F(GlossaryDownloadsModelTest, anActivityCountsMoreThanWhatIsInstalled)
{
    installed(germanEnglish);
    ASSERT_TRUE(
        QFile::remove(folder.filePath(QStringLiteral("glossaries/wikdict-2_2026-06/de-en.tsv"))));
    await(manager->refreshInstalledDirections());
    EXPECT_EQ(only().control, Control::download);
    transport.holdDownloads();
    model->install(germanEnglish);
    EXPECT_TRUE(only().isBusy);
    EXPECT_EQ(only().control, Control::none);
}

TEST_F(GlossaryDownloadsModelTest, aLanguageWithoutDictionariesHasNoButton)
{
    addPair("Korean", "English (US)");
    EXPECT_EQ(only().label, QStringLiteral("Korean → English (US)"));
    EXPECT_EQ(only().detail, QStringLiteral("No data"));
    EXPECT_EQ(only().control, Control::none);
    EXPECT_FALSE(only().isFailure);
}

// --- The row for any other pair

TEST_F(GlossaryDownloadsModelTest, offersTheLanguagesWithDictionariesByTheirNames)
{
    EXPECT_EQ(GlossaryDownloadsModel::glossaryLanguageOptions().join(u'|'),
              QStringLiteral("Bulgarian|Catalan|Chinese (Simplified)|Czech|Danish|Dutch|"
                             "English (UK)|English (US)|Finnish|French|German|Greek|Indonesian|"
                             "Irish|Italian|Japanese|Kurdish|Latin|Lithuanian|Malagasy|Norwegian|"
                             "Polish|Portuguese|Russian|Spanish|Swedish|Turkish"));
}

TEST_F(GlossaryDownloadsModelTest, startsBetweenEnglishAndPolish)
{
    EXPECT_EQ(model->manualSource(), QStringLiteral("English (US)"));
    EXPECT_EQ(model->manualTarget(), QStringLiteral("Polish"));
    EXPECT_EQ(model->manualPackage(), (GlossaryPackage{language("en-US"), language("pl")}));
    EXPECT_TRUE(model->canDownloadManual());
    EXPECT_EQ(model->manualProblem(), QString());
}

TEST_F(GlossaryDownloadsModelTest, downloadsWhatWasChosenOnce)
{
    transport.holdDownloads();
    model->installManual();
    ASSERT_TRUE(waitUntil([this] { return !transport.heldDownloads().empty(); }));
    EXPECT_EQ(only().label, QStringLiteral("English (US) → Polish"));
    EXPECT_FALSE(model->canDownloadManual());
    model->installManual();
    EXPECT_EQ(transport.requests().size(), 1U);
}

TEST_F(GlossaryDownloadsModelTest, downloadsNothingThatIsThereInEitherDirection)
{
    installed({language("pl"), language("en-GB")});
    EXPECT_FALSE(model->canDownloadManual());
    model->installManual();
    EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(GlossaryDownloadsModelTest, downloadsNothingWithinALanguage)
{
    model->setManualSource(QStringLiteral("English (UK)"));
    model->setManualTarget(QStringLiteral("English (US)"));
    EXPECT_EQ(model->manualPackage(), std::nullopt);
    EXPECT_FALSE(model->canDownloadManual());
    model->installManual();
    EXPECT_TRUE(transport.requests().empty());
    EXPECT_THAT(labels(), IsEmpty());
}

TEST_F(GlossaryDownloadsModelTest, downloadsNothingOfAnUnknownLanguage)
{
    model->setManualSource(QStringLiteral("Klingon"));
    EXPECT_EQ(model->manualPackage(), std::nullopt);
    EXPECT_FALSE(model->canDownloadManual());
}

TEST_F(GlossaryDownloadsModelTest, saysOfWhichLanguageThereAreNoDictionaries)
{
    model->setManualTarget(QStringLiteral("Korean"));
    EXPECT_EQ(model->manualProblem(), QStringLiteral("No glossary data is published for Korean."));
    EXPECT_FALSE(model->canDownloadManual());
    model->setManualSource(QStringLiteral("Hindi"));
    EXPECT_EQ(model->manualProblem(), QStringLiteral("No glossary data is published for Hindi."));
    model->installManual();
    EXPECT_THAT(labels(), IsEmpty());
}

TEST_F(GlossaryDownloadsModelTest, aDownloadGoesOnWithoutTheListThatStartedIt)
{
    transport.holdDownloads();
    model->installManual();
    ASSERT_TRUE(waitUntil([this] { return !transport.heldDownloads().empty(); }));
    model.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(manager->activities().size(), 1);
    open();
    // What was asked for is forgotten; nothing else proposes it until it is there.
    EXPECT_THAT(labels(), IsEmpty());
    EXPECT_FALSE(model->canDownloadManual());
}

} // namespace
} // namespace zelvane::test
