#pragma once

#include "foundation/Clock.h"
#include "support/LoopbackHttpServer.h"

#include <QMap>
#include <QString>

#include <functional>
#include <optional>

namespace zelvane::test {

/// How a model of the hosted service behaves.
struct HostedRules
{
    /// Where a refusal for too many requests says how long to wait.
    enum class RetryHint {
        camelCase, ///< retryAfterSeconds, in the body
        snakeCase, ///< retry_after_seconds, in the body
        text,      ///< retryAfterSeconds as a text
        header,    ///< Retry-After alone
        none,
    };

    qint64 dayLimit = 200;
    qint64 minuteLimit = 20;
    /// Registrations of one machine within a day; the next ones are told to wait.
    qint64 registrationLimit = 1000;
    RetryHint retryHint = RetryHint::camelCase;
    qint64 version = 1;
    QString model = QStringLiteral("gemini-3.1-flash-lite");
    QString provider = QStringLiteral("gemini");
    QString environment = QStringLiteral("prod");
    /// In code units.
    qsizetype longestText = 20'000;
};

/// A small but complete hosted translation service: installations with their tokens, quotas by day
/// and minute (in UTC, by the given clock), bans, and a configuration for the clients.
///
/// It insists on what the protocol asks of a client: a call that lacks something, or says one thing
/// in its headers and another in its body, gets status 400 and a sentence about it.
class HostedModel
{
public:
    /// What is counted within one day or one minute.
    struct Usage
    {
        QString bucket; ///< the name of that day or minute
        qint64 used = 0;
    };
    struct Installation
    {
        QString id;
        QString device;
        QByteArray token; ///< empty once it is revoked
        std::optional<QString> banReason;
        Usage day;
        Usage minute;
        qint64 translations = 0;
    };

    /// `clock` must outlive this object. Two models with different seeds give different tokens.
    explicit HostedModel(const Clock& clock, QByteArray seed = "seed");

    [[nodiscard]] Answer answerTo(const RecordedRequest& request);

    /// May be changed at any time.
    HostedRules rules;
    /// What a text is translated into: itself, unless a test knows better.
    std::function<QString(const QString&)> translator = [](const QString& text) { return text; };

    // What an operator of the service does. False if there is no such installation.
    /// The token counts for nothing any more; the installation stays, and so does its id.
    bool revokeToken(const QString& id);
    /// Blocks the installation.
    bool ban(const QString& id, const QString& reason);
    bool unban(const QString& id);
    /// Blocks the machine as well: it can't register again.
    bool banDevice(const QString& id, const QString& reason);
    /// Forgets it, as if it had never registered.
    bool forget(const QString& id);

    [[nodiscard]] const QMap<QString, Installation>& installations() const
    {
        return m_installations;
    }
    [[nodiscard]] QJsonObject state() const;

private:
    /// A request and what it was found to be.
    struct Reply;
    struct Call;

    [[nodiscard]] Reply reply(const RecordedRequest& request);
    [[nodiscard]] Reply registerInstallation(const Call& call);
    [[nodiscard]] Reply bootstrap() const;
    [[nodiscard]] Reply quota(const Call& call, Installation& installation) const;
    [[nodiscard]] Reply translate(const Call& call, Installation& installation);
    [[nodiscard]] Reply rateLimited(qint64 seconds) const;
    /// None if the call proves itself; `installation` is then the caller's.
    [[nodiscard]] std::optional<Reply> refusal(const Call& call, Installation*& installation);

    void openBuckets(Installation& installation) const;
    [[nodiscard]] QJsonObject quotaOf(const Installation& installation) const;
    [[nodiscard]] qint64 secondsToMidnight() const;
    [[nodiscard]] qint64 secondsToNextMinute() const;
    [[nodiscard]] QByteArray newToken();

    const Clock& m_clock;
    QByteArray m_seed;
    qint64 m_tokensGiven = 0;
    QMap<QString, Installation> m_installations;
    QMap<QString, QString> m_bannedDevices; ///< device to reason
    QMap<QString, Usage> m_registrations;   ///< by device, within a day
};

} // namespace zelvane::test
