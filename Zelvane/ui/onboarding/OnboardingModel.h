#pragma once

#include <QList>
#include <QObject>
#include <QProperty>
#include <QString>

#include <array>

namespace zelvane {

/// The drawing above a slide's text.
enum class OnboardingIllustration {
    aiOnline,
    offline,
    replaceSelection,
    resultWindow,
    classicTranslator,
    menuBar,
    accessibility,
};

/// The components of an sRGB colour, each from 0 to 1.
struct SrgbColor
{
    double red;
    double green;
    double blue;

    friend bool operator==(const SrgbColor&, const SrgbColor&) = default;
};

/// The first and the last colour of the gradient behind a drawing, opaque.
[[nodiscard]] std::array<SrgbColor, 2> gradientOf(OnboardingIllustration illustration);

struct OnboardingSlide
{
    int id;
    QString titleKey; ///< English, the key of its translations
    QString bodyKey;
    OnboardingIllustration illustration;
};

/// The slides in their order; the `id` of each is its position.
[[nodiscard]] const QList<OnboardingSlide>& onboardingSlides();

/// Where the user is in the introduction. Needs no display, and begins anew each time: whoever
/// interrupts it sees it from the first slide again.
class OnboardingModel final : public QObject
{
    Q_OBJECT

public:
    OnboardingModel();

    [[nodiscard]] int index() const { return m_index; }
    [[nodiscard]] QBindable<int> bindableIndex() const { return &m_index; }
    [[nodiscard]] const OnboardingSlide& slide() const;

    [[nodiscard]] bool canStepBack() const;
    [[nodiscard]] bool canStepForward() const;
    [[nodiscard]] bool isOnLastSlide() const { return !canStepForward(); }

    /// Does nothing at the end towards which it steps.
    void stepBack();
    void stepForward();

    /// The user has understood, which counts only on the last slide: no slide can be skipped.
    void finish();

Q_SIGNALS:
    void finished();

private:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(OnboardingModel, int, m_index, 0)
};

} // namespace zelvane
