#include "online/MachineIdentity.h"

#include <QMessageAuthenticationCode>
#include <QSysInfo>

namespace zelvane {

QByteArray SystemMachineIdentity::machineId() const
{
    return QSysInfo::machineUniqueId();
}

QString deviceFingerprint(const QByteArray& machineId)
{
    // Keyed by the id, so that the digests of two programs for one machine can't be linked.
    return QString::fromLatin1(QMessageAuthenticationCode::hash(
                                   "org.zelvane.desk device", machineId, QCryptographicHash::Sha256)
                                   .toHex());
}

} // namespace zelvane
