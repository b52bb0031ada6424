// The program's own binary and a publisher of dictionaries on loopback, one process for each call.

#include "end_to_end/CommandFixture.h"
#include "support/PublishedDictionary.h"

#include <gmock/gmock.h>

#include <csignal>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;

class GlossaryCommand : public Commands
{
protected:
    GlossaryCommand()
    {
        const QString file = home.filePath(QStringLiteral("published"));
        makeLargeDictionary(file, 50'000);
        makeDatabase(file, "insert into simple_translation values ('Haus', 'house | home', 30, 1)");
        published = contentsOf(file);
        provider.setHandler([this](const RecordedRequest&) { return whole(); });
        run({"defaults", "write", "zv.endpoint.dictionaries",
             provider.url().toString().toUtf8().constData()});
    }

    Answer whole() const { return Answer().send(httpMessage(200, published)); }
    /// Stops in the middle of a dictionary until the server's `release`.
    Answer half() const
    {
        const QByteArray message = httpMessage(200, published);
        return Answer()
            .send(message.first(message.size() / 2))
            .hold()
            .send(message.sliced(message.size() / 2));
    }

    QString edition(const char* name) const
    {
        return home.filePath(QStringLiteral("profile/data/org.zelvane.desk/glossaries/"
                                            "wikdict-2_2026-06/") +
                             QString::fromUtf8(name));
    }
    QStringList downloads() const
    {
        return namesIn(edition(".downloads")).filter(QStringLiteral("sqlite3"));
    }
    QStringList dictionaries() const { return namesIn(edition("")).filter(QStringLiteral("tsv")); }

    QByteArray published;
};

TEST_F(GlossaryCommand, installsLooksUpAndDeletes)
{
    const Ended install = run({"glossary", "install", "German", "English"});
    EXPECT_EQ(install.status, 0);
    EXPECT_THAT(install.output, HasSubstr("de-en\tGerman\tEnglish (US)\tinstalled\t"));
    EXPECT_EQ(install.errors, "Downloading German to English (US)\n"
                              "Preparing German to English (US)\n"
                              "Downloading English (US) to German\n"
                              "Preparing English (US) to German\n");
    EXPECT_EQ(run({"glossary", "list"}).output, install.output);
    const Ended lookup = run({"glossary", "lookup", "--to", "en"}, "1. haus\nWort2\n");
    EXPECT_EQ(lookup.output, "haus\thouse\thouse | home\nWort2\tword 2\tword 2 | words 2\n");
    EXPECT_EQ(lookup.status, 0);
    EXPECT_EQ(run({"glossary", "lookup", "--to", "en", "Fluss"}).status, 1);
    EXPECT_EQ(run({"glossary", "delete", "de", "en"}).status, 0);
    EXPECT_EQ(run({"glossary", "list"}).output, "");
    EXPECT_EQ(dictionaries(), QStringList());
}

TEST_F(GlossaryCommand, tellsWhatIsWrongWithTheCall)
{
    const Ended ended = run({"glossary", "install", "German"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.errors, "zelvane-desk: glossary install needs two languages (see zelvane-desk "
                            "help glossary)\n");
    EXPECT_THAT(run({"help", "glossary"}).output, HasSubstr("install LANGUAGE LANGUAGE"));
    EXPECT_EQ(run({"glossary", "--help"}).output, run({"help", "glossary"}).output);
    EXPECT_THAT(run({"glossary", "languages"}).output, HasSubstr("\nzh\tChinese (Simplified)\n"));
}

TEST_F(GlossaryCommand, anInterruptionLeavesNothing)
{
    provider.enqueue(half());
    const auto process = start({"glossary", "install", "de", "en"});
    ASSERT_TRUE(waitUntil([&] { return provider.heldAnswers() == 1; }));
    ::kill(pid_t(process->processId()), SIGINT);
    EXPECT_EQ(end(*process).status, 130);
    EXPECT_EQ(downloads(), QStringList());
    EXPECT_EQ(dictionaries(), QStringList());
    EXPECT_EQ(run({"glossary", "list"}).output, "");
}

TEST_F(GlossaryCommand, aKillDuringTheSecondDownloadLeavesNoHalfDictionary)
{
    provider.enqueue(whole());
    provider.enqueue(half());
    const auto process = start({"glossary", "install", "de", "en"});
    ASSERT_TRUE(waitUntil([&] { return provider.heldAnswers() == 1; }));
    ASSERT_TRUE(waitUntil([&] { return downloads().size() == 1; }));
    process->kill();
    end(*process);
    EXPECT_EQ(dictionaries(), QStringList{QStringLiteral("de-en.tsv")});
    EXPECT_EQ(run({"glossary", "list"}).output, "");
    EXPECT_EQ(downloads(), QStringList());
    EXPECT_EQ(run({"glossary", "lookup", "--to", "en", "Haus"}).status, 0);

    const size_t before = provider.requests().size();
    EXPECT_EQ(run({"glossary", "install", "de", "en"}).status, 0);
    EXPECT_EQ(provider.requests().size(), before + 1); // the first direction stays
}

TEST_F(GlossaryCommand, aKillAtAnyMomentLeavesNoHalfDictionary)
{
    const Ended reference = run({"glossary", "install", "fr", "en"});
    ASSERT_EQ(reference.status, 0);
    const QByteArray complete = contentsOf(edition("fr-en.tsv"));
    for (int moment = 0; moment < 12; ++moment) {
        const auto process = start({"glossary", "install", "de", "en"});
        QTimer::singleShot(15 * moment, &*process, [&] { process->kill(); });
        end(*process);
        for (const char* name : {"de-en.tsv", "en-de.tsv"}) {
            const QByteArray found = contentsOf(edition(name));
            EXPECT_TRUE(found.isNull() || found == complete) << name << " at " << moment;
        }
        run({"glossary", "delete", "de", "en"});
        EXPECT_EQ(dictionaries(),
                  (QStringList{QStringLiteral("en-fr.tsv"), QStringLiteral("fr-en.tsv")}));
        EXPECT_EQ(downloads(), QStringList());
    }
}

TEST_F(GlossaryCommand, twoCallsForOneGlossaryDownloadItOnce)
{
    provider.enqueue(half());
    const auto first = start({"glossary", "install", "de", "en"});
    ASSERT_TRUE(waitUntil([&] { return provider.heldAnswers() == 1; }));
    const auto second = start({"glossary", "install", "de", "en"});
    ASSERT_TRUE(waitUntil(
        [&] { return second->bytesAvailable() == 0 && second->state() == QProcess::Running; }));
    provider.release();
    EXPECT_EQ(end(*first).status, 0);
    EXPECT_EQ(end(*second).status, 0);
    EXPECT_EQ(provider.requests().size(), 2);
}

TEST_F(GlossaryCommand, aRefusalIsASentence)
{
    provider.enqueue(Answer::json(404, "{}"));
    const Ended ended = run({"glossary", "install", "de", "en"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "Downloading German to English (US)\nzelvane-desk: API error 404:\n");
    EXPECT_EQ(ended.output, "");
}

} // namespace
} // namespace zelvane::test
