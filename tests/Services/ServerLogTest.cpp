#include "Services/ServerLog.h"

#include <gtest/gtest.h>

namespace zelvane {
namespace {

TEST(ServerLogTest, KeepsTheLast20000Characters)
{
    ServerLog log;
    log.append(QByteArray(5000, 'a'));
    log.append(QByteArray(20000, 'b'));
    EXPECT_EQ(log.text(), QString(20000, u'b'));
    log.append("c");
    EXPECT_EQ(log.text(), QString(19999, u'b') + u'c');
}

TEST(ServerLogTest, KeepsTheSameOfAFlood)
{
    ServerLog log;
    for (int i = 0; i < 3000; ++i) {
        log.append(QByteArray::number(i % 10).repeated(100));
    }
    QString end;
    for (int i = 2800; i < 3000; ++i) {
        end += QString::number(i % 10).repeated(100);
    }
    EXPECT_EQ(log.text(), end);
}

TEST(ServerLogTest, CountsWhatAReaderSeesAsOneCharacter)
{
    ServerLog log;
    const QString family = QStringLiteral("👨‍👩‍👧");
    log.append(family.toUtf8() + family.toUtf8() + QByteArray(19999, 'b'));
    EXPECT_EQ(log.text(), family + QString(19999, u'b'));
}

TEST(ServerLogTest, ACharacterThatIsCutInTwoArrivesWhole)
{
    ServerLog log;
    const QByteArray bytes = QStringLiteral("aä€😀z").toUtf8();
    for (const char byte : bytes) {
        log.append(QByteArray(1, byte));
    }
    EXPECT_EQ(log.text(), QStringLiteral("aä€😀z"));
}

TEST(ServerLogTest, APieceThatIsNotUtf8IsDroppedWhole)
{
    ServerLog log;
    log.append("one ");
    log.append("two \xff ");
    log.append("three \xe2\x82");
    log.append("four ");
    log.append("five");
    // The unfinished character takes the piece along that doesn't finish it.
    EXPECT_EQ(log.text(), QStringLiteral("one three five"));
}

TEST(ServerLogTest, BlotsTheKeyOutHoweverItWasCut)
{
    ServerLog log;
    log.begin(QStringLiteral("0123456789abcdef"));
    log.append("key 01234567");
    log.append("89abcdef!");
    EXPECT_EQ(log.text(), QStringLiteral("key ***!"));
}

TEST(ServerLogTest, BeginsAnew)
{
    ServerLog log;
    log.append("old \xe2\x82");
    log.begin(QString());
    log.append("new");
    EXPECT_EQ(log.text(), QStringLiteral("new"));
}

} // namespace
} // namespace zelvane
