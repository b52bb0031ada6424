#pragma once

#include "cli/RunningProgram.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <chrono>

namespace zelvane {

/// Whether there is a session bus, or would be one that the running program has started. Asking a
/// library for the bus starts one where there is none, for no use.
[[nodiscard]] bool sessionBusIsAtHand(const QString& instance);

/// How long the running program may take to answer. A translation takes 60 seconds at most, and
/// starting the program comes on top.
struct BusLimits
{
    std::chrono::milliseconds translation{90'000};
    std::chrono::milliseconds other{30'000};
};

/// The running program over the session bus, which starts it where it isn't running and is
/// installed.
class BusProgram final : public RunningProgram
{
public:
    /// `instance` is the program's name on the bus.
    BusProgram(const QDBusConnection& bus, QString instance, BusLimits limits = {});

    [[nodiscard]] QCoro::Task<QString> translate(QString entry, QString text,
                                                 std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<void> triggerPair(QString which, std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<void> showTranslationWindow(std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<void> showSettings(std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<Status> status(std::stop_token stop) override;

private:
    [[nodiscard]] QDBusMessage makeCall(const QString& interface, const QString& method) const;
    /// The answer, or a `RunningProgramError`.
    [[nodiscard]] QCoro::Task<QDBusMessage> send(QDBusMessage call, std::chrono::milliseconds limit,
                                                 std::stop_token stop);
    /// The answer, which may be an error.
    [[nodiscard]] QCoro::Task<QDBusMessage> ask(QDBusMessage call, std::chrono::milliseconds limit,
                                                std::stop_token stop);

    QDBusConnection m_bus;
    QString m_instance;
    BusLimits m_limits;
    /// Keeps what waits for an answer.
    QObject m_calls;
};

} // namespace zelvane
