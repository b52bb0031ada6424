#include "Services/EngineError.h"

#include "settings/Localization.h"

namespace zelvane {

QString EngineError::domain()
{
    return QStringLiteral("Qwen");
}

EngineError::EngineError(int code, QString text)
    : m_code(code)
    , m_text(std::move(text))
{
}

QString EngineError::description() const
{
    return localizedText(m_text);
}

} // namespace zelvane
