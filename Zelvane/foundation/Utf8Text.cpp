#include "foundation/Utf8Text.h"

#include "foundation/Text.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>
#include <unicode/utf8.h>

namespace zelvane::text::utf8 {

namespace {

icu::StringPiece piece(std::string_view text)
{
    return {text.data(), static_cast<int32_t>(text.size())};
}

void appendLowerCased(std::string_view text, std::string& result)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::StringByteSink<std::string> sink(&result);
    icu::CaseMap::utf8ToLower("", 0, piece(text), sink, nullptr, status);
}

} // namespace

void appendComposedLowerCased(std::string_view text, std::string& result)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFCInstance(status);
    if (normalizer->isNormalizedUTF8(piece(text), status)) {
        appendLowerCased(text, result);
        return;
    }
    std::string composed;
    icu::StringByteSink<std::string> sink(&composed);
    normalizer->normalizeUTF8(0, piece(text), sink, nullptr, status);
    appendLowerCased(composed, result);
}

void appendSimplified(std::string_view text, std::string& result)
{
    const auto length = static_cast<int32_t>(text.size());
    bool isFirst = true;
    bool isBehindSpace = false;
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 codePoint = 0;
        U8_NEXT(text.data(), i, length, codePoint);
        if (isWhiteSpace(static_cast<char32_t>(codePoint))) {
            isBehindSpace = true;
            continue;
        }
        if (isBehindSpace && !isFirst) {
            result += ' ';
        }
        result.append(text, static_cast<size_t>(start), static_cast<size_t>(i - start));
        isBehindSpace = false;
        isFirst = false;
    }
}

} // namespace zelvane::text::utf8
