#include "Services/EngineFiles.h"

#include "Services/EngineRecord.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>
#include <utility>

namespace zelvane {

namespace {

namespace fs = std::filesystem;

qint64 sizeOf(const fs::directory_entry& entry)
{
    std::error_code failed;
    const fs::file_status status = entry.symlink_status(failed);
    if (failed || !fs::is_regular_file(status)) {
        return 0;
    }
    const auto size = entry.file_size(failed);
    return failed ? 0 : qint64(size);
}

} // namespace

QString engineRootDirectory(const FileSystemLocations& locations)
{
    return locations.applicationSupportDirectory();
}

qint64 folderSize(const QString& folder)
{
    qint64 size = 0;
    std::error_code failed;
    fs::recursive_directory_iterator entry(QFile::encodeName(folder).toStdString(),
                                           fs::directory_options::skip_permission_denied, failed);
    for (; !failed && entry != fs::recursive_directory_iterator(); entry.increment(failed)) {
        size += sizeOf(*entry);
    }
    return size;
}

EngineFiles::EngineFiles(QString root, SmartOfflineVariantFacts facts)
    : m_root(std::move(root))
    , m_facts(std::move(facts))
{
}

QString EngineFiles::folder() const
{
    return m_root + u'/' + m_facts.folder;
}

QString EngineFiles::record() const
{
    return folder() + QStringLiteral("/READY");
}

QString EngineFiles::modelFolder() const
{
    return folder() + QStringLiteral("/model");
}

QString EngineFiles::model() const
{
    return modelFolder() + u'/' + m_facts.modelFile;
}

QString EngineFiles::partialModel() const
{
    return model() + QStringLiteral(".partial");
}

QString EngineFiles::runtime() const
{
    return folder() + QStringLiteral("/runtime");
}

QString EngineFiles::serverFolder() const
{
    return runtime() + u'/' + llamaBuild();
}

QString EngineFiles::server() const
{
    return serverFolder() + QStringLiteral("/llama-server");
}

QString EngineFiles::unpackingMark() const
{
    return runtime() + QStringLiteral("/UNPACKING");
}

bool EngineFiles::hasServer() const
{
    const QFileInfo file(server());
    return file.isFile() && file.isExecutable() && !QFileInfo::exists(unpackingMark());
}

bool EngineFiles::hasWholeModel() const
{
    const QFileInfo file(model());
    return file.isFile() && file.size() == m_facts.expectedModelBytes;
}

bool EngineFiles::isComplete() const
{
    return readEngineRevision(record()) == engineRevision && hasServer() && hasWholeModel();
}

std::expected<void, FileFailure> EngineFiles::writeReadyRecord() const
{
    return replaceDurably(record(), encodeEngineRecord(m_facts));
}

} // namespace zelvane
