#include "glossary/GlossaryError.h"

#include "settings/Localization.h"

namespace zelvane {

GlossaryError GlossaryError::noData(QString languageName)
{
    return {Code::noData, std::move(languageName)};
}

GlossaryError GlossaryError::preparationFailed(QString reason)
{
    return {Code::preparationFailed, std::move(reason)};
}

GlossaryError::GlossaryError(Code code, QString payload)
    : m_code(code)
    , m_payload(std::move(payload))
{
}

QString GlossaryError::description() const
{
    switch (m_code) {
    case Code::noData:
        return localizedFormat(QStringLiteral("No glossary data is published for %@."),
                               {m_payload});
    case Code::preparationFailed:
        return localizedFormat(QStringLiteral("Could not prepare the glossary: %@"), {m_payload});
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
