#include "support/provider/HostedModel.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

#include <algorithm>
#include <utility>

namespace zelvane::test {

namespace {

QString dayName(const QDateTime& now)
{
    return now.toString(QStringLiteral("yyyy-MM-dd"));
}

QString minuteName(const QDateTime& now)
{
    return now.toString(QStringLiteral("yyyy-MM-ddTHH:mm"));
}

/// Starts anew with each bucket, whichever way the clock went.
void open(HostedModel::Usage& usage, const QString& bucket)
{
    if (usage.bucket != bucket) {
        usage = {bucket, 0};
    }
}

/// The strings among `names` that a body lacks, an empty one counting as lacking.
QStringList missing(const QJsonObject& body, std::initializer_list<const char*> names)
{
    QStringList lacking;
    for (const char* name : names) {
        if (body.value(QLatin1String(name)).toString().isEmpty()) {
            lacking += QString::fromLatin1(name);
        }
    }
    return lacking;
}

} // namespace

struct HostedModel::Reply
{
    int status = 200;
    QJsonObject body;
    HttpHeaders headers;

    [[nodiscard]] static Reply error(int status, const QString& error)
    {
        return {status, {{QStringLiteral("error"), error}}, {}};
    }
    [[nodiscard]] static Reply badRequest(const QString& complaint)
    {
        Reply reply = error(400, QStringLiteral("bad_request"));
        reply.body.insert(QStringLiteral("message"), complaint);
        return reply;
    }
    [[nodiscard]] static Reply banned(const QString& reason)
    {
        Reply reply = error(403, QStringLiteral("install_banned"));
        if (!reason.isEmpty()) {
            reply.body.insert(QStringLiteral("reason"), reason);
        }
        return reply;
    }
};

struct HostedModel::Call
{
    explicit Call(const RecordedRequest& request)
        : method(request.method())
        , url(QUrl::fromEncoded(request.target()))
        , installId(QString::fromUtf8(request.header("X-Install-Id")))
        , authorization(request.header("Authorization"))
        , body(QJsonDocument::fromJson(request.body).object())
    {
        if (request.header("Accept") != "application/json") {
            complaint = QStringLiteral("Accept is not application/json");
        } else if (request.header("X-App-Version").isEmpty()) {
            complaint = QStringLiteral("X-App-Version is missing");
        } else if (installId.isEmpty()) {
            complaint = QStringLiteral("X-Install-Id is missing");
        } else if (method == "POST") {
            checkBody(request);
        }
    }

    QByteArray method;
    QUrl url;
    QString installId;
    QByteArray authorization;
    QJsonObject body;
    QString complaint; ///< about what every call must have; empty if there is nothing to say

private:
    void checkBody(const RecordedRequest& request)
    {
        const QJsonValue build = body.value(u"appBuild");
        if (request.header("Content-Type") != "application/json") {
            complaint = QStringLiteral("Content-Type is not application/json");
        } else if (body.value(u"installId").toString() != installId) {
            complaint = QStringLiteral("installId is not X-Install-Id");
        } else if (body.value(u"appVersion").toString().toUtf8() !=
                   request.header("X-App-Version")) {
            complaint = QStringLiteral("appVersion is not X-App-Version");
        } else if (!build.isString() ||
                   build.toString().toUtf8() != request.header("X-App-Build")) {
            complaint = QStringLiteral("appBuild is not X-App-Build");
        }
    }
};

HostedModel::HostedModel(const Clock& clock, QByteArray seed)
    : m_clock(clock)
    , m_seed(std::move(seed))
{
}

Answer HostedModel::answerTo(const RecordedRequest& request)
{
    Reply answer = reply(request);
    answer.headers.prepend({"Content-Type", "application/json"});
    const QByteArray body = QJsonDocument(answer.body).toJson(QJsonDocument::Compact);
    return Answer().send(httpMessage(answer.status, body, answer.headers));
}

HostedModel::Reply HostedModel::reply(const RecordedRequest& request)
{
    const Call call(request);
    const QString path = call.url.path();
    if (path == QStringLiteral("/health")) {
        return {200, {{QStringLiteral("status"), QStringLiteral("ok")}}, {}};
    }
    static const QMap<QString, QByteArray> methods{{QStringLiteral("/v1/register"), "POST"},
                                                   {QStringLiteral("/v1/bootstrap"), "GET"},
                                                   {QStringLiteral("/v1/quota"), "GET"},
                                                   {QStringLiteral("/v1/translate"), "POST"}};
    if (!methods.contains(path)) {
        return Reply::error(404, QStringLiteral("not_found"));
    }
    if (call.method != methods.value(path)) {
        return Reply::error(405, QStringLiteral("method_not_allowed"));
    }
    if (!call.complaint.isEmpty()) {
        return Reply::badRequest(call.complaint);
    }
    if (path == QStringLiteral("/v1/register")) {
        return registerInstallation(call);
    }
    Installation* caller = nullptr;
    if (const auto refused = refusal(call, caller)) {
        return *refused;
    }
    openBuckets(*caller);
    if (path == QStringLiteral("/v1/bootstrap")) {
        return bootstrap();
    }
    return path == QStringLiteral("/v1/quota") ? quota(call, *caller) : translate(call, *caller);
}

HostedModel::Reply HostedModel::registerInstallation(const Call& call)
{
    if (!call.authorization.isNull()) {
        return Reply::badRequest(QStringLiteral("a registration has no Authorization"));
    }
    const QStringList lacking = missing(call.body, {"deviceFingerprint"});
    if (!lacking.isEmpty()) {
        return Reply::badRequest(lacking.join(u' ') + QStringLiteral(" is missing"));
    }
    const QString device = call.body.value(u"deviceFingerprint").toString();
    if (m_bannedDevices.contains(device)) {
        return Reply::banned(m_bannedDevices.value(device));
    }
    Usage& registrations = m_registrations[device];
    open(registrations, dayName(m_clock.now()));
    if (registrations.used >= rules.registrationLimit) {
        return rateLimited(secondsToMidnight());
    }
    if (m_installations.contains(call.installId)) {
        return Reply::error(409, QStringLiteral("install_exists"));
    }
    ++registrations.used;
    Installation installation;
    installation.id = call.installId;
    installation.device = device;
    installation.token = newToken();
    m_installations.insert(call.installId, installation);
    return {200, {{QStringLiteral("installToken"), QString::fromLatin1(installation.token)}}, {}};
}

std::optional<HostedModel::Reply> HostedModel::refusal(const Call& call,
                                                       Installation*& installation)
{
    const auto found = m_installations.find(call.installId);
    const bool isKnown = found != m_installations.end() && !found->token.isEmpty();
    if (!isKnown || call.authorization != "Bearer " + found->token) {
        return Reply::error(401, QStringLiteral("unauthorized"));
    }
    if (found->banReason) {
        return Reply::banned(*found->banReason);
    }
    installation = &*found;
    return std::nullopt;
}

HostedModel::Reply HostedModel::bootstrap() const
{
    const QJsonObject config{{QStringLiteral("version"), rules.version},
                             {QStringLiteral("model"), rules.model},
                             {QStringLiteral("provider"), rules.provider}};
    return {
        200, {{QStringLiteral("config"), config}, {QStringLiteral("env"), rules.environment}}, {}};
}

HostedModel::Reply HostedModel::quota(const Call& call, Installation& installation) const
{
    const QString asked =
        QUrlQuery(call.url).queryItemValue(QStringLiteral("installId"), QUrl::FullyDecoded);
    if (asked != call.installId) {
        return Reply::badRequest(QStringLiteral("installId is not X-Install-Id"));
    }
    return {200, {{QStringLiteral("quota"), quotaOf(installation)}}, {}};
}

HostedModel::Reply HostedModel::translate(const Call& call, Installation& installation)
{
    const QStringList lacking = missing(call.body, {"text", "systemPrompt", "model"});
    if (!lacking.isEmpty()) {
        return Reply::badRequest(lacking.join(u' ') + QStringLiteral(" is missing"));
    }
    const QString text = call.body.value(u"text").toString();
    if (text.size() > rules.longestText) {
        return Reply::error(413, QStringLiteral("text_too_long"));
    }
    if (installation.day.used >= rules.dayLimit) {
        return rateLimited(secondsToMidnight());
    }
    if (installation.minute.used >= rules.minuteLimit) {
        return rateLimited(secondsToNextMinute());
    }
    ++installation.day.used;
    ++installation.minute.used;
    ++installation.translations;
    return {200,
            {{QStringLiteral("text"), translator(text)},
             {QStringLiteral("quota"), quotaOf(installation)}},
            {}};
}

HostedModel::Reply HostedModel::rateLimited(qint64 seconds) const
{
    Reply reply = Reply::error(429, QStringLiteral("rate_limited"));
    switch (rules.retryHint) {
    case HostedRules::RetryHint::camelCase:
        reply.body.insert(QStringLiteral("retryAfterSeconds"), seconds);
        break;
    case HostedRules::RetryHint::snakeCase:
        reply.body.insert(QStringLiteral("retry_after_seconds"), seconds);
        break;
    case HostedRules::RetryHint::text:
        reply.body.insert(QStringLiteral("retryAfterSeconds"), QString::number(seconds));
        break;
    case HostedRules::RetryHint::header:
        reply.headers.append({"Retry-After", QByteArray::number(seconds)});
        break;
    case HostedRules::RetryHint::none:
        break;
    }
    return reply;
}

bool HostedModel::revokeToken(const QString& id)
{
    const auto found = m_installations.find(id);
    if (found == m_installations.end()) {
        return false;
    }
    found->token.clear();
    return true;
}

bool HostedModel::ban(const QString& id, const QString& reason)
{
    const auto found = m_installations.find(id);
    if (found == m_installations.end()) {
        return false;
    }
    found->banReason = reason;
    return true;
}

bool HostedModel::unban(const QString& id)
{
    const auto found = m_installations.find(id);
    if (found == m_installations.end()) {
        return false;
    }
    found->banReason.reset();
    m_bannedDevices.remove(found->device);
    return true;
}

bool HostedModel::banDevice(const QString& id, const QString& reason)
{
    if (!ban(id, reason)) {
        return false;
    }
    m_bannedDevices.insert(m_installations.value(id).device, reason);
    return true;
}

bool HostedModel::forget(const QString& id)
{
    return m_installations.remove(id) > 0;
}

QJsonObject HostedModel::state() const
{
    QJsonArray installations;
    for (Installation installation : m_installations) {
        openBuckets(installation);
        installations.append(QJsonObject{
            {QStringLiteral("installId"), installation.id},
            {QStringLiteral("device"), installation.device},
            {QStringLiteral("hasToken"), !installation.token.isEmpty()},
            {QStringLiteral("banned"), installation.banReason.has_value()},
            {QStringLiteral("translations"), installation.translations},
            {QStringLiteral("quota"), quotaOf(installation)},
        });
    }
    return {{QStringLiteral("installations"), installations}};
}

void HostedModel::openBuckets(Installation& installation) const
{
    const QDateTime now = m_clock.now();
    open(installation.day, dayName(now));
    open(installation.minute, minuteName(now));
}

QJsonObject HostedModel::quotaOf(const Installation& installation) const
{
    const auto remaining = [](qint64 limit, qint64 used) {
        return std::max<qint64>(0, limit - used);
    };
    const qint64 dayUsed = installation.day.used;
    const qint64 minuteUsed = installation.minute.used;
    return {{QStringLiteral("dayUsed"), dayUsed},
            {QStringLiteral("dayLimit"), rules.dayLimit},
            {QStringLiteral("dayRemaining"), remaining(rules.dayLimit, dayUsed)},
            {QStringLiteral("minuteUsed"), minuteUsed},
            {QStringLiteral("minuteLimit"), rules.minuteLimit},
            {QStringLiteral("minuteRemaining"), remaining(rules.minuteLimit, minuteUsed)},
            {QStringLiteral("dayBucket"), installation.day.bucket}};
}

qint64 HostedModel::secondsToMidnight() const
{
    const QDateTime now = m_clock.now();
    return now.secsTo(QDateTime(now.date().addDays(1), QTime(0, 0), Qt::UTC));
}

qint64 HostedModel::secondsToNextMinute() const
{
    return 60 - m_clock.now().time().second();
}

QByteArray HostedModel::newToken()
{
    const QByteArray number = QByteArray::number(++m_tokensGiven);
    return QCryptographicHash::hash(m_seed + '/' + number, QCryptographicHash::Sha256).toHex();
}

} // namespace zelvane::test
