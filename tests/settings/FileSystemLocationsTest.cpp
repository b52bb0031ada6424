#include "settings/FileSystemLocations.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

QProcessEnvironment environment(const QMap<QString, QString>& variables)
{
    QProcessEnvironment result;
    for (auto variable = variables.cbegin(); variable != variables.cend(); ++variable) {
        result.insert(variable.key(), variable.value());
    }
    return result;
}

TEST(XdgLocations, followTheVariables)
{
    const XdgLocations locations(
        environment({{QStringLiteral("XDG_CONFIG_HOME"), QStringLiteral("/nowhere/c/")},
                     {QStringLiteral("XDG_DATA_HOME"), QStringLiteral("/nowhere/d")},
                     {QStringLiteral("HOME"), QStringLiteral("/nowhere/home")}}));
    EXPECT_EQ(locations.configDirectory(), QStringLiteral("/nowhere/c/org.zelvane.desk"));
    EXPECT_EQ(locations.applicationSupportDirectory(),
              QStringLiteral("/nowhere/d/org.zelvane.desk"));
}

TEST(XdgLocations, fallBackOnTheHomeFolder)
{
    const XdgLocations locations(
        environment({{QStringLiteral("XDG_CONFIG_HOME"), QString()},
                     {QStringLiteral("XDG_DATA_HOME"), QStringLiteral("relative")},
                     {QStringLiteral("HOME"), QStringLiteral("/nowhere/home")}}));
    EXPECT_EQ(locations.configDirectory(),
              QStringLiteral("/nowhere/home/.config/org.zelvane.desk"));
    EXPECT_EQ(locations.applicationSupportDirectory(),
              QStringLiteral("/nowhere/home/.local/share/org.zelvane.desk"));
}

TEST(XdgLocations, fallBackOnTheTemporaryFolderWithoutAHome)
{
    const XdgLocations locations{QProcessEnvironment()};
    EXPECT_EQ(locations.applicationSupportDirectory(),
              QDir::tempPath() + QStringLiteral("/org.zelvane.desk"));
}

TEST(ProfileLocations, lieUnderTheProfile)
{
    const QTemporaryDir root;
    const ProfileLocations locations(root.path() + QStringLiteral("/./p/"));
    EXPECT_EQ(locations.configDirectory(),
              root.path() + QStringLiteral("/p/config/org.zelvane.desk"));
    EXPECT_EQ(locations.applicationSupportDirectory(),
              root.path() + QStringLiteral("/p/data/org.zelvane.desk"));
    EXPECT_FALSE(QFileInfo::exists(root.path() + QStringLiteral("/p")));
    EXPECT_TRUE(QDir::isAbsolutePath(ProfileLocations(QStringLiteral("p")).configDirectory()));
}

class EarlierFolder : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(earlier);
        QFile model(earlier + QStringLiteral("/model"));
        ASSERT_TRUE(model.open(QFile::WriteOnly));
    }
    void use() const
    {
        const XdgLocations locations(environment({{QStringLiteral("XDG_DATA_HOME"), root.path()}}));
        EXPECT_EQ(locations.applicationSupportDirectory(), present);
    }

    QTemporaryDir root;
    QString earlier = root.path() + QStringLiteral("/org.zelvane.legacy");
    QString present = root.path() + QStringLiteral("/org.zelvane.desk");
};

TEST_F(EarlierFolder, isMovedToThePresentName)
{
    use();
    EXPECT_TRUE(QFileInfo::exists(present + QStringLiteral("/model")));
    EXPECT_FALSE(QFileInfo::exists(earlier));
}

TEST_F(EarlierFolder, staysWhereThePresentOneExists)
{
    QDir().mkpath(present);
    use();
    EXPECT_FALSE(QFileInfo::exists(present + QStringLiteral("/model")));
    EXPECT_TRUE(QFileInfo::exists(earlier + QStringLiteral("/model")));
}

TEST_F(EarlierFolder, isNotMissedWhereThereIsNone)
{
    QDir(earlier).removeRecursively();
    use();
    EXPECT_FALSE(QFileInfo::exists(present));
}

} // namespace
} // namespace zelvane::test
