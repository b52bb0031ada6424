#pragma once

#include <QJsonObject>
#include <QString>

namespace zelvane::test {

/// The text that a request for a translation holds, taken out of the wording of the model's family.
/// A prompt in none of the known wordings is taken as it is.
[[nodiscard]] QString textToTranslate(const QString& prompt);

/// The content of the last message of a request, empty if there is none.
[[nodiscard]] QString lastMessageContent(const QJsonObject& request);

} // namespace zelvane::test
