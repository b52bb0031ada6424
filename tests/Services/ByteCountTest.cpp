#include "Services/ByteCount.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(ByteCount, isInMegabytesOrGigabytes)
{
    const QLocale english(QLocale::English);
    const auto text = [&](qint64 bytes) { return byteCount(bytes, english).toStdString(); };
    EXPECT_EQ(text(0), "0 MB");
    EXPECT_EQ(text(1), "0 MB");
    EXPECT_EQ(text(50'000), "0.1 MB");
    EXPECT_EQ(text(1'000'000), "1 MB");
    EXPECT_EQ(text(712'540'000), "712.5 MB");
    EXPECT_EQ(text(999'900'000), "999.9 MB");
    EXPECT_EQ(text(999'960'000), "1 GB");
    EXPECT_EQ(text(2'716'068'544), "2.72 GB");
    EXPECT_EQ(text(4'624'648'896), "4.62 GB");
    EXPECT_EQ(text(5'582'838'496), "5.58 GB");
    EXPECT_EQ(text(12'000'000'000'000), "12000 GB");
}

TEST(ByteCount, isWrittenAsTheLanguageWritesNumbers)
{
    EXPECT_EQ(byteCount(4'624'648'896, QLocale(QLocale::German)), QStringLiteral("4,62 GB"));
    EXPECT_EQ(byteCount(12'000'000'000'000, QLocale(QLocale::German)), QStringLiteral("12000 GB"));
}

} // namespace
} // namespace zelvane::test
