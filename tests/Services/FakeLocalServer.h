#pragma once

#include "foundation/Completion.h"
#include "http/HttpTransport.h"

#include <vector>

namespace zelvane::test {

/// A local model's server behind the transport: healthy or not as the test says, with answers that
/// wait for the test.
class FakeLocalServer final : public HttpTransport
{
public:
    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override
    {
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        requests.push_back(request);
        if (request.url.path() == QStringLiteral("/health")) {
            if (health == 0) {
                throw TransportError(TransportError::Kind::connection, QStringLiteral("refused"));
            }
            co_return HttpResponse{health, {}, {}};
        }
        const Completion<HttpResponse> answer;
        answers.push_back(answer);
        const std::stop_callback onStop(stop, [answer] { answer.fail(CancellationError()); });
        co_return co_await answer.result();
    }
    [[nodiscard]] QCoro::Task<HttpResponse> download(HttpRequest, QString, DownloadListener,
                                                     std::stop_token) override
    {
        throw TransportError(TransportError::Kind::connection, QStringLiteral("none"));
    }

    int health = 0; ///< the status; 0 if nobody listens
    std::vector<HttpRequest> requests;
    std::vector<Completion<HttpResponse>> answers;
};

/// How a task went.
struct Outcome
{
    bool hasEnded = false;
    std::exception_ptr failure;

    [[nodiscard]] bool isSuccess() const { return hasEnded && !failure; }
    /// The failure, if it is an `E`.
    template <typename E>
    [[nodiscard]] std::optional<E> as() const
    {
        try {
            if (failure) {
                std::rethrow_exception(failure);
            }
        } catch (const E& error) {
            return error;
        } catch (...) {
        }
        return std::nullopt;
    }
};

template <typename T>
QCoro::Task<void> follow(QCoro::Task<T> task, std::shared_ptr<Outcome> outcome)
{
    try {
        co_await task;
    } catch (...) {
        outcome->failure = std::current_exception();
    }
    outcome->hasEnded = true;
}

/// Lets `task` run and tells how it goes.
template <typename T>
std::shared_ptr<Outcome> watch(QCoro::Task<T> task)
{
    auto outcome = std::make_shared<Outcome>();
    follow(std::move(task), outcome);
    return outcome;
}

} // namespace zelvane::test
