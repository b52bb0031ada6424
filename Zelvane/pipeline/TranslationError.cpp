#include "pipeline/TranslationError.h"

#include "foundation/Text.h"
#include "settings/Localization.h"

#include <QStringDecoder>

namespace zelvane {

namespace {

constexpr qsizetype shownBodyCharacters = 400;

QString decodedBody(const QByteArray& body)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(body);
    return decoder.hasError() ? QString() : text;
}

} // namespace

TranslationError::TranslationError(Code code)
    : TranslationError(code, 0, {})
{
    Q_ASSERT(code != Code::http && code != Code::offlineUnsupportedLanguage);
}

TranslationError::TranslationError(Code code, int httpStatus, QString payload)
    : m_code(code)
    , m_httpStatus(httpStatus)
    , m_payload(std::move(payload))
{
}

TranslationError TranslationError::http(int status, QString body)
{
    return {Code::http, status, std::move(body)};
}

TranslationError TranslationError::offlineUnsupportedLanguage(QString message)
{
    return {Code::offlineUnsupportedLanguage, 0, std::move(message)};
}

QString TranslationError::description() const
{
    switch (m_code) {
    case Code::http:
        return localizedFormat(QStringLiteral("API error %lld: %@"), {m_httpStatus, m_payload});
    case Code::offlineUnsupportedLanguage:
        return m_payload;
    case Code::missingAPIKey:
        return localizedText(QStringLiteral("API key is not set. Open Settings and add your key."));
    case Code::emptyText:
        return localizedText(QStringLiteral("No text selected."));
    case Code::invalidURL:
        return localizedText(QStringLiteral("Invalid API URL."));
    case Code::badResponse:
        return localizedText(QStringLiteral("Unexpected response from the AI provider."));
    case Code::accessibilityDenied:
        return localizedText(QStringLiteral(
            "Accessibility permission is required to replace text. Enable it in System Settings → "
            "Privacy & Security → Accessibility."));
    case Code::pasteFailed:
        return localizedText(QStringLiteral("Could not paste the translated text."));
    case Code::offlineEngineMissing:
        return localizedText(
            QStringLiteral("The selected offline engine is not installed. Open Settings → AI "
                           "Provider and tap Install."));
    case Code::offlineEngineBusy:
        return localizedText(QStringLiteral("Offline engine stopped. Try translating again."));
    }
    Q_UNREACHABLE();
}

EngineUnavailableError::EngineUnavailableError(QString engineName)
    : m_engineName(std::move(engineName))
{
}

QString EngineUnavailableError::description() const
{
    return localizedFormat(
        QStringLiteral("%@ is not part of this version of Zelvane Desk. Choose another engine."),
        {m_engineName});
}

QString shownBody(const QByteArray& body, qsizetype characters)
{
    const QString text = decodedBody(body);
    const QString shown = text::firstCharacters(text, characters);
    return shown.size() < text.size() ? shown + u'…' : shown;
}

void validateHTTPResponse(int status, const QByteArray& body)
{
    if (status >= 200 && status <= 299) {
        return;
    }
    throw TranslationError::http(status, shownBody(body, shownBodyCharacters));
}

} // namespace zelvane
