#include "ui/components/ScrollArea.h"

#include "ui/UiFixture.h"
#include "ui/components/Buttons.h"

#include <QAccessible>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>

namespace zelvane::test {
namespace {

class ScrollAreaTest : public UiTest
{
protected:
    ScrollAreaTest()
    {
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        m_first = new TextButton(theme, ControlKind::bordered);
        m_last = new TextButton(theme, ControlKind::bordered);
        column->addWidget(m_first);
        column->addSpacing(2000);
        column->addWidget(m_last);
        area.setContent(content);
        area.resize(300, 200);
        area.show();
        area.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&area));
    }

    [[nodiscard]] bool isInView(const QWidget& widget) const
    {
        const QRect place(widget.mapTo(&area, QPoint()), widget.size());
        return area.rect().contains(place);
    }

    ScrollArea area{theme};
    TextButton* m_first;
    TextButton* m_last;
};

TEST_F(ScrollAreaTest, whatAScreenReaderFocusesComesIntoView)
{
    EXPECT_FALSE(isInView(*m_last));
    QAccessible::queryAccessibleInterface(m_last)->actionInterface()->doAction(
        QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(isInView(*m_last));
    m_first->setFocus();
    EXPECT_TRUE(isInView(*m_first));
}

TEST_F(ScrollAreaTest, tabBringsTheNextControlIntoView)
{
    m_first->setFocus();
    QTest::keyClick(&area, Qt::Key_Tab);
    EXPECT_TRUE(isInView(*m_last));
}

TEST_F(ScrollAreaTest, aWindowThatComesBackStaysWhereItWas)
{
    m_last->setFocus();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    area.verticalScrollBar()->setValue(0);
    area.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&area));
    EXPECT_TRUE(m_last->hasFocus());
    EXPECT_TRUE(isInView(*m_first));
}

} // namespace
} // namespace zelvane::test
