#include "glossary/GlossaryDictionary.h"

#include "glossary/GlossaryTerm.h"
#include "pipeline/TranslationError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <sys/stat.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

std::optional<GlossaryEntry> lookUp(const GlossaryDictionary& dictionary, const QString& term)
{
    std::string key;
    writeGlossaryKey(QStringView(term), key);
    return dictionary.find(key);
}

QStringList candidates(const GlossaryDictionary& dictionary, const QString& term)
{
    const auto entry = lookUp(dictionary, term);
    return entry ? entry->candidates() : QStringList();
}

/// What a score in a file is read as.
double scoreOf(const QByteArray& field)
{
    const GlossaryDictionary dictionary("term\ttranslation\t" + field);
    const auto entry = lookUp(dictionary, QStringLiteral("term"));
    return entry ? entry->score() : -1;
}

TEST(GlossaryDictionary, findsTermsByTheirKeys)
{
    const GlossaryDictionary dictionary("Haus\thouse | building\t35.5\nÄpfel\tapples\t20.0\n");
    EXPECT_EQ(dictionary.size(), 2);
    const auto house = lookUp(dictionary, QStringLiteral(" HAUS "));
    ASSERT_TRUE(house);
    EXPECT_THAT(house->candidates(),
                ElementsAre(QStringLiteral("house"), QStringLiteral("building")));
    EXPECT_EQ(house->score(), 35.5);
    EXPECT_THAT(candidates(dictionary, QStringLiteral("A\u0308PFEL")),
                ElementsAre(QStringLiteral("apples")));
    EXPECT_FALSE(lookUp(dictionary, QStringLiteral("hau")));
    EXPECT_FALSE(lookUp(dictionary, QStringLiteral("hause")));
}

TEST(GlossaryDictionary, readsALastLineWithoutAnEnd)
{
    EXPECT_THAT(candidates(GlossaryDictionary("a\tx\t1.0\nb\ty\t2.0"), QStringLiteral("b")),
                ElementsAre(QStringLiteral("y")));
}

TEST(GlossaryDictionary, holdsNothingOfAnEmptyFile)
{
    for (const QByteArray& content : {QByteArray(), QByteArray("\n\n\n"), QByteArray("\n")}) {
        const GlossaryDictionary dictionary(content);
        EXPECT_EQ(dictionary.size(), 0);
        EXPECT_FALSE(lookUp(dictionary, QStringLiteral("a")));
    }
}

TEST(GlossaryDictionary, skipsLinesOfAnyOtherForm)
{
    const GlossaryDictionary dictionary("one\teins\t1.0\n"
                                        "two\tzwei\t2.0\textra\tmore\n"
                                        "three\tdrei\n"
                                        "four\n"
                                        "\t\t\n"
                                        "five\t\t1.0\n"
                                        "six\t | |\xc2\xa0|\t1.0\n"
                                        "seven\tsieben\t\n"
                                        "\n"
                                        "eight\tacht\t1.0\n");
    EXPECT_EQ(dictionary.size(), 3);
    EXPECT_THAT(candidates(dictionary, QStringLiteral("one")), ElementsAre(QStringLiteral("eins")));
    EXPECT_THAT(candidates(dictionary, QStringLiteral("seven")),
                ElementsAre(QStringLiteral("sieben")));
    EXPECT_THAT(candidates(dictionary, QStringLiteral("eight")),
                ElementsAre(QStringLiteral("acht")));
}

TEST(GlossaryDictionary, trimsCandidatesAndKeepsDuplicatesAndOrder)
{
    const GlossaryDictionary dictionary("term\t| b |a||\xe3\x80\x80"
                                        "b\xc2\xa0| \xc3\xa4 c|\t1.0\n");
    EXPECT_THAT(candidates(dictionary, QStringLiteral("term")),
                ElementsAre(QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b"),
                            QStringLiteral("ä c")));
}

TEST(GlossaryDictionary, keepsTheLastRecordOfATermWholly)
{
    const GlossaryDictionary dictionary("Bank\tbank\t50.0\nhouse\tHaus\t1.0\nBANK \tbench\t2.5\n");
    EXPECT_EQ(dictionary.size(), 2);
    EXPECT_THAT(candidates(dictionary, QStringLiteral("bank")),
                ElementsAre(QStringLiteral("bench")));
    EXPECT_EQ(lookUp(dictionary, QStringLiteral("bank"))->score(), 2.5);
}

TEST(GlossaryDictionary, readsScoresAsNumbersOrAsNothing)
{
    EXPECT_EQ(scoreOf("19.9"), 19.9);
    EXPECT_EQ(scoreOf("20.0"), 20.0);
    EXPECT_EQ(scoreOf("+7"), 7.0);
    EXPECT_EQ(scoreOf("-3.5"), -3.5);
    EXPECT_EQ(scoreOf("1e2"), 100.0);
    EXPECT_EQ(scoreOf(""), 0.0);
    EXPECT_EQ(scoreOf("high"), 0.0);
    EXPECT_EQ(scoreOf("20.0 "), 0.0);
    EXPECT_EQ(scoreOf("20.0\r"), 0.0);
    EXPECT_EQ(scoreOf("20,0"), 0.0);
    EXPECT_EQ(scoreOf("1e999"), 0.0);
}

TEST(GlossaryDictionary, findsTermsThatTakeMoreBytesInLowerCase)
{
    // Two bytes in upper case, three in lower case; the third one grows by being composed.
    const GlossaryDictionary dictionary("ȺȾ\tx | y\t30.0\nplain\tz\t1.0\n\u0958\tka\t4.0");
    EXPECT_EQ(dictionary.size(), 3);
    EXPECT_THAT(candidates(dictionary, QStringLiteral("ⱥⱦ")),
                ElementsAre(QStringLiteral("x"), QStringLiteral("y")));
    EXPECT_EQ(lookUp(dictionary, QStringLiteral("ȺȾ"))->score(), 30.0);
    EXPECT_THAT(candidates(dictionary, QStringLiteral("\u0958")),
                ElementsAre(QStringLiteral("ka")));
    EXPECT_EQ(lookUp(dictionary, QStringLiteral("\u0958"))->score(), 4.0);
    EXPECT_THAT(candidates(dictionary, QStringLiteral("plain")), ElementsAre(QStringLiteral("z")));
}

TEST(GlossaryDictionary, takesAByteOrderMarkForNoPartOfTheFirstTerm)
{
    EXPECT_THAT(candidates(GlossaryDictionary("\xef\xbb\xbf"
                                              "a\tx\t1.0\n"),
                           QStringLiteral("a")),
                ElementsAre(QStringLiteral("x")));
}

TEST(GlossaryDictionary, takesAByteOrderMarkElsewhereForACharacter)
{
    EXPECT_THAT(candidates(GlossaryDictionary("a\t\xef\xbb\xbf"
                                              "x\t1.0\n"),
                           QStringLiteral("a")),
                ElementsAre(QStringLiteral("\ufeffx")));
}

TEST(GlossaryDictionary, takesNullBytesForCharacters)
{
    const GlossaryDictionary dictionary(QByteArray("a\0b\tx\0y\t1.0\n", 10));
    QString term = QStringLiteral("a.b");
    term[1] = QChar(u'\0');
    EXPECT_THAT(candidates(dictionary, term).value(0), SizeIs(3));
    EXPECT_FALSE(lookUp(dictionary, QStringLiteral("a")));
}

TEST(GlossaryDictionary, refusesWhatIsNotUtf8)
{
    for (const char* content :
         {"a\tx\t1.0\n\xff", "a\tx\t1.0\n\xc3", "a\tx\xc3\t1.0\n", "a\xc0\x80\tx\t1.0\n",
          "a\xed\xa0\x80\tx\t1.0\n", "a\xf5\x80\x80\x80\tx\t1.0\n"}) {
        try {
            const GlossaryDictionary dictionary{QByteArray(content)};
            ADD_FAILURE() << content;
        } catch (const TranslationError& error) {
            EXPECT_EQ(error.code(), TranslationError::Code::badResponse);
        }
    }
}

TEST(GlossaryDictionary, readsLongLinesUpToALimit)
{
    const qsizetype longest = GlossaryDictionary::longestRecord;
    QByteArray content = "long\t";
    content += QByteArray("ab|").repeated((longest - 9) / 3) + "\t9.0";
    const qsizetype length = content.size();
    ASSERT_LE(length, longest);
    content += "\ntoo long\t" + QByteArray(longest, 'x') + "\t9.0\nshort\ty\t9.0\n";
    const GlossaryDictionary dictionary(content);
    EXPECT_EQ(candidates(dictionary, QStringLiteral("long")).size(), (longest - 9) / 3);
    EXPECT_FALSE(lookUp(dictionary, QStringLiteral("too long")));
    EXPECT_TRUE(lookUp(dictionary, QStringLiteral("short")));
}

TEST(GlossaryDictionary, holdsEveryTermOfALargeFile)
{
    QByteArray content;
    for (int i = 0; i < 20'000; ++i) {
        const QByteArray number = QByteArray::number(i);
        content += "Wort " + number + "\tword " + number + "\t1.0\n";
    }
    const GlossaryDictionary dictionary(content);
    EXPECT_EQ(dictionary.size(), 20'000);
    for (int i = 0; i < 20'000; ++i) {
        const QString number = QString::number(i);
        ASSERT_THAT(candidates(dictionary, QStringLiteral("wort ") + number),
                    ElementsAre(QStringLiteral("word ") + number));
    }
    EXPECT_FALSE(lookUp(dictionary, QStringLiteral("wort 20000")));
}

TEST(GlossaryDictionary, stopsReadingWhenAsked)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(GlossaryDictionary("a\tx\t1.0\n", stop.get_token()), CancellationError);
}

class GlossaryFile : public ::testing::Test
{
protected:
    [[nodiscard]] QString pathOf(const QByteArray& content) const
    {
        QFile file(folder.filePath(QStringLiteral("de-en.tsv")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }

    QTemporaryDir folder;
};

TEST_F(GlossaryFile, isReadWhole)
{
    const GlossaryDictionary dictionary = loadGlossary(pathOf("Haus\thouse\t9.0\n"), {});
    EXPECT_THAT(candidates(dictionary, QStringLiteral("haus")),
                ElementsAre(QStringLiteral("house")));
}

TEST_F(GlossaryFile, thatCannotBeReadIsAFailureInTheWordsOfTheSystem)
{
    const auto failure = [](const QString& path) {
        try {
            const GlossaryDictionary dictionary = loadGlossary(path, {});
        } catch (const GlossaryFileError& error) {
            return error.description();
        }
        return QString();
    };
    EXPECT_EQ(failure(folder.filePath(QStringLiteral("none.tsv"))),
              QStringLiteral("No such file or directory"));
    EXPECT_NE(failure(folder.path()), QString());
    const QString pipe = folder.filePath(QStringLiteral("pipe.tsv"));
    ASSERT_EQ(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
    EXPECT_NE(failure(pipe), QString());
}

TEST_F(GlossaryFile, thatIsTooLargeIsNotRead)
{
    const QString path = pathOf({});
    ASSERT_TRUE(QFile::resize(path, GlossaryDictionary::largestContent + 1));
    EXPECT_THROW(std::ignore = loadGlossary(path, {}), TranslationError);
}

} // namespace
} // namespace zelvane::test
