#pragma once

#include "foundation/DescribedError.h"

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

/// The same where it ends a task: thrown.
class FileError final : public DescribedError
{
public:
    explicit FileError(FileFailure failure);

    /// The reason, behind the file that it is about.
    [[nodiscard]] QString description() const override;

private:
    FileFailure m_failure;
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

/// Writes a file piece by piece, which takes its place when it is complete.
class DurableFileWriter
{
public:
    /// `temporary` is the file's name on the way, in the same folder; what stands there is lost.
    /// Callers keep others away from it. The file is readable by its owner only.
    [[nodiscard]] static std::expected<DurableFileWriter, FileFailure>
    create(const QString& path, const QString& temporary);

    DurableFileWriter(DurableFileWriter&& other) noexcept;
    DurableFileWriter& operator=(DurableFileWriter&&) = delete;
    /// Removes what was written, unless it has taken its place.
    ~DurableFileWriter();

    [[nodiscard]] std::expected<void, FileFailure> append(QByteArrayView bytes);

    /// Takes the place of the file, whole or not at all, and returns when all has reached the disk.
    /// To be called once, as the last.
    [[nodiscard]] std::expected<void, FileFailure> commit();

private:
    DurableFileWriter(int descriptor, QString path, QString temporary);

    int m_descriptor;
    QString m_path;
    QString m_temporary;
};

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
    /// Doesn't wait: none if somebody else has it.
    [[nodiscard]] static std::expected<std::optional<FileLock>, FileFailure>
    tryAcquire(const QString& path);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&&) = delete;
    ~FileLock();

private:
    explicit FileLock(int descriptor);

    int m_descriptor;
};

} // namespace zelvane
