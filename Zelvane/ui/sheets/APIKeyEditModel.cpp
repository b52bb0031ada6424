#include "ui/sheets/APIKeyEditModel.h"

#include "foundation/Text.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

/// So many characters tell a user which of their keys this is, and nobody else anything.
constexpr qsizetype shownCharacters = 4;
constexpr qsizetype longestHiddenKey = 8;
constexpr QChar bullet = u'•';

} // namespace

APIKeyEditModel::APIKeyEditModel(QString providerName, QString initial)
    : m_providerName(std::move(providerName))
    , m_draft(std::move(initial))
{
}

QString APIKeyEditModel::keyToSave() const
{
    return text::trimmed(m_draft);
}

QString maskedKey(const QString& key)
{
    const QString trimmed = text::trimmed(key);
    const qsizetype length = text::characterCount(trimmed);
    if (length <= longestHiddenKey) {
        return QString(length, bullet);
    }
    const qsizetype hidden = length - shownCharacters;
    const QString shown = trimmed.mid(text::firstCharacters(trimmed, hidden).size());
    return QString(std::max(hidden, longestHiddenKey), bullet) + shown;
}

} // namespace zelvane
