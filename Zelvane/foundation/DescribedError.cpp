#include "foundation/DescribedError.h"

namespace zelvane {

const char* DescribedError::what() const noexcept
{
    return "zelvane::DescribedError";
}

QString CancellationError::description() const
{
    return QStringLiteral("Cancelled.");
}

QString describe(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const DescribedError& described) {
        return described.description();
    } catch (const std::exception& other) {
        return QString::fromUtf8(other.what());
    } catch (...) {
        return QStringLiteral("Unknown failure.");
    }
}

} // namespace zelvane
