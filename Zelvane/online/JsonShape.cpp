#include "online/JsonShape.h"

#include "pipeline/TranslationError.h"

#include <algorithm>

namespace zelvane {

namespace {

void require(bool hasShape)
{
    if (!hasShape) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
}

} // namespace

QJsonArray objectsIn(const QJsonValue& value)
{
    QJsonArray elements = value.toArray();
    require(value.isArray() && std::ranges::all_of(elements, [](const QJsonValue& element) {
                return element.isObject();
            }));
    return elements;
}

QJsonObject firstObjectIn(const QJsonValue& value)
{
    const QJsonArray elements = objectsIn(value);
    require(!elements.isEmpty());
    return elements.first().toObject();
}

QString stringIn(const QJsonValue& value)
{
    require(value.isString());
    return value.toString();
}

} // namespace zelvane
