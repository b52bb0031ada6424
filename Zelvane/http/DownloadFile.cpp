#include "http/DownloadFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvane {

namespace {

constexpr int noDescriptor = -1;

std::unexpected<NetworkFailure> failure(int error)
{
    const bool isFull = error == ENOSPC || error == EDQUOT;
    return std::unexpected(isFull ? NetworkFailure::diskFull : NetworkFailure::notStored);
}

bool isRegularFile(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

std::expected<DownloadFile, NetworkFailure> DownloadFile::create(const QString& path)
{
    // A pipe in its place must not block, and a link must not lead elsewhere.
    constexpr int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int descriptor = ::open(QFile::encodeName(path).constData(), flags, 0600);
    if (descriptor < 0) {
        return failure(errno);
    }
    if (!isRegularFile(descriptor) || ::ftruncate(descriptor, 0) != 0) {
        ::close(descriptor);
        return failure(EINVAL);
    }
    return DownloadFile(descriptor, path);
}

DownloadFile::DownloadFile(int descriptor, QString path)
    : m_descriptor(descriptor)
    , m_path(std::move(path))
{
}

DownloadFile::DownloadFile(DownloadFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, noDescriptor))
    , m_path(std::move(other.m_path))
{
}

DownloadFile::~DownloadFile()
{
    if (m_descriptor != noDescriptor) {
        ::close(m_descriptor);
        ::unlink(QFile::encodeName(m_path).constData());
    }
}

std::expected<void, NetworkFailure> DownloadFile::append(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(m_descriptor, bytes.data(), size_t(bytes.size()));
        if (written < 0 && errno != EINTR) {
            return failure(errno);
        }
        bytes = bytes.sliced(std::max<ssize_t>(written, 0));
    }
    return {};
}

std::expected<void, NetworkFailure> DownloadFile::keep()
{
    if (::fsync(m_descriptor) != 0) {
        return failure(errno);
    }
    ::close(std::exchange(m_descriptor, noDescriptor));
    return {};
}

} // namespace zelvane
