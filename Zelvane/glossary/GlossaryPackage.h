#pragma once

#include "glossary/GlossaryDirection.h"

#include <QByteArray>
#include <QList>
#include <QLocale>
#include <QStringList>

#include <array>
#include <expected>

namespace zelvane {

/// The two dictionaries between two languages.
struct GlossaryPackage
{
    GlossaryLanguage source;
    GlossaryLanguage target;

    /// Both base codes in ascending order, such as "de-en": the same for either direction.
    [[nodiscard]] QString key() const;
    /// From the source to the target, then back.
    [[nodiscard]] std::array<GlossaryDirection, 2> directions() const;

    /// Whether they are the same package: variants and order of the languages don't matter.
    friend bool operator==(const GlossaryPackage& left, const GlossaryPackage& right)
    {
        return left.key() == right.key();
    }
};

/// The base codes of the languages with published dictionaries, in ascending order.
[[nodiscard]] const QStringList& glossarySupportedCodes();
/// Whether dictionaries are published for the language, whatever its region.
[[nodiscard]] bool hasGlossaryData(const GlossaryLanguage& language);

/// Sorts by the languages' English names, as readers of `locale` expect it.
void sortPackages(QList<GlossaryPackage>& packages, const QLocale& locale);

/// The stored form: a JSON array of objects with the languages' codes.
[[nodiscard]] QByteArray encodePackages(const QList<GlossaryPackage>& packages);
/// The error, a sentence for developers, is that of the first package that is none.
[[nodiscard]] std::expected<QList<GlossaryPackage>, QString> decodePackages(const QByteArray& json);

} // namespace zelvane
