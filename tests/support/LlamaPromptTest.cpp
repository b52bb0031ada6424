#include "support/llama/LlamaPrompt.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

QString found(const char* prompt)
{
    return textToTranslate(QString::fromUtf8(prompt));
}

TEST(LlamaPromptTest, FindsTheTextInTheWordingsOfHyMT2)
{
    EXPECT_EQ(
        found("Translate the following text into German. Note that you should only output the "
              "translated result without any additional explanation:\nHello\n\nWorld"),
        QStringLiteral("Hello\n\nWorld"));
    EXPECT_EQ(found("Reference the following translations:\ncar translates to Auto\nTranslate the "
                    "following text into German. Note that you must ONLY output the translated "
                    "result without any additional explanation:\nThe car"),
              QStringLiteral("The car"));
    EXPECT_EQ(found("### Task\nTranslate the user-facing text within the following XML/HTML data "
                    "into German.\n### Strict Rules\n1. One.\n### Source Data\n<b>Hi</b>"),
              QStringLiteral("<b>Hi</b>"));
    EXPECT_EQ(found("Please accurately translate the following text into German.\nYou must retain "
                    "the exact same number of delimiters in the translation. Strictly do not omit, "
                    "escape, or translate these symbols, and pay close attention to their "
                    "placement.\na|b|c"),
              QStringLiteral("a|b|c"));
    EXPECT_EQ(found("Please translate the following text into German. Note that the translation "
                    "style must strictly conform to [be kind]:\nHello"),
              QStringLiteral("Hello"));
    EXPECT_EQ(
        found("[Source Text]\nHello\nWorld\n[Translation Tasks]\n1. Be kind\n2. Translate the "
              "[Source Text] into German."),
        QStringLiteral("Hello\nWorld"));
}

TEST(LlamaPromptTest, FindsTheTextInTheWordingOfEuroLLM)
{
    EXPECT_EQ(
        found("Translate the following text into German. Output only the translation, with no "
              "notes or quotes.\n\nHello\nWorld"),
        QStringLiteral("Hello\nWorld"));
    EXPECT_EQ(
        found("Translate the following text into German. Output only the translation, with no "
              "notes or quotes.\n\nDictionary for terms in this input. Pick one of the listed "
              "options for each,\ndo not invent another word:\ncar = Auto / Wagen\n\nThe car"),
        QStringLiteral("The car"));
}

TEST(LlamaPromptTest, FindsTheTextInTheWordingsOfLMT60)
{
    EXPECT_EQ(
        found("Translate the following text from English into German:\nEnglish:\nHello: you\n"
              "World\nGerman:\nThe input has 2 lines. Return exactly 2 lines, one translation "
              "per line, in the same order.\n"),
        QStringLiteral("Hello: you\nWorld"));
    EXPECT_EQ(found("Translate the following text into German:\nHello\nGerman:\nReturn the "
                    "translation as a single block of text.\n"),
              QStringLiteral("Hello"));
}

TEST(LlamaPromptTest, TakesAnUnknownWordingAsItIs)
{
    EXPECT_EQ(found("What is this?"), QStringLiteral("What is this?"));
    EXPECT_EQ(found(""), QString());
}

} // namespace
} // namespace zelvane::test
