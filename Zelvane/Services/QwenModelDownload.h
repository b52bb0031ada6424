#pragma once

#include "foundation/Clock.h"
#include "http/HttpTransport.h"

#include <QUrl>

#include <chrono>
#include <functional>

namespace zelvane {

/// The download of one model, and how fast it is. Main thread.
class QwenModelDownload
{
public:
    struct Progress
    {
        qint64 writtenBytes = 0;
        std::optional<qint64> expectedBytes; ///< none if the server doesn't tell
        qint64 bytesPerSecond = 0;           ///< since the beginning
        qint64 elapsedSeconds = 1;           ///< at least 1

        friend bool operator==(const Progress&, const Progress&) = default;
    };

    /// Time without a byte after which the download fails. Nothing else notices a server that has
    /// stopped sending.
    static constexpr std::chrono::seconds requestTimeout{120};
    static constexpr std::chrono::seconds resourceTimeout{86400};

    /// The file goes to `destination`; one of more than `maximalBytes` is given up. `transport` and
    /// `clock` must outlive this object and its download.
    QwenModelDownload(HttpTransport& transport, Clock& clock, QString destination,
                      qint64 maximalBytes, std::function<void(Progress)> progress);

    /// Brings the file. Throws `TransportError`, `TranslationError::http` or `CancellationError`;
    /// there is no file then. To be called once; this object may go meanwhile.
    [[nodiscard]] QCoro::Task<void> start(QUrl url, std::stop_token stop);

private:
    HttpTransport& m_transport;
    Clock& m_clock;
    QString m_destination;
    qint64 m_maximalBytes;
    std::function<void(Progress)> m_progress;
};

} // namespace zelvane
