#include "support/llama/LlamaScript.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace zelvane::test {

namespace {

using std::chrono::milliseconds;

const QHash<QString, ModelMood>& moodNames()
{
    static const QHash<QString, ModelMood> names{
        {QStringLiteral("echo"), ModelMood::echo},
        {QStringLiteral("drop-line"), ModelMood::dropLine},
        {QStringLiteral("add-line"), ModelMood::addLine},
        {QStringLiteral("repeat"), ModelMood::repeat},
        {QStringLiteral("think"), ModelMood::think},
        {QStringLiteral("think-cut"), ModelMood::thinkCut},
        {QStringLiteral("fence"), ModelMood::fence},
        {QStringLiteral("reasoning"), ModelMood::reasoning},
        {QStringLiteral("blank"), ModelMood::blank},
        {QStringLiteral("refuse"), ModelMood::refuse},
        {QStringLiteral("not-json"), ModelMood::notJson},
        {QStringLiteral("no-choices"), ModelMood::noChoices},
        {QStringLiteral("cut-off"), ModelMood::cutOff},
        {QStringLiteral("die"), ModelMood::die},
        {QStringLiteral("silence"), ModelMood::silence},
    };
    return names;
}

milliseconds time(const QJsonValue& value)
{
    return milliseconds(value.toInt());
}

std::optional<QString> readMoods(const QJsonArray& array, QList<ModelMood>& moods)
{
    moods.clear();
    for (const QJsonValue& value : array) {
        const auto found = moodNames().constFind(value.toString());
        if (found == moodNames().constEnd()) {
            return QStringLiteral("no such mood: %1").arg(value.toString());
        }
        moods += *found;
    }
    return moods.isEmpty() ? std::optional(QStringLiteral("there is no mood")) : std::nullopt;
}

/// Reads one entry; a sentence if it makes no sense.
std::optional<QString> readEntry(const QString& key, const QJsonValue& value, LlamaScript& script)
{
    if (key == QStringLiteral("listenAfterMs")) {
        script.listenAfter = time(value);
    } else if (key == QStringLiteral("loadMs")) {
        script.loadFor = time(value);
    } else if (key == QStringLiteral("neverReady")) {
        script.neverReady = value.toBool();
    } else if (key == QStringLiteral("diesWithGpu")) {
        script.diesWithGpu = value.toBool();
    } else if (key == QStringLiteral("diesLoading")) {
        script.diesLoading = value.toBool();
    } else if (key == QStringLiteral("ignoresTerminate")) {
        script.ignoresTerminate = value.toBool();
    } else if (key == QStringLiteral("logFlood")) {
        script.logFlood = value.toInteger();
    } else if (key == QStringLiteral("answerAfterMs")) {
        script.answerAfter = time(value);
    } else if (key == QStringLiteral("moods")) {
        return readMoods(value.toArray(), script.moods);
    } else if (key == QStringLiteral("prefix")) {
        script.prefix = value.toString();
    } else if (key == QStringLiteral("translations")) {
        const QJsonObject lines = value.toObject();
        for (auto line = lines.constBegin(); line != lines.constEnd(); ++line) {
            script.translations.insert(line.key(), line.value().toString());
        }
    } else if (key == QStringLiteral("record")) {
        script.record = value.toString();
    } else {
        return QStringLiteral("no such entry: %1").arg(key);
    }
    return std::nullopt;
}

} // namespace

QString LlamaScript::translate(const QString& line) const
{
    return translations.value(line, prefix + line);
}

std::expected<LlamaScript, QString> LlamaScript::parse(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject()) {
        return std::unexpected(QStringLiteral("the script is no JSON object"));
    }
    LlamaScript script;
    const QJsonObject object = document.object();
    for (auto entry = object.constBegin(); entry != object.constEnd(); ++entry) {
        if (const auto problem = readEntry(entry.key(), entry.value(), script)) {
            return std::unexpected(*problem);
        }
    }
    return script;
}

std::expected<LlamaScript, QString> LlamaScript::find(const QString& path)
{
    const QByteArray variable = qgetenv("ZELVANE_FAKE_LLAMA");
    if (!variable.isEmpty()) {
        return parse(variable);
    }
    QFile file(QFileInfo(path).path() + QStringLiteral("/llama-script.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        return LlamaScript();
    }
    return parse(file.readAll());
}

} // namespace zelvane::test
