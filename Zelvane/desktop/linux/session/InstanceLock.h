#pragma once

#include <QString>

#include <optional>

namespace zelvane {

/// Makes one running program the only one of its name, session bus or not.
///
/// The lock is on an open file, so that it goes with the process, however that ends, and nothing is
/// left to be cleaned up. Programs that this one starts don't inherit it.
class InstanceLock
{
public:
    /// Where locks lie: $XDG_RUNTIME_DIR, or the temporary folder, apart for each user.
    [[nodiscard]] static QString usualFolder();

    InstanceLock(const QString& folder, const QString& name);
    /// Gives the lock up.
    ~InstanceLock();
    Q_DISABLE_COPY_MOVE(InstanceLock)

    /// True if this process has the lock, now or already. Never waits.
    [[nodiscard]] bool claim();
    void release();

    /// Whether another process has the lock.
    [[nodiscard]] bool isHeldByAnother() const;
    /// The number of the process that has the lock, if it is known.
    [[nodiscard]] std::optional<qint64> holder() const;

private:
    [[nodiscard]] int openFile() const;

    QString m_path;
    int m_file = -1;
};

} // namespace zelvane
