#include "Services/LocalModelPrompts.h"

#include "Services/LocalModelLanguages.h"
#include "Services/PromptGlossary.h"
#include "Services/PromptStyle.h"
#include "Services/SourceLayout.h"
#include "foundation/Text.h"
#include "settings/LanguageNames.h"

namespace zelvane {

namespace {

/// What every wording is made of.
struct Material
{
    const ModelJob& job;
    const QLocale& locale;
    QString text;
    QString target;
};

QString lineRule(const ModelJob& job)
{
    if (job.lines.size() < 2) {
        return QStringLiteral("Return the translation as a single block of text.");
    }
    const QString count = QString::number(job.lines.size());
    return QStringLiteral("The input has ") + count + QStringLiteral(" lines. Return exactly ") +
           count + QStringLiteral(" lines, one translation per line, in the same order.");
}

QString withReferences(const Material& material, const QStringList& references)
{
    return QStringLiteral("Reference the following translations:\n") + references.join(u'\n') +
           QStringLiteral("\nTranslate the following text into ") + material.target +
           QStringLiteral(". Note that you must ONLY output the translated result without any "
                          "additional explanation:\n") +
           material.text;
}

QString ofMarkup(const Material& material)
{
    return QStringLiteral("### Task\nTranslate the user-facing text within the following XML/HTML "
                          "data into ") +
           material.target +
           QStringLiteral(".\n### Strict Rules\n1. Structure Preservation: You MUST preserve the "
                          "original XML/HTML data structure, nesting, hierarchy, and indentation "
                          "exactly as they are.\n2. Selective Translation: Translate ONLY the "
                          "visible, user-facing text content/values.\n3. Strict Non-Translation: "
                          "NEVER translate or alter code tags, keys, properties, object names, or "
                          "variable placeholders. Leave them exactly in their original "
                          "English/code form.\n### Source Data\n") +
           material.text;
}

QString ofDelimited(const Material& material)
{
    return QStringLiteral("Please accurately translate the following text into ") +
           material.target +
           QStringLiteral(".\nYou must retain the exact same number of delimiters in the "
                          "translation. Strictly do not omit, escape, or translate these symbols, "
                          "and pay close attention to their placement.\n") +
           material.text;
}

QString plain(const Material& material)
{
    return QStringLiteral("Translate the following text into ") + material.target +
           QStringLiteral(". Note that you should only output the translated result without any "
                          "additional explanation:\n") +
           material.text;
}

QString inStyle(const Material& material, const QString& style)
{
    return QStringLiteral("Please translate the following text into ") + material.target +
           QStringLiteral(". Note that the translation style must strictly conform to [") + style +
           QStringLiteral("]:\n") + material.text;
}

QString asTaskList(const Material& material, const QString& style)
{
    constexpr qsizetype maximalTasks = 8;
    QStringList tasks;
    for (const QString& piece : style.split(u'\n')) {
        const QString task = text::trimmed(piece);
        if (!task.isEmpty() && tasks.size() < maximalTasks) {
            tasks += QString::number(tasks.size() + 1) + QStringLiteral(". ") + task;
        }
    }
    return QStringLiteral("[Source Text]\n") + material.text +
           QStringLiteral("\n[Translation Tasks]\n") + tasks.join(u'\n') + u'\n' +
           QString::number(tasks.size() + 1) +
           QStringLiteral(". Translate the [Source Text] into ") + material.target + u'.';
}

/// A style that the family takes in brackets; a longer one becomes a list of tasks.
bool isShort(const QString& style)
{
    return !style.contains(u'\n') && text::characterCount(style) < 161;
}

QString hyMT2UserPrompt(const Material& material)
{
    const ModelJob& job = material.job;
    const QStringList references = referenceLines(job.glossaryHints, job.lines, material.locale);
    if (!references.isEmpty()) {
        return withReferences(material, references);
    }
    if (detectStructuredFormat(material.text) == StructuredFormat::markup) {
        return ofMarkup(material);
    }
    if (hasDelimiterLayout(material.text)) {
        return ofDelimited(material);
    }
    const auto style = effectiveStylePrompt(job.systemPrompt);
    if (!style) {
        return plain(material);
    }
    return isShort(*style) ? inStyle(material, *style) : asTaskList(material, *style);
}

QString dictionaryFor(const Material& material)
{
    return dictionaryBlock(material.job.glossaryHints, material.job.lines, material.locale);
}

QString euroLLMUserPrompt(const Material& material)
{
    return QStringLiteral("Translate the following text into ") + material.target +
           QStringLiteral(". Output only the translation, with no notes or quotes.\n") +
           dictionaryFor(material) + u'\n' + material.text;
}

/// The cue for the answer is followed by the rule of the lines and by the dictionary: odd, but the
/// order in which this family does best.
QString lmt60UserPrompt(const Material& material)
{
    const QString& target = material.target;
    const QString afterText = u'\n' + target + QStringLiteral(":\n") + lineRule(material.job) +
                              u'\n' + dictionaryFor(material);
    if (isAutoSource(material.job.sourceLanguage)) {
        return QStringLiteral("Translate the following text into ") + target +
               QStringLiteral(":\n") + material.text + afterText;
    }
    const QString source = localModelLanguageName(material.job.sourceLanguage);
    return QStringLiteral("Translate the following text from ") + source +
           QStringLiteral(" into ") + target + QStringLiteral(":\n") + source +
           QStringLiteral(":\n") + material.text + afterText;
}

} // namespace

ChatMessages buildChatMessages(const ModelJob& job, const QLocale& locale)
{
    const QString translator =
        QStringLiteral("You are a professional translator. Return only the translation.");
    const Material material{job, locale, job.lines.join(u'\n'),
                            localModelLanguageName(job.targetLanguage)};
    switch (job.variant) {
    case SmartOfflineVariant::hyMT2_7b:
        return {{}, hyMT2UserPrompt(material)};
    case SmartOfflineVariant::euroLLM_9b:
        return {translator, euroLLMUserPrompt(material)};
    case SmartOfflineVariant::lmt60_4b:
        return {translator, lmt60UserPrompt(material)};
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
