#include "online/HostedAnswers.h"

#include "foundation/Text.h"
#include "http/JsonError.h"
#include "online/CloudflareKeyError.h"
#include "online/HostedConfigCache.h"
#include "pipeline/TranslationError.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace zelvane {

namespace {

using Code = CloudflareKeyError::Code;

constexpr qsizetype shownBodyCharacters = 200;

/// The members of a body, none if it isn't a JSON object.
QJsonObject membersOf(const QByteArray& body)
{
    return QJsonDocument::fromJson(body).object();
}

/// The number cut to a whole one; none if it is too large to be one.
std::optional<qint64> wholePart(double number)
{
    constexpr double limit = 9.0e18;
    if (std::abs(number) > limit) {
        return std::nullopt;
    }
    return static_cast<qint64>(number);
}

/// An integer as it is written: an optional sign and digits, nothing else.
std::optional<qint64> readInteger(const QString& text)
{
    const bool hasSign = text.startsWith(u'-') || text.startsWith(u'+');
    const QStringView digits = QStringView(text).sliced(hasSign ? 1 : 0);
    const bool isNumeral =
        std::ranges::all_of(digits, [](QChar c) { return c >= u'0' && c <= u'9'; });
    bool isInRange = false;
    const qint64 number = text.toLongLong(&isInRange);
    return isNumeral && isInRange ? std::optional(number) : std::nullopt;
}

std::optional<qint64> delayIn(const QJsonValue& value)
{
    if (value.isDouble()) {
        return wholePart(value.toDouble());
    }
    return value.isString() ? readInteger(value.toString()) : std::nullopt;
}

std::optional<qint64> delayIn(const QList<QPair<QByteArray, QByteArray>>& headers)
{
    const auto header = std::ranges::find(headers, QByteArray("retry-after"),
                                          &QPair<QByteArray, QByteArray>::first);
    return header == headers.end() ? std::nullopt
                                   : readInteger(text::trimmed(QString::fromUtf8(header->second)));
}

/// The string, or `otherwise` in place of an empty or missing one.
QString stringOr(const QJsonValue& value, const QString& otherwise)
{
    const QString text = value.toString();
    return text.isEmpty() ? otherwise : text;
}

/// A server may quote the request in its complaint; the token must not be shown with it.
QByteArray withoutToken(QByteArray body, const QString& token)
{
    return token.isEmpty() ? body : body.replace(token.toUtf8(), "***");
}

} // namespace

void checkHostedResponse(const HttpResponse& response, const QString& token)
{
    const int status = response.status;
    if (status == 401 || status == 403) {
        if (isInstallBan(response)) {
            throw CloudflareKeyError::installBanned(
                membersOf(response.body).value(u"reason").toString());
        }
        throw CloudflareKeyError(Code::unauthorized);
    }
    if (status == 429) {
        throw CloudflareKeyError::rateLimited(retryDelay(response));
    }
    if (status < 200 || status > 299) {
        const QByteArray body = withoutToken(response.body, token);
        throw CloudflareKeyError::http(status, shownBody(body, shownBodyCharacters));
    }
}

bool isInstallBan(const HttpResponse& response)
{
    const bool isRefusal = response.status == 401 || response.status == 403;
    return isRefusal &&
           membersOf(response.body).value(u"error") == QStringLiteral("install_banned");
}

qint64 retryDelay(const HttpResponse& response)
{
    constexpr qint64 usualDelay = 60;
    const QJsonObject members = membersOf(response.body);
    for (const QStringView name : {u"retryAfterSeconds", u"retry_after_seconds"}) {
        if (const auto delay = delayIn(members.value(name))) {
            return *delay;
        }
    }
    return delayIn(response.headers).value_or(usualDelay);
}

QString installTokenIn(const QByteArray& body)
{
    QString token = text::trimmed(membersOf(body).value(u"installToken").toString());
    // One that can't stand in a header would be kept, and fail for ever.
    const bool isUsable =
        std::ranges::none_of(token, [](QChar c) { return c < u' ' || c == u'\x7f'; });
    if (token.isEmpty() || !isUsable) {
        throw CloudflareKeyError(Code::badResponse);
    }
    return token;
}

CloudflareBootstrap bootstrapIn(const QByteArray& body)
{
    const QJsonObject answer = parsedJson(body).object();
    const QJsonValue config = answer.value(u"config");
    if (!config.isObject()) {
        throw CloudflareKeyError(Code::badResponse);
    }
    const ZelvaneClientConfig builtIn = builtInClientConfig();
    CloudflareBootstrap bootstrap;
    bootstrap.config = {stringOr(config[u"model"], builtIn.model),
                        wholePart(config[u"version"].toDouble()).value_or(0),
                        stringOr(config[u"provider"], builtIn.provider)};
    bootstrap.environment = answer.value(u"env").toString(bootstrap.environment);
    return bootstrap;
}

std::optional<CloudflareQuota> quotaIn(const QByteArray& body)
{
    return cloudflareQuotaFromJson(membersOf(body).value(u"quota"));
}

QString translationIn(const QByteArray& body)
{
    const QString translation = text::trimmed(parsedJson(body).object().value(u"text").toString());
    if (translation.isEmpty()) {
        throw CloudflareKeyError(Code::emptyTranslation);
    }
    return translation;
}

} // namespace zelvane
