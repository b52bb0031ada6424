#include "Services/PromptStyle.h"

#include "pipeline/Prompts.h"
#include "settings/FactorySettings.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(PromptStyle, theRulesOfAFactoryPromptGiveItAway)
{
    EXPECT_TRUE(isDefaultPromptText(QStringLiteral("Be kind. RULES, most important FIRST: none.")));
    EXPECT_FALSE(isDefaultPromptText(QStringLiteral("Rules: most important first.")));
}

TEST(PromptStyle, theCallForTheTranslationAloneGivesItAway)
{
    EXPECT_TRUE(isDefaultPromptText(QStringLiteral("No preamble! Output the Translation only.")));
    EXPECT_FALSE(isDefaultPromptText(QStringLiteral("Output the translation only.")));
    EXPECT_FALSE(isDefaultPromptText(QStringLiteral("No preamble.")));
}

TEST(PromptStyle, fewLinesThatBeginAsAFactoryPromptDoesAreOne)
{
    EXPECT_TRUE(isDefaultPromptText(QStringLiteral("Translate the text below")));
    EXPECT_TRUE(isDefaultPromptText(QStringLiteral("TRANSLATE the following text FROM A to B.")));
    EXPECT_FALSE(isDefaultPromptText(QStringLiteral("Translate the following text to B.")));
    EXPECT_FALSE(isDefaultPromptText(QStringLiteral("Please translate the text below")));
}

TEST(PromptStyle, aLongPromptThatBeginsSoIsTheUsersOwn)
{
    const QString four =
        QStringLiteral("Translate the following text from A to B.\n2\n \t\n3\n\n4");
    EXPECT_TRUE(isDefaultPromptText(four));
    EXPECT_EQ(effectiveStylePrompt(four), std::nullopt);
    const QString five = four + QStringLiteral("\n5");
    EXPECT_FALSE(isDefaultPromptText(five));
    EXPECT_EQ(effectiveStylePrompt(five), five);
    // A carriage return alone counts as a line that isn't blank.
    EXPECT_FALSE(isDefaultPromptText(four + QStringLiteral("\n\r")));
}

TEST(PromptStyle, theDefaultPromptIsNoStyleWhateverTheLanguages)
{
    for (const QString& source : {QStringLiteral("Any Language"), QStringLiteral("German")}) {
        const QString prompt =
            renderPrompt(defaultPromptTemplate(), source, QStringLiteral("Polish"));
        EXPECT_EQ(effectiveStylePrompt(prompt), std::nullopt);
    }
}

TEST(PromptStyle, aWishOfTheUserIsTrimmed)
{
    EXPECT_EQ(effectiveStylePrompt(QStringLiteral(" \n Write like a pirate. \u00a0\n")),
              QStringLiteral("Write like a pirate."));
    EXPECT_EQ(effectiveStylePrompt(QStringLiteral(" \n\t ")), std::nullopt);
    EXPECT_EQ(effectiveStylePrompt(QString()), std::nullopt);
    // It is judged when trimmed.
    EXPECT_EQ(effectiveStylePrompt(QStringLiteral("\n Translate the text below.")), std::nullopt);
}

} // namespace
} // namespace zelvane::test
