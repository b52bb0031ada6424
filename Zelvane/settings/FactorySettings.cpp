#include "settings/FactorySettings.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zelvane {

namespace {

const std::array<QString, 3>& earlierPrompts()
{
    static const std::array prompts{
        QStringLiteral(
            "Translate the following text from {{source}} to {{target}}.\n"
            "If the source is auto-detected, identify the language of the text first, then "
            "translate.\n"
            "Return ONLY the translation — no quotes, no explanations, no preamble.\n"
            "Preserve meaning, tone, line breaks, and proper names when appropriate."),
        QStringLiteral(
            "Translate the following text from {{source}} to {{target}}.\n"
            "If the source is auto-detected, identify the language of the text first, then "
            "translate.\n"
            "Return ONLY the translation — no quotes, no explanations, no preamble.\n"
            "Preserve the exact meaning, tone, register, emotional force, irony, line breaks, "
            "and proper names.\n"
            "Render slang, colloquialisms, contractions, filler words, profanity, fragments, "
            "and deliberate repetition with natural functional equivalents in the target "
            "language. Do not sanitize, formalize, normalize, or explain them.\n"
            "Translate every passage and quotation written in the source language; never leave "
            "source-language text untranslated unless it is a proper name or inherently "
            "untranslatable token.\n"
            "Prefer idiomatic target-language phrasing over literal calques, but do not omit "
            "details or add information."),
        QStringLiteral(
            "Translate the text below from {{source}} to {{target}}.\n\n"
            "Rules, most important first:\n"
            "1. Output the translation only. No preamble, no notes, no surrounding quotes.\n"
            "2. Leave nothing in {{source}}. Translate quoted phrases, single words, examples, "
            "slang and filler words too. Only proper names may stay unchanged.\n"
            "3. Use {{target}} punctuation and {{target}} quotation marks, never the source "
            "ones.\n"
            "4. Keep the register. Slang stays slang, crude stays crude, sloppy stays sloppy. "
            "Never make the text more formal, more polite, or more literary than the "
            "original.\n"
            "5. Use natural {{target}} idioms. Never render an idiom or a set phrase word by "
            "word.\n"
            "6. Keep every detail, add nothing, and keep the original line breaks.\n\n"
            "If the source language is auto-detected, identify it first, then translate."),
    };
    return prompts;
}

using Languages = std::pair<QString, QString>;

const std::array<QList<Languages>, 2>& earlierPairSets()
{
    static const QString any = QStringLiteral("Any Language");
    static const QString english = QStringLiteral("English");
    static const QString polish = QStringLiteral("Polish");
    static const QString russian = QStringLiteral("Russian");
    static const std::array sets{
        QList<Languages>{{any, english}, {english, polish}, {russian, polish}, {polish, russian}},
        QList<Languages>{{any, english}, {any, polish}},
    };
    return sets;
}

bool hasLanguages(const LanguagePair& pair, const Languages& languages)
{
    return pair.source.compare(languages.first, Qt::CaseInsensitive) == 0 &&
           pair.target.compare(languages.second, Qt::CaseInsensitive) == 0;
}

} // namespace

const QString& defaultPromptTemplate()
{
    static const QString prompt = QStringLiteral(
        "Translate the text below from {{source}} to {{target}}.\n\n"
        "Rules, most important first:\n"
        "1. Output the translation only. No preamble, no notes, no surrounding quotes.\n"
        "2. Leave nothing in {{source}}. Translate quoted phrases.");
    return prompt;
}

bool isEarlierFactoryPrompt(const QString& prompt)
{
    return std::ranges::find(earlierPrompts(), prompt) != earlierPrompts().end();
}

bool isEarlierFactoryPairSet(const QList<LanguagePair>& pairs)
{
    return std::ranges::any_of(earlierPairSets(), [&](const QList<Languages>& set) {
        return std::ranges::equal(pairs, set, hasLanguages);
    });
}

} // namespace zelvane
