#include "online/CloudflareQuota.h"

#include <array>

namespace zelvane {

namespace {

struct Number
{
    const char16_t* name;
    decltype(&CloudflareQuota::dayUsed) member;
};

constexpr std::array numbers{
    Number{u"dayUsed", &CloudflareQuota::dayUsed},
    Number{u"dayLimit", &CloudflareQuota::dayLimit},
    Number{u"dayRemaining", &CloudflareQuota::dayRemaining},
    Number{u"minuteUsed", &CloudflareQuota::minuteUsed},
    Number{u"minuteLimit", &CloudflareQuota::minuteLimit},
    Number{u"minuteRemaining", &CloudflareQuota::minuteRemaining},
};

const QString dayBucketName = QStringLiteral("dayBucket");

/// Two defaults tell a whole number from everything else.
std::optional<qint64> wholeNumber(const QJsonValue& value)
{
    const qint64 number = value.toInteger(0);
    return number == value.toInteger(1) ? std::optional(number) : std::nullopt;
}

} // namespace

QJsonObject toJson(const CloudflareQuota& quota)
{
    QJsonObject object{{dayBucketName, quota.dayBucket}};
    for (const auto& [name, member] : numbers) {
        object.insert(QString::fromUtf16(name), quota.*member);
    }
    return object;
}

std::optional<CloudflareQuota> cloudflareQuotaFromJson(const QJsonValue& value)
{
    const QJsonObject object = value.toObject();
    const QJsonValue dayBucket = object.value(dayBucketName);
    if (!dayBucket.isString()) {
        return std::nullopt;
    }
    CloudflareQuota quota;
    quota.dayBucket = dayBucket.toString();
    for (const auto& [name, member] : numbers) {
        const std::optional<qint64> number = wholeNumber(object.value(QString::fromUtf16(name)));
        if (!number) {
            return std::nullopt;
        }
        quota.*member = *number;
    }
    return quota;
}

} // namespace zelvane
