#include "cli/GlossaryCommand.h"

#include "glossary/GlossaryStore.h"
#include "support/Await.h"
#include "support/FakeHttpTransport.h"
#include "support/PublishedDictionary.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QBuffer>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class GlossaryRun : public ::testing::Test
{
protected:
    GlossaryRun()
    {
        for (QBuffer* buffer : {&input, &output, &error}) {
            buffer->open(QIODevice::ReadWrite);
        }
        const QString file = root.filePath(QStringLiteral("published"));
        makeDictionary(file, "('Haus', 'house | home', 20.5, 0), ('Baum', 'tree', 5, 0)");
        published = contentsOf(file);
    }

    static GlossaryOptions parsed(std::initializer_list<const char*> words)
    {
        QStringList arguments;
        for (const char* word : words) {
            arguments << QString::fromUtf8(word);
        }
        return parseGlossaryOptions(arguments).value();
    }

    CommandStreams streams() { return {input, output, error}; }

    ExitStatus run(std::initializer_list<const char*> words,
                   GlossaryProgress::Style style = GlossaryProgress::Style::plainLines)
    {
        GlossaryManager manager({defaults, transport, clock, support, {}});
        return await(runGlossaryPackages(parsed(words), manager, streams(), style, {}));
    }

    ExitStatus installed()
    {
        transport.answer(200, published);
        transport.answer(200, published);
        const ExitStatus status = run({"install", "de", "en"});
        output.buffer().clear();
        output.seek(0);
        error.buffer().clear();
        error.seek(0);
        return status;
    }

    ExitStatus lookUp(std::initializer_list<const char*> words, const QString& text,
                      const std::stop_token& stop = {})
    {
        GlossaryStore store(support + QStringLiteral("/glossaries/wikdict-2_2026-06"));
        return await(runGlossaryLookup(parsed(words), text, store, streams(), stop));
    }

    QTemporaryDir root;
    QString support = root.filePath(QStringLiteral("data"));
    QByteArray published;
    OverlayUserDefaults defaults;
    FakeHttpTransport transport;
    VirtualClock clock;
    QBuffer input;
    QBuffer output;
    QBuffer error;
};

TEST_F(GlossaryRun, installsAndTellsEachStepOnALine)
{
    transport.answer(200, published);
    transport.answer(200, published);
    EXPECT_EQ(run({"install", "de", "en"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "de-en\tGerman\tEnglish (US)\tinstalled\t74\n");
    EXPECT_EQ(error.data(), "Downloading German to English (US)\n"
                            "Preparing German to English (US)\n"
                            "Downloading English (US) to German\n"
                            "Preparing English (US) to German\n");
}

TEST_F(GlossaryRun, tellsTheProgressOnOneLineOfATerminal)
{
    transport.holdDownloads();
    GlossaryManager manager({defaults, transport, clock, support, {}});
    auto task = runGlossaryPackages(parsed({"install", "de", "en"}), manager, streams(),
                                    GlossaryProgress::Style::oneLine, {});
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    transport.heldDownloads()[0].progress({1'500'000, 3'000'000});
    transport.heldDownloads()[0].progress({2'000'000, std::nullopt});
    transport.heldDownloads()[0].progress({2'000'000, std::nullopt});
    transport.heldDownloads()[0].outcome.fail(
        TransportError(TransportError::Kind::storage, QStringLiteral("The disk is full.")));
    EXPECT_EQ(await(std::move(task)), ExitStatus::failure);
    EXPECT_EQ(error.data(), "\r\x1b[KDownloading German to English (US)"
                            "\r\x1b[KDownloading German to English (US): 1.5 MB of 3.0 MB (50 %)"
                            "\r\x1b[KDownloading German to English (US): 2.0 MB"
                            "\r\x1b[KDownloading German to English (US)"
                            "\r\x1b[Kzelvane-desk: The disk is full.\n");
    EXPECT_EQ(output.data(), "");
}

TEST_F(GlossaryRun, installsAgainWithoutADownload)
{
    EXPECT_EQ(installed(), ExitStatus::success);
    EXPECT_EQ(run({"install", "en-GB", "de"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "de-en\tEnglish (UK)\tGerman\tinstalled\t74\n");
    EXPECT_EQ(transport.requests().size(), 2);
}

TEST_F(GlossaryRun, aFailureIsASentenceOnStandardErrorAndStatusOne)
{
    transport.answer(404, "");
    EXPECT_EQ(run({"install", "de", "la"}), ExitStatus::failure);
    EXPECT_EQ(output.data(), "");
    EXPECT_THAT(error.data().toStdString(), HasSubstr("\nzelvane-desk: API error 404:\n"));
}

TEST_F(GlossaryRun, saysWhichLanguageHasNoDictionaries)
{
    EXPECT_EQ(run({"install", "Ukrainian", "de"}), ExitStatus::failure);
    EXPECT_EQ(error.data(), "zelvane-desk: No glossary data is published for Ukrainian.\n");
}

TEST_F(GlossaryRun, anInterruptionLeavesNothing)
{
    transport.holdDownloads();
    GlossaryManager manager({defaults, transport, clock, support, {}});
    std::stop_source stop;
    auto task = runGlossaryPackages(parsed({"install", "de", "en"}), manager, streams(),
                                    GlossaryProgress::Style::plainLines, stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return transport.heldDownloads().size() == 1; }));
    stop.request_stop();
    EXPECT_EQ(await(std::move(task)), ExitStatus::interrupted);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "Downloading German to English (US)\n");
}

TEST_F(GlossaryRun, listsWhatIsInstalled)
{
    EXPECT_EQ(run({"list"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(run({"list", "--json"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "{\"packages\":[]}\n");
    EXPECT_EQ(installed(), ExitStatus::success);
    EXPECT_EQ(run({"list"}), ExitStatus::success);
    EXPECT_EQ(run({"list", "--json"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "de-en\tGerman\tEnglish (US)\tinstalled\t74\n"
                             R"json({"packages":[{"bytes":74,"installed":true,"key":"de-en",)json"
                             R"json("source":"German","target":"English (US)"}]})json"
                             "\n");
}

TEST_F(GlossaryRun, tellsAnIncompletePackage)
{
    EXPECT_EQ(installed(), ExitStatus::success);
    ASSERT_TRUE(QFile::remove(support + QStringLiteral("/glossaries/wikdict-2_2026-06/en-de.tsv")));
    EXPECT_EQ(run({"list"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "de-en\tGerman\tEnglish (US)\tincomplete\t37\n");
}

TEST_F(GlossaryRun, deletesWhatIsThere)
{
    EXPECT_EQ(installed(), ExitStatus::success);
    EXPECT_EQ(run({"delete", "English", "German"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(namesIn(support + QStringLiteral("/glossaries/wikdict-2_2026-06")),
              QStringList{QStringLiteral(".downloads")});
    EXPECT_EQ(run({"delete", "English", "German"}), ExitStatus::failure);
    EXPECT_EQ(error.data(),
              "zelvane-desk: the glossary of English (US) and German is not installed\n");
}

TEST_F(GlossaryRun, printsTheLinesThatAreTerms)
{
    EXPECT_EQ(installed(), ExitStatus::success);
    const QString text = QStringLiteral("1. Haus\nnothing\nBaum");
    EXPECT_EQ(lookUp({"lookup", "--to", "en"}, text), ExitStatus::success);
    EXPECT_EQ(lookUp({"lookup", "--from", "de", "--to", "en", "--json"}, text),
              ExitStatus::success);
    EXPECT_EQ(output.data(),
              "Haus\thouse\thouse | home\nBaum\t\ttree\n"
              R"({"matches":[{"hints":["house","home"],"line":1,"replacement":"house",)"
              R"("term":"Haus"},{"hints":["tree"],"line":3,"replacement":null,"term":"Baum"}]})"
              "\n");
}

TEST_F(GlossaryRun, aLookupWithoutAnyTermHasStatusOne)
{
    EXPECT_EQ(installed(), ExitStatus::success);
    EXPECT_EQ(lookUp({"lookup", "--to", "en"}, QStringLiteral("Fluss")), ExitStatus::failure);
    EXPECT_EQ(lookUp({"lookup", "--to", "fr"}, QStringLiteral("Haus")), ExitStatus::failure);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "");
}

TEST_F(GlossaryRun, aStoppedLookupSaysNothing)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(lookUp({"lookup", "--to", "en"}, QStringLiteral("Haus"), stop.get_token()),
              ExitStatus::interrupted);
    EXPECT_EQ(output.data(), "");
}

TEST_F(GlossaryRun, namesTheLanguagesThatHaveDictionaries)
{
    EXPECT_EQ(runGlossaryLanguages(parsed({"languages"}), streams()), ExitStatus::success);
    EXPECT_THAT(output.data().toStdString(),
                StartsWith("en-US\tEnglish (US)\nen-GB\tEnglish (UK)\nbg\tBulgarian\n"));
    EXPECT_EQ(output.data().count('\n'), 27); // two kinds of English
    output.buffer().clear();
    output.seek(0);
    EXPECT_EQ(runGlossaryLanguages(parsed({"languages", "--json"}), streams()),
              ExitStatus::success);
    EXPECT_THAT(output.data().toStdString(),
                StartsWith(R"json({"languages":[{"code":"en-US","name":"English (US)"},)json"));
}

} // namespace
} // namespace zelvane::test
