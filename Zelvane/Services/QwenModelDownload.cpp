#include "Services/QwenModelDownload.h"

#include "pipeline/TranslationError.h"

#include <algorithm>
#include <utility>

namespace zelvane {

QwenModelDownload::QwenModelDownload(HttpTransport& transport, Clock& clock, QString destination,
                                     qint64 maximalBytes, std::function<void(Progress)> progress)
    : m_transport(transport)
    , m_clock(clock)
    , m_destination(std::move(destination))
    , m_maximalBytes(maximalBytes)
    , m_progress(std::move(progress))
{
}

QCoro::Task<void> QwenModelDownload::start(QUrl url, std::stop_token stop)
{
    HttpRequest request;
    request.url = std::move(url);
    request.timeout = requestTimeout;
    request.totalTimeout = resourceTimeout;
    request.maximalBodySize = m_maximalBytes;

    const auto listener = [&clock = m_clock, startedAt = m_clock.monotonicNow(),
                           progress = m_progress](DownloadProgress download) {
        const auto elapsed =
            std::chrono::floor<std::chrono::seconds>(clock.monotonicNow() - startedAt);
        const qint64 seconds = std::max<qint64>(elapsed.count(), 1);
        progress({download.writtenBytes, download.expectedBytes, download.writtenBytes / seconds,
                  seconds});
    };
    const HttpResponse response =
        co_await m_transport.download(std::move(request), m_destination, listener, std::move(stop));
    validateHTTPResponse(response.status, response.body);
}

} // namespace zelvane
