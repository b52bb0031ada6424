#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

namespace zelvane {

// The steps down an answer to the value that is wanted. Each throws `TranslationError::badResponse`
// if the value has another shape; a member that is missing has none.

/// The elements of an array that holds nothing but objects. It may be empty.
[[nodiscard]] QJsonArray objectsIn(const QJsonValue& value);

/// The first element of such an array.
[[nodiscard]] QJsonObject firstObjectIn(const QJsonValue& value);

/// The string.
[[nodiscard]] QString stringIn(const QJsonValue& value);

} // namespace zelvane
