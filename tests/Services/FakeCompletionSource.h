#pragma once

#include "Services/CompletionSource.h"
#include "foundation/Clock.h"
#include "foundation/DescribedError.h"

#include <chrono>
#include <functional>
#include <utility>
#include <vector>

namespace zelvane::test {

/// A model that is asked without a server. Records what it is asked, and answers when its clock
/// says so.
class FakeCompletionSource final : public CompletionSource
{
public:
    struct Asked
    {
        ModelJob job;
        Attempt attempt;

        friend bool operator==(const Asked&, const Asked&) = default;
    };

    explicit FakeCompletionSource(Clock& clock)
        : m_clock(clock)
    {
    }

    [[nodiscard]] SmartOfflineVariant variant() const override { return model; }
    [[nodiscard]] EngineStatus status() const override { return known; }

    [[nodiscard]] QCoro::Task<std::optional<int>> recordedRevision(std::stop_token) override
    {
        ++recordReadings;
        co_return std::as_const(revision);
    }

    [[nodiscard]] QCoro::Task<void> ensureServer(GpuLayers layers, std::stop_token stop) override
    {
        starts.push_back(layers);
        co_await m_clock.sleep(startTime, stop);
        if (startFailure) {
            std::rethrow_exception(startFailure);
        }
    }

    [[nodiscard]] QCoro::Task<QString> requestCompletion(ModelJob job, Attempt attempt,
                                                         std::stop_token stop) override
    {
        asked.push_back({job, attempt});
        const Counted counted(inFlight);
        mostInFlight = std::max(mostInFlight, inFlight);
        const std::chrono::milliseconds time = answerTime(job);
        try {
            co_await m_clock.sleep(time, stop);
        } catch (const CancellationError&) {
            ++cancelled;
            throw;
        }
        co_return answer(job, attempt);
    }

    /// The lines of each request, in order.
    [[nodiscard]] std::vector<QStringList> askedLines() const
    {
        std::vector<QStringList> lines;
        for (const Asked& each : asked) {
            lines.push_back(each.job.lines);
        }
        return lines;
    }

    SmartOfflineVariant model = SmartOfflineVariant::hyMT2_7b;
    EngineStatus known = engine_status::Ready{};
    std::optional<int> revision;
    std::chrono::milliseconds startTime{0};
    std::exception_ptr startFailure;
    /// May throw. Unless told otherwise it answers each line with that line in capitals.
    std::function<QString(const ModelJob&, Attempt)> answer = [](const ModelJob& job, Attempt) {
        return job.lines.join(u'\n').toUpper();
    };
    std::function<std::chrono::milliseconds(const ModelJob&)> answerTime = [](const ModelJob&) {
        return std::chrono::milliseconds(100);
    };

    int recordReadings = 0;
    std::vector<GpuLayers> starts;
    std::vector<Asked> asked;
    int inFlight = 0;
    int mostInFlight = 0;
    int cancelled = 0; ///< requests that were stopped in flight

private:
    /// Counts for as long as it lives.
    class Counted
    {
    public:
        explicit Counted(int& counter)
            : m_counter(counter)
        {
            ++m_counter;
        }
        ~Counted() { --m_counter; }
        Q_DISABLE_COPY_MOVE(Counted)

    private:
        int& m_counter;
    };

    Clock& m_clock;
};

} // namespace zelvane::test
