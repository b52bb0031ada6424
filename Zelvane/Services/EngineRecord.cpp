#include "Services/EngineRecord.h"

#include "settings/DurableFile.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace zelvane {

namespace {

/// Records are a few hundred bytes long.
constexpr qint64 maximalRecordSize = 64 * 1024;

const QString revisionKey = QStringLiteral("engine_revision");

} // namespace

QString llamaBuild()
{
    return QStringLiteral("llama-b10437");
}

QByteArray encodeEngineRecord(const SmartOfflineVariantFacts& facts)
{
    const QJsonObject record{
        {QStringLiteral("engine"), facts.recordEngine},
        {revisionKey, engineRevision},
        {QStringLiteral("license"), QStringLiteral("Apache-2.0")},
        {QStringLiteral("model_bytes"), facts.expectedModelBytes},
        {QStringLiteral("repo"), facts.repository},
        {QStringLiteral("runtime"), QStringLiteral("llama.cpp-b10437")},
    };
    return QJsonDocument(record).toJson(QJsonDocument::Indented);
}

std::optional<qint64> decodeEngineRevision(const QByteArray& record)
{
    if (record.size() > maximalRecordSize) {
        return std::nullopt;
    }
    const QJsonValue revision = QJsonDocument::fromJson(record).object().value(revisionKey);
    // What a double can't tell from its neighbours is no revision either.
    constexpr double limit = 9007199254740992; // 2^53
    const double value = revision.toDouble(std::nan(""));
    if (!(std::abs(value) < limit) || std::trunc(value) != value) {
        return std::nullopt;
    }
    return qint64(value);
}

std::expected<qint64, NoEngineRecord> readEngineRevision(const QString& path)
{
    const auto bytes = readFile(path, maximalRecordSize);
    if (bytes && !*bytes) {
        return std::unexpected(NoEngineRecord::missing);
    }
    const auto revision = bytes ? decodeEngineRevision(**bytes) : std::nullopt;
    if (!revision) {
        return std::unexpected(NoEngineRecord::broken);
    }
    return *revision;
}

} // namespace zelvane
