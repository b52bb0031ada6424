#pragma once

#include "settings/UserDefaults.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>
#include <variant>

namespace zelvane {

/// A stored value of a kind that this version doesn't know, kept as the bytes of its JSON.
struct ForeignValue
{
    QByteArray json;

    friend bool operator==(const ForeignValue&, const ForeignValue&) = default;
};

using StoredValue = std::variant<DefaultsValue, ForeignValue>;
using DefaultsContents = QHash<QString, StoredValue>;

/// The settings as one JSON object, a member in each line, sorted by key.
///
/// Whole numbers keep all 64 bits, doubles always carry a point or an exponent, bytes are
/// `{"data": "<base64>"}`. Doubles must be finite.
[[nodiscard]] QByteArray encodeDefaults(const DefaultsContents& contents);

/// None if the bytes are no JSON object. Members of unknown kinds come back as `ForeignValue`.
[[nodiscard]] std::optional<DefaultsContents> decodeDefaults(const QByteArray& json);

} // namespace zelvane
