#include "ui/onboarding/OnboardingModel.h"

#include "settings/Localization.h"

namespace zelvane {

std::array<SrgbColor, 2> gradientOf(OnboardingIllustration illustration)
{
    switch (illustration) {
    case OnboardingIllustration::aiOnline:
        return {{{0.12, 0.22, 0.48}, {0.35, 0.18, 0.55}}};
    case OnboardingIllustration::offline:
        return {{{0.1, 0.28, 0.32}, {0.08, 0.18, 0.28}}};
    case OnboardingIllustration::replaceSelection:
        return {{{0.18, 0.32, 0.22}, {0.1, 0.22, 0.3}}};
    case OnboardingIllustration::resultWindow:
        return {{{0.22, 0.18, 0.38}, {0.12, 0.2, 0.4}}};
    case OnboardingIllustration::classicTranslator:
        return {{{0.16, 0.24, 0.36}, {0.2, 0.16, 0.3}}};
    case OnboardingIllustration::menuBar:
        return {{{0.14, 0.14, 0.16}, {0.22, 0.22, 0.28}}};
    case OnboardingIllustration::accessibility:
        return {{{0.32, 0.18, 0.14}, {0.18, 0.14, 0.28}}};
    }
    Q_UNREACHABLE();
}

const QList<OnboardingSlide>& onboardingSlides()
{
    using enum OnboardingIllustration;
    static const QList<OnboardingSlide> slides{
        {0, LOCALIZATION_KEY("AI translation without limits"),
         LOCALIZATION_KEY(
             "Online AI that nails slang, long messages, and everyday writing — so you "
             "always sound natural, in any language."),
         aiOnline},
        {1, LOCALIZATION_KEY("Translate anywhere — even offline"),
         LOCALIZATION_KEY(
             "Install Smart, Balanced, or Fast offline engines and keep translating on "
             "planes, trains, and anywhere the signal drops."),
         offline},
        {2, LOCALIZATION_KEY("Replace selection in one keystroke"),
         LOCALIZATION_KEY("Highlight text, hit your hotkey, and watch it swap for a polished "
                          "translation — right where you were typing."),
         replaceSelection},
        {3, LOCALIZATION_KEY("See the translation before you commit"),
         LOCALIZATION_KEY("Prefer a second look? Open the floating result window to review, copy, "
                          "and refine — without leaving your flow."),
         resultWindow},
        {4, LOCALIZATION_KEY("Your always-on translation desk"),
         LOCALIZATION_KEY("Paste or type into the Translation Window any time you need a classic "
                          "translator — no selection required."),
         classicTranslator},
        {5, LOCALIZATION_KEY("Look for the menu bar icon"),
         LOCALIZATION_KEY("After launch, Zelvane Desk runs from the menu bar at the top of your "
                          "screen. Click the icon for Settings, the Translation Window, and more."),
         menuBar},
        {6, LOCALIZATION_KEY("Unlock the full power"),
         LOCALIZATION_KEY("Grant Accessibility so Zelvane Desk can read selections and paste "
                          "translations for you. One permission — every shortcut, every app."),
         accessibility},
    };
    return slides;
}

OnboardingModel::OnboardingModel() = default;

const OnboardingSlide& OnboardingModel::slide() const
{
    return onboardingSlides().at(m_index);
}

bool OnboardingModel::canStepBack() const
{
    return m_index > 0;
}

bool OnboardingModel::canStepForward() const
{
    return m_index < onboardingSlides().size() - 1;
}

void OnboardingModel::stepBack()
{
    if (canStepBack()) {
        m_index = m_index - 1;
    }
}

void OnboardingModel::stepForward()
{
    if (canStepForward()) {
        m_index = m_index + 1;
    }
}

void OnboardingModel::finish()
{
    if (isOnLastSlide()) {
        Q_EMIT finished();
    }
}

} // namespace zelvane
