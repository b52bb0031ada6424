#pragma once

#include "Services/CompletionSource.h"

#include <QByteArray>
#include <QJsonObject>

namespace zelvane {

/// The body of one request to the server of a local model.
[[nodiscard]] QJsonObject completionRequest(const ModelJob& job, Attempt attempt);

/// The model's text in the body of an answer, as it came, never blank. Throws `JsonError`, or
/// `TranslationError::badResponse` for JSON of another shape.
[[nodiscard]] QString completionText(const QByteArray& body);

} // namespace zelvane
