#include "cli/GlossaryProgress.h"

#include <QLocale>

namespace zelvane {

namespace {

/// To the start of the line, and nothing behind it.
constexpr const char* clearLine = "\r\x1b[K";

QString shownSize(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

} // namespace

GlossaryProgress::GlossaryProgress(GlossaryManager& manager, const GlossaryPackage& package,
                                   const CommandStreams& streams, Style style)
    : m_manager(manager)
    , m_package(package)
    , m_key(package.key())
    , m_streams(streams)
    , m_style(style)
    , m_onActivity(manager.bindableActivities().addNotifier([this] { show(); }))
    , m_onDownload(manager.bindableDownloads().addNotifier([this] { show(); }))
{
}

GlossaryProgress::~GlossaryProgress()
{
    if (m_style == Style::oneLine && !m_shown.isEmpty()) {
        m_streams.error.write(clearLine);
    }
}

void GlossaryProgress::show()
{
    const QString told = step();
    if (told.isEmpty()) {
        return;
    }
    const QString text = m_style == Style::oneLine ? told + amount() : told;
    if (std::exchange(m_shown, text) == text) {
        return;
    }
    if (m_style == Style::oneLine) {
        m_streams.error.write(clearLine + text.toUtf8());
    } else {
        m_streams.error.write(text.toUtf8() + '\n');
    }
}

QString GlossaryProgress::step() const
{
    const auto activities = m_manager.activities();
    const auto activity = activities.constFind(m_key);
    if (activity == activities.cend()) {
        return {};
    }
    if (const auto* downloading = std::get_if<GlossaryManager::Downloading>(&*activity)) {
        return QStringLiteral("Downloading ") + direction(downloading->languageCode);
    }
    if (const auto* preparing = std::get_if<GlossaryManager::Preparing>(&*activity)) {
        return QStringLiteral("Preparing ") + direction(preparing->languageCode);
    }
    return {};
}

QString GlossaryProgress::amount() const
{
    const auto downloads = m_manager.downloads();
    const auto download = downloads.constFind(m_key);
    if (download == downloads.cend()) {
        return {};
    }
    const QString written = QStringLiteral(": ") + shownSize(download->writtenBytes);
    if (!download->expectedBytes || *download->expectedBytes <= 0) {
        return written;
    }
    const qint64 percent = download->writtenBytes * 100 / *download->expectedBytes;
    return written + QStringLiteral(" of %1 (%2 %)")
                         .arg(shownSize(*download->expectedBytes), QString::number(percent));
}

QString GlossaryProgress::direction(const QString& targetCode) const
{
    const bool isForward = m_package.target.code == targetCode;
    const GlossaryLanguage& from = isForward ? m_package.source : m_package.target;
    const GlossaryLanguage& to = isForward ? m_package.target : m_package.source;
    return QStringLiteral("%1 to %2").arg(from.name, to.name);
}

} // namespace zelvane
