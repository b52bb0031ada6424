#include "settings/UserDefaults.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const QString key = QStringLiteral("zv.k");

TEST(UserDefaults, readValuesOfTheAskedTypeOnly)
{
    OverlayUserDefaults defaults;
    const auto store = [&](const DefaultsValue& value) { defaults.setValue(key, value); };
    store(true);
    EXPECT_EQ(defaults.boolean(key), true);
    EXPECT_EQ(defaults.string(key), std::nullopt);
    EXPECT_EQ(defaults.number(key), std::nullopt);
    store(qint64(1));
    EXPECT_EQ(defaults.boolean(key), std::nullopt);
    EXPECT_EQ(defaults.number(key), 1.0);
    store(2.5);
    EXPECT_EQ(defaults.number(key), 2.5);
    store(QStringLiteral("true"));
    EXPECT_EQ(defaults.boolean(key), std::nullopt);
    EXPECT_EQ(defaults.string(key), QStringLiteral("true"));
    EXPECT_EQ(defaults.data(key), std::nullopt);
    store(QByteArray("a"));
    EXPECT_EQ(defaults.data(key), QByteArray("a"));
    EXPECT_EQ(defaults.string(key), std::nullopt);
}

TEST(OverlayUserDefaults, showTheirBaseUnderTheirOwnChanges)
{
    OverlayUserDefaults base;
    base.setValue(QStringLiteral("a"), true);
    base.setValue(QStringLiteral("b"), true);
    OverlayUserDefaults overlay(&base);
    overlay.setValue(QStringLiteral("a"), false);
    overlay.setValue(QStringLiteral("c"), true);
    overlay.remove(QStringLiteral("b"));
    overlay.remove(QStringLiteral("never"));
    EXPECT_EQ(overlay.keys(), (QStringList{QStringLiteral("a"), QStringLiteral("c")}));
    EXPECT_EQ(overlay.boolean(QStringLiteral("a")), false);
    EXPECT_EQ(overlay.value(QStringLiteral("b")), std::nullopt);
    EXPECT_EQ(base.keys(), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(base.boolean(QStringLiteral("a")), true);
    base.setValue(QStringLiteral("d"), true);
    EXPECT_EQ(overlay.boolean(QStringLiteral("d")), true);
    overlay.setValue(QStringLiteral("b"), qint64(1));
    EXPECT_EQ(overlay.number(QStringLiteral("b")), 1.0);
}

} // namespace
} // namespace zelvane::test
