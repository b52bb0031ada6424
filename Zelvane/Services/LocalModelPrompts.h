#pragma once

#include "Services/ModelJob.h"

#include <QLocale>

namespace zelvane {

/// The messages of one request. A blank system text is not sent.
struct ChatMessages
{
    QString system;
    QString user;

    friend bool operator==(const ChatMessages&, const ChatMessages&) = default;
};

/// The wording that the model's family was trained on. `job` has at least one line; `locale` is
/// the user's, by which terms of a dictionary are found in the text.
[[nodiscard]] ChatMessages buildChatMessages(const ModelJob& job,
                                             const QLocale& locale = QLocale::system());

} // namespace zelvane
