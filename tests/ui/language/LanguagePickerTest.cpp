#include "settings/LanguageNames.h"
#include "settings/Localization.h"
#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/language/SearchableLanguagePicker.h"

#include <gmock/gmock.h>

#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::SizeIs;

class LanguagePickerChoiceTest : public UiTest
{
protected:
    ~LanguagePickerChoiceTest() override { installLocalization(nullptr); }

    [[nodiscard]] static QStringList values(const LanguagePickerChoice& choice,
                                            const QString& query)
    {
        QStringList values;
        for (const LanguagePickerRow& row : choice.rows(query)) {
            values += (row.isCustom ? QStringLiteral("+") : QString()) + row.value;
        }
        return values;
    }

    LanguagePickerChoice choice{.options = {QStringLiteral("Any Language"),
                                            QStringLiteral("German"), QStringLiteral("Polish"),
                                            QStringLiteral("Portuguese")},
                                .allowsCustom = true};
};

TEST_F(LanguagePickerChoiceTest, twoKindsOfALanguageReadDifferently)
{
    choice.options = {QStringLiteral("English (US)"), QStringLiteral("English (UK)"),
                      QStringLiteral("French")};
    QStringList texts;
    for (const LanguagePickerRow& row : choice.rows(QString())) {
        texts += row.text;
    }
    EXPECT_THAT(texts, ElementsAre(QStringLiteral("English (US)"), QStringLiteral("English (UK)"),
                                   QStringLiteral("French")));
    EXPECT_EQ(choice.optionNamed(QStringLiteral("english")), QStringLiteral("English (US)"));
}

TEST_F(LanguagePickerChoiceTest, anEmptyQueryListsAllOptions)
{
    EXPECT_EQ(values(choice, {}), choice.options);
    EXPECT_EQ(values(choice, QStringLiteral("  ")), choice.options);
}

TEST_F(LanguagePickerChoiceTest, aQueryKeepsWhatContainsItInWhateverCase)
{
    EXPECT_THAT(
        values(choice, QStringLiteral("PO")),
        ElementsAre(QStringLiteral("Polish"), QStringLiteral("Portuguese"), QStringLiteral("+PO")));
    EXPECT_THAT(values(choice, QStringLiteral("guese")),
                ElementsAre(QStringLiteral("Portuguese"), QStringLiteral("+guese")));
}

TEST_F(LanguagePickerChoiceTest, namesInTheInterfaceLanguageMatchAsWell)
{
    installLocalization(&defaults);
    settings.setAppLanguage(AppLanguage::german);
    EXPECT_THAT(values(choice, QStringLiteral("deut")),
                ElementsAre(QStringLiteral("German"), QStringLiteral("+deut")));
    EXPECT_EQ(choice.rows({})[1].text, QStringLiteral("Deutsch"));
    choice.localizesLanguageNames = false;
    EXPECT_EQ(choice.rows({})[1].text, QStringLiteral("German"));
}

TEST_F(LanguagePickerChoiceTest, theAutomaticOptionIsFoundByEachOfItsWords)
{
    choice.allowsCustom = false;
    for (const char* word :
         {"any language", "any", "auto", "auto-detect", "autodetect", "detect", "DETE"}) {
        EXPECT_THAT(values(choice, QString::fromLatin1(word)),
                    ElementsAre(QStringLiteral("Any Language")))
            << word;
    }
}

TEST_F(LanguagePickerChoiceTest, offersTheQueryItselfUnlessItIsAnOption)
{
    EXPECT_THAT(values(choice, QStringLiteral(" Klingon ")),
                ElementsAre(QStringLiteral("+Klingon")));
    EXPECT_THAT(values(choice, QStringLiteral("German")), ElementsAre(QStringLiteral("German")));
    EXPECT_THAT(values(choice, QStringLiteral("german")), ElementsAre(QStringLiteral("German")));
    choice.allowsCustom = false;
    EXPECT_TRUE(values(choice, QStringLiteral("Klingon")).isEmpty());
}

TEST_F(LanguagePickerChoiceTest, returnChoosesTheOptionThatIsSpeltOutOrTheCustomOne)
{
    EXPECT_EQ(choice.valueForReturn(QStringLiteral("german ")), QStringLiteral("German"));
    EXPECT_EQ(choice.valueForReturn(QStringLiteral("Klingon")), QStringLiteral("Klingon"));
    EXPECT_EQ(choice.valueForReturn(QStringLiteral("port")), QStringLiteral("port"));
    EXPECT_EQ(choice.valueForReturn({}), QString());
    choice.allowsCustom = false;
    EXPECT_EQ(choice.valueForReturn(QStringLiteral("port")), QStringLiteral("Portuguese"));
    EXPECT_EQ(choice.valueForReturn(QStringLiteral("po")), QString());
}

class LanguagePickerTest : public UiTest
{
protected:
    LanguagePickerTest()
    {
        picker.setAccessibleName(QStringLiteral("Target"));
        picker.setSelection(QStringLiteral("German"));
        QObject::connect(&picker, &SearchableLanguagePicker::selectionChosen, &picker,
                         [this](const QString& language) { chosen += language; });
        picker.show();
    }

    void open()
    {
        QTest::mouseClick(&picker, Qt::LeftButton);
        ASSERT_TRUE(picker.isOpen());
    }

    void type(const QString& text) { QTest::keyClicks(picker.searchField(), text); }
    void press(Qt::Key key) { QTest::keyClick(picker.searchField(), key); }

    SearchableLanguagePicker picker{
        theme, {.options = offeredLanguages(), .allowsCustom = true}, 180};
    QStringList chosen;
};

TEST_F(LanguagePickerTest, closedItIsAsWideAsAskedAndShowsTheLanguage)
{
    EXPECT_EQ(picker.sizeHint().width(), 180);
    EXPECT_EQ(picker.valueText(), QStringLiteral("German"));
    EXPECT_EQ(picker.popover(), nullptr);
    const auto* element = QAccessible::queryAccessibleInterface(&picker);
    EXPECT_EQ(element->role(), QAccessible::ComboBox);
    EXPECT_EQ(element->text(QAccessible::Name), QStringLiteral("Target"));
    EXPECT_EQ(element->text(QAccessible::Value), QStringLiteral("German"));
}

TEST_F(LanguagePickerTest, opensAPopoverOfTheTokensSizeWithTheSelectionInView)
{
    open();
    EXPECT_EQ(picker.popover()->panelFrame().size(), QSize(240, 300));
    EXPECT_EQ(picker.list()->count(), offeredLanguages().size());
    EXPECT_EQ(picker.list()->currentIndex().data().toString(), QStringLiteral("German"));
    EXPECT_TRUE(picker.list()->viewport()->rect().contains(
        picker.list()->visualRect(picker.list()->currentIndex())));
    EXPECT_TRUE(picker.searchField()->hasFocus());
}

TEST_F(LanguagePickerTest, aClickOnARowChoosesIt)
{
    open();
    type(QStringLiteral("polish"));
    ASSERT_EQ(picker.list()->count(), 1);
    QTest::mouseClick(picker.list()->viewport(), Qt::LeftButton, {},
                      picker.list()->visualRect(picker.list()->model()->index(0, 0)).center());
    EXPECT_EQ(picker.selection(), QStringLiteral("Polish"));
    EXPECT_THAT(chosen, ElementsAre(QStringLiteral("Polish")));
    EXPECT_FALSE(picker.isOpen());
    // The query is gone with the list.
    open();
    EXPECT_EQ(picker.searchField()->text(), QString());
}

TEST_F(LanguagePickerTest, returnTakesTheQueryAsACustomLanguage)
{
    open();
    type(QStringLiteral("Xyzish"));
    press(Qt::Key_Return);
    EXPECT_EQ(picker.selection(), QStringLiteral("Xyzish"));
    EXPECT_EQ(picker.valueText(), QStringLiteral("Xyzish"));
}

TEST_F(LanguagePickerTest, arrowKeysWalkTheListFromTheSearchField)
{
    open();
    type(QStringLiteral("port"));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(picker.selection(), QStringLiteral("Portuguese"));
}

TEST_F(LanguagePickerTest, choosingTheSameTellsNobody)
{
    open();
    type(QStringLiteral("german"));
    press(Qt::Key_Return);
    EXPECT_FALSE(picker.isOpen());
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(LanguagePickerTest, escEmptiesTheSearchAndThenCloses)
{
    open();
    type(QStringLiteral("x"));
    press(Qt::Key_Escape);
    ASSERT_TRUE(picker.isOpen());
    press(Qt::Key_Escape);
    EXPECT_FALSE(picker.isOpen());
    EXPECT_EQ(picker.selection(), QStringLiteral("German"));
}

TEST_F(LanguagePickerTest, saysThatNothingMatchesWhereNothingElseMayBeChosen)
{
    picker.setChoice({.options = offeredLanguages(), .allowsCustom = false});
    open();
    type(QStringLiteral("Klingon"));
    const auto labels = picker.popover()->findChildren<ThemedLabel*>();
    ASSERT_THAT(labels, SizeIs(1));
    EXPECT_EQ(labels[0]->text(), QStringLiteral("No matches"));
    EXPECT_TRUE(labels[0]->isVisible());
    EXPECT_FALSE(picker.list()->isVisible());
    press(Qt::Key_Return);
    EXPECT_TRUE(picker.isOpen());
}

TEST_F(LanguagePickerTest, namesEveryControlForScreenReaders)
{
    open();
    EXPECT_EQ(unnamedControls(*picker.popover()).join(u' ').toStdString(), "");
    EXPECT_THAT(controlNames(*picker.popover()).first(3),
                ElementsAre(QStringLiteral("Target"), QStringLiteral("Search or type custom…"),
                            QStringLiteral("Target")));
}

struct PopoverCase
{
    const char* name;
    QRect anchor;
    QPoint expected;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

class PopoverOrigin : public ::testing::TestWithParam<PopoverCase>
{
};

TEST_P(PopoverOrigin, isAtTheControlAndOnTheScreen)
{
    EXPECT_EQ(
        popoverOrigin(GetParam().anchor, {240, 300}, QRect(0, 0, 1000, 800), GetParam().direction),
        GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Places, PopoverOrigin,
    ::testing::Values(
        PopoverCase{"below", QRect(100, 100, 150, 30), {100, 134}},
        PopoverCase{"belowFromTheRight", QRect(400, 100, 150, 30), {310, 134}, Qt::RightToLeft},
        PopoverCase{"aboveWhereThereIsNoRoomBelow", QRect(100, 700, 150, 30), {100, 396}},
        PopoverCase{"notOverTheRightEdge", QRect(900, 100, 90, 30), {754, 134}},
        PopoverCase{"notOverTheLeftEdge", QRect(-20, 100, 90, 30), {6, 134}}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace zelvane::test
