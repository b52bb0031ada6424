#pragma once

#include "foundation/DescribedError.h"

#include <QByteArray>

namespace zelvane {

/// The failures of a translation that a user is to read.
class TranslationError final : public DescribedError
{
public:
    enum class Code {
        http,
        offlineUnsupportedLanguage,
        missingAPIKey,
        emptyText,
        invalidURL,
        badResponse,
        accessibilityDenied,
        pasteFailed,
        offlineEngineMissing,
        offlineEngineBusy,
    };

    /// A failure without a payload: any code but `http` and `offlineUnsupportedLanguage`.
    explicit TranslationError(Code code);

    /// An answer outside 200 to 299, with its body as it is to be shown.
    [[nodiscard]] static TranslationError http(int status, QString body);

    /// A language that the offline engine does not know; `message` is shown as it stands.
    [[nodiscard]] static TranslationError offlineUnsupportedLanguage(QString message);

    [[nodiscard]] Code code() const { return m_code; }
    /// The status of `http`, else 0.
    [[nodiscard]] int httpStatus() const { return m_httpStatus; }
    /// The body of `http` or the message of `offlineUnsupportedLanguage`, else empty.
    [[nodiscard]] const QString& payload() const { return m_payload; }

    [[nodiscard]] QString description() const override;

private:
    TranslationError(Code code, int httpStatus, QString payload);

    Code m_code;
    int m_httpStatus = 0;
    QString m_payload;
};

/// An engine that this build does not contain.
class EngineUnavailableError final : public DescribedError
{
public:
    explicit EngineUnavailableError(QString engineName);
    [[nodiscard]] QString description() const override;

private:
    QString m_engineName;
};

/// The body of a refusal as it is to be shown: its first `characters` user-perceived characters,
/// and "…" if there are more. One that isn't UTF-8 counts as empty.
[[nodiscard]] QString shownBody(const QByteArray& body, qsizetype characters);

/// Throws `TranslationError::http` unless `status` is in 200 to 299. Of the body 400
/// user-perceived characters are shown.
void validateHTTPResponse(int status, const QByteArray& body);

} // namespace zelvane
