#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/components/Buttons.h"
#include "ui/components/FocusRing.h"
#include "ui/components/ListRow.h"
#include "ui/components/Picker.h"
#include "ui/components/SegmentedControl.h"
#include "ui/components/Switch.h"
#include "ui/components/TextField.h"

#include <gmock/gmock.h>

#include <QRadioButton>
#include <QTest>
#include <QVBoxLayout>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

/// A window with a control in it, next to one that only takes the keyboard away.
class ControlsTest : public UiTest
{
protected:
    ControlsTest() { new QVBoxLayout(&window); }

    template <typename Control, typename... Arguments>
    Control& add(Arguments&&... arguments)
    {
        auto* control = new Control(theme, std::forward<Arguments>(arguments)...);
        window.layout()->addWidget(control);
        return *control;
    }

    void show()
    {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    [[nodiscard]] static QAccessibleInterface* accessible(QWidget& widget)
    {
        return QAccessible::queryAccessibleInterface(&widget);
    }

    [[nodiscard]] static QColor pixel(QWidget& widget, QPoint place)
    {
        return widget.grab().toImage().pixelColor(place);
    }

    QWidget window;
};

TEST_F(ControlsTest, buttonsArePressedByClickSpaceAndReturn)
{
    auto& text = add<TextButton>(ControlKind::bordered);
    auto& icon = add<IconButton>(QStringLiteral("xmark"));
    show();
    for (QAbstractButton* button : QList<QAbstractButton*>{&text, &icon}) {
        int presses = 0;
        QObject::connect(button, &QAbstractButton::clicked, button, [&] { ++presses; });
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::keyClick(button, Qt::Key_Space);
        QTest::keyClick(button, Qt::Key_Return);
        QTest::keyClick(button, Qt::Key_Enter, Qt::KeypadModifier);
        EXPECT_EQ(presses, 4);
        // A combination belongs to whoever has it as a shortcut.
        QTest::keyClick(button, Qt::Key_Return, Qt::ControlModifier);
        EXPECT_EQ(presses, 4);
        button->setEnabled(false);
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_EQ(presses, 4);
    }
}

TEST_F(ControlsTest, buttonsMakeRoomForTheKeyBesideTheirText)
{
    auto& button = add<TextButton>(ControlKind::bordered);
    button.setText(QStringLiteral("A rather long label"));
    const int width = button.sizeHint().width();
    button.setKeyHint(QStringLiteral("⌃⏎"));
    EXPECT_GT(button.sizeHint().width(), width + 10);
}

TEST_F(ControlsTest, everyStateOfAButtonLooksDifferent)
{
    auto& button = add<TextButton>(ControlKind::prominent);
    show();
    const QPoint ground(6, button.height() / 2);
    const QColor normal = pixel(button, ground);
    EXPECT_EQ(normal, theme.colors().accent);
    button.setAttribute(Qt::WA_UnderMouse);
    const QColor hovered = pixel(button, ground);
    button.setDown(true);
    const QColor pressed = pixel(button, ground);
    button.setDown(false);
    button.setAttribute(Qt::WA_UnderMouse, false);
    button.setEnabled(false);
    const QColor disabled = pixel(button, ground);
    for (const QColor& state : {hovered, pressed, disabled}) {
        EXPECT_NE(state, normal);
    }
    EXPECT_NE(hovered, pressed);
    EXPECT_NE(pressed, disabled);
}

TEST_F(ControlsTest, cornersFollowTheTokenAtOnce)
{
    auto& button = add<TextButton>(ControlKind::prominent);
    show();
    EXPECT_NE(pixel(button, {0, 0}), theme.colors().accent);
    tokens.setControlRadius(0);
    EXPECT_EQ(pixel(button, {0, 0}), theme.colors().accent);
}

TEST_F(ControlsTest, controlsOfOneLineAreEquallyHigh)
{
    auto& field = add<TextField>();
    field.setMonospaced(true);
    const int height = add<TextButton>(ControlKind::bordered).sizeHint().height();
    EXPECT_EQ(field.sizeHint().height(), height);
    EXPECT_EQ(add<Picker>().sizeHint().height(), height);
    EXPECT_EQ(add<SegmentedControl>().sizeHint().height(), height);
    EXPECT_EQ(add<SearchField>().sizeHint().height(), height);
}

TEST_F(ControlsTest, switchIsTurnedByClickAndSpace)
{
    auto& control = add<Switch>();
    control.setAccessibleName(QStringLiteral("Auto-replace"));
    show();
    QTest::mouseClick(&control, Qt::LeftButton, {}, QPoint(control.width() - 2, 10));
    EXPECT_TRUE(control.isChecked());
    QTest::keyClick(&control, Qt::Key_Space);
    EXPECT_FALSE(control.isChecked());
    EXPECT_EQ(accessible(control)->role(), QAccessible::CheckBox);
    EXPECT_FALSE(accessible(control)->state().checked);
    control.setChecked(true);
    EXPECT_TRUE(accessible(control)->state().checked);
}

TEST_F(ControlsTest, switchMovesSmoothlyUnlessMotionIsUnwanted)
{
    auto& control = add<Switch>();
    show();
    const QPoint end(control.width() - 3, control.height() / 2);
    appearance.setReducedMotion(true);
    control.setChecked(true);
    EXPECT_EQ(pixel(control, {3, control.height() / 2}), theme.colors().accent);
    control.setChecked(false);
    EXPECT_EQ(pixel(control, end), theme.colors().track);

    appearance.setReducedMotion(false);
    control.setChecked(true);
    EXPECT_NE(pixel(control, {3, control.height() / 2}), theme.colors().accent);
    const auto hasArrived = [&] {
        return pixel(control, {3, control.height() / 2}) == theme.colors().accent;
    };
    EXPECT_TRUE(waitUntil(hasArrived));
}

TEST_F(ControlsTest, switchIsMirroredFromRightToLeft)
{
    window.setLayoutDirection(Qt::RightToLeft);
    appearance.setReducedMotion(true);
    auto& control = add<Switch>();
    show();
    control.setChecked(true);
    // The knob of a switch that is on is at the end of the line, which is at the left.
    EXPECT_EQ(pixel(control, {control.width() - 4, control.height() / 2}), theme.colors().accent);
}

TEST_F(ControlsTest, segmentsAreChosenByClickAndArrowKeys)
{
    auto& control = add<SegmentedControl>();
    control.setSegments(
        {QStringLiteral("Smart"), QStringLiteral("Balanced"), QStringLiteral("Fast")});
    QList<int> chosen;
    QObject::connect(&control, &SegmentedControl::activated, &control,
                     [&](int index) { chosen.append(index); });
    show();
    EXPECT_EQ(control.currentIndex(), 0);
    QTest::mouseClick(control.segments()[2], Qt::LeftButton);
    EXPECT_EQ(control.currentIndex(), 2);
    QTest::keyClick(control.segments()[2], Qt::Key_Left);
    EXPECT_EQ(control.currentIndex(), 1);
    EXPECT_THAT(chosen, ElementsAre(2, 1));
    // What the program sets is no choice of the user's.
    control.setCurrentIndex(0);
    EXPECT_THAT(chosen, ElementsAre(2, 1));
    EXPECT_TRUE(control.segments()[0]->isChecked());
    EXPECT_THAT(
        controlNames(control),
        ElementsAre(QStringLiteral("Smart"), QStringLiteral("Balanced"), QStringLiteral("Fast")));
}

TEST_F(ControlsTest, pickerTellsTheScreenReaderItsNameAndValue)
{
    auto& picker = add<Picker>();
    picker.setAccessibleName(QStringLiteral("Platform"));
    picker.setItems({QStringLiteral("Mistral"), QStringLiteral("DeepL")});
    picker.setCurrentIndex(1);
    QAccessibleInterface* element = accessible(picker);
    EXPECT_EQ(element->role(), QAccessible::ComboBox);
    EXPECT_EQ(element->text(QAccessible::Name), QStringLiteral("Platform"));
    EXPECT_EQ(element->text(QAccessible::Value), QStringLiteral("DeepL"));
    EXPECT_TRUE(element->actionInterface()->actionNames().contains(
        QAccessibleActionInterface::showMenuAction()));
}

TEST_F(ControlsTest, pickerOpensItsMenuByClickAndKeysAndTellsOfTheChoice)
{
    auto& picker = add<Picker>();
    picker.setItems({QStringLiteral("R & D"), QStringLiteral("DeepL")});
    picker.setPlaceholder(QStringLiteral("No model loaded"));
    EXPECT_EQ(picker.valueText(), QStringLiteral("No model loaded"));
    QList<int> chosen;
    QObject::connect(&picker, &Picker::activated, &picker,
                     [&](int index) { chosen.append(index); });
    show();
    for (const int key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Down, Qt::Key_Up}) {
        QTest::keyClick(&picker, Qt::Key(key));
        ASSERT_NE(picker.menu(), nullptr) << key;
        picker.menu()->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ASSERT_EQ(picker.menu(), nullptr);
    }
    QTest::mouseClick(&picker, Qt::LeftButton);
    ASSERT_NE(picker.menu(), nullptr);
    EXPECT_EQ(picker.menu()->actions()[0]->text(), QStringLiteral("R && D"));
    QTest::keyClick(picker.menu(), Qt::Key_Down);
    QTest::keyClick(picker.menu(), Qt::Key_Down);
    QTest::keyClick(picker.menu(), Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(1));
    EXPECT_EQ(picker.valueText(), QStringLiteral("DeepL"));
}

TEST_F(ControlsTest, pickerWithoutAnythingToChooseStaysClosed)
{
    auto& picker = add<Picker>();
    show();
    QTest::mouseClick(&picker, Qt::LeftButton);
    EXPECT_EQ(picker.menu(), nullptr);
}

TEST_F(ControlsTest, rowsArePressedByReturnAndReachedByArrowKeys)
{
    auto& first = add<ListRow>(QStringLiteral("Translation"));
    auto& second = add<ListRow>(QStringLiteral("Languages"));
    int presses = 0;
    QObject::connect(&second, &QAbstractButton::clicked, &second, [&] { ++presses; });
    show();
    first.setFocus();
    QTest::keyClick(&first, Qt::Key_Down);
    EXPECT_TRUE(second.hasFocus());
    QTest::keyClick(&second, Qt::Key_Return);
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(accessible(second)->text(QAccessible::Name), QStringLiteral("Languages"));
}

TEST_F(ControlsTest, rowShowsThePointerAtOnceWhereMotionIsUnwanted)
{
    appearance.setReducedMotion(true);
    auto& row = add<ListRow>(QStringLiteral("Languages"));
    show();
    const QPoint ground(row.width() - 20, row.height() / 2);
    const QColor normal = pixel(row, ground);
    QEnterEvent enter({}, {}, {});
    QCoreApplication::sendEvent(&row, &enter);
    EXPECT_NE(pixel(row, ground), normal);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&row, &leave);
    EXPECT_EQ(pixel(row, ground), normal);
}

TEST_F(ControlsTest, searchFieldIsEmptiedByItsButtonAndByEsc)
{
    auto& field = add<SearchField>();
    field.setPrompt(QStringLiteral("Search"));
    show();
    field.setFocus();
    auto* clear = field.findChild<IconButton*>();
    EXPECT_FALSE(clear->isVisible());
    QTest::keyClicks(&field, QStringLiteral("port"));
    EXPECT_TRUE(clear->isVisible());
    EXPECT_EQ(clear->accessibleName(), QStringLiteral("Clear"));
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(field.text(), QString());
    QTest::keyClicks(&field, QStringLiteral("port"));
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(field.text(), QString());
    EXPECT_EQ(accessible(field)->text(QAccessible::Name), QStringLiteral("Search"));
}

TEST_F(ControlsTest, searchFieldIsMirroredFromRightToLeft)
{
    window.setLayoutDirection(Qt::RightToLeft);
    auto& field = add<SearchField>();
    show();
    field.setText(QStringLiteral("x"));
    EXPECT_LT(field.findChild<IconButton*>()->geometry().right(), field.width() / 2);
    EXPECT_GT(field.textMargins().left(), 20);
    EXPECT_GT(field.textMargins().right(), 20);
}

TEST_F(ControlsTest, ringGoesAroundTheControlThatTheKeyboardReaches)
{
    auto& button = add<TextButton>(ControlKind::bordered);
    auto& field = add<TextField>();
    new FocusRing(theme, window);
    show();
    button.setFocus(Qt::OtherFocusReason);
    const auto* ring = window.findChild<FocusRing*>();
    QTest::keyClick(&button, Qt::Key_Tab);
    EXPECT_EQ(ring->target(), &field);
    EXPECT_TRUE(ring->isVisible());
}

} // namespace
} // namespace zelvane::test
