#pragma once

#include "http/HttpTransport.h"

#include <QQueue>

#include <functional>
#include <vector>

namespace zelvane::test {

/// Records requests and answers them from a script, without any network and at once.
class FakeHttpTransport final : public HttpTransport
{
public:
    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override
    {
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        m_requests.push_back(request);
        if (m_script.isEmpty()) {
            throw TransportError(TransportError::Kind::connection,
                                 QStringLiteral("nothing is scripted"));
        }
        co_return m_script.dequeue()();
    }

    void answer(int status, const QByteArray& body)
    {
        m_script.enqueue([status, body] { return HttpResponse{status, {}, body}; });
    }
    template <typename E>
    void fail(E error)
    {
        m_script.enqueue([error]() -> HttpResponse { throw error; });
    }

    [[nodiscard]] const std::vector<HttpRequest>& requests() const { return m_requests; }

private:
    QQueue<std::function<HttpResponse()>> m_script;
    std::vector<HttpRequest> m_requests;
};

} // namespace zelvane::test
