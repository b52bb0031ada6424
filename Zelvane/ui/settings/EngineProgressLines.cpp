#include "ui/settings/EngineProgressLines.h"

#include "settings/Localization.h"
#include "ui/components/Indicators.h"

#include <algorithm>

namespace zelvane {

namespace {

/// Shorter silences are the network's ordinary breath.
constexpr qint64 noticedIdleSeconds = 10;
constexpr qint64 kilobyte = 1000;
constexpr qint64 megabyte = kilobyte * kilobyte;

/// As the locale has it in the sizes of files.
QString nameOfUnit(qint64 bytes, const QLocale& locale)
{
    QString one = locale.formattedDataSize(bytes, 0, QLocale::DataSizeSIFormat);
    return one.remove(locale.toString(1)).trimmed();
}

QString speedText(qint64 bytesPerSecond)
{
    if (bytesPerSecond < 1) {
        return QStringLiteral("—");
    }
    const QLocale locale = interfaceLocale();
    const bool large = bytesPerSecond >= megabyte;
    const qint64 unit = large ? megabyte : kilobyte;
    return locale.toString(double(bytesPerSecond) / double(unit), 'f', large ? 1 : 0) + u' ' +
           nameOfUnit(unit, locale) + QStringLiteral("/s");
}

QString amountText(const EngineDownloadProgress& progress)
{
    const QString downloaded = byteCountText(progress.downloadedBytes);
    if (!progress.totalBytes) {
        return localizedFormat(QStringLiteral("%@ downloaded"), {downloaded});
    }
    return localizedFormat(QStringLiteral("%@ of %@ downloaded"),
                           {downloaded, byteCountText(*progress.totalBytes)});
}

} // namespace

QList<SymbolLine> engineProgressLines(const EngineDownloadProgress& progress)
{
    QList<SymbolLine> lines{
        {QStringLiteral("arrow.down.circle"), amountText(progress)},
        {QStringLiteral("speedometer"), speedText(progress.bytesPerSecond)},
    };
    if (progress.remainingBytes) {
        lines.append({QStringLiteral("externaldrive"),
                      localizedFormat(QStringLiteral("%@ remaining"),
                                      {byteCountText(*progress.remainingBytes)})});
    }
    QString time =
        localizedFormat(QStringLiteral("Elapsed: %@"), {durationText(progress.elapsedSeconds)});
    if (progress.etaSeconds) {
        lines.append(
            {QStringLiteral("clock"), localizedFormat(QStringLiteral("About %@ remaining"),
                                                      {durationText(*progress.etaSeconds)})});
    }
    lines.append({QStringLiteral("clock"), time});
    if (progress.idleSeconds >= noticedIdleSeconds) {
        lines.append({QStringLiteral("wifi.slash"),
                      localizedFormat(QStringLiteral("No network data for %@. Waiting to resume…"),
                                      {durationText(progress.idleSeconds)})});
    }
    return lines;
}

QString engineProgressPercentage(const EngineDownloadProgress& progress)
{
    if (!progress.totalBytes || *progress.totalBytes < 1) {
        return {};
    }
    return percentageText(double(progress.downloadedBytes) / double(*progress.totalBytes));
}

QString byteCountText(qint64 bytes)
{
    return interfaceLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString durationText(qint64 seconds)
{
    const qint64 whole = std::max<qint64>(seconds, 0);
    const auto padded = [](qint64 number) {
        return QString::number(number).rightJustified(2, u'0');
    };
    const qint64 minutes = whole / 60;
    const QString tail = u':' + padded(whole % 60);
    if (minutes < 60) {
        return QString::number(minutes) + tail;
    }
    return QString::number(minutes / 60) + u':' + padded(minutes % 60) + tail;
}

} // namespace zelvane
