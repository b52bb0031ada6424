#pragma once

class QWidget;

namespace zelvane {

/// Lets the Tab key go through the controls of `root` as its layouts have them. Qt goes by the
/// order of their making, so call this after something was added between others.
void tabInReadingOrder(QWidget& root);

} // namespace zelvane
