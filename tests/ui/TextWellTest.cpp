#include "ui/components/TextWell.h"

#include "ui/UiFixture.h"
#include "ui/components/FocusRing.h"
#include "ui/components/LongParagraphs.h"
#include "ui/components/SlimScrollBar.h"
#include "ui/components/TextMeasure.h"
#include "ui/gallery/Texts.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include <ctime>

namespace zelvane::test {
namespace {

namespace texts = gallery::texts;

/// What this process has spent since: unlike the time of the day it is the same on a busy machine.
class ProcessorTime
{
public:
    [[nodiscard]] double milliseconds() const
    {
        return double(std::clock() - m_start) * 1000 / CLOCKS_PER_SEC;
    }

private:
    std::clock_t m_start = std::clock();
};

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

TEST_F(TextWellTest, isLessRoundWithinACard)
{
    TextWell well(theme);
    EXPECT_EQ(focusRadius(well, theme), 12);
    well.setInCard(true);
    EXPECT_EQ(focusRadius(well, theme), 8);
}

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
    const ProcessorTime time;
    const double height = wrappedTextHeight(megabytes, QFont(), 400, 140);
    EXPECT_GT(height, 140);
    EXPECT_LT(time.milliseconds(), 500);
}

TEST(WrappedTextHeight, countsAnEmptyTextAsALine)
{
    EXPECT_NEAR(wrappedTextHeight(QString(), QFont(), 400, 140), QFontMetricsF(QFont()).height(),
                2);
}

/// One paragraph of a megabyte.
QString hugeParagraph(const QString& words)
{
    return words.repeated(1'000'000 / words.size());
}

TEST(LongParagraphs, comeBackAsTheyWere)
{
    const QString hindi = texts::hindi().remove(u'\n');
    for (const QString& words :
         {QStringLiteral("The tide came in. "), QStringLiteral("x"), QStringLiteral("翻译的"),
          QStringLiteral("👩‍👩‍👧‍👦"), hindi}) {
        const QString text = hugeParagraph(words) + QStringLiteral("\n\nend\n");
        const QString broken = withLongParagraphsBroken(text);
        qsizetype longest = 0;
        for (const QString& paragraph : broken.split(u'\n')) {
            longest = std::max(longest, paragraph.size());
        }
        EXPECT_LE(longest, longestParagraph + 2);
        EXPECT_EQ(withParagraphsJoined(broken), text);
    }
}

TEST(LongParagraphs, breakBetweenWordsOrAtLeastBetweenCharacters)
{
    const QStringList lines =
        withLongParagraphsBroken(hugeParagraph(QStringLiteral("tide "))).split(u'\n');
    EXPECT_GT(lines.size(), 200);
    for (const QString& line : lines) {
        EXPECT_TRUE(line.startsWith(QStringLiteral("tide")));
    }
    const QString family = QStringLiteral("👩‍👩‍👧‍👦");
    for (const QString& line : withLongParagraphsBroken(hugeParagraph(family)).split(u'\n')) {
        EXPECT_TRUE(line.startsWith(family));
    }
}

TEST(LongParagraphs, leaveShortTextsAlone)
{
    const QString text = QStringLiteral("a\r\nb\u2060\u200Bc\n");
    EXPECT_EQ(withLongParagraphsBroken(text), text);
}

class EditableWellTest : public UiTest
{
protected:
    EditableWellTest()
    {
        well.setEditableText({});
        well.resize(480, 200);
        well.show();
        well.editor().setFocus();
    }

    void paste(const QString& text)
    {
        QGuiApplication::clipboard()->setText(text);
        well.editor().paste();
    }

    [[nodiscard]] QString copied()
    {
        QGuiApplication::clipboard()->clear();
        well.editor().selectAll();
        well.editor().copy();
        return QGuiApplication::clipboard()->text();
    }

    TextWell well{theme, WellHeight::fill};
};

TEST_F(EditableWellTest, givesBackWhatWasTypedAndPasted)
{
    QTest::keyClicks(&well.editor(), QStringLiteral("ab"));
    QTest::keyClick(&well.editor(), Qt::Key_Return);
    paste(QStringLiteral("c\td"));
    EXPECT_EQ(well.text(), QStringLiteral("ab\nc\td"));
    EXPECT_EQ(copied(), QStringLiteral("ab\nc\td"));
}

TEST_F(EditableWellTest, giveBackAMegabyteInOneParagraphCharacterForCharacter)
{
    const QString text = hugeParagraph(QStringLiteral("The tide came in over the flats. "));
    paste(text);
    EXPECT_EQ(well.text(), text);
    EXPECT_EQ(copied(), text);
    well.editor().undo();
    EXPECT_EQ(well.text(), QString());
    well.editor().redo();
    EXPECT_EQ(well.text(), text);
}

TEST_F(EditableWellTest, keepsEveryCharacter)
{
    // Spaces that don't break, controls of direction, joiners, a half of a pair, a null.
    QString text = QStringLiteral("Bonjour\u00A0! \u202Bשלום\u202C \u2067x\u2069 \u200Da\u2060");
    text += QChar(0xD800);
    text += QChar(u'\0');
    text += u'z';
    paste(text);
    EXPECT_EQ(well.text(), text);
    EXPECT_EQ(copied(), text);
    well.setReadOnlyText(text);
    well.editor().viewport()->repaint();
    EXPECT_EQ(copied(), text);
}

TEST_F(EditableWellTest, staysFluidWithAMegabyteInOneParagraph)
{
    paste(hugeParagraph(QStringLiteral("翻译的")));
    QApplication::processEvents();
    for (QTextBlock block = well.editor().document()->begin(); block.isValid();
         block = block.next()) {
        ASSERT_LE(block.length(), longestParagraph + 3);
    }
    const ProcessorTime time;
    constexpr int presses = 20;
    for (int i = 0; i < presses; ++i) {
        QTest::keyClick(&well.editor(), Qt::Key_A);
        (void)well.isBlank();
        well.editor().viewport()->repaint();
    }
    // Whole paragraphs would take seconds for each.
    EXPECT_LT(time.milliseconds() / presses, 150);
}

TEST_F(EditableWellTest, isBlankUntilThereIsSomethingToRead)
{
    EXPECT_TRUE(well.isBlank());
    QTest::keyClick(&well.editor(), Qt::Key_Space);
    paste(QStringLiteral("\n\u3000\n"));
    EXPECT_TRUE(well.isBlank());
    paste(QStringLiteral("."));
    EXPECT_FALSE(well.isBlank());
}

TEST_F(EditableWellTest, takesNoFormatsFromOtherPrograms)
{
    auto* data = new QMimeData;
    data->setHtml(QStringLiteral("<b>bold</b>"));
    data->setText(QStringLiteral("bold"));
    QGuiApplication::clipboard()->setMimeData(data);
    well.editor().paste();
    EXPECT_EQ(well.text(), QStringLiteral("bold"));
    (void)copied();
    EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasHtml());
}

TEST_F(EditableWellTest, fillsTheRoomThatThereIs)
{
    EXPECT_FALSE(well.hasHeightForWidth());
    EXPECT_LT(well.sizeHint().height(), 100);
}

} // namespace
} // namespace zelvane::test
