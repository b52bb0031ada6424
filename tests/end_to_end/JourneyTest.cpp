// What a user does first with the program, from its first start to the first translation.

#include "end_to_end/Tray.h"
#include "support/Await.h"
#include "support/PrivateKeyring.h"
#include "support/TestRunner.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

const QString settingsTitle = QStringLiteral("^Settings$");

/// The listing of models for whoever asks for it, and a translation for everybody else.
Answer answerTo(const RecordedRequest& request)
{
    return Answer::json(200,
                        request.target().endsWith("/models")
                            ? QByteArray(R"({"data":[{"id":"mistral-small-latest"}]})")
                            : QByteArray(R"({"choices":[{"index":0,"message":{"role":"assistant",)"
                                         R"("content":"Hallo Welt"}}]})"));
}

class Journey : public ::testing::Test
{
protected:
    Journey()
    {
        session.provider.setHandler(answerTo);
        EXPECT_TRUE(keyring.start(PrivateKeyring::State::unlocked));
    }

    void readTheIntroduction()
    {
        session.waitForKeyboard(QStringLiteral("^AI translation without limits$"));
        for (int slide = 1; slide < 7; ++slide) {
            session.key("Right");
        }
        const QString last = QStringLiteral("^Unlock the full power$");
        session.waitForWindow(last);
        session.press(QStringLiteral("Got It"));
        session.waitUntilGone(last);
    }

    void openTheSettingsFromTheTray()
    {
        tray.openPanel();
        session.press(QStringLiteral("Settings"));
        session.waitForKeyboard(settingsTitle);
    }

    void chooseTheProvider()
    {
        EXPECT_FALSE(session.shows(QStringLiteral("Edit Key"), 0ms));
        session.press(QStringLiteral("I want to use my own AI models"));
        session.press(QStringLiteral("Platform"));
        session.press(QStringLiteral("Mistral"));
    }

    void typeTheKeyIn()
    {
        EXPECT_TRUE(session.shows(QStringLiteral("No API key set")));
        session.press(QStringLiteral("Edit Key"));
        EXPECT_TRUE(session.shows(QStringLiteral("API Key")));
        session.desktop.xdotool({QStringLiteral("type"), QStringLiteral("sk-typed-in")});
        session.press(QStringLiteral("Save"));
    }

    void bindTheFirstPairTo(const char* chord, const QString& captured)
    {
        session.press(QStringLiteral("Languages"));
        session.press(QStringLiteral("Bind Keys"));
        EXPECT_TRUE(session.shows(QStringLiteral("Listening…")));
        session.key(chord);
        EXPECT_TRUE(
            session.shows(QStringLiteral("Captured %1. Press Save to keep it.").arg(captured)));
        session.press(QStringLiteral("Save"));
        EXPECT_TRUE(session.shows(captured));
    }

    ZelvaneSession session{ZelvaneSession::wholeDesktop(), ZelvaneSession::Profile::fresh};
    PrivateKeyring keyring{session.desktop.sessionBusAddress()};
    Tray tray{session};
};

TEST_F(Journey, fromTheFirstStartToTheFirstTranslation)
{
    allowThisTest(40s);
    session.start();
    readTheIntroduction();
    openTheSettingsFromTheTray();

    chooseTheProvider();
    typeTheKeyIn();
    ASSERT_TRUE(waitUntil([this] { return session.provider.requests().size() == 1; }));
    const RecordedRequest listing = session.provider.requests().front();
    EXPECT_TRUE(listing.target().endsWith("/models"));
    EXPECT_EQ(listing.header("Authorization"), "Bearer sk-typed-in");
    EXPECT_TRUE(session.shows(QStringLiteral("••••••••d-in")));

    bindTheFirstPairTo("ctrl+alt+k", QStringLiteral("⌃⌥K"));
    session.key("Escape");
    session.waitUntilGone(settingsTitle);

    session.openEditor("hello world");
    session.key("ctrl+alt+k");
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    EXPECT_EQ(session.provider.requests().back().header("Authorization"), "Bearer sk-typed-in");

    // All of it is still so the next time, and there is no introduction.
    session.quit();
    session.start();
    session.selectAll();
    session.key("ctrl+alt+k");
    session.waitForReport();
    EXPECT_EQ(session.provider.requests().size(), 3);
    EXPECT_EQ(session.provider.requests().back().header("Authorization"), "Bearer sk-typed-in");
}

} // namespace
} // namespace zelvane::test
