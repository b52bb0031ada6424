#pragma once

#include "Services/EngineState.h"
#include "foundation/Completion.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <memory>

namespace zelvane {

/// The child of an earlier kind of engine: a program that takes one JSON object a line.
class LocalEngineChild
{
public:
    LocalEngineChild() = default;
    virtual ~LocalEngineChild() = default;
    Q_DISABLE_COPY_MOVE(LocalEngineChild)

    [[nodiscard]] virtual bool isRunning() const = 0;
    /// Writes to the child's input, if it still takes any.
    virtual void write(const QByteArray& bytes) = 0;
    /// Asks the child to end.
    virtual void terminate() = 0;
};

/// The manager of an earlier kind of engine, which nothing starts or installs any more: it knows
/// what an installation of it looks like, and shuts a child down in order. Main thread.
class LocalEngineManager
{
public:
    enum class Variant { standard, large };

    /// Looks at the disk. `root` holds the folders of all engines.
    LocalEngineManager(Variant variant, const QString& root);
    Q_DISABLE_COPY_MOVE(LocalEngineManager)

    [[nodiscard]] Variant variant() const { return m_variant; }
    [[nodiscard]] const EngineState& state() const { return m_state; }

    /// Brings the state up to what the disk tells.
    void refreshStatus();

    /// Takes over a child.
    void hold(std::unique_ptr<LocalEngineChild> child);
    /// A request that waits for the child's reply, by its identifier.
    void await(const QString& request, const Completion<QString>& reply);

    /// Ends the child, if there is one, and every wait, with `offlineEngineBusy`.
    void stop();

private:
    const Variant m_variant;
    const QString m_folder;
    EngineState m_state;
    std::unique_ptr<LocalEngineChild> m_process;
    QHash<QString, Completion<QString>> m_pending;
};

} // namespace zelvane
