#include "http/HttpTransport.h"

namespace zelvane {

TransportError::TransportError(Kind kind, QString reason)
    : m_kind(kind)
    , m_reason(std::move(reason))
{
}

QString TransportError::description() const
{
    return m_reason;
}

} // namespace zelvane
