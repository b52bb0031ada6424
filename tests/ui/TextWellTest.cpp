#include "ui/components/TextWell.h"

#include "ui/UiFixture.h"
#include "ui/components/SlimScrollBar.h"
#include "ui/components/TextMeasure.h"
#include "ui/gallery/Texts.h"

#include <QElapsedTimer>
#include <QScrollBar>

namespace zelvane::test {
namespace {

namespace texts = gallery::texts;

class WellTexts : public UiTest,
                  public ::testing::WithParamInterface<std::pair<const char*, QString>>
{
};

TEST_P(WellTexts, fitWithoutScrollingInTheHeightThatTheWellAsksFor)
{
    TextWell well(theme);
    well.setReadOnlyText(GetParam().second);
    well.resize(400, well.heightForWidth(400));
    well.show();
    EXPECT_EQ(well.editor().verticalScrollBar()->maximum(), 0);
    EXPECT_FALSE(well.scrollBar().isVisible());
    EXPECT_EQ(well.editor().horizontalScrollBar()->maximum(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, WellTexts,
    ::testing::Values(std::pair{"empty", QString()}, std::pair{"english", texts::longEnglish()},
                      std::pair{"german", texts::longGerman()},
                      std::pair{"words", texts::wordsGerman()}, std::pair{"hindi", texts::hindi()},
                      std::pair{"chinese", texts::chinese()}, std::pair{"arabic", texts::arabic()},
                      std::pair{"lines", QStringLiteral("a\nb\r\nc\n\n")}),
    [](const auto& info) { return info.param.first; });

using TextWellTest = UiTest;

TEST_F(TextWellTest, scrollsATextThatIsHigherThanItsLimit)
{
    TextWell well(theme);
    well.setReadOnlyText(texts::longGerman());
    well.setMaximumSectionHeight(90);
    EXPECT_EQ(well.heightForWidth(400), 90);
    well.resize(400, 90);
    well.show();
    EXPECT_GT(well.editor().verticalScrollBar()->maximum(), 0);
    EXPECT_TRUE(well.scrollBar().isVisible());

    const int end = well.scrollBar().maximum();
    well.scrollBar().setValue(3);
    EXPECT_EQ(well.scrollBar().maximum(), end);
    EXPECT_EQ(well.editor().verticalScrollBar()->value(), 3);
}

TEST_F(TextWellTest, wrapsAlikeWithAndWithoutItsScrollBar)
{
    TextWell well(theme);
    well.setReadOnlyText(texts::longGerman());
    well.resize(400, well.heightForWidth(400));
    well.show();
    const int width = well.editor().viewport()->width();
    well.resize(400, 90);
    EXPECT_EQ(well.editor().viewport()->width(), width);
}

TEST_F(TextWellTest, canBeReadButNotChanged)
{
    TextWell well(theme);
    well.setReadOnlyText(QStringLiteral("abc"));
    well.show();
    QTest::keyClicks(&well.editor(), QStringLiteral("xyz"));
    EXPECT_EQ(well.editor().toPlainText(), QStringLiteral("abc"));
    well.editor().selectAll();
    EXPECT_EQ(well.editor().textCursor().selectedText(), QStringLiteral("abc"));
}

TEST_F(TextWellTest, showsACaretOnlyToUsersWhoCameByKeyboard)
{
    TextWell well(theme);
    well.setReadOnlyText(QStringLiteral("abc"));
    well.show();
    well.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&well));
    const auto byKeyboard = [&] {
        return well.editor().textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard);
    };
    well.editor().setFocus(Qt::OtherFocusReason);
    EXPECT_FALSE(byKeyboard());
    well.editor().clearFocus();
    well.editor().setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(byKeyboard());
}

TEST(WrappedTextHeight, stopsAtTheLimitHoweverLongTheTextIs)
{
    const QString megabytes = QStringLiteral("word ").repeated(2'000'000);
    QElapsedTimer timer;
    timer.start();
    const double height = wrappedTextHeight(megabytes, QFont(), 400, 140);
    EXPECT_GT(height, 140);
    EXPECT_LT(timer.elapsed(), 500);
}

TEST(WrappedTextHeight, countsAnEmptyTextAsALine)
{
    EXPECT_NEAR(wrappedTextHeight(QString(), QFont(), 400, 140), QFontMetricsF(QFont()).height(),
                2);
}

} // namespace
} // namespace zelvane::test
