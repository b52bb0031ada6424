#pragma once

#include <QCoroTask>

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace zelvane {

namespace detail {

template <typename T>
struct ConcurrentRun
{
    std::function<QCoro::Task<T>(std::size_t, std::stop_token)> start;
    std::vector<T> results;
    std::size_t next = 0;
    std::stop_source stop;
    std::exception_ptr failure;
};

/// Runs one task after the other until none is left or one has failed, here or in another lane.
template <typename T>
QCoro::Task<void> runLane(std::shared_ptr<ConcurrentRun<T>> run)
{
    while (!run->failure && run->next < run->results.size()) {
        const std::size_t index = run->next++;
        try {
            T result = co_await run->start(index, run->stop.get_token());
            run->results[index] = std::move(result);
        } catch (...) {
            if (!run->failure) {
                run->failure = std::current_exception();
            }
        }
        if (run->failure) {
            run->stop.request_stop();
        }
    }
}

} // namespace detail

/// What `count` tasks yield, in their order. `start` begins the task of an index; the tasks begin
/// in order, each as soon as fewer than `limit` are running. When one fails, the others are asked
/// to stop, and its failure is thrown once all have ended; so it is after a `stop`. All on one
/// thread.
template <typename T>
QCoro::Task<std::vector<T>>
runConcurrently(std::size_t count, std::size_t limit,
                std::function<QCoro::Task<T>(std::size_t, std::stop_token)> start,
                std::stop_token stop)
{
    const auto run = std::make_shared<detail::ConcurrentRun<T>>();
    run->start = std::move(start);
    run->results.resize(count);
    const std::stop_callback onStop(stop, [run] {
        std::stop_source(run->stop).request_stop(); // a copy: `run` may go when the tasks end
    });
    std::vector<QCoro::Task<void>> lanes;
    lanes.reserve(std::min(limit, count));
    while (lanes.size() < std::min(limit, count)) {
        lanes.push_back(detail::runLane(run));
    }
    for (QCoro::Task<void>& lane : lanes) {
        co_await lane;
    }
    if (run->failure) {
        std::rethrow_exception(run->failure);
    }
    co_return std::move(run->results);
}

} // namespace zelvane
