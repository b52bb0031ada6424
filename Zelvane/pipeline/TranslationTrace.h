#pragma once

#include "foundation/Clock.h"

#include <QMap>
#include <QString>

#include <mutex>
#include <optional>
#include <vector>

namespace zelvane {

/// Tells where the time of the last translation went: in this program or at its engine.
///
/// One recorder for the whole process, restarted by every flow that translates. It lives in memory
/// only. The flows record counts and names, no text of the user's; a failure's description may
/// quote what a server complains about. Callable from any thread.
class TranslationTrace
{
public:
    struct Event
    {
        QString label;
        /// Monotonic time in seconds.
        double at = 0;
        /// A short remark such as "180 ms".
        std::optional<QString> detail;
    };

    /// `clock` must outlive this object.
    explicit TranslationTrace(const Clock& clock);

    /// Forgets the last run and starts one with the single event "start" and these facts.
    void begin(const QMap<QString, QString>& meta);

    void mark(const QString& label, const std::optional<QString>& detail = std::nullopt);

    /// Stores one fact about the run, overwriting.
    void setMeta(const QString& key, const QString& value);

    /// The timeline, the durations and the verdict, as plain text without a final newline.
    [[nodiscard]] QString report() const;

private:
    [[nodiscard]] double seconds() const;

    const Clock& m_clock;
    mutable std::mutex m_lock;
    double m_startedAt = 0;
    std::vector<Event> m_events;
    QMap<QString, QString> m_meta;
};

} // namespace zelvane
