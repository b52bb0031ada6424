#pragma once

#include "support/llama/LlamaScript.h"

#include <QByteArray>
#include <QJsonObject>

namespace zelvane::test {

/// An answer of the server: a status and its body.
struct LlamaAnswer
{
    int status = 200;
    QByteArray body;
};

/// `{"error": {...}}` as the server words it.
[[nodiscard]] LlamaAnswer llamaError(int status, const QString& type, const QString& message,
                                     const QJsonObject& more = {});

/// What a model in `mood` answers to a request that the server has accepted.
[[nodiscard]] LlamaAnswer completion(ModelMood mood, const LlamaScript& script,
                                     const QString& modelPath, const QJsonObject& request);

/// About as many tokens as a text has.
[[nodiscard]] qsizetype tokenCount(const QString& text);

} // namespace zelvane::test
