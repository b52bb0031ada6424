#include "online/HostedRequests.h"

#include "foundation/Text.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

namespace zelvane {

namespace {

using Headers = QList<QPair<QByteArray, QByteArray>>;

constexpr std::chrono::seconds translationTimeout{180};
constexpr std::chrono::seconds serviceTimeout{30};
/// More than any translation; small enough to be parsed without anyone noticing.
constexpr qint64 maximalAnswerSize = qint64(8) * 1024 * 1024;

void addBuild(Headers& headers, const ProgramVersion& program)
{
    if (!program.build.isEmpty()) {
        headers += QPair<QByteArray, QByteArray>("X-App-Build", program.build.toUtf8());
    }
}

Headers commonHeaders(const ProgramVersion& program, const HostedInstallation& installation)
{
    Headers headers{{"Authorization", "Bearer " + installation.token.toUtf8()},
                    {"Accept", "application/json"},
                    {"X-Install-Id", installation.id.toUtf8()},
                    {"X-App-Version", program.version.toUtf8()}};
    addBuild(headers, program);
    return headers;
}

HttpRequest get(const QUrl& url, const Headers& headers)
{
    HttpRequest request;
    request.url = url;
    request.headers = headers;
    request.timeout = serviceTimeout;
    request.maximalBodySize = maximalAnswerSize;
    return request;
}

HttpRequest post(const QUrl& url, const Headers& headers, const QJsonObject& body)
{
    HttpRequest request = get(url, headers);
    request.method = "POST";
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return request;
}

} // namespace

HttpRequest registerRequest(const QUrl& url, const ProgramVersion& program,
                            const QString& installId, const QString& deviceFingerprint)
{
    Headers headers{{"Content-Type", "application/json"},
                    {"Accept", "application/json"},
                    {"X-App-Version", program.version.toUtf8()},
                    {"X-Install-Id", installId.toUtf8()}};
    addBuild(headers, program);
    return post(url, headers,
                {{QStringLiteral("installId"), installId},
                 {QStringLiteral("appVersion"), program.version},
                 {QStringLiteral("appBuild"), program.build},
                 {QStringLiteral("deviceFingerprint"), deviceFingerprint}});
}

HttpRequest bootstrapRequest(const QUrl& url, const ProgramVersion& program,
                             const HostedInstallation& installation)
{
    return get(url, commonHeaders(program, installation));
}

HttpRequest quotaRequest(const QUrl& url, const ProgramVersion& program,
                         const HostedInstallation& installation)
{
    QUrl withId = url;
    const QString id = QString::fromLatin1(QUrl::toPercentEncoding(installation.id));
    withId.setQuery(QStringLiteral("installId=") + id);
    return get(withId, commonHeaders(program, installation));
}

HttpRequest translateRequest(const QUrl& url, const ProgramVersion& program,
                             const HostedInstallation& installation, const HostedText& text)
{
    Headers headers = commonHeaders(program, installation);
    headers += QPair<QByteArray, QByteArray>("Content-Type", "application/json");
    HttpRequest request =
        post(url, headers,
             {{QStringLiteral("text"), text::wellFormed(text.text)},
              {QStringLiteral("systemPrompt"), text::wellFormed(text.systemPrompt)},
              {QStringLiteral("model"), text::wellFormed(text.model)},
              {QStringLiteral("appVersion"), program.version},
              {QStringLiteral("installId"), installation.id},
              {QStringLiteral("appBuild"), program.build}});
    request.timeout = translationTimeout;
    return request;
}

} // namespace zelvane
