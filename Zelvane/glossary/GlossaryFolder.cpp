#include "glossary/GlossaryFolder.h"

#include "glossary/GlossaryDirection.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>

namespace zelvane {

namespace {

constexpr QLatin1StringView ending(".tsv");
constexpr QLatin1StringView unfinishedEnding(".tsv.tmp");
constexpr QLatin1StringView downloadEnding(".sqlite3");
constexpr QDir::Filters everything =
    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

/// A link goes, and what it leads to stays.
void removeWhole(const QFileInfo& entry)
{
    if (entry.isDir() && !entry.isSymLink()) {
        QDir(entry.filePath()).removeRecursively();
    } else {
        QFile::remove(entry.filePath());
    }
}

} // namespace

GlossaryFolder::GlossaryFolder(QString applicationSupport)
    : m_edition(glossaryFolder(applicationSupport))
    , m_downloads(m_edition + QStringLiteral("/.downloads"))
    , m_support(std::move(applicationSupport))
{
}

QString GlossaryFolder::file(const QString& directionKey) const
{
    return glossaryFile(m_support, directionKey);
}

QString GlossaryFolder::newDownload() const
{
    return m_downloads + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + downloadEnding;
}

void GlossaryFolder::tidy() const
{
    std::ignore = makePrivateDirectory(m_edition);
    removeOtherEditions();
    if (!QFileInfo::exists(m_downloads)) {
        return;
    }
    try {
        if (const auto lock = tryLock()) {
            removeLeftovers();
        }
    } catch (const FileError&) {
        return; // the first installation will tell
    }
}

void GlossaryFolder::make() const
{
    if (const auto made = makePrivateDirectory(m_downloads); !made) {
        throw FileError(made.error());
    }
}

std::shared_ptr<FileLock> GlossaryFolder::tryLock() const
{
    auto lock = FileLock::tryAcquire(m_downloads + QStringLiteral("/lock"));
    if (!lock) {
        throw FileError(lock.error());
    }
    return *lock ? std::make_shared<FileLock>(std::move(**lock)) : nullptr;
}

InstalledDictionaries GlossaryFolder::list() const
{
    InstalledDictionaries dictionaries;
    const auto entries = QDir(m_edition).entryInfoList(QDir::Files | QDir::Hidden);
    for (const QFileInfo& entry : entries) {
        if (entry.fileName().endsWith(ending)) {
            dictionaries.insert(entry.fileName().chopped(ending.size()), entry.size());
        }
    }
    return dictionaries;
}

bool GlossaryFolder::contains(const QString& directionKey) const
{
    return QFileInfo::exists(file(directionKey));
}

void GlossaryFolder::remove(const QString& directionKey) const
{
    QFile::remove(file(directionKey));
}

void GlossaryFolder::removeOtherEditions() const
{
    const auto entries = QDir(QFileInfo(m_edition).path()).entryInfoList(everything);
    for (const QFileInfo& entry : entries) {
        if (entry.fileName() != glossaryEdition()) {
            removeWhole(entry);
        }
    }
}

void GlossaryFolder::removeLeftovers() const
{
    const auto downloads = QDir(m_downloads).entryInfoList(everything);
    for (const QFileInfo& entry : downloads) {
        if (entry.fileName().endsWith(downloadEnding)) {
            removeWhole(entry);
        }
    }
    const auto dictionaries = QDir(m_edition).entryInfoList(everything);
    for (const QFileInfo& entry : dictionaries) {
        if (entry.fileName().startsWith(u'.') && entry.fileName().endsWith(unfinishedEnding)) {
            removeWhole(entry);
        }
    }
}

} // namespace zelvane
