#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>
#include <QVariantList>

/// Marks a literal as a key of the translations where it is not written in the call that looks it
/// up, so that the check of the translations finds it.
#define LOCALIZATION_KEY(text) QStringLiteral(text)

namespace zelvane {

class UserDefaults;

/// Lets the lookup read the user's choice from `defaults`, which must outlive every later lookup.
/// Null, as at the start, leaves all texts in English. `systemLanguages` are the tags of the
/// platform's choice, the favourite first. To be called while no other thread looks texts up.
void installLocalization(const UserDefaults* defaults,
                         const QStringList& systemLanguages = QLocale::system().uiLanguages());

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
