#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"
#include "support/PrivateKeyring.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

const QString title = QStringLiteral("^Settings$");

/// The listing of models for whoever asks for it, and a translation for everybody else.
Answer answerTo(const RecordedRequest& request)
{
    return Answer::json(200,
                        request.target().endsWith("/models")
                            ? QByteArray(R"({"data":[{"id":"mistral-small-latest"}]})")
                            : QByteArray(R"({"choices":[{"index":0,"message":{"role":"assistant",)"
                                         R"("content":"Hallo Welt"}}]})"));
}

/// Opens the settings and clicks where their controls are at the smallest size.
class OpenSettings
{
public:
    explicit OpenSettings(ZelvaneSession& session)
        : m_session(session)
    {
        session.zelvane({QStringLiteral("show"), QStringLiteral("settings")});
        m_window = session.waitForWindow(title);
        waitUntil([] { return false; }, 300ms);
    }

    void click(const char* x, const char* y)
    {
        m_session.desktop.xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"),
                                   m_window, QString::fromLatin1(x), QString::fromLatin1(y),
                                   QStringLiteral("click"), QStringLiteral("1")});
        waitUntil([] { return false; }, 200ms);
    }

private:
    ZelvaneSession& m_session;
    QString m_window;
};

TEST(Journey, aKeyThatIsTypedInIsTriedAndTranslates)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(PrivateKeyring::State::unlocked));
    ZelvaneSession session(DesktopSession::Options{});
    session.desktop.setVariable(
        QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
        keyring.environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")));
    session.desktop.setVariable(QStringLiteral("ZELVANE_API_KEY"), QString());
    session.setDefault(QStringLiteral("zv.useOwnAI"), true);
    session.provider.setHandler(answerTo);
    session.start();
    OpenSettings settings(session);
    settings.click("744", "203"); // "Edit Key"
    session.desktop.xdotool({QStringLiteral("type"), QStringLiteral("sk-typed-in")});
    session.key("Return");
    ASSERT_TRUE(waitUntil([&] { return session.provider.requests().size() == 1; }, 3s));
    EXPECT_TRUE(session.provider.requests().front().target().endsWith("/models"));

    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    session.waitForReport();
    EXPECT_EQ(session.provider.requests().back().header("Authorization"), "Bearer sk-typed-in");
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST(Journey, aChordThatIsBoundInTheSettingsTranslates)
{
    ZelvaneSession session;
    session.provider.setHandler(answerTo);
    session.start();
    OpenSettings settings(session);
    settings.click("76", "63");   // "Languages"
    settings.click("641", "179"); // "Bind Keys" of the first pair
    session.key("ctrl+alt+k");
    session.key("Return");
    session.key("Escape");
    session.waitUntilGone(title);

    session.openEditor("hello world");
    session.key("ctrl+alt+k");
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

} // namespace
} // namespace zelvane::test
