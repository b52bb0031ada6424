#include "pipeline/Prompts.h"

#include "foundation/Text.h"
#include "settings/AppSettings.h"
#include "settings/LanguageNames.h"

namespace zelvane {

QString effectivePrompt(const QString& promptTemplate, const LanguagePair& pair)
{
    if (!pair.useCustomPrompt) {
        return promptTemplate;
    }
    return text::isBlank(pair.customPrompt) ? defaultPromptTemplate() : pair.customPrompt;
}

QString renderPrompt(const QString& promptTemplate, const QString& source, const QString& target)
{
    const QString shownSource =
        isAutoSource(source) ? QStringLiteral("the automatically detected language") : source;
    QString prompt = promptTemplate;
    prompt.replace(QStringLiteral("{{source}}"), shownSource);
    prompt.replace(QStringLiteral("{{target}}"), target);
    return prompt;
}

} // namespace zelvane
