#pragma once

#include "settings/KeyChord.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace zelvane {

/// A source and a target language with the shortcut that translates between them.
struct LanguagePair
{
    QUuid id;
    bool enabled = true;
    QString source;
    QString target;
    std::optional<KeyChord> hotKey;
    bool useCustomPrompt = false;
    QString customPrompt;

    friend bool operator==(const LanguagePair&, const LanguagePair&) = default;
};

/// More pairs than this are neither kept nor added.
inline constexpr qsizetype maximalPairCount = 10;

/// The list as the JSON array under which it is stored.
[[nodiscard]] QByteArray encodePairs(const QList<LanguagePair>& pairs);

/// The stored list, or none if any pair lacks a required member or has one of a wrong type.
[[nodiscard]] std::optional<QList<LanguagePair>> decodePairs(const QByteArray& json);

/// A new pair from any language to `target`, enabled, without a shortcut or a prompt of its own.
[[nodiscard]] LanguagePair pairFromAnyLanguage(const QString& target);

/// The pairs of a new installation: from any language to American English, and to the user's
/// language where that is another.
[[nodiscard]] QList<LanguagePair> defaultPairs(const QString& systemLanguage);

/// The short codes of both languages with a hyphen between: "ANY-DE".
[[nodiscard]] QString pairLabel(const LanguagePair& pair);

} // namespace zelvane
