#include "ui/panel/WindowOrigins.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

ScreenLayout screens(const QList<QRectF>& frames, std::optional<QRectF> main)
{
    return {[frames] { return frames; }, [main] { return main; }};
}

const QRectF left(0, 30, 1000, 770);
const QRectF right(1000, 0, 1200, 900);

struct ClampCase
{
    const char* name;
    QRectF window;
    QPointF expected;
};

class ClampedOrigin : public ::testing::TestWithParam<ClampCase>
{
};

TEST_P(ClampedOrigin, isOnTheScreenThatTheWindowTouches)
{
    const ClampCase& c = GetParam();
    EXPECT_EQ(clampedOrigin(c.window.topLeft(), c.window.size(), screens({left, right}, left)),
              c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Geometries, ClampedOrigin,
    ::testing::Values(
        ClampCase{"inside", {100, 100, 400, 300}, {100, 100}},
        ClampCase{"atTheEdges", {600, 500, 400, 300}, {600, 500}},
        ClampCase{"overTheRightOfTheLast", {2000, 100, 400, 300}, {1800, 100}},
        ClampCase{"overTheLeft", {-100, 100, 400, 300}, {0, 100}},
        ClampCase{"aboveTheDock", {100, 10, 400, 300}, {100, 30}},
        ClampCase{"belowTheScreen", {100, 700, 400, 300}, {100, 500}},
        ClampCase{"overTwoScreensGoesToTheFirst", {800, 100, 400, 300}, {600, 100}},
        ClampCase{"onTheSecondOnly", {1000, 850, 400, 300}, {1000, 600}},
        ClampCase{"nowhereGoesToTheMainScreen", {5000, 5000, 400, 300}, {600, 500}},
        ClampCase{"nowhereAboveGoesToTheMainScreen", {-5000, -5000, 400, 300}, {0, 30}},
        ClampCase{"widerThanTheScreenKeepsItsLeft", {100, 100, 1100, 300}, {0, 100}},
        ClampCase{"higherThanTheScreenKeepsItsBottom", {100, 100, 400, 900}, {100, -100}}),
    [](const auto& info) { return info.param.name; });

TEST(ClampedOriginWithoutScreens, staysAsItIs)
{
    const QPointF origin(5000, -20);
    EXPECT_EQ(clampedOrigin(origin, {400, 300}, screens({}, std::nullopt)), origin);
    EXPECT_EQ(clampedOrigin(origin, {400, 300}, screens({left}, std::nullopt)), origin);
}

TEST(ClampedOriginWithoutScreens, isTheMiddleOfAMainScreenThatComesBack)
{
    int asked = 0;
    const ScreenLayout late{[] { return QList<QRectF>{left}; },
                            [&]() -> std::optional<QRectF> {
                                return ++asked == 1 ? std::nullopt : std::optional(right);
                            }};
    EXPECT_EQ(clampedOrigin({5000, 5000}, {400, 300}, late), QPointF(1400, 300));
}

TEST(CentredOrigin, isOnWholePixels)
{
    EXPECT_EQ(centredOrigin({401, 300}, QRectF(0, 0, 1000, 800)), QPointF(300, 250));
}

TEST(WindowOrigins, keepsEachWindowUnderItsOwnKeys)
{
    OverlayUserDefaults defaults;
    WindowOrigins origins(defaults, screens({left}, left));
    origins.saveWindowOrigin(WindowKind::result, 12, 34.5);
    origins.saveWindowOrigin(WindowKind::manual, 56, 78);
    EXPECT_EQ(defaults.value(QStringLiteral("zv.resultWindow.originX")), DefaultsValue(12.0));
    EXPECT_EQ(defaults.value(QStringLiteral("zv.resultWindow.originY")), DefaultsValue(34.5));
    EXPECT_EQ(defaults.value(QStringLiteral("zv.manualWindow.originX")), DefaultsValue(56.0));
    EXPECT_EQ(defaults.value(QStringLiteral("zv.manualWindow.originY")), DefaultsValue(78.0));
    EXPECT_EQ(origins.loadWindowOrigin(WindowKind::result, 100, 100), QPointF(12, 34.5));
}

TEST(WindowOrigins, hasNoneWithoutBothNumbers)
{
    OverlayUserDefaults defaults;
    const WindowOrigins origins(defaults, screens({left}, left));
    EXPECT_EQ(origins.loadWindowOrigin(WindowKind::result, 100, 100), std::nullopt);
    defaults.setValue(QStringLiteral("zv.resultWindow.originX"), 12.0);
    EXPECT_EQ(origins.loadWindowOrigin(WindowKind::result, 100, 100), std::nullopt);
}

TEST(WindowOrigins, resetForgetsBothWindows)
{
    OverlayUserDefaults defaults;
    WindowOrigins origins(defaults, screens({left}, left));
    origins.saveWindowOrigin(WindowKind::result, 12, 34);
    origins.saveWindowOrigin(WindowKind::manual, 56, 78);
    origins.resetWindowOrigins();
    EXPECT_TRUE(defaults.keys().isEmpty());
}

TEST(WindowOrigins, pullsAWindowOfAScreenThatHasGoneOntoTheMainOne)
{
    OverlayUserDefaults defaults;
    WindowOrigins origins(defaults, screens({left}, left));
    origins.saveWindowOrigin(WindowKind::manual, 1500, 200);
    EXPECT_EQ(origins.loadWindowOrigin(WindowKind::manual, 640, 560), QPointF(360, 200));
}

} // namespace
} // namespace zelvane::test
