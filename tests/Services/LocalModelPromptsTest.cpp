#include "Services/LocalModelPrompts.h"

#include "pipeline/Prompts.h"
#include "settings/FactorySettings.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const QLocale english(QLocale::English);

ModelJob jobOf(SmartOfflineVariant variant, const QStringList& lines)
{
    ModelJob job;
    job.variant = variant;
    job.lines = lines;
    job.sourceLanguage = QStringLiteral("English (US)");
    job.targetLanguage = QStringLiteral("German");
    job.systemPrompt =
        renderPrompt(defaultPromptTemplate(), job.sourceLanguage, job.targetLanguage);
    return job;
}

/// What Hy-MT2 is told of a text, with a wish of the user if one is given.
QString hyMT2(const QString& text, const QString& style = {})
{
    ModelJob job = jobOf(SmartOfflineVariant::hyMT2_7b, text.split(u'\n'));
    if (!style.isEmpty()) {
        job.systemPrompt = style;
    }
    const ChatMessages messages = buildChatMessages(job, english);
    EXPECT_EQ(messages.system, QString());
    return messages.user;
}

QMap<QString, QStringList> manyHints(int count)
{
    QMap<QString, QStringList> hints;
    for (int i = 10; i < 10 + count; ++i) {
        hints.insert(QStringLiteral("t%1").arg(i), {QStringLiteral("z%1").arg(i)});
    }
    return hints;
}

TEST(HyMT2Prompt, asksPlainlyWithTheDefaultPrompt)
{
    EXPECT_EQ(hyMT2(QStringLiteral("Good morning")),
              QStringLiteral("Translate the following text into German. Note that you should only "
                             "output the translated result without any additional "
                             "explanation:\nGood morning"));
}

TEST(HyMT2Prompt, saysNothingOfLines)
{
    EXPECT_EQ(hyMT2(QStringLiteral("Good morning\n  Good night ")),
              QStringLiteral("Translate the following text into German. Note that you should only "
                             "output the translated result without any additional "
                             "explanation:\nGood morning\n  Good night "));
}

TEST(HyMT2Prompt, refersToADictionaryBeforeAllElse)
{
    ModelJob job = jobOf(SmartOfflineVariant::hyMT2_7b, {QStringLiteral("<b>apple</b>|tree|")});
    job.systemPrompt = QStringLiteral("Write like a pirate.");
    job.glossaryHints = {{QStringLiteral("apple"), {QStringLiteral("Apfel")}},
                         {QStringLiteral("tree"), {QStringLiteral("Baum")}},
                         {QStringLiteral("house"), {QStringLiteral("Haus")}}};
    EXPECT_EQ(buildChatMessages(job, english).user,
              QStringLiteral("Reference the following translations:\napple translates to "
                             "Apfel\ntree translates to Baum\nTranslate the following text into "
                             "German. Note that you must ONLY output the translated result without "
                             "any additional explanation:\n<b>apple</b>|tree|"));
}

TEST(HyMT2Prompt, aDictionaryWithoutATranslationIsNone)
{
    ModelJob job = jobOf(SmartOfflineVariant::hyMT2_7b, {QStringLiteral("apple")});
    job.glossaryHints = {{QStringLiteral("apple"), {}}};
    EXPECT_EQ(buildChatMessages(job, english).user,
              QStringLiteral("Translate the following text into German. Note that you should only "
                             "output the translated result without any additional "
                             "explanation:\napple"));
}

TEST(HyMT2Prompt, keepsTheStructureOfMarkup)
{
    EXPECT_EQ(
        hyMT2(QStringLiteral("<b>bold</b>|a|b"), QStringLiteral("Write like a pirate.")),
        QStringLiteral(
            "### Task\nTranslate the user-facing text within the following XML/HTML data into "
            "German.\n### Strict Rules\n1. Structure Preservation: You MUST preserve the original "
            "XML/HTML data structure, nesting, hierarchy, and indentation exactly as they are.\n2. "
            "Selective Translation: Translate ONLY the visible, user-facing text "
            "content/values.\n3. Strict Non-Translation: NEVER translate or alter code tags, keys, "
            "properties, object names, or variable placeholders. Leave them exactly in their "
            "original English/code form.\n### Source Data\n<b>bold</b>|a|b"));
}

TEST(HyMT2Prompt, whatOnlyBeginsLikeMarkupIsPlain)
{
    const QString plain =
        QStringLiteral("Translate the following text into German. Note that you should only output "
                       "the translated result without any additional explanation:\n");
    EXPECT_EQ(hyMT2(QStringLiteral("a < b")), plain + QStringLiteral("a < b"));
    EXPECT_EQ(hyMT2(QStringLiteral("<note")), plain + QStringLiteral("<note"));
    EXPECT_EQ(hyMT2(QStringLiteral("{\"a\": broken")), plain + QStringLiteral("{\"a\": broken"));
}

TEST(HyMT2Prompt, keepsDelimiters)
{
    const QString delimited = QStringLiteral(
        "Please accurately translate the following text into German.\nYou must retain the exact "
        "same number of delimiters in the translation. Strictly do not omit, escape, or translate "
        "these symbols, and pay close attention to their placement.\n");
    const QString pirate = QStringLiteral("Write like a pirate.");
    EXPECT_EQ(hyMT2(QStringLiteral("a|b|c"), pirate), delimited + QStringLiteral("a|b|c"));
    EXPECT_EQ(hyMT2(QStringLiteral("{\"a\": |x\ty\tz")),
              delimited + QStringLiteral("{\"a\": |x\ty\tz"));
}

TEST(HyMT2Prompt, putsAShortStyleInBrackets)
{
    EXPECT_EQ(hyMT2(QStringLiteral("Hello"), QStringLiteral(" Write like a pirate.\n")),
              QStringLiteral("Please translate the following text into German. Note that the "
                             "translation style must strictly conform to [Write like a "
                             "pirate.]:\nHello"));
}

TEST(HyMT2Prompt, aStyleIsShortUpTo160Characters)
{
    const QString atLimit(160, u'x');
    EXPECT_EQ(hyMT2(QStringLiteral("Hello"), atLimit),
              QStringLiteral("Please translate the following text into German. Note that the "
                             "translation style must strictly conform to [") +
                  atLimit + QStringLiteral("]:\nHello"));
    const QString beyond(161, u'x');
    EXPECT_EQ(hyMT2(QStringLiteral("Hello"), beyond),
              QStringLiteral("[Source Text]\nHello\n[Translation Tasks]\n1. ") + beyond +
                  QStringLiteral("\n2. Translate the [Source Text] into German."));
    const QString accents = QStringLiteral("e\u0301").repeated(160); // 320 units of UTF-16
    EXPECT_TRUE(hyMT2(QStringLiteral("Hello"), accents).startsWith(QStringLiteral("Please")));
}

TEST(HyMT2Prompt, makesAListOfTasksOfLongerWishes)
{
    EXPECT_EQ(hyMT2(QStringLiteral("Hello\nBye"), QStringLiteral("Be kind.\n\n  Be brief. \r\n.")),
              QStringLiteral("[Source Text]\nHello\nBye\n[Translation Tasks]\n1. Be kind.\n2. Be "
                             "brief.\n3. .\n4. Translate the [Source Text] into German."));
}

TEST(HyMT2Prompt, keepsEightTasks)
{
    EXPECT_EQ(hyMT2(QStringLiteral("Hello"), QStringLiteral("a\nb\nc\nd\n \ne\nf\ng\nh\ni\nj")),
              QStringLiteral("[Source Text]\nHello\n[Translation Tasks]\n1. a\n2. b\n3. c\n4. "
                             "d\n5. e\n6. f\n7. g\n8. h\n9. Translate the [Source Text] into "
                             "German."));
}

TEST(HyMT2Prompt, refersToTwentyTermsAtMost)
{
    ModelJob job = jobOf(SmartOfflineVariant::hyMT2_7b, {manyHints(25).keys().join(u' ')});
    job.glossaryHints = manyHints(25);
    EXPECT_EQ(buildChatMessages(job, english).user.count(QStringLiteral(" translates to ")), 20);
}

TEST(EuroLLMPrompt, namesTheTargetOnly)
{
    const ChatMessages messages = buildChatMessages(
        jobOf(SmartOfflineVariant::euroLLM_9b, {QStringLiteral("Good"), QStringLiteral("Bad")}),
        english);
    EXPECT_EQ(messages.system,
              QStringLiteral("You are a professional translator. Return only the translation."));
    EXPECT_EQ(messages.user,
              QStringLiteral("Translate the following text into German. Output only the "
                             "translation, with no notes or quotes.\n\nGood\nBad"));
}

TEST(EuroLLMPrompt, putsTheDictionaryBeforeTheText)
{
    ModelJob job = jobOf(SmartOfflineVariant::euroLLM_9b, {QStringLiteral("apple")});
    job.glossaryHints = {{QStringLiteral("apple"),
                          {QStringLiteral("Apfel"), QStringLiteral("Apfelbaum"),
                           QStringLiteral("Obst"), QStringLiteral("Frucht")}}};
    EXPECT_EQ(buildChatMessages(job, english).user,
              QStringLiteral("Translate the following text into German. Output only the "
                             "translation, with no notes or quotes.\n\nDictionary for terms in "
                             "this input. Pick one of the listed options for each,\ndo not invent "
                             "another word:\napple = Apfel / Apfelbaum / Obst\n\napple"));
}

TEST(EuroLLMPrompt, hasUpToFortyTermsInItsDictionary)
{
    for (const int count : {25, 40, 50}) {
        ModelJob job = jobOf(SmartOfflineVariant::euroLLM_9b, {manyHints(count).keys().join(u' ')});
        job.glossaryHints = manyHints(count);
        EXPECT_EQ(buildChatMessages(job, english).user.count(QStringLiteral(" = z")),
                  std::min(count, 40));
    }
}

TEST(Lmt60Prompt, cuesBothLanguages)
{
    const ChatMessages messages = buildChatMessages(
        jobOf(SmartOfflineVariant::lmt60_4b, {QStringLiteral("Good morning")}), english);
    EXPECT_EQ(messages.system,
              QStringLiteral("You are a professional translator. Return only the translation."));
    EXPECT_EQ(messages.user,
              QStringLiteral("Translate the following text from English into "
                             "German:\nEnglish:\nGood morning\nGerman:\nReturn the translation as "
                             "a single block of text.\n"));
}

TEST(Lmt60Prompt, cuesTheTargetOnlyForAnUnknownSource)
{
    ModelJob job =
        jobOf(SmartOfflineVariant::lmt60_4b, {QStringLiteral("Good"), QStringLiteral("Bad")});
    for (const QString& source : {QStringLiteral("Any Language"), QStringLiteral(" AUTO ")}) {
        job.sourceLanguage = source;
        EXPECT_EQ(buildChatMessages(job, english).user,
                  QStringLiteral("Translate the following text into German:\nGood\nBad\nGerman:\n"
                                 "The input has 2 lines. Return exactly 2 lines, one translation "
                                 "per line, in the same order.\n"));
    }
}

TEST(Lmt60Prompt, putsRuleAndDictionaryBehindTheCue)
{
    ModelJob job = jobOf(SmartOfflineVariant::lmt60_4b, QStringList(12, QStringLiteral("apple")));
    job.glossaryHints = {{QStringLiteral("apple"), {QStringLiteral("Apfel")}}};
    EXPECT_EQ(buildChatMessages(job, english).user,
              QStringLiteral("Translate the following text from English into "
                             "German:\nEnglish:\n") +
                  QStringLiteral("apple\n").repeated(12) +
                  QStringLiteral("German:\nThe input has 12 lines. Return exactly 12 lines, one "
                                 "translation per line, in the same order.\n\nDictionary for terms "
                                 "in this input. Pick one of the listed options for each,\ndo not "
                                 "invent another word:\napple = Apfel\n"));
}

TEST(LocalModelPrompts, nameLanguagesAsTheModelsKnowThem)
{
    for (const SmartOfflineVariant variant : smartOfflineVariants()) {
        ModelJob job = jobOf(variant, {QStringLiteral("Good morning")});
        job.targetLanguage = QStringLiteral("Norwegian");
        EXPECT_TRUE(buildChatMessages(job, english)
                        .user.contains(QStringLiteral(" into Norwegian Bokmål")));
        job.targetLanguage = QStringLiteral("old NORSE");
        EXPECT_TRUE(
            buildChatMessages(job, english).user.contains(QStringLiteral(" into old NORSE")));
    }
}

TEST(LocalModelPrompts, nameTheTargetInEveryWordingOfHyMT2)
{
    ModelJob job = jobOf(SmartOfflineVariant::hyMT2_7b, {});
    job.targetLanguage = QStringLiteral("Norwegian");
    const auto isNamed = [&](const QString& text, const QString& style) {
        job.lines = {text};
        job.systemPrompt = style;
        return buildChatMessages(job, english)
            .user.contains(QStringLiteral(" into Norwegian Bokmål."));
    };
    EXPECT_TRUE(isNamed(QStringLiteral("Hello"), {}));
    EXPECT_TRUE(isNamed(QStringLiteral("<b>Hello</b>"), {}));
    EXPECT_TRUE(isNamed(QStringLiteral("a|b|c"), {}));
    EXPECT_TRUE(isNamed(QStringLiteral("Hello"), QStringLiteral("Be kind.")));
    EXPECT_TRUE(isNamed(QStringLiteral("Hello"), QStringLiteral("Be kind.\nBe brief.")));
    job.glossaryHints = {{QStringLiteral("hello"), {QStringLiteral("hei")}}};
    EXPECT_TRUE(isNamed(QStringLiteral("Hello"), {}));
}

TEST(LocalModelPrompts, leavePlaceholdersOfTheTextAlone)
{
    EXPECT_TRUE(hyMT2(QStringLiteral("%1 of %2, {{target}} \\n"))
                    .endsWith(QStringLiteral(":\n%1 of %2, {{target}} \\n")));
}

} // namespace
} // namespace zelvane::test
