#pragma once

#include "foundation/DescribedError.h"

namespace zelvane {

/// The failures of the hosted service that a user is to read.
class CloudflareKeyError final : public DescribedError
{
public:
    enum class Code {
        installBanned,
        rateLimited,
        http,
        notConfigured,
        invalidURL,
        unauthorized,
        badResponse,
        missingCachedConfig,
        emptyTranslation,
    };

    /// A failure without a payload: any code but `rateLimited` and `http`, and a ban without a
    /// reason.
    explicit CloudflareKeyError(Code code);

    /// A blocked installation; an empty reason counts as none.
    [[nodiscard]] static CloudflareKeyError installBanned(QString reason);

    /// Too many requests; the user is told how long to wait.
    [[nodiscard]] static CloudflareKeyError rateLimited(qint64 retryAfterSeconds);

    /// Any other refusal, with its body as it is to be shown.
    [[nodiscard]] static CloudflareKeyError http(int status, QString body);

    [[nodiscard]] Code code() const { return m_code; }
    /// The seconds of `rateLimited`, else 0.
    [[nodiscard]] qint64 retryAfterSeconds() const;
    /// The status of `http`, else 0.
    [[nodiscard]] int httpStatus() const;
    /// The reason of `installBanned` or the body of `http`, else empty.
    [[nodiscard]] const QString& payload() const { return m_payload; }

    [[nodiscard]] QString description() const override;

private:
    CloudflareKeyError(Code code, qint64 number, QString payload);

    Code m_code;
    qint64 m_number = 0; ///< seconds or status
    QString m_payload;
};

} // namespace zelvane
