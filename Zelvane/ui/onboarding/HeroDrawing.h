#pragma once

#include "ui/onboarding/OnboardingModel.h"

#include <QPainter>

namespace zelvane {

/// Draws what a slide is about around the origin of `painter`, within 440 by 220 device-independent
/// pixels, in white on whatever is there. `devicePixelRatio` is that of the painted device. GUI
/// thread only.
void drawHero(QPainter& painter, OnboardingIllustration illustration, double devicePixelRatio);

} // namespace zelvane
