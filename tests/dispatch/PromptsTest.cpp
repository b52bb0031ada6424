#include "pipeline/Prompts.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const QString factoryPrompt =
    QStringLiteral("Translate the text below from {{source}} to {{target}}.\n\n"
                   "Rules, most important first:\n"
                   "1. Output the translation only. No preamble, no notes, no surrounding quotes.\n"
                   "2. Leave nothing in {{source}}. Translate quoted phrases.");

LanguagePair pairWithPrompt(bool useCustomPrompt, const QString& customPrompt)
{
    LanguagePair pair;
    pair.useCustomPrompt = useCustomPrompt;
    pair.customPrompt = customPrompt;
    return pair;
}

TEST(EffectivePrompt, isTheTemplateUnlessThePairHasItsOwn)
{
    EXPECT_EQ(
        effectivePrompt(QStringLiteral("global"), pairWithPrompt(false, QStringLiteral("own"))),
        QStringLiteral("global"));
}

TEST(EffectivePrompt, isThePairsOwnUntrimmed)
{
    EXPECT_EQ(
        effectivePrompt(QStringLiteral("global"), pairWithPrompt(true, QStringLiteral("  own\n"))),
        QStringLiteral("  own\n"));
}

TEST(EffectivePrompt, isTheFactorysIfThePairsOwnIsLeftBlank)
{
    EXPECT_EQ(
        effectivePrompt(QStringLiteral("global"), pairWithPrompt(true, QStringLiteral("   "))),
        factoryPrompt);
    EXPECT_EQ(effectivePrompt(QStringLiteral("global"), pairWithPrompt(true, QString())),
              factoryPrompt);
}

TEST(RenderPrompt, putsTheLanguagesInEverywhere)
{
    EXPECT_EQ(renderPrompt(QStringLiteral("{{source}}>{{target}}, {{source}}>{{target}}"),
                           QStringLiteral("English (US)"), QStringLiteral("German")),
              QStringLiteral("English (US)>German, English (US)>German"));
}

TEST(RenderPrompt, describesAutomaticDetection)
{
    EXPECT_EQ(renderPrompt(QStringLiteral("from {{source}} to {{target}}"),
                           QStringLiteral("Any Language"), QStringLiteral("Any Language")),
              QStringLiteral("from the automatically detected language to Any Language"));
}

TEST(RenderPrompt, matchesPlaceholdersExactly)
{
    EXPECT_EQ(renderPrompt(QStringLiteral("{{Source}} {{ target }} {source}"), QStringLiteral("A"),
                           QStringLiteral("B")),
              QStringLiteral("{{Source}} {{ target }} {source}"));
}

TEST(RenderPrompt, replacesATargetThatTheSourceBroughtIn)
{
    EXPECT_EQ(renderPrompt(QStringLiteral("{{source}}"), QStringLiteral("{{target}}"),
                           QStringLiteral("German")),
              QStringLiteral("German"));
}

} // namespace
} // namespace zelvane::test
