#include "ui/settings/EngineProgressLines.h"

#include "settings/Localization.h"
#include "settings/UserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

EngineDownloadProgress halfWay()
{
    EngineDownloadProgress progress;
    progress.downloadedBytes = 2'300'000'000;
    progress.totalBytes = 4'600'000'000;
    progress.bytesPerSecond = 11'500'000;
    progress.remainingBytes = 2'300'000'000;
    progress.etaSeconds = 200;
    progress.elapsedSeconds = 3725;
    return progress;
}

SymbolLine line(const char16_t* symbol, const char16_t* text)
{
    return {QString::fromUtf16(symbol), QString::fromUtf16(text)};
}

TEST(EngineProgressLines, tellAmountSpeedRestAndTime)
{
    EXPECT_THAT(
        engineProgressLines(halfWay()),
        ElementsAre(line(u"arrow.down.circle", u"2.3 GB of 4.6 GB downloaded"),
                    line(u"speedometer", u"11.5 MB/s"), line(u"externaldrive", u"2.3 GB remaining"),
                    line(u"clock", u"About 3:20 remaining"), line(u"clock", u"Elapsed: 1:02:05")));
    EXPECT_EQ(engineProgressPercentage(halfWay()), QStringLiteral("50%"));
}

TEST(EngineProgressLines, tellLessWhileTheSizeIsUnknown)
{
    EngineDownloadProgress progress;
    progress.downloadedBytes = 4'000'000;
    progress.bytesPerSecond = 0;
    progress.elapsedSeconds = 9;

    EXPECT_THAT(engineProgressLines(progress),
                ElementsAre(line(u"arrow.down.circle", u"4.0 MB downloaded"),
                            line(u"speedometer", u"—"), line(u"clock", u"Elapsed: 0:09")));
    EXPECT_EQ(engineProgressPercentage(progress), QString());
}

TEST(EngineProgressLines, writeSmallSpeedsInKilobytes)
{
    EngineDownloadProgress progress = halfWay();
    progress.bytesPerSecond = 512'400;
    EXPECT_EQ(engineProgressLines(progress)[1].text, QStringLiteral("512 kB/s"));
}

TEST(EngineProgressLines, nameUnitsAsTheInterfaceDoes)
{
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("fr"));
    installLocalization(&defaults);
    const QList<SymbolLine> lines = engineProgressLines(halfWay());
    EngineDownloadProgress slow = halfWay();
    slow.bytesPerSecond = 512'400;
    const QString slowly = engineProgressLines(slow)[1].text;
    const QString percentage = engineProgressPercentage(halfWay());
    installLocalization(nullptr);
    EXPECT_EQ(lines[1].text, QStringLiteral("11,5 Mo/s"));
    EXPECT_EQ(slowly, QStringLiteral("512 ko/s"));
    EXPECT_EQ(percentage, QStringLiteral("50\u00a0%"));
}

TEST(EngineProgressLines, tellOfASilenceOfTenSeconds)
{
    EngineDownloadProgress progress = halfWay();
    progress.idleSeconds = 9;
    EXPECT_EQ(engineProgressLines(progress).size(), 5);

    progress.idleSeconds = 10;
    EXPECT_EQ(engineProgressLines(progress).constLast(),
              line(u"wifi.slash", u"No network data for 0:10. Waiting to resume…"));
}

TEST(EngineProgressLines, countWholePercentThatAreDone)
{
    EngineDownloadProgress progress = halfWay();
    progress.totalBytes = 1'000;
    progress.downloadedBytes = 290;
    EXPECT_EQ(engineProgressPercentage(progress), QStringLiteral("29%"));
    progress.downloadedBytes = 999;
    EXPECT_EQ(engineProgressPercentage(progress), QStringLiteral("99%"));
}

TEST(EngineProgressLines, neverPassAHundredPercent)
{
    EngineDownloadProgress progress = halfWay();
    progress.downloadedBytes = 9'000'000'000;
    EXPECT_EQ(engineProgressPercentage(progress), QStringLiteral("100%"));
}

} // namespace
} // namespace zelvane::test
