#include "ui/languages/LanguagePickerModel.h"

#include "settings/LanguageNames.h"
#include "settings/Localization.h"
#include "settings/UserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QStringList options{QStringLiteral("Any Language"), QStringLiteral("German"),
                          QStringLiteral("Greek"), QStringLiteral("Norwegian")};

QStringList labels(const LanguagePickerModel& model)
{
    QStringList labels;
    for (const LanguagePickerRow& row : model.rows()) {
        labels += row.isCustom ? u'+' + row.label : row.label;
    }
    return labels;
}

class LanguagePickerModelTest : public ::testing::Test
{
protected:
    ~LanguagePickerModelTest() override { installLocalization(nullptr); }

    LanguagePickerModel model{options, LanguageNameStyle::localized, CustomLanguages::allowed};
    LanguagePickerModel closed{options, LanguageNameStyle::localized, CustomLanguages::refused};
};

TEST_F(LanguagePickerModelTest, listsEverythingForAnEmptyQuery)
{
    model.setSelection(QStringLiteral("Greek"));
    const QList<LanguagePickerRow> rows = model.rows();
    ASSERT_EQ(rows.size(), 4);
    EXPECT_EQ(rows[0].language, QStringLiteral("Any Language"));
    EXPECT_TRUE(rows[2].isSelected);
    EXPECT_FALSE(rows[1].isSelected);
    EXPECT_EQ(model.selectionLabel(), QStringLiteral("Greek"));
}

TEST_F(LanguagePickerModelTest, keepsWhatContainsTheQueryInAnyCase)
{
    closed.setQuery(QStringLiteral(" gRe "));
    EXPECT_THAT(labels(closed), ElementsAre(QStringLiteral("Greek")));
    closed.setQuery(QStringLiteral("weg"));
    EXPECT_THAT(labels(closed), ElementsAre(QStringLiteral("Norwegian")));
}

TEST_F(LanguagePickerModelTest, findsTheAutomaticChoiceByItsOtherWords)
{
    for (const char16_t* word : {u"auto", u"Auto-Detect", u"autodetect", u"detect", u"any"}) {
        closed.setQuery(QString::fromUtf16(word));
        EXPECT_THAT(labels(closed), ElementsAre(QStringLiteral("Any Language")))
            << qPrintable(closed.query());
    }
}

TEST_F(LanguagePickerModelTest, offersWhatIsNoOption)
{
    model.setQuery(QStringLiteral(" Klingon "));
    EXPECT_THAT(labels(model), ElementsAre(QStringLiteral("+Klingon")));
    model.setQuery(QStringLiteral("ger"));
    EXPECT_THAT(labels(model), ElementsAre(QStringLiteral("German"), QStringLiteral("+ger")));
    model.setQuery(QStringLiteral("german"));
    EXPECT_THAT(labels(model), ElementsAre(QStringLiteral("German")));
    closed.setQuery(QStringLiteral("Klingon"));
    EXPECT_THAT(labels(closed), IsEmpty());
}

TEST_F(LanguagePickerModelTest, returnChoosesWhatWasTyped)
{
    model.setQuery(QStringLiteral(" Klingon"));
    EXPECT_TRUE(model.chooseQuery());
    EXPECT_EQ(model.selection(), QStringLiteral("Klingon"));
    EXPECT_EQ(model.query(), QString());
}

TEST_F(LanguagePickerModelTest, returnChoosesTheFirstRowWhereNothingElseMayBeTyped)
{
    closed.setQuery(QStringLiteral("gr"));
    EXPECT_TRUE(closed.chooseQuery());
    EXPECT_EQ(closed.selection(), QStringLiteral("Greek"));

    closed.setQuery(QStringLiteral("Klingon"));
    EXPECT_FALSE(closed.chooseQuery());
    EXPECT_EQ(closed.selection(), QStringLiteral("Greek"));
    EXPECT_EQ(closed.query(), QStringLiteral("Klingon"));
}

TEST_F(LanguagePickerModelTest, choosingWritesTheSelectionAndForgetsTheQuery)
{
    model.setQuery(QStringLiteral("ger"));
    model.choose(QStringLiteral("German"));
    EXPECT_EQ(model.selection(), QStringLiteral("German"));
    EXPECT_EQ(model.query(), QString());
}

TEST_F(LanguagePickerModelTest, searchesTheNamesOfTheInterfaceLanguageToo)
{
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("de"));
    installLocalization(&defaults);
    closed.setSelection(QStringLiteral("German"));
    EXPECT_EQ(closed.selectionLabel(), QStringLiteral("Deutsch"));
    closed.setQuery(QStringLiteral("deuts"));
    EXPECT_THAT(labels(closed), ElementsAre(QStringLiteral("Deutsch")));
    model.setQuery(QStringLiteral("Deutsch"));
    EXPECT_THAT(labels(model), ElementsAre(QStringLiteral("Deutsch")));

    const LanguagePickerModel stored(options, LanguageNameStyle::asStored,
                                     CustomLanguages::refused);
    EXPECT_THAT(labels(stored),
                ElementsAre(QStringLiteral("Any Language"), QStringLiteral("German"),
                            QStringLiteral("Greek"), QStringLiteral("Norwegian")));
}

} // namespace
} // namespace zelvane::test
