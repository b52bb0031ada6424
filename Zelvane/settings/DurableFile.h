#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <expected>
#include <optional>

namespace zelvane {

/// What the system said when a file could not be used, in its own words.
struct FileFailure
{
    QString path;
    QString reason;
};

/// The bytes of a file, or none if there is no such file. A file beyond `limit` bytes fails.
[[nodiscard]] std::expected<std::optional<QByteArray>, FileFailure> readFile(const QString& path,
                                                                             qint64 limit);

/// Puts `bytes` in place of the file, whole or not at all, whatever interrupts it, and returns when
/// they have reached the disk. The file is readable by its owner only. A symbolic link stays one.
///
/// `path` + ".new" is used on the way; callers keep others away from it, with a `FileLock`.
[[nodiscard]] std::expected<void, FileFailure> replaceDurably(const QString& path,
                                                              const QByteArray& bytes);

/// Makes the directory with all above it, for its owner only.
[[nodiscard]] std::expected<void, FileFailure> makePrivateDirectory(const QString& path);

/// Keeps other processes, and other objects of this one, from what the lock file stands for, until
/// destroyed or the process ends.
class FileLock
{
public:
    /// Waits for at most `limit`. The file is made if need be, and stays.
    [[nodiscard]] static std::expected<FileLock, FileFailure>
    acquire(const QString& path, std::chrono::milliseconds limit);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&&) = delete;
    ~FileLock();

private:
    explicit FileLock(int descriptor);

    int m_descriptor;
};

} // namespace zelvane
