#include "desktop/linux/session/BusNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using ::testing::MatchesRegex;

TEST(InstanceName, isTheProgramsOwnWithoutAProfile)
{
    EXPECT_EQ(instanceName({}).toStdString(), "org.zelvane.desk");
}

TEST(InstanceName, everyProfileHasOneThatABusTakes)
{
    const std::string one = instanceName(QStringLiteral("/home/user/one")).toStdString();
    EXPECT_THAT(one, MatchesRegex(R"(org\.zelvane\.desk\.Profile_[0-9a-f]{16})"));
    EXPECT_NE(instanceName(QStringLiteral("/home/user/two")).toStdString(), one);
    EXPECT_NE(instanceName(QStringLiteral("/home/user/One")).toStdString(), one);
    EXPECT_EQ(instanceName(QStringLiteral("/home/user/one")).toStdString(), one);
}

TEST(InstanceName, isTheSameForEveryWayToWriteTheFolder)
{
    QTemporaryDir folder;
    const QString real = folder.filePath(QStringLiteral("Grüße"));
    const QString link = folder.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(real, link));
    const QString before = instanceName(real);
    ASSERT_TRUE(QDir().mkpath(real));
    EXPECT_EQ(instanceName(real), before);
    EXPECT_EQ(instanceName(real + u'/'), before);
    EXPECT_EQ(instanceName(folder.path() + QStringLiteral("/./x/../Grüße")), before);
    EXPECT_EQ(instanceName(link), before);
}

} // namespace
} // namespace zelvane::test
