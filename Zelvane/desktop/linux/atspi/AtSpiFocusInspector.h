#pragma once

#include "desktop/FocusInspector.h"
#include "desktop/linux/atspi/AtSpiWatcher.h"
#include "foundation/Clock.h"
#include "foundation/Completion.h"

#include <QHash>
#include <QObject>

#include <chrono>
#include <optional>

namespace zelvane {

/// The focused element as programs tell it over AT-SPI.
///
/// It switches accessibility on for the session ("IsEnabled" of org.a11y.Status), and leaves it on:
/// programs of Qt look at it when they start and otherwise expose nothing, so that for those the
/// answer is only known from their next start on. It doesn't claim to be a screen reader, which
/// would make programs speak.
///
/// Main thread; the programs are asked on a thread of its own.
class AtSpiFocusInspector final : public FocusInspector
{
public:
    /// No answer takes longer.
    static constexpr std::chrono::milliseconds timeLimit{300};

    /// The session bus that the environment names; empty if it names none.
    [[nodiscard]] static QString sessionBusAddress();

    /// Connects in the background. `clock` must outlive this object.
    explicit AtSpiFocusInspector(Clock& clock, const QString& busAddress = sessionBusAddress());
    /// Ends waiting calls with none.
    ~AtSpiFocusInspector() override;

    [[nodiscard]] QCoro::Task<std::optional<FocusedElement>> focusedElement() override;

    /// A sentence for the user that says what is missing and what still works; none while nothing
    /// is known to be missing. A missing bus is looked for again at each call of `focusedElement`.
    [[nodiscard]] std::optional<QString> unavailable() const;

private:
    void settle(quint64 call, const std::optional<FocusedElement>& element);

    Clock& m_clock;
    QHash<quint64, Completion<std::optional<FocusedElement>>> m_waiting;
    quint64 m_lastCall = 0;
    /// Answers are handed to the main thread through it. Outlives the watcher.
    QObject m_mainThread;
    AtSpiWatcher m_watcher;
};

} // namespace zelvane
