#pragma once

#include "Services/ModelJob.h"

#include <QList>

#include <optional>

namespace zelvane {

/// The messages of one request. A message whose text is empty is not sent.
struct ChatMessages
{
    QString system;
    QString user;

    friend bool operator==(const ChatMessages&, const ChatMessages&) = default;
};

/// The wording that the model's family was trained on. `job` has at least one line.
[[nodiscard]] ChatMessages buildChatMessages(const ModelJob& job);

} // namespace zelvane
