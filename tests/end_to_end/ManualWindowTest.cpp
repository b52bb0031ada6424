#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

const QString title = QStringLiteral("^Translation Window$");

class ManualWindow : public ::testing::Test
{
protected:
    QString open()
    {
        session.zelvane({QStringLiteral("show"), QStringLiteral("translation")});
        return session.waitForKeyboard(title);
    }

    void type(const char* text)
    {
        session.desktop.xdotool({QStringLiteral("type"), QString::fromLatin1(text)});
    }

    [[nodiscard]] bool floats(const QString& window) { return session.isAbove(window); }

    ZelvaneSession session;
};

TEST_F(ManualWindow, translatesWhatIsTypedAndCopiesItByKeyboardAlone)
{
    session.answerWith("Hallo Welt");
    session.start();
    open();
    type("hello world");
    session.key("ctrl+Return");
    ASSERT_TRUE(waitUntil([this] { return session.askedTexts().size() == 1; }));
    EXPECT_THAT(session.askedTexts(), ElementsAre(QStringLiteral("hello world")));
    // Until the translation is there, there is nothing to copy.
    EXPECT_TRUE(waitUntil([this] {
        session.key("ctrl+c");
        return session.clipboard() == "Hallo Welt";
    }));
    session.key("Escape");
    session.waitUntilGone(title);
    session.quit();
}

TEST_F(ManualWindow, floatsWhileItIsPinnedAndShowsAmongTheRunningPrograms)
{
    session.start();
    const QString window = open();
    const auto state = session.desktop.run(
        QStringLiteral("xprop"), {QStringLiteral("-id"), window, QStringLiteral("_NET_WM_STATE")});
    EXPECT_FALSE(state.output.contains("SKIP_TASKBAR")) << state.output.toStdString();
    EXPECT_FALSE(floats(window));
    // From the text to the buttons of the header.
    session.key("shift+Tab");
    session.key("shift+Tab");
    session.key("shift+Tab");
    session.key("shift+Tab");
    session.key("space");
    EXPECT_TRUE(waitUntil([&] { return floats(window); }));
    session.key("space");
    EXPECT_TRUE(waitUntil([&] { return !floats(window); }));
    session.key("Escape");
    session.waitUntilGone(title);
}

TEST_F(ManualWindow, isDraggedByItsHeaderAndOpensThereAgain)
{
    session.start();
    const QString window = open();
    const QPoint before = session.placeOf(window);
    session.drag(window, {320, 30}, {90, -40});
    const QPoint after = before + QPoint(90, -40);
    EXPECT_TRUE(waitUntil([&] { return session.placeOf(window) == after; }));
    EXPECT_TRUE(waitUntil([&] {
        return session
                   .zelvane({QStringLiteral("defaults"), QStringLiteral("read"),
                             QStringLiteral("zv.manualWindow.originX")})
                   .trimmed() == QByteArray::number(after.x());
    }));
    session.key("Escape");
    session.waitUntilGone(title);
    EXPECT_EQ(session.placeOf(open()), after);
}

TEST_F(ManualWindow, runsBesideATranslationOfASelection)
{
    session.provider.setHandler([](const RecordedRequest&) { return Answer(); }); // never answers
    session.start();
    open();
    type("one");
    session.key("ctrl+Return");
    ASSERT_TRUE(waitUntil([this] { return session.askedTexts().size() == 1; }));
    session.openEditor("two");
    session.key(ZelvaneSession::toGerman);
    EXPECT_TRUE(waitUntil([this] { return session.askedTexts().size() == 2; }));
    EXPECT_EQ(session.askedTexts().constLast(), QStringLiteral("two"));
}

} // namespace
} // namespace zelvane::test
