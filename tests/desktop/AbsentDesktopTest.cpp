#include "desktop/AbsentDesktop.h"

#include "support/Await.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(AbsentDesktop, refusesEveryChordAndFindsNoWindowForKeys)
{
    AbsentHotKeys hotKeys;
    EXPECT_TRUE(hotKeys.installHandler([](HotKeyID) { FAIL(); }));
    EXPECT_EQ(hotKeys.registerHotKey({17, KeyChord::control}, {1, 1}), std::nullopt);
    AbsentKeystrokes keystrokes;
    EXPECT_EQ(await(keystrokes.postCommandKey(CommandKey::paste)), PostResult::targetGone);
}

TEST(AbsentDesktop, takesItsClipboardForUnreadableNotForEmpty)
{
    AbsentPasteboard absent;
    EXPECT_THROW(await(absent.snapshot()), PasteboardError);
    EXPECT_EQ(await(absent.string()), std::nullopt);
}

} // namespace
} // namespace zelvane::test
