#pragma once

#include "settings/DurableFile.h"

#include <QString>

#include <optional>

namespace zelvane {

/// Lets one process at a time install an engine. The file of the lock lies beside the engine's
/// folder, and stays; a process that is killed gives its lock up.
///
/// It is also how another process asks for the end of the installation: it appends a line, and who
/// holds the lock watches the file. Calls look at one small file.
class InstallLock
{
public:
    /// The file for the engine whose folder is `name` in `root`.
    [[nodiscard]] static QString path(const QString& root, const QString& name);

    /// None if another process, or another object of this one, installs the engine. Blocks for half
    /// a second at most. Throws `EngineError` if the file can't be used.
    [[nodiscard]] static std::optional<InstallLock> acquire(const QString& path);

    /// Whether an installation is under way. Never waits.
    [[nodiscard]] static bool isHeld(const QString& path);

    /// Asks who holds the lock to cancel. False if nobody holds it, or the file can't be written.
    static bool requestCancel(const QString& path);

    /// Whether someone has asked for the end, since the lock was acquired.
    [[nodiscard]] static bool isCancelRequested(const QString& path);

private:
    explicit InstallLock(FileLock lock);

    FileLock m_lock;
};

} // namespace zelvane
