#include "pipeline/TranslationTrace.h"

#include <QStringList>

#include <cmath>

namespace zelvane {

namespace {

/// A span in whole milliseconds, halves away from zero.
qint64 milliseconds(double seconds)
{
    return static_cast<qint64>(std::round(seconds * 1000.0));
}

struct Durations
{
    qint64 before = 0;
    qint64 api = 0;
    qint64 after = 0;
    qint64 total = 0;
};

/// Splits the run at the last begin and the last end of a call to an engine.
Durations durations(const std::vector<TranslationTrace::Event>& events)
{
    const double start = events.front().at;
    std::optional<double> begin;
    std::optional<double> end;
    for (const TranslationTrace::Event& event : events) {
        if (event.label.startsWith(u"API begin")) {
            begin = event.at;
        } else if (event.label.startsWith(u"API end") ||
                   (event.label.startsWith(u"API attempt") && event.label.contains(u"end"))) {
            end = event.at;
        }
    }
    Durations result;
    result.total = milliseconds(events.back().at - start);
    if (!begin) {
        result.before = result.total;
    } else if (!end) {
        result.before = milliseconds(*begin - start);
        result.api = std::max<qint64>(0, result.total - result.before);
    } else {
        result.before = milliseconds(*begin - start);
        result.api = milliseconds(*end - *begin);
        result.after = std::max<qint64>(0, result.total - result.before - result.api);
    }
    return result;
}

QString verdict(const Durations& spans)
{
    const qint64 app = spans.before + spans.after;
    if (spans.api >= 3 * std::max<qint64>(app, 1)) {
        return QStringLiteral("verdict: delay is in the AI provider / model request");
    }
    if (spans.api < app) {
        return QStringLiteral("verdict: delay is mostly in the app (capture / paste / waits)");
    }
    return QStringLiteral("verdict: time is split between the app and the AI request");
}

} // namespace

TranslationTrace::TranslationTrace(const Clock& clock)
    : m_clock(clock)
{
}

double TranslationTrace::seconds() const
{
    return std::chrono::duration<double>(m_clock.monotonicNow()).count();
}

void TranslationTrace::begin(const QMap<QString, QString>& meta)
{
    const std::scoped_lock lock(m_lock);
    m_startedAt = seconds();
    m_events.clear();
    m_events.push_back({QStringLiteral("start"), m_startedAt, std::nullopt});
    m_meta = meta;
}

void TranslationTrace::mark(const QString& label, const std::optional<QString>& detail)
{
    const std::scoped_lock lock(m_lock);
    m_events.push_back({label, seconds(), detail});
}

void TranslationTrace::setMeta(const QString& key, const QString& value)
{
    const std::scoped_lock lock(m_lock);
    m_meta.insert(key, value);
}

QString TranslationTrace::report() const
{
    std::vector<Event> events;
    QMap<QString, QString> meta;
    {
        const std::scoped_lock lock(m_lock);
        events = m_events;
        meta = m_meta;
    }
    if (events.empty()) {
        return QStringLiteral("Zelvane · no timing data for the last translation");
    }

    const QString generated =
        m_clock.now().toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ"));
    QStringList lines{QStringLiteral("Zelvane · translation timing"),
                      QStringLiteral("generated: ") + generated};
    for (auto fact = meta.cbegin(); fact != meta.cend(); ++fact) {
        lines += fact.key() + QStringLiteral(": ") + fact.value();
    }
    lines += {QString(), QStringLiteral("timeline (ms from start):")};
    for (const Event& event : events) {
        const QString time = QString::number(milliseconds(event.at - events.front().at));
        QString line =
            QStringLiteral("  ") + time.rightJustified(6) + QStringLiteral("  ") + event.label;
        if (event.detail && !event.detail->isEmpty()) {
            line += QStringLiteral(" · ") + *event.detail;
        }
        lines += line;
    }

    const Durations spans = durations(events);
    const auto duration = [](const QString& label, qint64 value) {
        return label + QString::number(value) + QStringLiteral(" ms");
    };
    lines += {QString(),
              QStringLiteral("durations:"),
              duration(QStringLiteral("  app before API: "), spans.before),
              duration(QStringLiteral("  API / model: "), spans.api),
              duration(QStringLiteral("  app after API: "), spans.after),
              duration(QStringLiteral("  total: "), spans.total),
              QString(),
              verdict(spans)};
    return lines.join(u'\n');
}

} // namespace zelvane
