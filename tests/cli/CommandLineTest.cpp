#include "cli/CommandLine.h"

#include <gtest/gtest.h>

#include <QDir>

namespace zelvane::test {
namespace {

using Command = CommandLine::Command;

TEST(CommandLine, withoutArgumentsStartsOnTheDesktop)
{
    const auto line = parseCommandLine({});
    ASSERT_TRUE(line);
    EXPECT_EQ(line->command, Command::desktop);
    EXPECT_EQ(line->profile, QString());
}

TEST(CommandLine, keepsWhatFollowsTheCommand)
{
    const auto line = parseCommandLine(
        {QStringLiteral("defaults"), QStringLiteral("read"), QStringLiteral("--profile")});
    ASSERT_TRUE(line);
    EXPECT_EQ(line->command, Command::defaults);
    EXPECT_EQ(line->arguments, (QStringList{QStringLiteral("read"), QStringLiteral("--profile")}));
}

TEST(CommandLine, theProfileStandsBeforeTheCommandAndBecomesAbsolute)
{
    const auto apart = parseCommandLine(
        {QStringLiteral("--profile"), QStringLiteral("p"), QStringLiteral("translate")});
    const auto joined = parseCommandLine({QStringLiteral("--profile=/q/r")});
    ASSERT_TRUE(apart && joined);
    EXPECT_EQ(apart->profile, QDir::current().absoluteFilePath(QStringLiteral("p")));
    EXPECT_EQ(apart->command, Command::translate);
    EXPECT_EQ(joined->profile, QStringLiteral("/q/r"));
    EXPECT_EQ(joined->command, Command::desktop);
}

TEST(CommandLine, theDesktopReportsIfItIsAskedTo)
{
    EXPECT_TRUE(parseCommandLine({QStringLiteral("--report")})->report);
    EXPECT_FALSE(parseCommandLine({})->report);
}

TEST(CommandLine, theDesktopStartsQuietlyIfItIsAskedTo)
{
    EXPECT_TRUE(parseCommandLine({QStringLiteral("--quiet")})->quiet);
    EXPECT_FALSE(parseCommandLine({})->quiet);
}

TEST(CommandLine, saysWhatIsWrong)
{
    EXPECT_EQ(parseCommandLine({QStringLiteral("--profile")}).error(),
              QStringLiteral("--profile needs a folder"));
    EXPECT_EQ(parseCommandLine({QStringLiteral("--profile=")}).error(),
              QStringLiteral("--profile needs a folder"));
    EXPECT_EQ(parseCommandLine({QStringLiteral("--nonsense")}).error(),
              QStringLiteral("unknown option \"--nonsense\""));
    EXPECT_EQ(parseCommandLine({QStringLiteral("nonsense")}).error(),
              QStringLiteral("unknown command \"nonsense\""));
}

TEST(CommandLine, knowsEveryCommandAndHasAHelpForIt)
{
    const std::pair<const char*, Command> table[] = {
        {"translate", Command::translate}, {"models", Command::models},
        {"glossary", Command::glossary},   {"defaults", Command::defaults},
        {"service", Command::service},     {"trigger", Command::trigger},
        {"show", Command::show},           {"status", Command::status},
    };
    for (const auto& [name, command] : table) {
        const auto line = parseCommandLine({QString::fromUtf8(name)});
        ASSERT_TRUE(line) << name;
        EXPECT_EQ(line->command, command) << name;
        EXPECT_TRUE(helpText(command).startsWith(
            QStringLiteral("Usage: zelvane-desk [--profile DIR] ") + QString::fromUtf8(name)))
            << name;
        EXPECT_TRUE(helpText(Command::help)
                        .contains(u'\n' + QStringLiteral("  ") + QString::fromUtf8(name) + u' '))
            << name;
    }
}

TEST(CommandLine, helpAndVersionAreAskedForInTheUsualWays)
{
    EXPECT_EQ(parseCommandLine({QStringLiteral("--help")})->command, Command::help);
    EXPECT_EQ(parseCommandLine({QStringLiteral("help")})->command, Command::help);
    EXPECT_EQ(parseCommandLine({QStringLiteral("--version")})->command, Command::version);
    EXPECT_EQ(parseCommandLine({QStringLiteral("engine")})->command, Command::engine);
    EXPECT_EQ(parseCommandLine({QStringLiteral("glossary")})->command, Command::glossary);
    EXPECT_EQ(parseCommandLine({QStringLiteral("models")})->command, Command::models);
    EXPECT_TRUE(
        helpText(Command::models)
            .startsWith(QStringLiteral("Usage: zelvane-desk [--profile DIR] models [OPTIONS]\n")));
    EXPECT_TRUE(helpText(Command::translate).contains(QStringLiteral("ZELVANE_API_KEY")));
}

} // namespace
} // namespace zelvane::test
