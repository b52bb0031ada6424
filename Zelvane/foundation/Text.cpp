#include "foundation/Text.h"

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/unorm.h>

#include <algorithm>
#include <memory>

namespace zelvane::text {

namespace {

/// A grapheme iterator of the root locale. Making one reads ICU's rules, so each thread keeps its
/// own.
icu::BreakIterator& graphemes()
{
    thread_local const std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status)) {
            qFatal("ICU has no character break rules: %s", u_errorName(status));
        }
        return made;
    }();
    return *iterator;
}

/// Points the thread's iterator at `text` without copying it. The text must outlive the use.
class Clusters
{
public:
    explicit Clusters(QStringView text)
    {
        UErrorCode status = U_ZERO_ERROR;
        m_text = utext_openUChars(nullptr, reinterpret_cast<const UChar*>(text.utf16()),
                                  text.size(), &status);
        graphemes().setText(m_text, status);
    }
    ~Clusters() { utext_close(m_text); }
    Q_DISABLE_COPY_MOVE(Clusters)

    icu::BreakIterator* operator->() const { return &graphemes(); }

private:
    UText* m_text = nullptr;
};

bool isLineSpace(QChar c)
{
    return c.category() == QChar::Separator_Space || c == u'\t';
}

bool isSpaceOrNewline(QChar c)
{
    return isWhiteSpace(c.unicode());
}

/// The code point at the start of `text`, which isn't empty.
char32_t firstCodePoint(QStringView text)
{
    const bool isPair = text.size() > 1 && text[0].isHighSurrogate() && text[1].isLowSurrogate();
    return isPair ? QChar::surrogateToUcs4(text[0], text[1]) : text[0].unicode();
}

constexpr char16_t lowerCasedAscii(char16_t unit)
{
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
}

/// Whether a unit of UTF-16 is a user-perceived character beside any other of which this is so,
/// too: most of what Latin, Greek, Cyrillic, Chinese and Japanese texts consist of.
bool isCharacterByItself(QChar unit)
{
    const char16_t c = unit.unicode();
    if (c < 0x300) {
        return c != u'\r'; // one with the newline that may follow
    }
    return (c >= 0x370 && c < 0x483) || (c >= 0x48a && c < 0x530) || // but not what combines
           (c >= 0x2010 && c < 0x2028) || (c >= 0x3041 && c < 0x3097) ||
           (c >= 0x30a0 && c < 0x3100) || (c >= 0x4e00 && c < 0xa000);
}

/// Whether the first unit is sure to be the first user-perceived character, as mostly it is.
bool startsWithSingleUnit(QStringView text)
{
    return !text.isEmpty() && isCharacterByItself(text[0]) &&
           (text.size() == 1 || isCharacterByItself(text[1]));
}

icu::UnicodeString toIcu(const QString& text)
{
    return icu::UnicodeString(reinterpret_cast<const UChar*>(text.utf16()),
                              static_cast<int32_t>(text.size()));
}

QString fromIcu(const icu::UnicodeString& text)
{
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

icu::Locale toIcu(const QLocale& locale)
{
    UErrorCode status = U_ZERO_ERROR; // a failure leaves the root locale
    return icu::Locale::forLanguageTag(locale.bcp47Name().toStdString(), status);
}

/// The rules by which lists in `locale` are ordered; null if ICU has none. Making them costs far
/// more than a comparison, so each thread keeps those that it used last.
const icu::Collator* collatorOf(const QLocale& locale)
{
    struct Kept
    {
        QLocale locale;
        std::unique_ptr<icu::Collator> collator;
    };
    thread_local Kept kept;
    if (!kept.collator || kept.locale != locale) {
        UErrorCode status = U_ZERO_ERROR;
        kept = {locale, std::unique_ptr<icu::Collator>(
                            icu::Collator::createInstance(toIcu(locale), status))};
        if (U_FAILURE(status)) {
            kept.collator.reset();
            return nullptr;
        }
        kept.collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    }
    return kept.collator.get();
}

template <typename Predicate>
QStringView trimmedBy(QStringView text, Predicate isTrimmed)
{
    while (!text.isEmpty() && isTrimmed(text.front())) {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && isTrimmed(text.back())) {
        text.chop(1);
    }
    return text;
}

} // namespace

qsizetype characterCount(QStringView text)
{
    if (std::ranges::all_of(text, isCharacterByItself)) {
        return text.size(); // twenty times as fast as to ask ICU
    }
    const Clusters clusters(text);
    qsizetype count = 0;
    clusters->first();
    while (clusters->next() != icu::BreakIterator::DONE) {
        ++count;
    }
    return count;
}

QString firstCharacters(const QString& text, qsizetype count)
{
    const Clusters clusters(text);
    int32_t end = clusters->first();
    for (qsizetype taken = 0; taken < count; ++taken) {
        const int32_t next = clusters->next();
        if (next == icu::BreakIterator::DONE) {
            return text;
        }
        end = next;
    }
    return text.first(end);
}

QString lastCharacters(const QString& text, qsizetype count)
{
    if (text.size() <= count) {
        return text; // a character takes one unit at least
    }
    const Clusters clusters(text);
    qsizetype start = clusters->last();
    for (qsizetype i = 0; i < count && start > 0; ++i) {
        start = clusters->previous();
    }
    return text.sliced(start);
}

QString trimmed(const QString& text)
{
    return trimmedBy(text, isSpaceOrNewline).toString();
}

QString trimmedWithinLine(const QString& text)
{
    return trimmedBy(text, isLineSpace).toString();
}

bool isWhiteSpace(char32_t codePoint)
{
    if (codePoint < 0x80) {
        return codePoint == U' ' || (codePoint >= U'\t' && codePoint <= U'\r');
    }
    return u_isUWhiteSpace(static_cast<UChar32>(codePoint)) != 0;
}

bool isNumber(char32_t codePoint)
{
    if (codePoint < 0x80) {
        return codePoint >= U'0' && codePoint <= U'9';
    }
    const auto type = u_getIntPropertyValue(static_cast<UChar32>(codePoint), UCHAR_NUMERIC_TYPE);
    return type != U_NT_NONE;
}

qsizetype leadingLength(QStringView text, bool (*belongs)(char32_t))
{
    qsizetype length = 0;
    while (startsWithSingleUnit(text.sliced(length))) {
        if (!belongs(text[length].unicode())) {
            return length;
        }
        ++length;
    }
    const QStringView rest = text.sliced(length);
    const Clusters clusters(rest);
    qsizetype more = clusters->first();
    while (more < rest.size() && belongs(firstCodePoint(rest.sliced(more)))) {
        more = clusters->next();
    }
    return length + more;
}

bool isBlank(QStringView text)
{
    return trimmedBy(text, isSpaceOrNewline).isEmpty();
}

QString lowerCased(const QString& text)
{
    return fromIcu(toIcu(text).toLower(icu::Locale::getRoot()));
}

QString upperCased(const QString& text)
{
    return fromIcu(toIcu(text).toUpper(icu::Locale::getRoot()));
}

QString caseFolded(const QString& text, const QLocale& locale)
{
    // Turkish and Azerbaijani tell an i with a dot from one without.
    const bool hasDotlessI =
        locale.language() == QLocale::Turkish || locale.language() == QLocale::Azerbaijani;
    const uint32_t rules = hasDotlessI ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
    return composed(fromIcu(toIcu(composed(text)).foldCase(rules)));
}

bool containsCharacters(const QString& text, const QString& part)
{
    qsizetype found = part.isEmpty() ? -1 : text.indexOf(part);
    if (found < 0) {
        return false; // most often so, and the clusters need not be looked for
    }
    const Clusters clusters(text);
    while (found >= 0 && !(clusters->isBoundary(int32_t(found)) &&
                           clusters->isBoundary(int32_t(found + part.size())))) {
        found = text.indexOf(part, found + 1);
    }
    return found >= 0;
}

QString withFirstUpperCased(const QString& text, const QLocale& locale)
{
    const QString first = firstCharacters(text, 1);
    return fromIcu(toIcu(first).toUpper(toIcu(locale))) + text.sliced(first.size());
}

bool isLowercase(char32_t codePoint)
{
    return u_isULowercase(static_cast<UChar32>(codePoint)) != 0;
}

QStringView firstCharacter(QStringView text)
{
    if (text.isEmpty() || startsWithSingleUnit(text)) {
        return text.first(std::min<qsizetype>(text.size(), 1));
    }
    const Clusters clusters(text);
    clusters->first();
    return text.first(clusters->next());
}

bool startsLowercase(const QString& text)
{
    const QString first = firstCharacter(text).toString();
    if (first.isEmpty()) {
        return false;
    }
    const char32_t codePoint = firstCodePoint(first);
    const bool isSingle = first.size() == QChar::requiresSurrogates(codePoint) + 1;
    if (isSingle && isLowercase(codePoint)) {
        return true;
    }
    const bool isUppercase = u_isUUppercase(static_cast<UChar32>(codePoint)) != 0;
    return !isUppercase && lowerCased(first) == first && upperCased(first) != first;
}

bool equalIgnoringCase(const QString& left, const QString& right)
{
    // Up to the first difference both are ASCII, which neither composes nor folds to anything else.
    const qsizetype length = std::min(left.size(), right.size());
    for (qsizetype i = 0; i < length; ++i) {
        const char16_t units[] = {left[i].unicode(), right[i].unicode()};
        if (units[0] >= 0x80 || units[1] >= 0x80) {
            break;
        }
        if (lowerCasedAscii(units[0]) != lowerCasedAscii(units[1])) {
            return false;
        }
    }
    UErrorCode status = U_ZERO_ERROR;
    const auto order = unorm_compare(
        reinterpret_cast<const UChar*>(left.utf16()), static_cast<int32_t>(left.size()),
        reinterpret_cast<const UChar*>(right.utf16()), static_cast<int32_t>(right.size()),
        U_COMPARE_IGNORE_CASE, &status);
    return U_SUCCESS(status) && order == 0;
}

QString composed(const QString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFCInstance(status);
    const icu::UnicodeString result = normalizer->normalize(toIcu(text), status);
    return U_SUCCESS(status) ? fromIcu(result) : text;
}

std::weak_ordering naturalOrder(const QString& left, const QString& right, const QLocale& locale)
{
    const icu::Collator* collator = collatorOf(locale);
    if (!collator) {
        return left.compare(right) <=> 0;
    }
    UErrorCode status = U_ZERO_ERROR;
    return collator->compare(toIcu(left), toIcu(right), status) <=> 0;
}

QString languageName(const QString& languageCode, const QLocale& locale)
{
    const std::string code = languageCode.toStdString();
    icu::UnicodeString name;
    icu::Locale(code.c_str()).getDisplayLanguage(toIcu(locale), name);
    const QString text = fromIcu(name);
    return text == languageCode ? QString() : text; // ICU hands back codes without a name
}

QString wellFormed(const QString& text)
{
    if (text.isValidUtf16()) {
        return text;
    }
    QString result = text;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair =
            text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (isPair) {
            ++i;
        } else if (text[i].isSurrogate()) {
            result[i] = QChar::ReplacementCharacter;
        }
    }
    return result;
}

} // namespace zelvane::text
