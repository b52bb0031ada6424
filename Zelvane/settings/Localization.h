#pragma once

#include <QLocale>
#include <QString>
#include <QVariantList>

namespace zelvane {

/// The text of the interface for an English key, in the language chosen at this moment. A key
/// without a translation comes back as it is. Callable from any thread.
[[nodiscard]] QString localizedText(const QString& key);

/// Looks `format` up, then puts the arguments in. "%@" takes a text and "%lld" a whole number, in
/// the order of the arguments; "%1$@" and the like name one; "%%" is a percent sign. Numbers are
/// written with the locale of the interface language. Callable from any thread.
[[nodiscard]] QString localizedFormat(const QString& format, const QVariantList& arguments);

/// The locale of the interface language.
[[nodiscard]] QLocale interfaceLocale();

} // namespace zelvane
