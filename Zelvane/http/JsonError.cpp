#include "http/JsonError.h"

#include "settings/Localization.h"

namespace zelvane {

JsonError::JsonError(const QJsonParseError& error)
    : m_error(error)
{
}

QString JsonError::description() const
{
    return localizedFormat(QStringLiteral("The answer is not JSON: %@ at byte %lld."),
                           {m_error.errorString(), m_error.offset});
}

QJsonDocument parsedJson(const QByteArray& body)
{
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
        throw JsonError(error);
    }
    return document;
}

} // namespace zelvane
