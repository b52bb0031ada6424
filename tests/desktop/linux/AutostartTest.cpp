#include "desktop/linux/AutostartFile.h"
#include "desktop/linux/AutostartLoginItem.h"
#include "desktop/linux/DesktopEntry.h"

#include "support/Await.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using State = LoginItem::State;

const char* const ownEntry = "[Desktop Entry]\n"
                             "Type=Application\n"
                             "Name=Zelvane Desk\n"
                             "Exec=/bin/true --quiet\n"
                             "Icon=org.zelvane.desk\n"
                             "Terminal=false\n"
                             "X-GNOME-Autostart-enabled=true\n";

class Autostart : public ::testing::Test
{
protected:
    [[nodiscard]] QByteArray content() const
    {
        QFile stored(file.path());
        return stored.open(QIODevice::ReadOnly) ? stored.readAll() : QByteArray("(none)");
    }

    void put(const QByteArray& bytes) const
    {
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile stored(file.path());
        ASSERT_TRUE(stored.open(QIODevice::WriteOnly));
        stored.write(bytes);
    }

    QTemporaryDir home;
    QString folder = home.filePath(QStringLiteral("config/autostart"));
    AutostartFile file{folder, {QStringLiteral("/bin/true"), QStringLiteral("--quiet")}};
};

TEST_F(Autostart, writesTheWholeEntryIntoAFolderThatItMakes)
{
    EXPECT_EQ(file.state(), State::absent);
    ASSERT_TRUE(file.turnOn());
    EXPECT_EQ(file.path(), folder + QStringLiteral("/org.zelvane.desk.desktop"));
    EXPECT_EQ(content(), QByteArray(ownEntry));
    EXPECT_EQ(file.state(), State::on);
    EXPECT_EQ(QDir(folder).entryList(QDir::Files).size(), 1);
}

TEST_F(Autostart, deletesTheEntryThatItWrote)
{
    ASSERT_TRUE(file.turnOn());
    ASSERT_TRUE(file.turnOff());
    EXPECT_EQ(content(), QByteArray("(none)"));
    EXPECT_TRUE(file.turnOff());
}

TEST_F(Autostart, deletesItsEntryAlsoIfAnotherPlaceOfTheProgramWroteIt)
{
    put(QByteArray(ownEntry).replace("/bin/true", "/opt/elsewhere"));
    ASSERT_TRUE(file.turnOff());
    EXPECT_EQ(content(), QByteArray("(none)"));
}

TEST_F(Autostart, anEntryThatTheUserEditedIsSwitchedOffAndKept)
{
    put("# mine\n[Desktop Entry]\nExec=/bin/true --quiet --report\nX-Delay=20\n");
    ASSERT_TRUE(file.turnOff());
    EXPECT_EQ(content(), QByteArray("# mine\n[Desktop Entry]\nExec=/bin/true --quiet --report\n"
                                    "X-Delay=20\nHidden=true\n"));
    EXPECT_EQ(file.state(), State::off);
    ASSERT_TRUE(file.turnOn());
    EXPECT_EQ(content(), QByteArray("# mine\n[Desktop Entry]\nExec=/bin/true --quiet --report\n"
                                    "X-Delay=20\nX-GNOME-Autostart-enabled=true\n"));
    EXPECT_EQ(file.state(), State::on);
}

TEST_F(Autostart, knowsBothWaysOfDesktopsToSwitchAnEntryOff)
{
    put("[Desktop Entry]\nExec=/bin/true\nHidden=true\n");
    EXPECT_EQ(file.state(), State::off);
    put("[Desktop Entry]\nExec=/bin/true\nX-GNOME-Autostart-enabled=false\n");
    EXPECT_EQ(file.state(), State::off);
    put("[Desktop Entry]\nExec=/bin/true\nHidden=false\n");
    EXPECT_EQ(file.state(), State::on);
}

TEST_F(Autostart, aKeyOfAnotherGroupMeansNothing)
{
    put("[Desktop Action A]\nHidden=true\n\n[Desktop Entry]\nExec=/bin/true\n\n"
        "[Desktop Action B]\nHidden=true\n");
    EXPECT_EQ(file.state(), State::on);
    ASSERT_TRUE(file.turnOff());
    EXPECT_EQ(content(),
              QByteArray("[Desktop Action A]\nHidden=true\n\n[Desktop Entry]\nExec=/bin/true\n"
                         "Hidden=true\n\n[Desktop Action B]\nHidden=true\n"));
}

TEST_F(Autostart, aProgramThatWasMovedIsFoundAgain)
{
    put("[Desktop Entry]\nTryExec=/gone/zelvane-desk\nExec=\"/gone/zelvane-desk\" "
        "--quiet\nX-A=1\n");
    ASSERT_TRUE(file.repair());
    EXPECT_EQ(content(), QByteArray("[Desktop Entry]\nExec=/bin/true --quiet\nX-A=1\n"));
}

TEST_F(Autostart, aProgramThatIsStillThereIsLeftAlone)
{
    for (const QByteArray exec : {"/bin/false --quiet", "sh -c 'sleep 5; zelvane-desk'"}) {
        const QByteArray entry = "[Desktop Entry]\nExec=" + exec + '\n';
        put(entry);
        ASSERT_TRUE(file.repair());
        EXPECT_EQ(content(), entry);
    }
}

TEST_F(Autostart, nothingToRepairIsNoFailure)
{
    EXPECT_TRUE(file.repair());
    EXPECT_EQ(content(), QByteArray("(none)"));
}

TEST_F(Autostart, aLinkToAnotherProgramsFileIsReplacedNotWrittenThrough)
{
    const QString shared = home.filePath(QStringLiteral("shared.desktop"));
    QFile target(shared);
    ASSERT_TRUE(target.open(QIODevice::WriteOnly));
    target.write("[Desktop Entry]\nExec=/bin/true\nHidden=true\n");
    target.close();
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::link(shared, file.path()));
    EXPECT_EQ(file.state(), State::off);
    ASSERT_TRUE(file.turnOn());
    EXPECT_EQ(content(), QByteArray(ownEntry));
    ASSERT_TRUE(target.open(QIODevice::ReadOnly));
    EXPECT_TRUE(target.readAll().endsWith("Hidden=true\n"));
}

TEST_F(Autostart, aFolderThatCannotBeWrittenToIsAFailure)
{
    QFile inTheWay(home.filePath(QStringLiteral("config")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_FALSE(file.turnOn());
}

TEST_F(Autostart, isReadAndWrittenOnAnotherThread)
{
    Worker worker;
    AutostartLoginItem item(file, worker);
    EXPECT_EQ(await(item.look()), State::absent);
    EXPECT_TRUE(await(item.set(true)));
    EXPECT_EQ(content(), QByteArray(ownEntry));
    EXPECT_EQ(await(item.look()), State::on);
    EXPECT_TRUE(await(item.set(false)));
    EXPECT_EQ(await(item.look()), State::absent);
}

struct Command
{
    QStringList arguments;
    const char* exec;
};

class ExecOf : public ::testing::TestWithParam<Command>
{
};

TEST_P(ExecOf, aCommandIsQuotedForTheDesktop)
{
    const QString value = execValue(GetParam().arguments);
    EXPECT_EQ(value, QString::fromUtf8(GetParam().exec));
    EXPECT_EQ(programOfExec(value), GetParam().arguments.first());
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ExecOf,
    ::testing::Values(
        Command{{QStringLiteral("/usr/bin/zelvane-desk"), QStringLiteral("--quiet")},
                "/usr/bin/zelvane-desk --quiet"},
        Command{{QStringLiteral("/home/a b/zelvane-desk"), QStringLiteral("")},
                "\"/home/a b/zelvane-desk\" \"\""},
        Command{{QStringLiteral("/100%/zelvane"), QStringLiteral("50%")}, "/100%%/zelvane 50%%"},
        Command{{QStringLiteral("/a\"b`c$d\\e/zelvane")}, R"("/a\\"b\\`c\\$d\\\\e/zelvane")"}));

TEST(DesktopEntry, takesAnythingForAFile)
{
    for (const QByteArray bytes :
         {"", "\n\n", "no group\nHidden=true", "[Other]\nHidden=true\n", "\xff\xfe\x00garbage",
          "[Desktop Entry]", "[Desktop Entry]\n=\n"}) {
        DesktopEntry entry = DesktopEntry::parse(bytes);
        EXPECT_EQ(entry.value(QStringLiteral("Hidden")), std::nullopt) << bytes.toStdString();
        entry.setValue(QStringLiteral("Hidden"), QStringLiteral("true"));
        EXPECT_EQ(DesktopEntry::parse(entry.toBytes()).value(QStringLiteral("Hidden")),
                  QStringLiteral("true"))
            << bytes.toStdString();
    }
}

TEST(DesktopEntry, anExecWithoutAnEndHasNoProgram)
{
    EXPECT_EQ(programOfExec(QStringLiteral("\"/bin/true")), QString());
    EXPECT_EQ(programOfExec(QString()), QString());
}

} // namespace
} // namespace zelvane::test
