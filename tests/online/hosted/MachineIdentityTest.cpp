#include "online/MachineIdentity.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

namespace zelvane::test {
namespace {

TEST(DeviceFingerprint, isAFixedFunctionOfTheMachinesId)
{
    // HMAC-SHA-256 of "org.zelvane.desk device" under the id, by another implementation.
    EXPECT_EQ(deviceFingerprint("0123456789abcdef0123456789abcdef"),
              QStringLiteral("de5c6a5bf997c2b95f456ce07fa250f2e9cfa217cdcc4aaaa75f012757d8b6cf"));
}

TEST(DeviceFingerprint, differsFromMachineToMachine)
{
    EXPECT_NE(deviceFingerprint("a"), deviceFingerprint("b"));
}

TEST(DeviceFingerprint, ofThisMachineIsStableAndHexadecimal)
{
    const SystemMachineIdentity machine;
    const QString first = deviceFingerprint(machine.machineId());
    EXPECT_EQ(first, deviceFingerprint(SystemMachineIdentity().machineId()));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^[0-9a-f]{64}$")).match(first).hasMatch());
    EXPECT_TRUE(machine.machineId().isEmpty() ||
                !first.contains(QString::fromLatin1(machine.machineId())));
}

} // namespace
} // namespace zelvane::test
