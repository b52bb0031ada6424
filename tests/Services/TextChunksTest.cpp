#include "Services/TextChunks.h"

#include "SeededRandom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

/// A line of so many characters.
QString line(qsizetype length)
{
    return QString(length, u'x');
}

QStringList lines(const QList<qsizetype>& lengths)
{
    QStringList result;
    for (const qsizetype length : lengths) {
        result += line(length);
    }
    return result;
}

/// How many lines each chunk has.
QList<qsizetype> sizes(const QList<QStringList>& chunks)
{
    QList<qsizetype> result;
    for (const QStringList& chunk : chunks) {
        result += chunk.size();
    }
    return result;
}

QStringList joined(const QList<QStringList>& chunks)
{
    QStringList result;
    for (const QStringList& chunk : chunks) {
        result += chunk;
    }
    return result;
}

TEST(TextChunks, aBlankLineHoldsNothingButBlanksAndTabs)
{
    EXPECT_TRUE(isBlankLine(QString()));
    EXPECT_TRUE(isBlankLine(QStringLiteral(" \t\u00a0")));
    EXPECT_FALSE(isBlankLine(QStringLiteral("\r")));
}

TEST(TextChunks, noLinesMakeOneEmptyChunk)
{
    EXPECT_THAT(chunkLines({}, 25), ElementsAre(QStringList()));
}

TEST(TextChunks, blankLinesStayWithTheOthers)
{
    const QStringList text{QStringLiteral("a"), QString(), QStringLiteral("b")};
    EXPECT_THAT(chunkLines(text, 25), ElementsAre(text));
    EXPECT_THAT(sizes(chunkLines({QString(), QStringLiteral(" ")}, 25)), ElementsAre(2));
}

TEST(TextChunks, aListOfShortItemsGoesByThrees)
{
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(10, 20)), 25)), ElementsAre(3, 3, 3, 1));
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(8, 80)), 6)), ElementsAre(3, 3, 2));
}

TEST(TextChunks, sevenItemsOrALongerLineMakeNoList)
{
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(7, 20)), 25)), ElementsAre(7));
    QList<qsizetype> lengths(10, 20);
    lengths[4] = 81;
    EXPECT_THAT(sizes(chunkLines(lines(lengths), 25)), ElementsAre(10));
}

TEST(TextChunks, blankLinesAreNoItems)
{
    QStringList text = lines(QList<qsizetype>(7, 20));
    text.insert(3, QString());
    EXPECT_THAT(sizes(chunkLines(text, 25)), ElementsAre(8));
    text += line(20);
    EXPECT_THAT(sizes(chunkLines(text, 25)), ElementsAre(4, 3, 2));
}

TEST(TextChunks, fewLinesAtATimeAreNotMadeFewerOrMore)
{
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(8, 20)), 4)), ElementsAre(3, 3, 2));
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(8, 20)), 2)), ElementsAre(2, 2, 2, 2));
}

TEST(TextChunks, holdsAsManyLinesAsItMay)
{
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(9, 100)), 6)), ElementsAre(6, 3));
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(26, 30) << 81), 25)), ElementsAre(25, 2));
}

TEST(TextChunks, blankLinesDontCountAndDontStartAChunk)
{
    QStringList text = lines(QList<qsizetype>(6, 100));
    text.insert(2, QString());
    text += {QString(), QString()};
    EXPECT_THAT(sizes(chunkLines(text, 6)), ElementsAre(9));
    text += line(100);
    EXPECT_THAT(sizes(chunkLines(text, 6)), ElementsAre(9, 1));
}

TEST(TextChunks, isFullWith1200Characters)
{
    EXPECT_THAT(sizes(chunkLines(lines(QList<qsizetype>(7, 200)), 25)), ElementsAre(6, 1));
    EXPECT_THAT(sizes(chunkLines(lines({200, 200, 200, 200, 200, 199, 200, 200}), 25)),
                ElementsAre(7, 1));
}

TEST(TextChunks, aLongLineStandsAlone)
{
    EXPECT_THAT(sizes(chunkLines(lines({20, 280, 20}), 25)), ElementsAre(1, 1, 1));
    EXPECT_THAT(sizes(chunkLines(lines({20, 279, 20}), 25)), ElementsAre(3));
    EXPECT_THAT(sizes(chunkLines(lines({20, 500}), 25)), ElementsAre(1, 1));
    EXPECT_THAT(sizes(chunkLines(lines({400, 400, 400, 400}), 25)), ElementsAre(1, 1, 1, 1));
}

TEST(TextChunks, aBlankLineStaysWithTheLongLineBeforeIt)
{
    EXPECT_THAT(sizes(chunkLines(lines({280, 0, 0, 280, 0, 20}), 25)), ElementsAre(3, 2, 1));
    // ... and with blank lines alone a long line has company, too.
    EXPECT_THAT(sizes(chunkLines(lines({0, 280, 20}), 25)), ElementsAre(2, 1));
}

TEST(TextChunks, aVeryLongLineEndsItsChunkAtOnce)
{
    EXPECT_THAT(sizes(chunkLines(lines({1200, 0, 20}), 25)), ElementsAre(1, 2));
    EXPECT_THAT(sizes(chunkLines(lines({1199, 0, 20}), 25)), ElementsAre(2, 1));
}

TEST(TextChunks, countsCharactersAsReadersDo)
{
    const QString accents = QStringLiteral("e\u0301").repeated(279);
    EXPECT_THAT(sizes(chunkLines({line(20), accents, line(20)}, 25)), ElementsAre(3));
}

TEST(TextChunks, partitionAnyText)
{
    // Lengths around every limit.
    const QList<qsizetype> lengths{0, 1, 20, 79, 80, 81, 199, 279, 280, 281, 600, 1199, 1200, 1201};
    SeededRandom random;
    for (int round = 0; round < 1000; ++round) {
        QStringList text;
        const qsizetype kinds = 1 + random.below(lengths.size());
        for (qsizetype count = random.below(40); count > 0; --count) {
            text += line(lengths[random.below(kinds)]);
        }
        const qsizetype maxLines = random.oneOf(QList<qsizetype>{6, 25});
        SCOPED_TRACE(::testing::PrintToString(text.join(u'\n').toStdString()));
        const QList<QStringList> chunks = chunkLines(text, maxLines);
        ASSERT_EQ(joined(chunks), text);
        for (const QStringList& chunk : chunks) {
            ASSERT_TRUE(!chunk.isEmpty() || text.isEmpty());
            qsizetype filled = 0;
            qsizetype before = 0; // characters before the last line that isn't blank
            qsizetype last = 0;
            bool holdsLong = false;
            for (const QString& each : chunk) {
                if (!isBlankLine(each)) {
                    ++filled;
                    before += last;
                    last = each.size();
                    holdsLong = holdsLong || last >= 280;
                }
            }
            ASSERT_LE(filled, holdsLong ? 1 : maxLines);
            ASSERT_LT(before, 1200);
        }
    }
}

} // namespace
} // namespace zelvane::test
