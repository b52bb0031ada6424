#pragma once

#include "desktop/linux/session/InstanceLock.h"

#include <QDBusConnection>
#include <QString>

#include <chrono>
#include <expected>

namespace zelvane {

/// What a start has come to.
enum class StartOutcome {
    /// This process is the program from now on.
    first,
    /// The program runs already and has been told that it was started again.
    handedOver,
};

/// How long a start waits for the program that runs already.
struct StartLimits
{
    /// For one that is just starting, or just ending.
    std::chrono::milliseconds change{5000};
    /// For its answer.
    std::chrono::milliseconds answer{5000};
};

/// Decides between several starts of the program: exactly one of them gets `lock`, which it keeps;
/// the others hand over to it. Blocks the thread until that is decided, within the limits. The
/// error is a sentence: the program runs, and can't be told.
[[nodiscard]] std::expected<StartOutcome, QString> startOrHandOver(InstanceLock& lock,
                                                                   const QDBusConnection& bus,
                                                                   const QString& name,
                                                                   StartLimits limits = {});

} // namespace zelvane
