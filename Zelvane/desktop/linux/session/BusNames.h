#pragma once

#include <QString>

namespace zelvane {

/// The name of the running program on the session bus and of its lock. Each profile is a program of
/// its own; `profile` is its folder, empty for the user's own settings.
[[nodiscard]] QString instanceName(const QString& profile);

/// The object and the interfaces under that name.
[[nodiscard]] QString busObjectPath();
[[nodiscard]] QString servicesInterface();
[[nodiscard]] QString controlInterface();

/// The names of the errors that the interfaces answer with, each with a sentence as its message.
namespace busError {
[[nodiscard]] QString failed();
[[nodiscard]] QString noSuchPair();
[[nodiscard]] QString textTooLarge();
[[nodiscard]] QString tooManyCalls();
/// What all of them begin with.
[[nodiscard]] QString prefix();
} // namespace busError

} // namespace zelvane
