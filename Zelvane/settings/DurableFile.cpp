#include "settings/DurableFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvane {

namespace {

constexpr mode_t privateFile = 0600;
constexpr mode_t privateDirectory = 0700;

std::unexpected<FileFailure> failure(const QString& path, int error = errno)
{
    return std::unexpected(FileFailure{path, qt_error_string(error)});
}

/// Owns an open file.
class Descriptor
{
public:
    Descriptor(const QString& path, int flags)
        : m_descriptor(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, privateFile))
    {
    }
    ~Descriptor()
    {
        if (isOpen()) {
            ::close(m_descriptor);
        }
    }
    Q_DISABLE_COPY_MOVE(Descriptor)

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] int release() { return std::exchange(m_descriptor, -1); }

private:
    int m_descriptor;
};

bool writeAll(int descriptor, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), size_t(bytes.size()));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.sliced(std::max<ssize_t>(written, 0));
    }
    return true;
}

/// Reaches the disk with what was written; on some systems that is more than `fsync` does.
bool syncToDisk(int descriptor)
{
#ifdef F_FULLFSYNC
    if (::fcntl(descriptor, F_FULLFSYNC) == 0) {
        return true;
    }
#endif
    return ::fsync(descriptor) == 0;
}

/// Makes a rename in the directory durable. File systems that can't are left alone: the rename is
/// whole there all the same.
void syncDirectory(const QString& path)
{
    const Descriptor directory(path, O_RDONLY | O_DIRECTORY);
    if (directory.isOpen()) {
        ::fsync(directory.get());
    }
}

} // namespace

std::expected<std::optional<QByteArray>, FileFailure> readFile(const QString& path, qint64 limit)
{
    const Descriptor file(path, O_RDONLY | O_NONBLOCK); // a pipe in its place must not block
    if (!file.isOpen()) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        return failure(path);
    }
    QByteArray bytes;
    QByteArray chunk(65536, Qt::Uninitialized);
    for (;;) {
        const ssize_t count = ::read(file.get(), chunk.data(), size_t(chunk.size()));
        if (count == 0) {
            return bytes;
        }
        if (count < 0 && errno != EINTR) {
            return failure(path);
        }
        bytes.append(chunk.constData(), std::max<ssize_t>(count, 0));
        if (bytes.size() > limit) {
            return failure(path, EFBIG);
        }
    }
}

FileError::FileError(FileFailure failure)
    : m_failure(std::move(failure))
{
}

QString FileError::description() const
{
    return m_failure.path + QStringLiteral(": ") + m_failure.reason;
}

std::expected<DurableFileWriter, FileFailure> DurableFileWriter::create(const QString& path,
                                                                        const QString& temporary)
{
    ::unlink(
        QFile::encodeName(temporary).constData()); // of a process that was killed in the middle
    Descriptor file(temporary, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.isOpen()) {
        return failure(temporary);
    }
    return DurableFileWriter(file.release(), path, temporary);
}

DurableFileWriter::DurableFileWriter(int descriptor, QString path, QString temporary)
    : m_descriptor(descriptor)
    , m_path(std::move(path))
    , m_temporary(std::move(temporary))
{
}

DurableFileWriter::DurableFileWriter(DurableFileWriter&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_path(std::move(other.m_path))
    , m_temporary(std::move(other.m_temporary))
{
}

DurableFileWriter::~DurableFileWriter()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        ::unlink(QFile::encodeName(m_temporary).constData());
    }
}

std::expected<void, FileFailure> DurableFileWriter::append(QByteArrayView bytes)
{
    if (!writeAll(m_descriptor, bytes)) {
        return failure(m_temporary);
    }
    return {};
}

std::expected<void, FileFailure> DurableFileWriter::commit()
{
    if (!syncToDisk(m_descriptor)) {
        return failure(m_temporary);
    }
    if (::rename(QFile::encodeName(m_temporary).constData(),
                 QFile::encodeName(m_path).constData()) != 0) {
        return failure(m_path);
    }
    ::close(std::exchange(m_descriptor, -1));
    syncDirectory(QFileInfo(m_path).path());
    return {};
}

std::expected<void, FileFailure> replaceDurably(const QString& path, const QByteArray& bytes)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const QString target = canonical.isEmpty() ? path : canonical;
    auto writer = DurableFileWriter::create(target, target + QStringLiteral(".new"));
    if (!writer) {
        return std::unexpected(writer.error());
    }
    if (auto written = writer->append(bytes); !written) {
        return written;
    }
    return writer->commit();
}

std::expected<void, FileFailure> makePrivateDirectory(const QString& path)
{
    if (QFileInfo(path).isDir()) {
        return {};
    }
    const QString parent = QFileInfo(path).path();
    if (parent != path) {
        if (auto made = makePrivateDirectory(parent); !made) {
            return made;
        }
    }
    const QByteArray name = QFile::encodeName(path);
    if (::mkdir(name.constData(), privateDirectory) != 0 && errno != EEXIST) {
        return failure(path);
    }
    return {};
}

std::expected<FileLock, FileFailure> FileLock::acquire(const QString& path,
                                                       std::chrono::milliseconds limit)
{
    constexpr auto pause = std::chrono::milliseconds(5);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        auto lock = tryAcquire(path);
        if (!lock) {
            return std::unexpected(lock.error());
        }
        if (*lock) {
            return std::move(**lock);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return failure(path, EWOULDBLOCK);
        }
        std::this_thread::sleep_for(pause);
    }
}

std::expected<std::optional<FileLock>, FileFailure> FileLock::tryAcquire(const QString& path)
{
    Descriptor file(path, O_RDWR | O_CREAT);
    if (!file.isOpen()) {
        return failure(path);
    }
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            return std::nullopt;
        }
        if (errno != EINTR) {
            return failure(path);
        }
    }
    return FileLock(file.release());
}

FileLock::FileLock(int descriptor)
    : m_descriptor(descriptor)
{
}

FileLock::FileLock(FileLock&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FileLock::~FileLock()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor); // gives the lock up
    }
}

} // namespace zelvane
