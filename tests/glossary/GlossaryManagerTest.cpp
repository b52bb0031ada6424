#include "glossary/GlossaryManager.h"

#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "settings/FileUserDefaults.h"
#include "settings/Localization.h"
#include "support/Await.h"
#include "support/FakeHttpTransport.h"
#include "support/LoopbackHttpServer.h"
#include "support/PublishedDictionary.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QScopeGuard>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;

GlossaryLanguage language(const char* code)
{
    return *resolveGlossaryLanguage(QString::fromUtf8(code));
}

const GlossaryPackage germanEnglish{language("de"), language("en-US")};
const GlossaryPackage englishGerman{language("en-GB"), language("de")};
const GlossaryPackage frenchEnglish{language("fr"), language("en-US")};
const QString germanKey = QStringLiteral("de-en");
const QString frenchKey = QStringLiteral("en-fr");
const QString packagesKey = QStringLiteral("zv.glossaryPackages.wikdict-2_2026-06");

std::string text(const GlossaryManager::Activity& activity)
{
    if (const auto* downloading = std::get_if<GlossaryManager::Downloading>(&activity)) {
        return "downloading " + downloading->languageCode.toStdString();
    }
    if (const auto* preparing = std::get_if<GlossaryManager::Preparing>(&activity)) {
        return "preparing " + preparing->languageCode.toStdString();
    }
    return "failed " + std::get<GlossaryManager::Failed>(activity).message.toStdString();
}

QStringList sorted(const QSet<QString>& set)
{
    QStringList list(set.begin(), set.end());
    list.sort();
    return list;
}

class GlossaryManagerTest : public ::testing::Test
{
protected:
    GlossaryManagerTest()
    {
        makeDictionary(root.filePath(QStringLiteral("published")), "('Haus', 'house', 20.5, 0.1)");
        published = contentsOf(root.filePath(QStringLiteral("published")));
        start();
    }

    /// What a new process sees.
    void start()
    {
        manager.reset();
        manager.emplace(
            GlossaryManager::Needs{defaults, transport, clock, support, language("en-US")});
        await(manager->refreshInstalledDirections());
        noteChanges();
    }

    void noteChanges()
    {
        QObject::connect(&*manager, &GlossaryManager::directionChanged, &*manager,
                         [this](const QString& key) { changed += key; });
        notifier = manager->bindableActivities().addNotifier([this] {
            const auto activities = manager->activities();
            history.push_back(activities.contains(germanKey) ? text(activities[germanKey]) : "-");
        });
    }

    void install(const GlossaryPackage& package) { await(manager->install(package)); }

    /// What is going on with a package; empty if nothing is.
    std::string activity(const QString& key) const
    {
        const auto activities = manager->activities();
        return activities.contains(key) ? text(activities[key]) : "";
    }

    QString edition(const char* name = "") const
    {
        return support + QStringLiteral("/glossaries/wikdict-2_2026-06/") + QString::fromUtf8(name);
    }
    /// The downloads that are still there.
    QStringList leftovers() const
    {
        return namesIn(edition(".downloads")).filter(QStringLiteral("sqlite3"));
    }

    QTemporaryDir root;
    QString support = root.filePath(QStringLiteral("data/org.zelvane.desk"));
    QByteArray published;
    OverlayUserDefaults defaults;
    FakeHttpTransport transport;
    VirtualClock clock;
    QStringList changed;
    std::vector<std::string> history;
    std::optional<GlossaryManager> manager;
    QPropertyNotifier notifier;
};

TEST_F(GlossaryManagerTest, InstallsBothDirectionsOfAPackage)
{
    transport.answer(200, published);
    transport.answer(200, published);
    install(germanEnglish);
    EXPECT_EQ(contentsOf(edition("de-en.tsv")), "Haus\thouse\t20.5\n");
    EXPECT_EQ(contentsOf(edition("en-de.tsv")), "Haus\thouse\t20.5\n");
    ASSERT_EQ(transport.requests().size(), 2);
    EXPECT_EQ(transport.requests()[0].url.toString(),
              QStringLiteral("https://download.wikdict.com/dictionaries/sqlite/2_2026-06/"
                             "de-en.sqlite3"));
    EXPECT_EQ(transport.requests()[1].url.path(),
              QStringLiteral("/dictionaries/sqlite/2_2026-06/en-de.sqlite3"));
    EXPECT_EQ(history, (std::vector<std::string>{"downloading en-US", "preparing en-US",
                                                 "downloading de", "preparing de", "-"}));
    EXPECT_TRUE(manager->isInstalled(germanEnglish));
    EXPECT_EQ(manager->installedPackages(), QList{germanEnglish});
    EXPECT_EQ(sorted(manager->installedDirections()),
              (QStringList{QStringLiteral("de-en"), QStringLiteral("en-de")}));
    EXPECT_EQ(manager->installedSize(germanEnglish), 32);
    EXPECT_EQ(changed, (QStringList{QStringLiteral("de-en"), QStringLiteral("en-de")}));
    EXPECT_TRUE(waitUntil([&] { return leftovers().isEmpty(); }));
}

TEST_F(GlossaryManagerTest, RemembersItsPackages)
{
    for (int i = 0; i < 4; ++i) {
        transport.answer(200, published);
    }
    install(englishGerman);
    install(frenchEnglish);
    EXPECT_EQ(defaults.data(packagesKey),
              QByteArrayLiteral(R"([{"sourceCode":"en-GB","targetCode":"de"},)"
                                R"({"sourceCode":"fr","targetCode":"en-US"}])"));
    start();
    EXPECT_EQ(manager->installedPackages(), (QList{englishGerman, frenchEnglish}));
    EXPECT_TRUE(manager->isInstalled(frenchEnglish));
    EXPECT_TRUE(manager->activities().isEmpty());
}

TEST_F(GlossaryManagerTest, TakesAllVariantsAndBothDirectionsForOnePackage)
{
    transport.answer(200, published);
    transport.answer(200, published);
    install(germanEnglish);
    EXPECT_TRUE(manager->isInstalled(englishGerman));
    install(englishGerman); // finds both files
    EXPECT_EQ(transport.requests().size(), 2);
    EXPECT_EQ(manager->installedPackages().size(), 1);
    EXPECT_EQ(manager->installedPackages().first().target.code, QStringLiteral("en-US"));
}

TEST_F(GlossaryManagerTest, KeepsAPackageWithoutItsFilesOnTheListOnly)
{
    transport.answer(200, published);
    transport.answer(200, published);
    install(germanEnglish);
    ASSERT_TRUE(QFile::remove(edition("en-de.tsv")));
    await(manager->refreshInstalledDirections());
    EXPECT_EQ(manager->installedPackages(), QList{germanEnglish});
    EXPECT_FALSE(manager->isInstalled(germanEnglish));
    EXPECT_EQ(manager->installedSize(germanEnglish), 16);
}

TEST_F(GlossaryManagerTest, FilesAloneMakeNoPackage)
{
    writeFile(edition("de-en.tsv"), "a\tb\t3.0\n");
    writeFile(edition("en-de.tsv"), "a\tb\t3.0\n");
    start();
    EXPECT_EQ(manager->installedDirections().size(), 2);
    EXPECT_FALSE(manager->isInstalled(germanEnglish));
    install(germanEnglish);
    EXPECT_TRUE(transport.requests().empty());
    EXPECT_TRUE(manager->isInstalled(germanEnglish));
    EXPECT_EQ(contentsOf(edition("de-en.tsv")), "a\tb\t3.0\n");
}

TEST_F(GlossaryManagerTest, AnInvalidStoredPackageEmptiesTheList)
{
    defaults.setValue(packagesKey,
                      QByteArrayLiteral(R"([{"sourceCode":"de","targetCode":"fr"},)"
                                        R"({"sourceCode":"en-US","targetCode":"en-GB"}])"));
    start();
    EXPECT_TRUE(manager->installedPackages().isEmpty());
    defaults.setValue(packagesKey, QStringLiteral("[]"));
    start();
    EXPECT_TRUE(manager->installedPackages().isEmpty());
}

TEST_F(GlossaryManagerTest, SaysWhichLanguageHasNoData)
{
    install({language("uk"), language("de")});
    EXPECT_EQ(activity(QStringLiteral("de-uk")),
              "failed No glossary data is published for Ukrainian.");
    install({language("de"), language("hu")});
    EXPECT_EQ(activity(QStringLiteral("de-hu")),
              "failed No glossary data is published for Hungarian.");
    EXPECT_TRUE(transport.requests().empty());
    EXPECT_FALSE(QFileInfo::exists(edition(".downloads")));
}

TEST_F(GlossaryManagerTest, AFailureStaysUntilThePackageIsDeleted)
{
    transport.answer(404, "Not here");
    install(germanEnglish);
    EXPECT_EQ(activity(germanKey), "failed API error 404: ");
    install(germanEnglish);
    EXPECT_EQ(transport.requests().size(), 1);
    EXPECT_FALSE(manager->isInstalled(germanEnglish));
    EXPECT_TRUE(manager->installedPackages().isEmpty());

    await(manager->deletePackage(englishGerman));
    EXPECT_TRUE(manager->activities().isEmpty());
    transport.answer(200, published);
    transport.answer(200, published);
    install(germanEnglish);
    EXPECT_TRUE(manager->isInstalled(germanEnglish));
}

TEST_F(GlossaryManagerTest, KeepsTheDirectionThatWasFinishedBeforeAFailure)
{
    transport.answer(200, published);
    transport.answer(500, "");
    install(germanEnglish);
    EXPECT_EQ(activity(germanKey), "failed API error 500: ");
    EXPECT_EQ(sorted(manager->installedDirections()), QStringList{QStringLiteral("de-en")});
    EXPECT_FALSE(manager->isInstalled(germanEnglish));
    start();
    EXPECT_TRUE(manager->activities().isEmpty());
    transport.answer(200, published);
    install(germanEnglish);
    EXPECT_EQ(transport.requests().size(), 3);
    EXPECT_TRUE(transport.requests().back().url.path().endsWith(QStringLiteral("/en-de.sqlite3")));
    EXPECT_TRUE(manager->isInstalled(germanEnglish));
}

TEST_F(GlossaryManagerTest, SaysWhatIsWrongWithADictionary)
{
    transport.answer(200, "<html>");
    install(germanEnglish);
    EXPECT_EQ(activity(germanKey), "failed Could not prepare the glossary: file is not a database");
    EXPECT_TRUE(waitUntil([&] { return leftovers().isEmpty(); }));
    EXPECT_EQ(namesIn(edition()), QStringList{QStringLiteral(".downloads")});
}

TEST_F(GlossaryManagerTest, SaysThatTheAddressIsNone)
{
    defaults.setValue(QStringLiteral("zv.endpoint.dictionaries"), QStringLiteral("nonsense"));
    install(germanEnglish);
    EXPECT_EQ(activity(germanKey), "failed Invalid API URL.");
    EXPECT_TRUE(transport.requests().empty());
}

TEST_F(GlossaryManagerTest, SaysThatTheFolderCanNotBeMade)
{
    ASSERT_TRUE(QDir(support).removeRecursively());
    writeFile(support, "a file");
    start();
    EXPECT_TRUE(manager->installedDirections().isEmpty());
    install(germanEnglish);
    EXPECT_EQ(activity(germanKey),
              "failed " + support.toStdString() + "/glossaries: Not a directory");
    EXPECT_TRUE(transport.requests().empty());
}

TEST_F(GlossaryManagerTest, PublishesHowFarADownloadIs)
{
    transport.holdDownloads();
    manager->install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    EXPECT_TRUE(manager->downloads().isEmpty());
    transport.heldDownloads()[0].progress({100, 400});
    EXPECT_EQ(manager->downloads().value(germanKey), (DownloadProgress{100, 400}));
    transport.heldDownloads()[0].progress({200, std::nullopt});
    EXPECT_EQ(manager->downloads().value(germanKey), (DownloadProgress{200, std::nullopt}));
    transport.heldDownloads()[0].outcome.fail(
        TransportError(TransportError::Kind::storage, QStringLiteral("The disk is full.")));
    ASSERT_TRUE(waitUntil([&] { return activity(germanKey) == "failed The disk is full."; }));
    EXPECT_TRUE(manager->downloads().isEmpty());
}

TEST_F(GlossaryManagerTest, RefusesASecondRequestForAPackage)
{
    transport.holdDownloads();
    manager->install(germanEnglish);
    manager->install(englishGerman);
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    EXPECT_EQ(activity(germanKey), "downloading en-US");
}

TEST_F(GlossaryManagerTest, InstallsTwoPackagesAtOnce)
{
    transport.holdDownloads();
    manager->install(germanEnglish);
    manager->install(frenchEnglish);
    for (size_t i = 0; i < 4; ++i) {
        ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() > i; }));
        if (i == 1) {
            EXPECT_EQ(manager->activities().size(), 2);
        }
        if (i >= 1) { // both have begun
            for (size_t done = i == 1 ? 0 : i; done <= i; ++done) {
                const HeldDownload held = transport.heldDownloads()[done];
                writeFile(held.destination, published);
                held.outcome.succeed(HttpResponse{200, {}, {}});
            }
        }
    }
    ASSERT_TRUE(waitUntil([&] { return manager->activities().isEmpty(); }));
    EXPECT_EQ(manager->installedPackages(), (QList{frenchEnglish, germanEnglish}));
    EXPECT_TRUE(manager->isInstalled(germanEnglish));
    EXPECT_TRUE(manager->isInstalled(frenchEnglish));
}

TEST_F(GlossaryManagerTest, AStopLeavesNothingBegun)
{
    transport.holdDownloads();
    std::stop_source stop;
    auto task = manager->install(germanEnglish, stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    writeFile(transport.heldDownloads()[0].destination, "a part");
    stop.request_stop();
    await(std::move(task));
    EXPECT_TRUE(manager->activities().isEmpty());
    EXPECT_TRUE(manager->installedPackages().isEmpty());
    EXPECT_TRUE(waitUntil([&] { return leftovers().isEmpty(); }));
    EXPECT_EQ(namesIn(edition()), QStringList{QStringLiteral(".downloads")});
}

TEST_F(GlossaryManagerTest, StopsAConversion)
{
    const QString large = root.filePath(QStringLiteral("large"));
    makeLargeDictionary(large, 50'000);
    transport.holdDownloads();
    std::stop_source stop;
    auto task = manager->install(germanEnglish, stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    ASSERT_TRUE(QFile::copy(large, transport.heldDownloads()[0].destination));
    transport.heldDownloads()[0].outcome.succeed(HttpResponse{200, {}, {}});
    EXPECT_EQ(activity(germanKey), "preparing en-US");
    stop.request_stop();
    await(std::move(task));
    EXPECT_TRUE(manager->activities().isEmpty());
    EXPECT_TRUE(waitUntil([&] { return leftovers().isEmpty(); }));
    EXPECT_EQ(namesIn(edition()), QStringList{QStringLiteral(".downloads")});
}

TEST_F(GlossaryManagerTest, GoesInTheMiddleOfAnInstallation)
{
    transport.holdDownloads();
    manager->install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    writeFile(transport.heldDownloads()[0].destination, "a part");
    const DownloadListener progress = transport.heldDownloads()[0].progress;
    notifier = {};
    manager.reset();
    progress({1, 2});
    EXPECT_TRUE(leftovers().isEmpty());
    EXPECT_EQ(namesIn(edition()), QStringList{QStringLiteral(".downloads")});
}

TEST_F(GlossaryManagerTest, DeletesThePackageWithItsFiles)
{
    transport.answer(200, published);
    transport.answer(200, published);
    install(germanEnglish);
    changed.clear();
    const auto task = manager->deletePackage(englishGerman);
    EXPECT_TRUE(manager->installedPackages().isEmpty());
    EXPECT_TRUE(manager->installedDirections().isEmpty());
    EXPECT_FALSE(manager->isInstalled(germanEnglish));
    EXPECT_EQ(defaults.data(packagesKey), QByteArrayLiteral("[]"));
    ASSERT_TRUE(waitUntil([&] { return changed.size() == 2; }));
    EXPECT_EQ(changed, (QStringList{QStringLiteral("en-de"), QStringLiteral("de-en")}));
    EXPECT_EQ(namesIn(edition()), QStringList{QStringLiteral(".downloads")});
    ASSERT_TRUE(waitUntil([&] { return task.isReady(); }));
    EXPECT_EQ(manager->installedSize(germanEnglish), 0);
}

TEST_F(GlossaryManagerTest, DeletingStopsAnInstallationAndAllowsANewOne)
{
    transport.holdDownloads();
    auto task = manager->install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    const auto deletion = manager->deletePackage(germanEnglish);
    EXPECT_TRUE(manager->activities().isEmpty());
    manager->install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 2; }));
    await(std::move(task));
    EXPECT_EQ(activity(germanKey), "downloading en-US");
    for (size_t i = 1; i < 3; ++i) {
        ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == i + 1; }));
        const HeldDownload held = transport.heldDownloads()[i];
        writeFile(held.destination, published);
        held.outcome.succeed(HttpResponse{200, {}, {}});
    }
    EXPECT_TRUE(waitUntil([&] { return manager->isInstalled(germanEnglish); }));
}

TEST_F(GlossaryManagerTest, RemovesOtherEditionsAtTheStart)
{
    const QString outside = root.filePath(QStringLiteral("outside"));
    ASSERT_TRUE(QDir().mkpath(outside));
    writeFile(outside + QStringLiteral("/kept"), "x");
    const QString all = support + QStringLiteral("/glossaries/");
    ASSERT_TRUE(QDir().mkpath(all + QStringLiteral("wikdict-1_2020/.hidden")));
    writeFile(all + QStringLiteral("wikdict-1_2020/de-en.tsv"), "x");
    writeFile(all + QStringLiteral("a file"), "x");
    ASSERT_TRUE(QFile::link(outside, all + QStringLiteral("link")));
    ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere"), all + QStringLiteral(".broken")));
    writeFile(edition("fr-en.tsv"), "x");
    start();
    EXPECT_EQ(namesIn(all), QStringList{QStringLiteral("wikdict-2_2026-06")});
    EXPECT_EQ(sorted(manager->installedDirections()), QStringList{QStringLiteral("fr-en")});
    EXPECT_EQ(contentsOf(outside + QStringLiteral("/kept")), "x");
}

TEST_F(GlossaryManagerTest, RemovesWhatAKilledRunHasLeft)
{
    ASSERT_TRUE(QDir().mkpath(edition(".downloads")));
    const QString download = edition(".downloads/8b0f.sqlite3");
    writeFile(download, "half");
    writeFile(edition(".de-en.tsv.tmp"), "half");
    writeFile(edition("fr-en.tsv"), "whole");
    {
        // While another process installs something, nobody knows what is still needed.
        const auto lock = FileLock::tryAcquire(edition(".downloads/lock"));
        ASSERT_TRUE(lock && *lock);
        start();
        EXPECT_EQ(leftovers().size(), 1);
        EXPECT_EQ(contentsOf(edition(".de-en.tsv.tmp")), "half");
    }
    start();
    EXPECT_TRUE(leftovers().isEmpty());
    EXPECT_EQ(namesIn(edition()),
              (QStringList{QStringLiteral(".downloads"), QStringLiteral("fr-en.tsv")}));
    EXPECT_EQ(sorted(manager->installedDirections()), QStringList{QStringLiteral("fr-en")});
}

TEST_F(GlossaryManagerTest, WaitsForAnotherProcess)
{
    ASSERT_TRUE(QDir().mkpath(edition(".downloads")));
    auto lock = FileLock::tryAcquire(edition(".downloads/lock"));
    ASSERT_TRUE(lock && *lock);
    transport.answer(200, published);
    transport.answer(200, published);
    manager->install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] { return clock.pendingTimers() == 1; }));
    EXPECT_EQ(activity(germanKey), "downloading en-US");
    EXPECT_TRUE(transport.requests().empty());
    lock->reset();
    clock.advance(std::chrono::milliseconds(250));
    EXPECT_TRUE(waitUntil([&] { return manager->isInstalled(germanEnglish); }));
}

TEST_F(GlossaryManagerTest, CountsNothingButFinishedFiles)
{
    writeFile(edition(".de-en.tsv.tmp"), "x");
    writeFile(edition("en-de.tsv.bak"), "x");
    ASSERT_TRUE(QDir().mkpath(edition("fr-de.tsv")));
    writeFile(edition("de-fr.tsv"), "x");
    await(manager->refreshInstalledDirections());
    EXPECT_EQ(sorted(manager->installedDirections()), QStringList{QStringLiteral("de-fr")});
}

/// Two processes with the same profile, such as the program and a command.
class TwoGlossaryManagersTest : public ::testing::Test
{
protected:
    /// What one process has of its own.
    struct Process
    {
        Process(const QString& folder, const QByteArray& published)
            : defaults(folder + QStringLiteral("/config"))
            , manager(
                  {defaults, transport, clock, folder + QStringLiteral("/data"), language("en-US")})
        {
            for (int i = 0; i < 4; ++i) {
                transport.answer(200, published);
            }
            await(manager.refreshInstalledDirections());
        }

        void install(const GlossaryPackage& package)
        {
            await(manager.install(package));
            EXPECT_TRUE(defaults.flush());
        }
        void remove(const GlossaryPackage& package)
        {
            await(manager.deletePackage(package));
            EXPECT_TRUE(defaults.flush());
        }

        FileUserDefaults defaults;
        FakeHttpTransport transport;
        VirtualClock clock;
        GlossaryManager manager;
    };

    TwoGlossaryManagersTest()
    {
        makeDictionary(root.filePath(QStringLiteral("published")), "('Haus', 'house', 20.5, 0.1)");
        published = contentsOf(root.filePath(QStringLiteral("published")));
    }

    /// What a process that starts now finds.
    [[nodiscard]] QList<GlossaryPackage> stored() const
    {
        return Process(root.path(), published).manager.installedPackages();
    }

    QTemporaryDir root;
    QByteArray published;
};

TEST_F(TwoGlossaryManagersTest, KeepWhatEachOtherHasInstalled)
{
    Process program(root.path(), published);
    Process command(root.path(), published);
    command.install(frenchEnglish);
    program.install(germanEnglish);
    EXPECT_EQ(stored(), (QList{frenchEnglish, germanEnglish}));
    EXPECT_TRUE(program.manager.isInstalled(frenchEnglish));
}

TEST_F(TwoGlossaryManagersTest, SortTheirListInTheLanguageThatTheSettingsName)
{
    Process program(root.path(), published);
    installLocalization(&program.defaults);
    const auto restore = qScopeGuard([] { installLocalization(nullptr); });
    program.install(germanEnglish);
    program.install(frenchEnglish);
    EXPECT_EQ(program.manager.installedPackages(), (QList{frenchEnglish, germanEnglish}));
    EXPECT_EQ(stored(), (QList{frenchEnglish, germanEnglish}));
}

TEST_F(TwoGlossaryManagersTest, BringNothingBackThatTheOtherHasDeleted)
{
    Process program(root.path(), published);
    program.install(frenchEnglish);
    Process command(root.path(), published);
    command.remove(frenchEnglish);
    program.install(germanEnglish);
    EXPECT_EQ(stored(), QList{germanEnglish});
    EXPECT_EQ(program.manager.installedPackages(), QList{germanEnglish});

    command.install(frenchEnglish);
    program.remove(germanEnglish);
    EXPECT_EQ(stored(), QList{frenchEnglish});
}

TEST_F(TwoGlossaryManagersTest, SeeWhatTheOtherHasDoneWhenTheyLookAgain)
{
    Process program(root.path(), published);
    Process command(root.path(), published);
    command.install(germanEnglish);
    EXPECT_FALSE(program.manager.isInstalled(germanEnglish));
    await(program.manager.refreshInstalledDirections());
    EXPECT_TRUE(program.manager.isInstalled(germanEnglish));
    EXPECT_EQ(program.manager.installedSize(germanEnglish), 32);
    command.remove(germanEnglish);
    await(program.manager.refreshInstalledDirections());
    EXPECT_EQ(program.manager.installedPackages(), QList<GlossaryPackage>());
    EXPECT_TRUE(program.manager.installedDirections().isEmpty());
}

/// The same over the network.
class GlossaryDownloadTest : public ::testing::Test
{
protected:
    GlossaryDownloadTest()
    {
        makeLargeDictionary(root.filePath(QStringLiteral("published")), 10'000);
        published = contentsOf(root.filePath(QStringLiteral("published")));
        defaults.setValue(QStringLiteral("zv.endpoint.dictionaries"), server.url().toString());
    }

    Answer dictionary() const
    {
        return Answer().send(
            httpMessage(200, published, {{"Content-Type", "application/x-sqlite3"}}));
    }

    std::string failure() const
    {
        const auto activities = manager.activities();
        return activities.contains(germanKey) ? text(activities[germanKey]) : "";
    }

    void expectNothingLeft() const
    {
        const QString edition = support + QStringLiteral("/glossaries/wikdict-2_2026-06");
        EXPECT_TRUE(waitUntil([&] {
            return namesIn(edition + QStringLiteral("/.downloads")) ==
                   QStringList{QStringLiteral("lock")};
        }));
        EXPECT_EQ(namesIn(edition), QStringList{QStringLiteral(".downloads")});
        EXPECT_TRUE(manager.downloads().isEmpty());
        EXPECT_FALSE(manager.isInstalled(germanEnglish));
    }

    void expectFailure(const Answer& answer, const char* description)
    {
        server.enqueue(answer);
        await(manager.install(germanEnglish));
        EXPECT_THAT(failure(), HasSubstr(description));
        expectNothingLeft();
    }

    QTemporaryDir root;
    QString support = root.filePath(QStringLiteral("data"));
    QByteArray published;
    OverlayUserDefaults defaults;
    LoopbackHttpServer server;
    VirtualClock clock;
    NetworkHttpTransport transport{clock};
    GlossaryManager manager{{defaults, transport, clock, support, language("en-US")}};
};

TEST_F(GlossaryDownloadTest, InstallsWhatTheServerSends)
{
    server.enqueue(dictionary());
    server.enqueue(dictionary());
    await(manager.install(germanEnglish));
    EXPECT_EQ(failure(), "");
    EXPECT_TRUE(manager.isInstalled(germanEnglish));
    ASSERT_EQ(server.requests().size(), 2);
    EXPECT_EQ(server.requests()[0].target(), "/dictionaries/sqlite/2_2026-06/de-en.sqlite3");
    EXPECT_EQ(server.requests()[1].target(), "/dictionaries/sqlite/2_2026-06/en-de.sqlite3");
    EXPECT_GT(manager.installedSize(germanEnglish), 300'000);
}

TEST_F(GlossaryDownloadTest, FailsWithTheStatusOfARefusal)
{
    expectFailure(Answer::json(404, "no such dictionary"), "failed API error 404: ");
}

TEST_F(GlossaryDownloadTest, FailsWithTheStatusOfABrokenServer)
{
    expectFailure(Answer::json(500, ""), "failed API error 500: ");
}

TEST_F(GlossaryDownloadTest, FailsIfTheConnectionIsReset)
{
    const QByteArray message = httpMessage(200, published);
    expectFailure(Answer().send(message.first(message.size() / 2)).close(),
                  "The answer of 127.0.0.1 is incomplete.");
}

TEST_F(GlossaryDownloadTest, FailsIfTheServerSaysNothing)
{
    server.enqueue(Answer().close());
    server.enqueue(Answer().close());
    await(manager.install(germanEnglish));
    EXPECT_THAT(failure(), HasSubstr("The connection to 127.0.0.1 ended without a valid answer."));
    expectNothingLeft();
}

TEST_F(GlossaryDownloadTest, FailsIfTheServerStalls)
{
    const QByteArray message = httpMessage(200, published);
    server.enqueue(Answer().send(message.first(100'000)).hold());
    auto task = manager.install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    ASSERT_TRUE(waitUntil([&] {
        clock.advance(std::chrono::seconds(5));
        return !failure().starts_with("downloading");
    }));
    await(std::move(task));
    EXPECT_EQ(failure(), "failed 127.0.0.1 did not answer in time.");
    expectNothingLeft();
}

TEST_F(GlossaryDownloadTest, FailsIfTheAnswerIsShorterThanAnnounced)
{
    QByteArray message = httpMessage(200, published);
    message.replace("Content-Length: " + QByteArray::number(published.size()),
                    "Content-Length: " + QByteArray::number(published.size() + 1));
    expectFailure(Answer().send(message).close(), "The answer of 127.0.0.1 is incomplete.");
}

TEST_F(GlossaryDownloadTest, FailsIfTheAnswerIsCutWhereItsLengthSaysSo)
{
    expectFailure(Answer().send(httpMessage(200, published.first(published.size() / 2))),
                  "failed Could not prepare the glossary: database disk image is malformed");
}

TEST_F(GlossaryDownloadTest, PublishesTheProgress)
{
    const QByteArray message = httpMessage(200, published);
    server.enqueue(Answer().send(message.first(100'000)).hold().send(message.sliced(100'000)));
    server.enqueue(dictionary());
    auto task = manager.install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] {
        clock.advance(std::chrono::milliseconds(100));
        return manager.downloads().value(germanKey).writtenBytes > 50'000;
    }));
    EXPECT_EQ(manager.downloads().value(germanKey).expectedBytes, published.size());
    server.release();
    await(std::move(task));
    EXPECT_TRUE(manager.isInstalled(germanEnglish));
    EXPECT_TRUE(manager.downloads().isEmpty());
}

TEST_F(GlossaryDownloadTest, StopsInTheMiddleOfADownload)
{
    const QByteArray message = httpMessage(200, published);
    server.enqueue(Answer().send(message.first(100'000)).hold());
    std::stop_source stop;
    auto task = manager.install(germanEnglish, stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    stop.request_stop();
    await(std::move(task));
    EXPECT_EQ(failure(), "");
    expectNothingLeft();
}

TEST_F(GlossaryDownloadTest, CanGoWhileADownloadEnds)
{
    // Whatever the network still reports, nobody is there any more.
    const QByteArray message = httpMessage(200, published);
    server.enqueue(Answer().send(message.first(100'000)).hold().send(message.sliced(100'000)));
    const QString other = root.filePath(QStringLiteral("other"));
    auto shortLived = std::make_unique<GlossaryManager>(
        GlossaryManager::Needs{defaults, transport, clock, other, language("en-US")});
    auto task = shortLived->install(germanEnglish);
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    server.release();
    shortLived.reset();
    ASSERT_TRUE(waitUntil([&] { return task.isReady(); }));
    EXPECT_EQ(namesIn(other + QStringLiteral("/glossaries/wikdict-2_2026-06/.downloads")),
              QStringList{QStringLiteral("lock")});
}

} // namespace
} // namespace zelvane::test
