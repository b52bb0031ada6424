#pragma once

#include <QByteArray>
#include <QString>

namespace zelvane {

/// What tells this machine from all others.
class MachineIdentity
{
public:
    MachineIdentity() = default;
    virtual ~MachineIdentity() = default;
    Q_DISABLE_COPY_MOVE(MachineIdentity)

    /// The same at every start, or empty if the system doesn't know. Callable from any thread; may
    /// read a file. Confidential: only `deviceFingerprint` of it may leave the machine.
    [[nodiscard]] virtual QByteArray machineId() const = 0;
};

/// The system's own id, made when it was installed.
class SystemMachineIdentity final : public MachineIdentity
{
public:
    [[nodiscard]] QByteArray machineId() const override;
};

/// What others may know of a machine: 64 hexadecimal digits, always the same for one id, from which
/// neither the id nor what other programs make of it can be told.
[[nodiscard]] QString deviceFingerprint(const QByteArray& machineId);

} // namespace zelvane
