#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace zelvane {

/// How much of the hosted service's allowance is used.
struct CloudflareQuota
{
    qint64 dayUsed = 0;
    qint64 dayLimit = 0;
    qint64 dayRemaining = 0;
    qint64 minuteUsed = 0;
    qint64 minuteLimit = 0;
    qint64 minuteRemaining = 0;
    /// The service's name for the current day.
    QString dayBucket;

    friend bool operator==(const CloudflareQuota&, const CloudflareQuota&) = default;
};

/// As it is stored and as it stands in answers.
[[nodiscard]] QJsonObject toJson(const CloudflareQuota& quota);

/// The quota if all its members are there, with their types; others don't matter.
[[nodiscard]] std::optional<CloudflareQuota> cloudflareQuotaFromJson(const QJsonValue& value);

} // namespace zelvane
