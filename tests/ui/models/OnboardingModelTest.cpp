#include "ui/onboarding/OnboardingModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

TEST(OnboardingSlides, tellTheSevenThingsInTheirOrder)
{
    QStringList titles;
    for (const OnboardingSlide& slide : onboardingSlides()) {
        EXPECT_EQ(slide.id, titles.size());
        titles += slide.titleKey;
    }
    EXPECT_THAT(titles, ElementsAre(QStringLiteral("AI translation without limits"),
                                    QStringLiteral("Translate anywhere — even offline"),
                                    QStringLiteral("Replace selection in one keystroke"),
                                    QStringLiteral("See the translation before you commit"),
                                    QStringLiteral("Your always-on translation desk"),
                                    QStringLiteral("Look for the menu bar icon"),
                                    QStringLiteral("Unlock the full power")));
    QStringList bodies;
    std::vector<OnboardingIllustration> illustrations;
    for (const OnboardingSlide& slide : onboardingSlides()) {
        bodies += slide.bodyKey;
        illustrations.push_back(slide.illustration);
    }
    EXPECT_THAT(
        bodies,
        ElementsAre(
            QStringLiteral("Online AI that nails slang, long messages, and everyday writing — so "
                           "you always sound natural, in any language."),
            QStringLiteral("Install Smart, Balanced, or Fast offline engines and keep translating "
                           "on planes, trains, and anywhere the signal drops."),
            QStringLiteral("Highlight text, hit your hotkey, and watch it swap for a polished "
                           "translation — right where you were typing."),
            QStringLiteral("Prefer a second look? Open the floating result window to review, "
                           "copy, and refine — without leaving your flow."),
            QStringLiteral("Paste or type into the Translation Window any time you need a classic "
                           "translator — no selection required."),
            QStringLiteral("After launch, Zelvane Desk runs from the menu bar at the top of your "
                           "screen. Click the icon for Settings, the Translation Window, and "
                           "more."),
            QStringLiteral("Grant Accessibility so Zelvane Desk can read selections and paste "
                           "translations for you. One permission — every shortcut, every app.")));
    using enum OnboardingIllustration;
    EXPECT_THAT(illustrations, ElementsAre(aiOnline, offline, replaceSelection, resultWindow,
                                           classicTranslator, menuBar, accessibility));
}

TEST(OnboardingSlides, haveTheirGradients)
{
    using enum OnboardingIllustration;
    EXPECT_THAT(gradientOf(aiOnline),
                ElementsAre(SrgbColor{0.12, 0.22, 0.48}, SrgbColor{0.35, 0.18, 0.55}));
    EXPECT_THAT(gradientOf(offline),
                ElementsAre(SrgbColor{0.1, 0.28, 0.32}, SrgbColor{0.08, 0.18, 0.28}));
    EXPECT_THAT(gradientOf(replaceSelection),
                ElementsAre(SrgbColor{0.18, 0.32, 0.22}, SrgbColor{0.1, 0.22, 0.3}));
    EXPECT_THAT(gradientOf(resultWindow),
                ElementsAre(SrgbColor{0.22, 0.18, 0.38}, SrgbColor{0.12, 0.2, 0.4}));
    EXPECT_THAT(gradientOf(classicTranslator),
                ElementsAre(SrgbColor{0.16, 0.24, 0.36}, SrgbColor{0.2, 0.16, 0.3}));
    EXPECT_THAT(gradientOf(menuBar),
                ElementsAre(SrgbColor{0.14, 0.14, 0.16}, SrgbColor{0.22, 0.22, 0.28}));
    EXPECT_THAT(gradientOf(accessibility),
                ElementsAre(SrgbColor{0.32, 0.18, 0.14}, SrgbColor{0.18, 0.14, 0.28}));
}

TEST(OnboardingModel, stepsThroughTheSlidesAndStopsAtBothEnds)
{
    OnboardingModel model;
    EXPECT_EQ(model.index(), 0);
    EXPECT_FALSE(model.canStepBack());
    model.stepBack();
    EXPECT_EQ(model.index(), 0);

    for (int i = 0; i < 9; ++i) {
        model.stepForward();
    }
    EXPECT_EQ(model.index(), 6);
    EXPECT_FALSE(model.canStepForward());
    EXPECT_EQ(model.slide().titleKey, QStringLiteral("Unlock the full power"));

    model.stepBack();
    EXPECT_EQ(model.index(), 5);
}

TEST(OnboardingModel, canBeFinishedOnlyOnTheLastSlide)
{
    OnboardingModel model;
    int finished = 0;
    QObject::connect(&model, &OnboardingModel::finished, [&] { ++finished; });
    model.stepForward();
    model.stepForward();
    model.finish();
    EXPECT_EQ(finished, 0);

    for (int i = 0; i < 4; ++i) {
        model.stepForward();
    }
    model.finish();
    EXPECT_EQ(finished, 1);
}

} // namespace
} // namespace zelvane::test
