// Glossaries in the settings of the program itself, with a publisher of dictionaries on loopback.

#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"
#include "support/PublishedDictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;

const QString download = QStringLiteral("Download English (US) → German");
const QString remove = QStringLiteral("Delete English (US) → German");

class GlossaryWindow : public ::testing::Test
{
protected:
    GlossaryWindow()
    {
        const QString file = session.desktop.home() + QStringLiteral("/published");
        makeDictionary(file, "('Haus', 'house', 20.5, 0.1)");
        m_published = httpMessage(200, contentsOf(file));
        host.setHandler([this](const RecordedRequest&) { return Answer().send(m_published); });
        session.zelvane({QStringLiteral("defaults"), QStringLiteral("write"),
                         QStringLiteral("zv.endpoint.dictionaries"), host.url().toString()});
        session.start();
    }

    /// Stops in the middle of a dictionary until the host's `release`.
    [[nodiscard]] Answer half() const
    {
        const qsizetype middle = m_published.size() / 2;
        return Answer().send(m_published.first(middle)).hold().send(m_published.sliced(middle));
    }

    void openLanguages()
    {
        session.openSettings();
        session.press(QStringLiteral("Languages"));
    }

    void closeSettings()
    {
        session.key("Escape");
        session.waitUntilGone(QStringLiteral("^Settings$"));
    }

    /// Runs `glossary` while the host goes on answering. Yields what it has printed.
    std::string glossary(const QStringList& arguments)
    {
        QProcess process;
        process.setProcessEnvironment(session.desktop.environment());
        process.start(session.program,
                      QStringList{QStringLiteral("--profile"),
                                  session.desktop.home() + QStringLiteral("/profile"),
                                  QStringLiteral("glossary")} +
                          arguments);
        EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        return process.readAllStandardOutput().toStdString();
    }

    [[nodiscard]] QStringList dictionaries() const
    {
        return namesIn(session.desktop.home() +
                       QStringLiteral("/profile/data/org.zelvane.desk/glossaries/"
                                      "wikdict-2_2026-06"))
            .filter(QStringLiteral("tsv"));
    }

    ZelvaneSession session;
    LoopbackHttpServer host;

private:
    QByteArray m_published;
};

TEST_F(GlossaryWindow, aDownloadGoesOnWhileTheWindowIsClosed)
{
    host.enqueue(half());
    openLanguages();
    session.press(download);
    ASSERT_TRUE(waitUntil([this] { return host.heldAnswers() == 1; }));
    closeSettings();
    session.openSettings();
    EXPECT_TRUE(session.shows(QStringLiteral("Downloading German glossary…")));
    host.release();
    EXPECT_TRUE(session.shows(remove));
    EXPECT_EQ(host.requests().size(), 2);
}

TEST_F(GlossaryWindow, showsTheSizeOfAGlossaryAndDeletesIt)
{
    glossary({QStringLiteral("install"), QStringLiteral("en"), QStringLiteral("de")});
    openLanguages();
    EXPECT_TRUE(session.shows(QStringLiteral("32 bytes")));
    session.press(remove);
    EXPECT_TRUE(session.shows(download));
    EXPECT_TRUE(waitUntil([this] { return dictionaries().isEmpty(); }));
}

TEST_F(GlossaryWindow, saysWhyADownloadFailed)
{
    host.enqueue(Answer::json(404, "{}"));
    openLanguages();
    session.press(download);
    EXPECT_TRUE(session.shows(QStringLiteral("Retry English (US) → German")));
    EXPECT_THAT(session.elements().join(u'\n').toStdString(), HasSubstr("label\tAPI error 404: "));
    EXPECT_EQ(dictionaries(), QStringList());
}

TEST_F(GlossaryWindow, keepsWhatACommandInstalls)
{
    openLanguages();
    glossary({QStringLiteral("install"), QStringLiteral("fr"), QStringLiteral("en")});
    session.press(download);
    EXPECT_TRUE(session.shows(remove));
    const std::string list = glossary({QStringLiteral("list")});
    EXPECT_THAT(list, HasSubstr("de-en\tEnglish (US)\tGerman\tinstalled\t32\n"));
    EXPECT_THAT(list, HasSubstr("en-fr\tFrench\tEnglish (US)\tinstalled\t32\n"));
}

TEST_F(GlossaryWindow, showsWhatACommandHasDone)
{
    glossary({QStringLiteral("install"), QStringLiteral("fr"), QStringLiteral("en")});
    openLanguages();
    EXPECT_TRUE(session.shows(QStringLiteral("Delete French → English (US)")));
    closeSettings();
    glossary({QStringLiteral("delete"), QStringLiteral("fr"), QStringLiteral("en")});
    session.openSettings();
    EXPECT_TRUE(session.shows(download));
    EXPECT_TRUE(waitUntil(
        [this] { return !session.elements().join(u'\n').contains(QStringLiteral("French")); }));
}

} // namespace
} // namespace zelvane::test
