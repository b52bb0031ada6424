#pragma once

#include <QString>

#include <optional>

namespace zelvane {

/// What one call of a system service passes in and takes back. It is none of the general
/// pasteboard, and belongs to the thread that makes the call.
class ServicePasteboard
{
public:
    ServicePasteboard() = default;
    virtual ~ServicePasteboard() = default;
    Q_DISABLE_COPY_MOVE(ServicePasteboard)

    /// The plain text, none if there is none.
    [[nodiscard]] virtual std::optional<QString> string() const = 0;
    virtual void clearContents() = 0;
    virtual void setString(const QString& text) = 0;
};

} // namespace zelvane
