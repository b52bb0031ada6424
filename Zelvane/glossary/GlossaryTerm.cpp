#include "glossary/GlossaryTerm.h"

#include "foundation/Text.h"
#include "foundation/Utf8Text.h"

namespace zelvane {

namespace {

constexpr bool isAsciiSpace(char32_t unit)
{
    return unit == U' ' || (unit >= U'\t' && unit <= U'\r');
}

/// Most terms are ASCII, where the rules come down to this. False if `term` isn't; `key` is then
/// unfinished.
template <typename Unit>
bool writeKeyOfAscii(std::basic_string_view<Unit> term, std::string& key)
{
    key.clear();
    bool isBehindSpace = false;
    for (const Unit unit : term) {
        const auto character = static_cast<char32_t>(std::make_unsigned_t<Unit>(unit));
        if (character >= 0x80) {
            return false;
        }
        if (isAsciiSpace(character)) {
            isBehindSpace = true;
            continue;
        }
        if (isBehindSpace && !key.empty()) {
            key += ' ';
        }
        isBehindSpace = false;
        const bool isUpper = character >= U'A' && character <= U'Z';
        key += static_cast<char>(isUpper ? character | 0x20 : character);
    }
    return true;
}

void writeKeyOfAny(std::string_view term, std::string& key)
{
    std::string lowerCased;
    text::utf8::appendComposedLowerCased(term, lowerCased);
    key.clear();
    text::utf8::appendSimplified(lowerCased, key);
}

} // namespace

GlossaryLine splitGlossaryLine(const QString& line)
{
    const QStringView all(line);
    qsizetype prefix = text::leadingLength(all, text::isWhiteSpace);
    const qsizetype digits = text::leadingLength(all.sliced(prefix), text::isNumber);
    const qsizetype point = prefix + digits;
    if (digits > 0 && text::firstCharacter(all.sliced(point)) == u".") {
        prefix = point + 1 + text::leadingLength(all.sliced(point + 1), text::isWhiteSpace);
    }
    return {prefix > 0 ? line.first(prefix) : QString(), prefix > 0 ? line.sliced(prefix) : line};
}

void writeGlossaryKey(std::string_view term, std::string& key)
{
    if (!writeKeyOfAscii(term, key)) {
        writeKeyOfAny(term, key);
    }
}

void writeGlossaryKey(QStringView term, std::string& key)
{
    const std::u16string_view units(term.utf16(), static_cast<size_t>(term.size()));
    if (!writeKeyOfAscii(units, key)) {
        const bool isWellFormed = term.isValidUtf16();
        const QByteArray bytes =
            isWellFormed ? term.toUtf8() : text::wellFormed(term.toString()).toUtf8();
        writeKeyOfAny({bytes.constData(), static_cast<size_t>(bytes.size())}, key);
    }
}

} // namespace zelvane
