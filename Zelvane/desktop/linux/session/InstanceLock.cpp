#include "desktop/linux/session/InstanceLock.h"

#include <QDir>
#include <QFile>

#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvane {

namespace {

/// A folder that only this user can write to; of others it may be a trap.
bool isOwn(const QString& folder)
{
    struct stat found = {};
    return ::lstat(QFile::encodeName(folder).constData(), &found) == 0 && S_ISDIR(found.st_mode) &&
           found.st_uid == ::geteuid() && (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace

QString InstanceLock::usualFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(runtime) && isOwn(runtime)) {
        return runtime;
    }
    const QString own = QDir::tempPath() + QStringLiteral("/zelvane-desk-%1").arg(::geteuid());
    ::mkdir(QFile::encodeName(own).constData(), S_IRWXU);
    return own;
}

InstanceLock::InstanceLock(const QString& folder, const QString& name)
    : m_path(isOwn(folder) ? folder + u'/' + name + QStringLiteral(".lock") : QString())
{
}

InstanceLock::~InstanceLock()
{
    release();
}

int InstanceLock::openFile() const
{
    if (m_path.isEmpty()) {
        return -1;
    }
    return ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                  S_IRUSR | S_IWUSR);
}

bool InstanceLock::claim()
{
    if (m_file >= 0) {
        return true;
    }
    const int file = openFile();
    if (file < 0) {
        return true; // nowhere to put a lock: better two programs than none
    }
    if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        ::close(file);
        return false;
    }
    m_file = file;
    const QByteArray number = QByteArray::number(qint64(::getpid())) + '\n';
    if (::ftruncate(file, 0) != 0 ||
        ::pwrite(file, number.constData(), size_t(number.size()), 0) < 0) {
        // The lock holds all the same; only its message lacks the number.
    }
    return true;
}

void InstanceLock::release()
{
    if (const int file = std::exchange(m_file, -1); file >= 0) {
        ::close(file);
    }
}

bool InstanceLock::isHeldByAnother() const
{
    if (m_file >= 0 || !QFile::exists(m_path)) {
        return false;
    }
    const int file = openFile();
    // Shared, so that two who look don't take each other for the holder.
    const bool held = file >= 0 && ::flock(file, LOCK_SH | LOCK_NB) != 0;
    if (file >= 0) {
        ::close(file);
    }
    return held;
}

std::optional<qint64> InstanceLock::holder() const
{
    QFile file(m_path);
    if (m_path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    constexpr qint64 mostDigits = 20;
    bool isNumber = false;
    const qint64 process = file.read(mostDigits).trimmed().toLongLong(&isNumber);
    return isNumber && process > 0 ? std::optional(process) : std::nullopt;
}

} // namespace zelvane
