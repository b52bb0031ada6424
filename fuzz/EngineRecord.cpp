// Whatever stands in the record of an installation yields a revision or none; and no damage to a
// good record makes it tell another revision unless the number itself is what was damaged.

#include "Services/EngineRecord.h"
#include "Survive.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdint>

using zelvane::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto revision = zelvane::decodeEngineRevision(bytes);
    if (!revision) {
        return 0;
    }
    const QJsonObject record = QJsonDocument::fromJson(bytes).object();
    const QJsonValue stored = record.value(QStringLiteral("engine_revision"));
    require(stored.isDouble() && double(*revision) == stored.toDouble());
    const QByteArray again =
        QJsonDocument(QJsonObject{{QStringLiteral("engine_revision"), *revision}}).toJson();
    require(zelvane::decodeEngineRevision(again) == revision);
    return 0;
}
