#include "cli/EngineProgress.h"

#include <QLocale>

#include <utility>

namespace zelvane {

namespace {

/// To the start of the line, and nothing behind it.
constexpr const char* clearLine = "\r\x1b[K";

QString shownSize(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString shownTime(qint64 seconds)
{
    const qint64 hours = seconds / 3600;
    const auto twoDigits = [](qint64 number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    const QString end = twoDigits(seconds % 60);
    const qint64 minutes = seconds / 60 % 60;
    return hours > 0 ? QStringLiteral("%1:%2:%3").arg(hours).arg(twoDigits(minutes), end)
                     : QStringLiteral("%1:%2").arg(minutes).arg(end);
}

} // namespace

QString shownDownload(const EngineDownloadProgress& progress)
{
    QString text = shownSize(progress.downloadedBytes);
    if (progress.totalBytes && *progress.totalBytes > 0) {
        const qint64 percent = progress.downloadedBytes * 100 / *progress.totalBytes;
        text += QStringLiteral(" of %1 (%2 %)").arg(shownSize(*progress.totalBytes)).arg(percent);
    }
    text += QStringLiteral(", %1/s").arg(shownSize(progress.bytesPerSecond));
    if (progress.etaSeconds) {
        text += QStringLiteral(", %1 left").arg(shownTime(*progress.etaSeconds));
    }
    return text;
}

EngineProgress::EngineProgress(EngineState& state, const CommandStreams& streams, Style style)
    : m_state(state)
    , m_streams(streams)
    , m_style(style)
    , m_onStatus(state.status.addNotifier([this] { show(); }))
    , m_onDownload(state.downloadProgress.addNotifier([this] { show(); }))
{
}

EngineProgress::~EngineProgress()
{
    if (m_style == Style::oneLine && !m_shown.isEmpty()) {
        m_streams.error.write(clearLine);
    }
}

void EngineProgress::show()
{
    const EngineStatus status = m_state.status;
    const auto* installing = std::get_if<engine_status::Installing>(&status);
    if (installing == nullptr) {
        return;
    }
    const auto progress = m_state.downloadProgress.value();
    const QString amount = progress ? QStringLiteral(" ") + shownDownload(*progress) : QString();
    if (m_style == Style::oneLine) {
        print(installing->message + amount);
        return;
    }
    if (std::exchange(m_step, installing->message) != installing->message) {
        print(installing->message);
    }
    if (progress && progress->totalBytes && *progress->totalBytes > 0) {
        const qint64 tenths = progress->downloadedBytes * 10 / *progress->totalBytes;
        if (std::exchange(m_tenths, std::max(tenths, m_tenths)) < tenths) {
            print(installing->message + amount);
        }
    }
}

void EngineProgress::print(const QString& text)
{
    if (std::exchange(m_shown, text) == text) {
        return;
    }
    if (m_style == Style::oneLine) {
        m_streams.error.write(clearLine + text.toUtf8());
    } else {
        m_streams.error.write(text.toUtf8() + '\n');
    }
}

} // namespace zelvane
