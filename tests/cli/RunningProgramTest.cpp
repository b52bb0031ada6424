// The commands that are for the running program.

#include "cli/ControlCommands.h"
#include "cli/ServiceCommand.h"
#include "foundation/Completion.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QBuffer>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Action = ControlOptions::Action;
using Command = CommandLine::Command;

QStringList words(std::initializer_list<const char*> list)
{
    QStringList made;
    for (const char* word : list) {
        made << QString::fromUtf8(word);
    }
    return made;
}

std::expected<ServiceOptions, QString> service(std::initializer_list<const char*> list)
{
    return parseServiceOptions(words(list));
}

std::expected<ControlOptions, QString> control(Command command,
                                               std::initializer_list<const char*> list)
{
    return parseControlOptions(command, words(list));
}

TEST(ServiceOptions, knowsTheSixServices)
{
    for (const char* name : {"translatePair1", "translatePair2", "translatePair3",
                             "translatePair1UI", "translatePair2UI", "translatePair3UI"}) {
        const auto options = service({name, "hello"});
        ASSERT_TRUE(options) << name;
        EXPECT_EQ(options->entry, QString::fromUtf8(name));
        EXPECT_EQ(options->text, QStringLiteral("hello"));
    }
}

TEST(ServiceOptions, takesTheTextFromStandardInputWhereThereIsNone)
{
    EXPECT_EQ(service({"translatePair1"})->text, std::nullopt);
    EXPECT_EQ(service({"translatePair1", "-"})->text, std::nullopt);
    EXPECT_EQ(service({"translatePair1", ""})->text, QString());
}

TEST(ServiceOptions, aTextMayLookLikeAnOptionBehindTwoHyphens)
{
    EXPECT_EQ(service({"translatePair1", "--", "--help"})->text, QStringLiteral("--help"));
    EXPECT_EQ(service({"--", "translatePair1", "-x"})->text, QStringLiteral("-x"));
    EXPECT_TRUE(service({"translatePair1", "--help"})->help);
    EXPECT_TRUE(service({"-h"})->help);
}

TEST(ServiceOptions, saysWhatIsWrong)
{
    EXPECT_EQ(service({}).error(), QStringLiteral("service needs the name of a service"));
    EXPECT_EQ(service({"translatePair4"}).error(),
              QStringLiteral("there is no service \"translatePair4\""));
    EXPECT_EQ(service({"translatepair1"}).error(),
              QStringLiteral("there is no service \"translatepair1\""));
    EXPECT_EQ(service({"translatePair1", "two", "words"}).error(),
              QStringLiteral("more than one text: put it into quotation marks"));
    EXPECT_EQ(service({"translatePair1", "-x"}).error(), QStringLiteral("unknown option \"-x\""));
}

TEST(ControlOptions, readsTheCommands)
{
    EXPECT_EQ(control(Command::trigger, {"2"})->action, Action::triggerPair);
    EXPECT_EQ(control(Command::trigger, {"2"})->pair, QStringLiteral("2"));
    EXPECT_EQ(control(Command::show, {"translation"})->action, Action::showTranslationWindow);
    EXPECT_EQ(control(Command::show, {"settings"})->action, Action::showSettings);
    EXPECT_EQ(control(Command::status, {})->action, Action::status);
    EXPECT_FALSE(control(Command::status, {})->json);
    EXPECT_TRUE(control(Command::status, {"--json"})->json);
    for (const Command command : {Command::trigger, Command::show, Command::status}) {
        EXPECT_EQ(control(command, {"--help"})->action, Action::help);
        EXPECT_EQ(control(command, {"-h"})->action, Action::help);
    }
}

TEST(ControlOptions, saysWhatIsWrong)
{
    const QString trigger =
        QStringLiteral("trigger needs a pair: its place in the list, or its identifier");
    EXPECT_EQ(control(Command::trigger, {}).error(), trigger);
    EXPECT_EQ(control(Command::trigger, {"1", "2"}).error(), trigger);
    const QString show = QStringLiteral("show needs \"translation\" or \"settings\"");
    EXPECT_EQ(control(Command::show, {}).error(), show);
    EXPECT_EQ(control(Command::show, {"tray"}).error(), show);
    EXPECT_EQ(control(Command::status, {"-v"}).error(),
              QStringLiteral("status takes no argument but --json"));
}

class FakeProgram final : public RunningProgram
{
public:
    [[nodiscard]] QCoro::Task<QString> translate(QString entry, QString text,
                                                 std::stop_token stop) override
    {
        calls << entry + u' ' + text;
        co_await outcome(std::move(stop));
        co_return QStringLiteral("Hallo Welt");
    }
    [[nodiscard]] QCoro::Task<void> triggerPair(QString which, std::stop_token stop) override
    {
        calls << QStringLiteral("trigger ") + which;
        co_await outcome(std::move(stop));
    }
    [[nodiscard]] QCoro::Task<void> showTranslationWindow(std::stop_token stop) override
    {
        calls << QStringLiteral("translation");
        co_await outcome(std::move(stop));
    }
    [[nodiscard]] QCoro::Task<void> showSettings(std::stop_token stop) override
    {
        calls << QStringLiteral("settings");
        co_await outcome(std::move(stop));
    }
    [[nodiscard]] QCoro::Task<Status> status(std::stop_token stop) override
    {
        co_await outcome(std::move(stop));
        co_return Status{QStringLiteral("Done · ANY-DE"),
                         true,
                         QStringLiteral("oh"),
                         QStringLiteral("1.2.3"),
                         {QStringLiteral("Any Language → German"), QStringLiteral("A\tB → C")},
                         {QStringLiteral("id-1"), QStringLiteral("id-2")}};
    }

    QStringList calls;
    QString failure;
    bool waits = false;

private:
    QCoro::Task<void> outcome(std::stop_token stop)
    {
        if (!failure.isEmpty()) {
            throw RunningProgramError(failure);
        }
        if (waits) {
            const Completion<void> end;
            const std::stop_callback onStop(stop, [end] { end.fail(CancellationError()); });
            co_await end.result();
        }
    }
};

class RunningProgramCommand : public ::testing::Test
{
protected:
    RunningProgramCommand()
    {
        for (QBuffer* buffer : {&input, &output, &error}) {
            buffer->open(QIODevice::ReadWrite);
        }
    }

    ExitStatus translate(const QString& text)
    {
        return await(runServiceCommand(*service({"translatePair1"}), text, program, streams,
                                       stop.get_token()));
    }
    ExitStatus perform(Command command, std::initializer_list<const char*> list)
    {
        return await(
            runControlCommand(*control(command, list), program, streams, stop.get_token()));
    }

    QBuffer input;
    QBuffer output;
    QBuffer error;
    CommandStreams streams{input, output, error};
    FakeProgram program;
    std::stop_source stop;
};

TEST_F(RunningProgramCommand, aServicePrintsTheTranslationAlone)
{
    EXPECT_EQ(translate(QStringLiteral("hello\nworld")), ExitStatus::success);
    EXPECT_THAT(program.calls, ElementsAre(QStringLiteral("translatePair1 hello\nworld")));
    EXPECT_EQ(output.data(), "Hallo Welt\n");
    EXPECT_EQ(error.data(), "");
}

TEST_F(RunningProgramCommand, aFailureIsOneLineOnStandardError)
{
    program.failure = QStringLiteral("No text selected.");
    EXPECT_EQ(translate(QString()), ExitStatus::failure);
    EXPECT_EQ(perform(Command::trigger, {"1"}), ExitStatus::failure);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "zelvane-desk: No text selected.\nzelvane-desk: No text selected.\n");
}

TEST_F(RunningProgramCommand, anInterruptionEndsTheWaitWithoutAWord)
{
    program.waits = true;
    stop.request_stop();
    EXPECT_EQ(translate(QStringLiteral("hello")), ExitStatus::interrupted);
    EXPECT_EQ(perform(Command::show, {"settings"}), ExitStatus::interrupted);
    EXPECT_EQ(error.data(), "");
}

TEST_F(RunningProgramCommand, theControlsPrintNothing)
{
    EXPECT_EQ(perform(Command::trigger, {"2"}), ExitStatus::success);
    EXPECT_EQ(perform(Command::show, {"translation"}), ExitStatus::success);
    EXPECT_EQ(perform(Command::show, {"settings"}), ExitStatus::success);
    EXPECT_THAT(program.calls,
                ElementsAre(QStringLiteral("trigger 2"), QStringLiteral("translation"),
                            QStringLiteral("settings")));
    EXPECT_EQ(output.data() + error.data(), "");
}

TEST_F(RunningProgramCommand, theStatusListsThePairsColumnByColumn)
{
    EXPECT_EQ(perform(Command::status, {}), ExitStatus::success);
    EXPECT_EQ(output.data().toStdString(), "Done · ANY-DE\n"
                                           "1\tid-1\tAny Language → German\n"
                                           "2\tid-2\tA\\tB → C\n");
}

TEST_F(RunningProgramCommand, theStatusIsOneJsonObjectIfAskedFor)
{
    EXPECT_EQ(perform(Command::status, {"--json"}), ExitStatus::success);
    EXPECT_EQ(output.data().toStdString(),
              R"({"busy":true,"lastError":"oh","pairs":[{"id":"id-1","pair":"Any Language → )"
              R"(German"},{"id":"id-2","pair":"A\tB → C"}],"status":"Done · ANY-DE",)"
              R"("version":"1.2.3"})"
              "\n");
}

} // namespace
} // namespace zelvane::test
