#pragma once

#include "ui/components/AnimatedValue.h"
#include "ui/onboarding/OnboardingModel.h"
#include "ui/style/Theme.h"

#include <QWidget>

namespace zelvane {

/// The drawing above a slide's text, over its gradient, the same in light and dark.
///
/// Fills the top of a panel: its upper corners are round where the panel's are. Decoration only;
/// the slide's text says all of it to those who can't see it.
class OnboardingHero final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the hero.
    explicit OnboardingHero(const Theme& theme, QWidget* parent = nullptr);

    [[nodiscard]] OnboardingIllustration illustration() const { return m_illustration; }
    /// Shows another drawing, which comes softly where motion is wanted.
    void setIllustration(OnboardingIllustration illustration);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    [[nodiscard]] QPixmap drawn(OnboardingIllustration illustration) const;

    const Theme& m_theme;
    OnboardingIllustration m_illustration = OnboardingIllustration::aiOnline;
    OnboardingIllustration m_previous = OnboardingIllustration::aiOnline;
    AnimatedValue* m_arrival; ///< 0 to 1, owned by Qt's tree
};

} // namespace zelvane
