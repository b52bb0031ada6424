#include "desktop/HotKeyManager.h"
#include "desktop/FakeDesktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr KeyChord controlOptionT{17, 0x1800};
constexpr KeyChord controlOptionR{15, 0x1800};

LanguagePair pairWith(std::optional<KeyChord> chord, bool enabled = true)
{
    LanguagePair pair;
    pair.id = QUuid::createUuid();
    pair.enabled = enabled;
    pair.source = QStringLiteral("Any Language");
    pair.target = QStringLiteral("German");
    pair.hotKey = chord;
    return pair;
}

class HotKeys : public ::testing::Test
{
protected:
    HotKeys()
    {
        manager.onHotKey = [this](const QUuid& id) { pressedPairs << id; };
        manager.onManualTranslationHotKey = [this] { ++manualPresses; };
    }

    FakeHotKeyRegistrar registrar;
    HotKeyManager manager{registrar};
    QList<QUuid> pressedPairs;
    int manualPresses = 0;
};

TEST_F(HotKeys, aPairsIdIsItsPositionAmongAllPairs)
{
    const auto third = pairWith(controlOptionT);
    manager.reload({pairWith(controlOptionR, false), pairWith(KeyChord{0, 0x1800}, false), third},
                   std::nullopt);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(3u));
    registrar.press({0x5A4C564E, 3});
    EXPECT_THAT(pressedPairs, ElementsAre(third.id));
}

TEST_F(HotKeys, registersTheChordAsItIsStoredUnderTheProgramsSignature)
{
    manager.reload({pairWith(controlOptionT)}, std::nullopt);
    ASSERT_EQ(registrar.live.size(), 1);
    EXPECT_EQ(registrar.live.first().first, (KeyChord{17, 0x1800}));
    EXPECT_EQ(registrar.live.first().second, (HotKeyID{0x5A4C564E, 1}));
}

TEST_F(HotKeys, chordsWithoutModifiersAreNotRegistered)
{
    manager.reload({pairWith(KeyChord{17, 0}), pairWith(std::nullopt)}, KeyChord{15, 0});
    EXPECT_THAT(registrar.liveIds(), IsEmpty());
}

TEST_F(HotKeys, theFirstOfTwoPairsWithOneChordGetsIt)
{
    const auto first = pairWith(controlOptionT);
    manager.reload({first, pairWith(controlOptionT)}, std::nullopt);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(1u));
    registrar.press({0x5A4C564E, 1});
    registrar.press({0x5A4C564E, 2});
    EXPECT_THAT(pressedPairs, ElementsAre(first.id));
}

TEST_F(HotKeys, anEnabledPairGoesBeforeTheTranslationWindow)
{
    manager.reload({pairWith(controlOptionT)}, controlOptionT);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(1u));
}

TEST_F(HotKeys, aPairThatCouldNotBeRegisteredStillGoesBeforeTheTranslationWindow)
{
    manager.reload({pairWith(controlOptionT), pairWith(controlOptionT)}, controlOptionT);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(1u));
}

TEST_F(HotKeys, aDisabledPairLeavesItsChordToTheTranslationWindow)
{
    manager.reload({pairWith(controlOptionT, false)}, controlOptionT);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(10001u));
    registrar.press({0x5A4C564E, 10001});
    EXPECT_EQ(manualPresses, 1);
    EXPECT_THAT(pressedPairs, IsEmpty());
}

TEST_F(HotKeys, withoutPairsOnlyTheTranslationWindowHasAShortcut)
{
    manager.reload({}, controlOptionR);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(10001u));
}

TEST_F(HotKeys, aReloadForgetsThePairsOfBefore)
{
    manager.reload({pairWith(controlOptionT), pairWith(controlOptionR)}, std::nullopt);
    const auto only = pairWith(controlOptionR);
    manager.reload({only}, std::nullopt);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(1u));
    registrar.press({0x5A4C564E, 2});
    EXPECT_THAT(pressedPairs, IsEmpty());
    registrar.press({0x5A4C564E, 1});
    EXPECT_THAT(pressedPairs, ElementsAre(only.id));
}

TEST_F(HotKeys, theHandlerIsInstalledOnceAndTriedAgainAfterAFailure)
{
    registrar.handlerWorks = false;
    manager.reload({pairWith(controlOptionT)}, std::nullopt);
    EXPECT_THAT(registrar.liveIds(), ElementsAre(1u));
    registrar.handlerWorks = true;
    manager.reload({}, std::nullopt);
    manager.reload({}, std::nullopt);
    EXPECT_EQ(registrar.handlerInstalls, 2);
}

TEST_F(HotKeys, unknownIdsAreIgnored)
{
    manager.reload({pairWith(controlOptionT)}, std::nullopt);
    registrar.press({0x5A4C564E, 77});
    EXPECT_THAT(pressedPairs, IsEmpty());
    EXPECT_EQ(manualPresses, 0);
}

TEST_F(HotKeys, pressesWithoutCallbacksAreIgnored)
{
    manager.onHotKey = nullptr;
    manager.onManualTranslationHotKey = nullptr;
    manager.reload({pairWith(controlOptionT)}, controlOptionR);
    registrar.press({0x5A4C564E, 1});
    registrar.press({0x5A4C564E, 10001});
}

} // namespace
} // namespace zelvane::test
