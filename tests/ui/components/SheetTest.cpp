#include "ui/components/Sheet.h"

#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/components/TextField.h"

#include <gmock/gmock.h>

#include <QTest>
#include <QVBoxLayout>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

/// A sheet with a field, over a window with a field of its own.
class SheetTest : public UiTest
{
protected:
    void SetUp() override
    {
        window.resize(820, 580);
        auto* column = new QVBoxLayout(&window);
        below = new TextField(theme);
        column->addWidget(below);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        below->setFocus();

        sheet = new Sheet(theme, window);
        sheet->setTitle(QStringLiteral("API Key"));
        sheet->setSubtitle(QStringLiteral("Mistral"));
        field = new TextField(theme);
        field->setAccessibleName(QStringLiteral("Key"));
        sheet->setContent(field);
        cancel = sheet->addButton();
        cancel->setText(QStringLiteral("Cancel"));
        save = sheet->addButton(ControlKind::prominent);
        save->setText(QStringLiteral("Save"));
        sheet->setCancelButton(cancel);
        sheet->setDefaultButton(save);
        for (auto* button : {cancel, save}) {
            QObject::connect(button, &QAbstractButton::clicked, sheet, [this, button] {
                pressed += button->text();
                sheet->dismiss();
            });
        }
        sheet->present();
    }

    QWidget window;
    TextField* below = nullptr;
    QPointer<Sheet> sheet;
    TextField* field = nullptr;
    TextButton* cancel = nullptr;
    TextButton* save = nullptr;
    QStringList pressed;
};

TEST_F(SheetTest, coversTheWindowWithAPanelInTheMiddle)
{
    EXPECT_EQ(sheet->geometry(), window.rect());
    EXPECT_EQ(sheet->panelRect().width(), 420);
    EXPECT_NEAR(sheet->panelRect().center().x(), window.rect().center().x(), 1);
    EXPECT_NEAR(sheet->panelRect().center().y(), window.rect().center().y(), 1);
    window.resize(1000, 700);
    QApplication::processEvents();
    EXPECT_EQ(sheet->geometry(), window.rect());
}

TEST_F(SheetTest, isAsWideAsItsTokensAndItsContentAsk)
{
    SheetLayoutTokens sheets = tokens.sheets();
    sheets.minWidth = 500;
    tokens.setSheets(sheets);
    EXPECT_EQ(sheet->panelRect().width(), 500);
    sheet->setMinimumContentSize({600, 0});
    EXPECT_EQ(sheet->panelRect().width(), 640);
}

TEST_F(SheetTest, takesTheKeyboardAndKeepsIt)
{
    EXPECT_TRUE(field->hasFocus());
    QList<QWidget*> visited;
    for (int i = 0; i < 6; ++i) {
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
        visited += window.focusWidget();
    }
    EXPECT_THAT(visited, ElementsAre(cancel, save, field, cancel, save, field));
    QTest::keyClick(window.focusWidget(), Qt::Key_Backtab);
    EXPECT_TRUE(save->hasFocus());
}

TEST_F(SheetTest, givesTheKeyboardBackToTheControlThatHadIt)
{
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_THAT(pressed, ElementsAre(QStringLiteral("Cancel")));
    EXPECT_TRUE(below->hasFocus());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(sheet.isNull());
}

TEST_F(SheetTest, returnPressesTheDefaultUnlessTheUserHasGoneToAnotherButton)
{
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_THAT(pressed, ElementsAre(QStringLiteral("Save")));
    pressed.clear();
    sheet->present();
    cancel->setFocus();
    QTest::keyClick(cancel, Qt::Key_Return);
    EXPECT_THAT(pressed, ElementsAre(QStringLiteral("Cancel")));
}

TEST_F(SheetTest, aDisabledDefaultIsNotPressed)
{
    save->setEnabled(false);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(pressed.isEmpty());
}

TEST_F(SheetTest, theWindowBelowGetsNeitherClicksNorKeys)
{
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {},
                      below->mapTo(&window, QPoint(20, 10)));
    EXPECT_FALSE(below->hasFocus());
    QTest::keyClicks(window.focusWidget(), QStringLiteral("abc"));
    EXPECT_EQ(below->text(), QString());
}

TEST_F(SheetTest, isADialogWithNamedControls)
{
    const auto* element = QAccessible::queryAccessibleInterface(sheet);
    EXPECT_EQ(element->role(), QAccessible::Dialog);
    EXPECT_EQ(element->text(QAccessible::Description), QStringLiteral("Mistral"));
    EXPECT_EQ(unnamedControls(*sheet).join(u' ').toStdString(), "");
    EXPECT_THAT(controlNames(*sheet),
                ElementsAre(QStringLiteral("API Key"), QStringLiteral("Key"),
                            QStringLiteral("Cancel"), QStringLiteral("Save")));
}

TEST_F(SheetTest, goesWithTheWindowThatItIsOver)
{
    window.close();
    EXPECT_TRUE(sheet->isHidden());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(sheet, nullptr);
    EXPECT_TRUE(pressed.isEmpty());
    window.show();
    EXPECT_EQ(window.focusWidget(), below);
}

} // namespace
} // namespace zelvane::test
