#pragma once

#include "foundation/Completion.h"
#include "http/HttpTransport.h"

#include <QFile>
#include <QQueue>

#include <functional>
#include <vector>

namespace zelvane::test {

/// A download that a test carries out by hand.
struct HeldDownload
{
    HttpRequest request;
    QString destination;
    DownloadListener progress;
    /// Ends the download; the test writes the file, if there is to be one.
    Completion<HttpResponse> outcome;
};

/// Records requests and answers them from a script, without any network and at once.
class FakeHttpTransport final : public HttpTransport
{
public:
    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override
    {
        co_return next(request, stop);
    }

    /// The scripted body becomes the file, in one piece, if the status says so.
    [[nodiscard]] QCoro::Task<HttpResponse> download(HttpRequest request, QString destination,
                                                     DownloadListener progress,
                                                     std::stop_token stop) override
    {
        if (m_holdsDownloads) {
            co_return co_await hold({request, destination, progress, {}}, stop);
        }
        HttpResponse response = next(request, stop);
        if (response.status >= 200 && response.status < 300) {
            write(destination, response.body);
            if (progress) {
                progress({response.body.size(), response.body.size()});
            }
            response.body.clear();
        }
        co_return response;
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
    /// From now on downloads wait in `heldDownloads` for the test, whatever is scripted.
    void holdDownloads() { m_holdsDownloads = true; }

    [[nodiscard]] const std::vector<HttpRequest>& requests() const { return m_requests; }
    /// In the order of their beginning, those that have ended included.
    [[nodiscard]] const std::vector<HeldDownload>& heldDownloads() const { return m_held; }

private:
    HttpResponse next(const HttpRequest& request, const std::stop_token& stop)
    {
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        m_requests.push_back(request);
        if (m_script.isEmpty()) {
            throw TransportError(TransportError::Kind::connection,
                                 QStringLiteral("nothing is scripted"));
        }
        return m_script.dequeue()();
    }

    QCoro::Task<HttpResponse> hold(HeldDownload held, std::stop_token stop)
    {
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        m_requests.push_back(held.request);
        m_held.push_back(held);
        const Completion<HttpResponse> outcome = held.outcome;
        const std::stop_callback onStop(stop, [outcome] { outcome.fail(CancellationError()); });
        co_return co_await outcome.result();
    }

    static void write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            throw TransportError(TransportError::Kind::storage, file.errorString());
        }
    }

    QQueue<std::function<HttpResponse()>> m_script;
    std::vector<HttpRequest> m_requests;
    std::vector<HeldDownload> m_held;
    bool m_holdsDownloads = false;
};

} // namespace zelvane::test
