#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace zelvane {

/// The text of the first message of an answer (`choices[0].message`), as it was found: never blank,
/// not trimmed. Servers put it in several places.
[[nodiscard]] std::optional<QString> extractMessageText(const QJsonObject& message);

} // namespace zelvane
