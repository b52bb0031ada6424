#pragma once

#include "ui/gallery/Scenes.h"

namespace zelvane::gallery {

/// The tables of the style page: colours, type, symbols, and every control in every state.
[[nodiscard]] QList<Scene> styleScenes();

} // namespace zelvane::gallery
