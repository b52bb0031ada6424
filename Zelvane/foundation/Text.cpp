#include "foundation/Text.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

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
    return isLineSpace(c) || (c >= u'\n' && c <= u'\r') || c == QChar(0x85) ||
           c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph;
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

QString trimmed(const QString& text)
{
    return trimmedBy(text, isSpaceOrNewline).toString();
}

QString trimmedWithinLine(const QString& text)
{
    return trimmedBy(text, isLineSpace).toString();
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

} // namespace zelvane::text
