#include "Services/InstallLock.h"

#include "Services/EngineError.h"

#include <QCoreApplication>
#include <QFile>

#include <utility>

namespace zelvane {

namespace {

/// Who only looks holds the lock for a moment, which an installation waits out.
constexpr std::chrono::milliseconds patience{500};

const QByteArray cancelLine = QByteArrayLiteral("cancel\n");

bool write(const QString& path, QIODevice::OpenMode mode, const QByteArray& line)
{
    QFile file(path);
    return file.open(mode) && file.write(line) == line.size() && file.flush();
}

} // namespace

QString InstallLock::path(const QString& root, const QString& name)
{
    return root + QStringLiteral("/.") + name + QStringLiteral(".lock");
}

InstallLock::InstallLock(FileLock lock)
    : m_lock(std::move(lock))
{
}

std::optional<InstallLock> InstallLock::acquire(const QString& path)
{
    auto lock = FileLock::acquire(path, patience);
    if (!lock) {
        if (QFile(path).open(QIODevice::ReadWrite)) {
            return std::nullopt;
        }
        throw EngineError(0, path + QStringLiteral(": ") + lock.error().reason);
    }
    // The process is for people who look; a request to cancel the last installation goes.
    const QByteArray holder = QByteArray::number(QCoreApplication::applicationPid()) + '\n';
    write(path, QIODevice::WriteOnly | QIODevice::Truncate, holder);
    return InstallLock(std::move(*lock));
}

bool InstallLock::isHeld(const QString& path)
{
    return QFile::exists(path) && !FileLock::acquire(path, {}).has_value();
}

bool InstallLock::requestCancel(const QString& path)
{
    return isHeld(path) && write(path, QIODevice::WriteOnly | QIODevice::Append, cancelLine);
}

bool InstallLock::isCancelRequested(const QString& path)
{
    const auto bytes = readFile(path, 4096);
    return bytes && *bytes && (*bytes)->endsWith(cancelLine);
}

} // namespace zelvane
