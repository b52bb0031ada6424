// The program's own binary on a real desktop: an X server, a window manager, buses, an editor,
// keys.

#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"
#include "support/PrivateKeyring.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

const QString popupTitle = QStringLiteral("^Translation$");
const QString alertTitle = QStringLiteral("^Translation failed$");

std::string text(const QByteArray& bytes)
{
    return bytes.toStdString();
}

TEST(EndToEnd, replacesTheSelectionInAForeignEditor)
{
    ZelvaneSession session;
    session.setClipboard("the user's own");
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    const QByteArray report = session.waitForReport();
    EXPECT_THAT(session.askedTexts(), ElementsAre(QStringLiteral("hello world")));
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    EXPECT_EQ(session.clipboard(), "the user's own");
    EXPECT_THAT(text(report), HasSubstr("editable detect · editable"));
    EXPECT_THAT(text(report), HasSubstr("replaced: true"));
    EXPECT_FALSE(session.windowIsVisible(popupTitle));
}

TEST(EndToEnd, showsThePopupOverATextThatCannotBeEdited)
{
    ZelvaneSession session;
    session.setClipboard("the user's own");
    session.start();
    const QString reader = session.openReader(QStringLiteral("hello reader"));
    session.selectAll();
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(popupTitle);
    EXPECT_THAT(session.askedTexts(), ElementsAre(QStringLiteral("hello reader")));
    EXPECT_THAT(text(session.waitForReport()), HasSubstr("editable detect · static"));
    EXPECT_EQ(session.clipboard(), "the user's own");
    session.key("Escape");
    session.waitUntilGone(popupTitle);
    EXPECT_TRUE(session.becomesActive(reader));
}

TEST(EndToEnd, twoPressesReplaceAndShowThePopup)
{
    ZelvaneSession session;
    session.setDefault(QStringLiteral("zv.doubleHotKeyWindow"), true);
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    session.key(ZelvaneSession::toGerman);
    EXPECT_THAT(text(session.waitForReport()), HasSubstr("mode: autoAndWindow"));
    session.waitForWindow(popupTitle);
    EXPECT_EQ(session.provider.requests().size(), 1u);
    session.key("Escape");
    session.waitUntilGone(popupTitle);
    session.desktop.focusWindow(session.desktop.waitForWindow(QStringLiteral("letter.txt")));
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST(EndToEnd, aSinglePressWaitsForASecondOne)
{
    ZelvaneSession session;
    session.setDefault(QStringLiteral("zv.doubleHotKeyWindow"), true);
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    EXPECT_THAT(text(session.waitForReport()), HasSubstr("mode: auto\n"));
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST(EndToEnd, nothingSelectedSaysSoAndKeepsTheClipboard)
{
    ZelvaneSession session;
    session.setClipboard("the user's own");
    session.start();
    session.openEditor("hello world", false);
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(alertTitle);
    EXPECT_EQ(session.clipboard(), "the user's own");
    EXPECT_TRUE(session.provider.requests().empty());
    session.key("Escape");
    session.waitUntilGone(alertTitle);
}

TEST(EndToEnd, aProvidersFailureLeavesTextAndClipboardAsTheyWere)
{
    ZelvaneSession session;
    session.setClipboard("the user's own");
    session.start();
    session.openEditor("hello world");
    session.provider.setHandler(
        [](const RecordedRequest&) { return Answer::json(401, R"({"error":"bad key"})"); });
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(alertTitle);
    EXPECT_EQ(session.clipboard(), "the user's own");
    session.key("Return");
    session.waitUntilGone(alertTitle);
    session.desktop.focusWindow(session.desktop.waitForWindow(QStringLiteral("letter.txt")));
    EXPECT_EQ(session.unchangedEditorText(), "hello world");

    // The gate is open again.
    session.answerWith("Hallo Welt");
    session.selectAll();
    session.key(ZelvaneSession::toGerman);
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST(EndToEnd, anEditorThatClosesDuringTheCallLosesNothing)
{
    ZelvaneSession session;
    session.setClipboard("the user's own");
    session.start();
    const QString editor = session.openEditor("hello world");
    const QByteArray answer = R"({"choices":[{"message":{"content":"Hallo Welt"}}]})";
    session.provider.setHandler([answer](const RecordedRequest&) {
        return Answer().hold().send(httpMessage(200, answer));
    });
    session.key(ZelvaneSession::toGerman);
    ASSERT_TRUE(waitUntil([&] { return session.provider.heldAnswers() == 1; }));
    session.desktop.xdotool({QStringLiteral("windowkill"), editor});
    session.waitUntilGone(QStringLiteral("letter.txt"));
    session.provider.release();
    session.waitForWindow(popupTitle);
    EXPECT_THAT(text(session.waitForReport()), HasSubstr("paste target gone"));
    EXPECT_EQ(session.clipboard(), "the user's own");
}

TEST(EndToEnd, aWindowInFrontAtTheEndDoesNotGetThePaste)
{
    ZelvaneSession session;
    session.start();
    session.openEditor("hello world");
    const QByteArray answer = R"({"choices":[{"message":{"content":"Hallo Welt"}}]})";
    session.provider.setHandler([answer](const RecordedRequest&) {
        return Answer().hold().send(httpMessage(200, answer));
    });
    session.key(ZelvaneSession::toGerman);
    ASSERT_TRUE(waitUntil([&] { return session.provider.heldAnswers() == 1; }));
    session.openReader(QStringLiteral("another window"));
    session.provider.release();
    session.waitForReport();
    session.desktop.focusWindow(session.desktop.waitForWindow(QStringLiteral("letter.txt")));
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

struct ClipboardCase
{
    const char* name;
    const char* type;
    QByteArray bytes;
};

class EndToEndClipboard : public ::testing::TestWithParam<ClipboardCase>
{
};

TEST_P(EndToEndClipboard, comesBackByteForByteAlsoAfterItsProgramHasEnded)
{
    const ClipboardCase& given = GetParam();
    const QString type = QString::fromLatin1(given.type);
    ZelvaneSession session;
    session.setClipboard(given.bytes, type);
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    // Taking the clipboard has ended the program that had it: what is there now is the copy.
    EXPECT_TRUE(waitUntil([&] { return session.clipboard(type) == given.bytes; }));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, EndToEndClipboard,
    ::testing::Values(
        ClipboardCase{"text", "UTF8_STRING", QByteArray("Grüße, мир, 你好\r\n\ttab")},
        ClipboardCase{"html", "text/html", QByteArray("<p>na&iuml;ve <b>bold</b>\xc3\xa9</p>\n")},
        ClipboardCase{"image", "image/png",
                      QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(400'000, '\xa5') +
                          QByteArray("\0\xff\0", 3)},
        ClipboardCase{"files", "text/uri-list",
                      QByteArray("file:///home/user/a%20b.txt\r\nfile:///tmp/c\r\n")}),
    [](const auto& info) { return info.param.name; });

TEST(EndToEnd, modifiersThatAreStillHeldDownDisturbNothing)
{
    ZelvaneSession session;
    session.start();
    session.openEditor("hello world");
    session.desktop.xdotool({QStringLiteral("keydown"), QStringLiteral("ctrl"),
                             QStringLiteral("keydown"), QStringLiteral("alt"),
                             QStringLiteral("key"), QStringLiteral("g")});
    session.waitForReport();
    session.desktop.xdotool({QStringLiteral("keyup"), QStringLiteral("alt"),
                             QStringLiteral("keyup"), QStringLiteral("ctrl")});
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    // No modifier is stuck: a plain letter arrives as a letter.
    session.key("ctrl+End");
    session.key("x");
    EXPECT_EQ(session.editorText(), "Hallo Weltx");
}

TEST(EndToEnd, takesTheKeyFromTheKeyring)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(PrivateKeyring::State::unlocked));
    QProcess probe;
    probe.setProcessEnvironment(keyring.environment());
    probe.start(QStringLiteral(ZELVANE_SECRET_PROBE), QStringList());
    probe.write("add zv.apiKey.Mistral key-from-the-keyring\n");
    probe.closeWriteChannel();
    ASSERT_TRUE(probe.waitForFinished(5000));
    ASSERT_EQ(probe.readAllStandardOutput().trimmed(), "success");

    ZelvaneSession session(DesktopSession::Options{});
    session.desktop.setVariable(
        QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
        keyring.environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")));
    session.desktop.setVariable(QStringLiteral("ZELVANE_API_KEY"), QString());
    session.setDefault(QStringLiteral("zv.keychain.has.zv.apiKey.Mistral"), true);
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    session.waitForReport();
    ASSERT_EQ(session.provider.requests().size(), 1u);
    EXPECT_EQ(session.provider.requests().front().header("Authorization"),
              "Bearer key-from-the-keyring");
}

TEST(EndToEnd, syncsWithTheHostedServiceAtItsStartAndTranslatesWithIt)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(PrivateKeyring::State::unlocked));
    ZelvaneSession session(DesktopSession::Options{});
    session.desktop.setVariable(
        QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
        keyring.environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")));
    session.desktop.setVariable(QStringLiteral("ZELVANE_API_KEY"), QString());
    session.zelvane({QStringLiteral("defaults"), QStringLiteral("write"),
                     QStringLiteral("zv.provider"), QStringLiteral("Zelvane")});
    session.hosted.rules.model = QStringLiteral("model-of-today");
    session.hosted.translator = [](const QString&) { return QStringLiteral("Hallo Welt"); };
    session.start();
    const auto setting = [&](const char* key) {
        return session.desktop
            .run(QStringLiteral(ZELVANE_PROGRAM),
                 {QStringLiteral("--profile"), session.desktop.home() + QStringLiteral("/profile"),
                  QStringLiteral("defaults"), QStringLiteral("read"), QString::fromLatin1(key)})
            .output.trimmed();
    };
    EXPECT_TRUE(waitUntil([&] { return !setting("zv.cloudflare.quota.prod").isEmpty(); }));
    EXPECT_EQ(setting("zv.model.Zelvane"), "model-of-today");
    ASSERT_EQ(session.hosted.installations().size(), 1);
    EXPECT_EQ(setting("zv.installId"), session.hosted.installations().firstKey().toUtf8());

    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    EXPECT_THAT(text(session.waitForReport()),
                HasSubstr("cloudflare config · v1 · model-of-today · proxy"));
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    EXPECT_EQ(session.hosted.installations().first().translations, 1);
    const QByteArray token = session.hosted.installations().first().token;
    EXPECT_THAT(text(session.printed()), Not(HasSubstr(text(token))));
    const auto found = session.desktop.run(
        QStringLiteral("grep"),
        {QStringLiteral("-r"), QString::fromLatin1(token), session.desktop.home()});
    EXPECT_EQ(text(found.output), "");
}

TEST(EndToEnd, worksWithoutAnAccessibilityBus)
{
    DesktopSession::Options options;
    ZelvaneSession session(options);
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    EXPECT_THAT(text(session.waitForReport()), HasSubstr("editable detect · editable"));
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST(EndToEnd, withoutABusItSaysWhatIsMissingAndGoesOn)
{
    DesktopSession::Options options;
    options.windowManager = false;
    DesktopSession session(options);
    // What the program asks the hosted service at its start stays on this machine.
    session.run(QStringLiteral(ZELVANE_PROGRAM),
                {QStringLiteral("defaults"), QStringLiteral("write"),
                 QStringLiteral("zv.endpoint.Zelvane"), QStringLiteral("http://127.0.0.1:9")});
    const auto outcome = session.run(QStringLiteral("timeout"),
                                     {QStringLiteral("3"), QStringLiteral(ZELVANE_PROGRAM)});
    constexpr int wasStillRunning = 124;
    EXPECT_EQ(outcome.exitCode, wasStillRunning);
    EXPECT_THAT(text(outcome.errors), HasSubstr("zelvane-desk: There is no session bus"));
    EXPECT_THAT(text(outcome.errors), HasSubstr("Everything else works."));
}

TEST(EndToEnd, withoutADisplayItSaysWhatStillWorks)
{
    DesktopSession session;
    session.setVariable(QStringLiteral("DISPLAY"), QStringLiteral(":9999"));
    const auto outcome = session.run(QStringLiteral(ZELVANE_PROGRAM));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(text(outcome.errors), HasSubstr("display"));
    EXPECT_THAT(text(outcome.errors), HasSubstr("zelvane-desk translate"));
    EXPECT_EQ(outcome.errors.indexOf('\n'), outcome.errors.size() - 1);
}

TEST(EndToEnd, quitsInOrderWhenItIsAskedTo)
{
    ZelvaneSession session;
    session.setClipboard("the user's own");
    session.start();
    session.quit();
    EXPECT_EQ(session.process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(session.process().exitCode(), 0);
    EXPECT_EQ(session.clipboard(), "the user's own");
}

TEST(EndToEnd, theKeyAppearsNowhereButInTheRequestsHeader)
{
    ZelvaneSession session;
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    const QByteArray report = session.waitForReport();
    ASSERT_EQ(session.provider.requests().size(), 1u);
    const RecordedRequest& request = session.provider.requests().front();
    EXPECT_EQ(request.header("Authorization"), "Bearer end-to-end-key");
    EXPECT_THAT(text(request.requestLine), Not(HasSubstr("end-to-end-key")));
    EXPECT_THAT(text(request.body), Not(HasSubstr("end-to-end-key")));
    EXPECT_THAT(text(session.printed()), Not(HasSubstr("end-to-end-key")));
    const auto found = session.desktop.run(
        QStringLiteral("grep"),
        {QStringLiteral("-r"), QStringLiteral("end-to-end-key"), session.desktop.home()});
    EXPECT_EQ(text(found.output), "");
    QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(session.process().processId()));
    ASSERT_TRUE(commandLine.open(QIODevice::ReadOnly));
    EXPECT_THAT(text(commandLine.readAll()), Not(HasSubstr("end-to-end-key")));
}

TEST(EndToEnd, noOtherProgramInheritsTheKey)
{
    // Without a bus, the first one who asks for it starts one, which outlives the asker.
    DesktopSession::Options options;
    ZelvaneSession session(options);
    const QString key = QStringLiteral("inherited-key-%1").arg(QCoreApplication::applicationPid());
    session.desktop.setVariable(QStringLiteral("ZELVANE_API_KEY"), key);
    session.start();
    QStringList holders;
    for (const QString& process : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile environment(QStringLiteral("/proc/%1/environ").arg(process));
        if (environment.open(QIODevice::ReadOnly) &&
            environment.readAll().contains(key.toLatin1())) {
            holders << process;
        }
    }
    holders.removeAll(QStringLiteral("self"));
    holders.removeAll(QStringLiteral("thread-self"));
    // What a program was started with stays readable for its user.
    EXPECT_THAT(holders, ElementsAre(QString::number(session.process().processId())));
}

} // namespace
} // namespace zelvane::test
