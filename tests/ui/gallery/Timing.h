#pragma once

#include "ui/gallery/Scenes.h"

#include <QJsonObject>

namespace zelvane::gallery {

/// How fast a scene appears, in milliseconds: from the call that shows it, or that takes its step
/// if it has one, to the end of the first turn that paints. The first of all times, and several
/// more.
[[nodiscard]] QJsonObject timeAppearance(const Scene& scene, const Stage& stage);

/// What each frame costs while the scene's list or page is scrolled from end to end, and while its
/// search field is typed in, if it has one: milliseconds by the wall for an event and all that
/// follows from it, and of the main thread's processor time.
[[nodiscard]] QJsonObject timeFrames(const Scene& scene, const Stage& stage);

} // namespace zelvane::gallery
