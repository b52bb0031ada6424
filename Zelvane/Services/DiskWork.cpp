#include "Services/DiskWork.h"

#include "Services/EngineError.h"

#include <QDir>
#include <QFile>
#include <QStorageInfo>
#include <QUuid>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace zelvane {

namespace {

namespace fs = std::filesystem;

fs::path native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

[[noreturn]] void fail(const QString& path, const QString& reason)
{
    throw EngineError(0, path + QStringLiteral(": ") + reason);
}

void failIf(const std::error_code& error, const QString& path)
{
    if (error) {
        fail(path, qt_error_string(error.value()));
    }
}

/// A hidden folder beside the one that was taken away.
QString prefixOfRemains(const QString& name)
{
    return u'.' + name + QStringLiteral(".removed-");
}

void sync(const fs::path& path, int flags)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags);
    if (descriptor < 0) {
        return; // what can't be read here was not written by this program
    }
    const int error = ::fsync(descriptor) == 0 ? 0 : errno;
    ::close(descriptor);
    const bool isUnsupported = error == EINVAL || error == EROFS;
    if (error != 0 && !isUnsupported) {
        fail(QFile::decodeName(path.c_str()), qt_error_string(error));
    }
}

} // namespace

void makeFolder(const QString& path)
{
    throwIfFailed(makePrivateDirectory(path));
}

void removeAll(const QString& path)
{
    std::error_code ignored;
    fs::remove_all(native(path), ignored);
}

QString takeAway(const QString& root, const QString& name)
{
    const QString remains =
        root + u'/' + prefixOfRemains(name) + QUuid::createUuid().toString(QUuid::Id128);
    std::error_code failed;
    fs::rename(native(root + u'/' + name), native(remains), failed);
    return failed ? QString() : remains;
}

QStringList remainsOf(const QString& root, const QString& name)
{
    const QDir folder(root);
    QStringList remains;
    for (const QString& entry : folder.entryList(
             {prefixOfRemains(name) + u'*'}, QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot)) {
        remains += folder.filePath(entry);
    }
    return remains;
}

void syncAll(const QString& folder)
{
    std::error_code failed;
    sync(native(folder), O_DIRECTORY);
    fs::recursive_directory_iterator entry(native(folder), failed);
    for (; !failed && entry != fs::recursive_directory_iterator(); entry.increment(failed)) {
        if (entry->is_symlink(failed)) {
            continue;
        }
        if (entry->is_directory(failed)) {
            sync(entry->path(), O_DIRECTORY);
        } else if (entry->is_regular_file(failed)) {
            sync(entry->path(), 0);
        }
    }
    failIf(failed, folder);
}

void renameDurably(const QString& from, const QString& to)
{
    std::error_code failed;
    fs::rename(native(from), native(to), failed);
    failIf(failed, to);
    sync(native(to).parent_path(), O_DIRECTORY);
}

void makeExecutable(const QString& path)
{
    std::error_code failed;
    fs::permissions(native(path), fs::perms(0755), failed);
    failIf(failed, path);
}

void writeMark(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        fail(path, file.errorString());
    }
    file.close();
    sync(native(path).parent_path(), O_DIRECTORY);
}

qint64 freeBytes(const QString& path)
{
    const QStorageInfo storage(path);
    return storage.isValid() ? storage.bytesAvailable() : std::numeric_limits<qint64>::max();
}

void throwIfFailed(const std::expected<void, FileFailure>& result)
{
    if (!result) {
        fail(result.error().path, result.error().reason);
    }
}

} // namespace zelvane
