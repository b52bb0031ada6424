#include "settings/LanguagePair.h"

#include "settings/LanguageNames.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace zelvane {

namespace {

const QString idName = QStringLiteral("id");
const QString enabledName = QStringLiteral("enabled");
const QString sourceName = QStringLiteral("source");
const QString targetName = QStringLiteral("target");
const QString hotKeyName = QStringLiteral("hotKey");
const QString useCustomPromptName = QStringLiteral("useCustomPrompt");
const QString customPromptName = QStringLiteral("customPrompt");

QJsonObject encode(const LanguagePair& pair)
{
    QJsonObject object{
        {idName, pair.id.toString(QUuid::WithoutBraces).toUpper()},
        {enabledName, pair.enabled},
        {sourceName, pair.source},
        {targetName, pair.target},
        {useCustomPromptName, pair.useCustomPrompt},
        {customPromptName, pair.customPrompt},
    };
    if (pair.hotKey) {
        object.insert(hotKeyName, toJson(*pair.hotKey));
    }
    return object;
}

/// Only the usual form of 36 characters: Qt reads braces and the null id of any garbage as well.
std::optional<QUuid> decodeId(const QJsonValue& value)
{
    const QString text = value.toString();
    const QUuid id = QUuid::fromString(text);
    if (id.toString(QUuid::WithoutBraces).compare(text, Qt::CaseInsensitive) != 0) {
        return std::nullopt;
    }
    return id;
}

bool isAbsent(const QJsonValue& value)
{
    return value.isUndefined() || value.isNull();
}

std::optional<LanguagePair> decode(const QJsonValue& value)
{
    const QJsonObject object = value.toObject();
    const QJsonValue enabled = object.value(enabledName);
    const QJsonValue source = object.value(sourceName);
    const QJsonValue target = object.value(targetName);
    const QJsonValue hotKey = object.value(hotKeyName);
    const QJsonValue useCustomPrompt = object.value(useCustomPromptName);
    const QJsonValue customPrompt = object.value(customPromptName);
    const std::optional<QUuid> id = decodeId(object.value(idName));
    const bool complete = id && enabled.isBool() && source.isString() && target.isString();
    if (!complete || !(isAbsent(useCustomPrompt) || useCustomPrompt.isBool()) ||
        !(isAbsent(customPrompt) || customPrompt.isString())) {
        return std::nullopt;
    }
    const std::optional<KeyChord> chord = keyChordFromJson(hotKey);
    if (!isAbsent(hotKey) && !chord) {
        return std::nullopt;
    }
    return LanguagePair{*id,   enabled.toBool(),         source.toString(),      target.toString(),
                        chord, useCustomPrompt.toBool(), customPrompt.toString()};
}

} // namespace

QByteArray encodePairs(const QList<LanguagePair>& pairs)
{
    QJsonArray array;
    for (const LanguagePair& pair : pairs) {
        array.append(encode(pair));
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<LanguagePair>> decodePairs(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray()) {
        return std::nullopt;
    }
    const QJsonArray array = document.array();
    QList<LanguagePair> pairs;
    for (const QJsonValue value : array) {
        const std::optional<LanguagePair> pair = decode(value);
        if (!pair) {
            return std::nullopt;
        }
        pairs.append(*pair);
    }
    return pairs;
}

QString pairLabel(const LanguagePair& pair)
{
    return shortCode(pair.source) + u'-' + shortCode(pair.target);
}

LanguagePair pairFromAnyLanguage(const QString& target)
{
    LanguagePair pair;
    pair.id = QUuid::createUuid();
    pair.source = QStringLiteral("Any Language");
    pair.target = target;
    return pair;
}

QList<LanguagePair> defaultPairs(const QString& systemLanguage)
{
    const QString english = QStringLiteral("English (US)");
    QList<LanguagePair> pairs{pairFromAnyLanguage(english)};
    if (systemLanguage.compare(english, Qt::CaseInsensitive) != 0) {
        pairs.append(pairFromAnyLanguage(systemLanguage));
    }
    return pairs;
}

} // namespace zelvane
