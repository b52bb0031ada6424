#pragma once

#include "Services/ProcessTable.h"
#include "foundation/DescribedError.h"

#include <QSet>
#include <QStringList>

namespace zelvane::test {

/// A table that a test writes; it notes who is signalled.
class FakeProcessTable final : public ProcessTable
{
public:
    [[nodiscard]] QCoro::Task<std::optional<QByteArray>> listing(std::stop_token stop) override
    {
        ++listings;
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        co_return table;
    }
    [[nodiscard]] bool isRunning(qint32 pid) const override { return !gone.contains(pid); }
    void terminate(qint32 pid) override { calls += QStringLiteral("terminate %1").arg(pid); }
    void kill(qint32 pid) override { calls += QStringLiteral("kill %1").arg(pid); }

    std::optional<QByteArray> table = QByteArray();
    QSet<qint32> gone;
    QStringList calls;
    int listings = 0;
};

} // namespace zelvane::test
