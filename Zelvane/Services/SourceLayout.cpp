#include "Services/SourceLayout.h"

#include "foundation/Text.h"

#include <algorithm>
#include <array>

namespace zelvane {

namespace {

constexpr std::array<QStringView, 4> signsOfMarkup{u"</", u"/>", u"<html", u"<?xml"};

bool isMarkup(const QString& text)
{
    const QString lower = text::lowerCased(text);
    return text.startsWith(u'<') && std::ranges::any_of(signsOfMarkup, [&](QStringView sign) {
               return lower.contains(sign);
           });
}

} // namespace

std::optional<StructuredFormat> detectStructuredFormat(const QString& text)
{
    const QString trimmed = text::trimmed(text);
    if (trimmed.startsWith(u'{') || trimmed.startsWith(u'[')) {
        return StructuredFormat::json;
    }
    if (isMarkup(trimmed)) {
        return StructuredFormat::markup;
    }
    if (trimmed.contains(u"\":") || trimmed.contains(u"': ")) {
        return StructuredFormat::json;
    }
    return std::nullopt;
}

bool hasDelimiterLayout(const QString& text)
{
    return text.count(u'|') >= 2 || text.count(u'\t') >= 2;
}

} // namespace zelvane
