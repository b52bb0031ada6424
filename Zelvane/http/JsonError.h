#pragma once

#include "foundation/DescribedError.h"

#include <QByteArray>
#include <QJsonDocument>

namespace zelvane {

/// A body that is not JSON.
class JsonError final : public DescribedError
{
public:
    explicit JsonError(const QJsonParseError& error);
    [[nodiscard]] QString description() const override;

private:
    QJsonParseError m_error;
};

/// Parses an answer: an object or an array, in UTF-8, of at most 1024 levels. Throws `JsonError`.
[[nodiscard]] QJsonDocument parsedJson(const QByteArray& body);

} // namespace zelvane
