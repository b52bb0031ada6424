#include "pipeline/Loopback.h"

#include <QStringList>

#include <algorithm>

namespace zelvane {

namespace {

/// QUrl has already brought every spelling of an IPv4 address into four decimal numbers.
bool isLoopbackIPv4(const QString& host)
{
    const QStringList parts = host.split(u'.');
    return parts.size() == 4 && parts.front() == QStringLiteral("127") &&
           std::ranges::all_of(parts, [](const QString& part) {
               bool isNumber = false;
               const uint value = part.toUInt(&isNumber);
               return isNumber && value <= 255;
           });
}

} // namespace

bool isLoopback(const QUrl& url)
{
    const QString host = url.host();
    return host == QStringLiteral("localhost") || host == QStringLiteral("::1") ||
           isLoopbackIPv4(host);
}

} // namespace zelvane
