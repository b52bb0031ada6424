#pragma once

#include "foundation/DescribedError.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

#include <stop_token>

namespace zelvane {

/// Why the program in the desktop session did not do what it was asked for, in a sentence.
class RunningProgramError final : public DescribedError
{
public:
    explicit RunningProgramError(QString sentence)
        : m_sentence(std::move(sentence))
    {
    }
    [[nodiscard]] QString description() const override { return m_sentence; }

private:
    QString m_sentence;
};

/// The program that runs in the user's desktop session, as a command reaches it.
///
/// All calls return at once and end on the calling thread, which must run an event loop; they throw
/// `RunningProgramError`, and `CancellationError` once `stop` was asked for. What was begun goes on
/// in the program all the same.
class RunningProgram
{
public:
    struct Status
    {
        QString status;
        bool isBusy = false;
        /// Empty if the last translation has not failed.
        QString lastError;
        QString version;
        /// Source and target of all pairs, in their order, and their identifiers.
        QStringList pairs;
        QStringList pairIDs;
    };

    RunningProgram() = default;
    virtual ~RunningProgram() = default;
    Q_DISABLE_COPY_MOVE(RunningProgram)

    /// `entry` is the name of a service: "translatePair1", "translatePair3UI".
    [[nodiscard]] virtual QCoro::Task<QString> translate(QString entry, QString text,
                                                         std::stop_token stop) = 0;
    /// `which` is a pair's place in the list, from 1, or its identifier.
    [[nodiscard]] virtual QCoro::Task<void> triggerPair(QString which, std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<void> showTranslationWindow(std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<void> showSettings(std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<Status> status(std::stop_token stop) = 0;
};

} // namespace zelvane
