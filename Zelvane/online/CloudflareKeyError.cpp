#include "online/CloudflareKeyError.h"

#include "settings/Localization.h"

namespace zelvane {

namespace {

/// How long to wait, in whole units, rounded down.
QString rateLimitText(qint64 seconds)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    if (seconds < minute) {
        return localizedFormat(QStringLiteral("Too many requests. Try again in %lld second(s)."),
                               {seconds});
    }
    if (seconds < hour) {
        return localizedFormat(QStringLiteral("Too many requests. Try again in %lld minute(s)."),
                               {seconds / minute});
    }
    return localizedFormat(QStringLiteral("Too many requests. Try again in %lld hour(s)."),
                           {seconds / hour});
}

} // namespace

CloudflareKeyError::CloudflareKeyError(Code code)
    : CloudflareKeyError(code, 0, {})
{
    Q_ASSERT(code != Code::rateLimited && code != Code::http);
}

CloudflareKeyError::CloudflareKeyError(Code code, qint64 number, QString payload)
    : m_code(code)
    , m_number(number)
    , m_payload(std::move(payload))
{
}

CloudflareKeyError CloudflareKeyError::installBanned(QString reason)
{
    return {Code::installBanned, 0, std::move(reason)};
}

CloudflareKeyError CloudflareKeyError::rateLimited(qint64 retryAfterSeconds)
{
    return {Code::rateLimited, retryAfterSeconds, {}};
}

CloudflareKeyError CloudflareKeyError::http(int status, QString body)
{
    return {Code::http, status, std::move(body)};
}

qint64 CloudflareKeyError::retryAfterSeconds() const
{
    return m_code == Code::rateLimited ? m_number : 0;
}

int CloudflareKeyError::httpStatus() const
{
    return m_code == Code::http ? static_cast<int>(m_number) : 0;
}

QString CloudflareKeyError::description() const
{
    switch (m_code) {
    case Code::installBanned:
        return m_payload.isEmpty()
                   ? localizedText(
                         QStringLiteral("This install is blocked from Cloudflare translations."))
                   : localizedFormat(QStringLiteral("This install is blocked: %@"), {m_payload});
    case Code::rateLimited:
        return rateLimitText(m_number);
    case Code::http:
        return localizedFormat(QStringLiteral("Cloudflare error %lld: %@"), {m_number, m_payload});
    case Code::notConfigured:
        return localizedText(
            QStringLiteral("Cloudflare Worker is not reachable. Check your network connection."));
    case Code::invalidURL:
        return localizedText(QStringLiteral("Invalid Cloudflare Worker URL."));
    case Code::unauthorized:
        return localizedText(
            QStringLiteral("This install is not authorized for Cloudflare translations."));
    case Code::badResponse:
        return localizedText(QStringLiteral("Unexpected response from Cloudflare."));
    case Code::missingCachedConfig:
        return localizedText(QStringLiteral(
            "Cloudflare config is not loaded yet. Restart the app or refresh in Settings."));
    case Code::emptyTranslation:
        return localizedText(QStringLiteral("Cloudflare returned an empty translation."));
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
