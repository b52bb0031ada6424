#pragma once

#include <QFile>

namespace zelvane::test {

/// Whether a process runs. One that has ended and that nobody has waited for doesn't.
inline bool isProcessRunning(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!status.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray line = status.readAll();
    return !line.sliced(line.lastIndexOf(')') + 1).trimmed().startsWith('Z');
}

} // namespace zelvane::test
