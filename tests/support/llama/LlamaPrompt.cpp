#include "support/llama/LlamaPrompt.h"

#include <QJsonArray>
#include <QStringList>

namespace zelvane::test {

namespace {

/// What follows the first `mark`; the null string without one.
QString after(const QString& text, const QString& mark)
{
    const qsizetype at = text.indexOf(mark);
    return at < 0 ? QString() : text.sliced(at + mark.size());
}

QString before(const QString& text, const QString& mark)
{
    const qsizetype at = text.indexOf(mark);
    return at < 0 ? text : text.first(at);
}

/// "…(…with no notes or quotes.\n)(dictionary)\n(text)"
QString afterDictionary(const QString& rest)
{
    if (!rest.startsWith(QStringLiteral("\nDictionary for terms"))) {
        return rest.sliced(1);
    }
    return after(rest.sliced(1), QStringLiteral("\n\n"));
}

/// "into German:\n(Source:\n)(text)\nGerman:\n(rule)"
QString betweenCues(const QString& prompt)
{
    const QString opening = before(prompt, QStringLiteral("\n"));
    const QString target = before(opening.sliced(opening.lastIndexOf(QStringLiteral(" into ")) + 6),
                                  QStringLiteral(":"));
    QString rest = prompt.sliced(opening.size() + 1);
    const QString from = after(opening, QStringLiteral("text from "));
    if (!from.isNull()) {
        rest = after(rest, QStringLiteral(":\n"));
    }
    for (const QString& rule : {QStringLiteral("The input has "), QStringLiteral("Return the ")}) {
        const QString end = u'\n' + target + QStringLiteral(":\n") + rule;
        if (rest.contains(end)) {
            return rest.first(rest.lastIndexOf(end));
        }
    }
    return rest;
}

} // namespace

QString textToTranslate(const QString& prompt)
{
    if (prompt.startsWith(QStringLiteral("[Source Text]\n"))) {
        const qsizetype end = prompt.lastIndexOf(QStringLiteral("\n[Translation Tasks]\n"));
        return prompt.first(end).sliced(prompt.indexOf(u'\n') + 1);
    }
    const QString plain = after(prompt, QStringLiteral("with no notes or quotes.\n"));
    if (!plain.isNull()) {
        return afterDictionary(plain);
    }
    const QString opening = before(prompt, QStringLiteral("\n"));
    if (opening.startsWith(QStringLiteral("Translate the following text")) &&
        opening.endsWith(u':') && !opening.contains(u'.')) {
        return betweenCues(prompt);
    }
    for (const QString& end :
         {QStringLiteral("### Source Data\n"), QStringLiteral("their placement.\n"),
          QStringLiteral("additional explanation:\n"), QStringLiteral("]:\n")}) {
        const QString text = after(prompt, end);
        if (!text.isNull()) {
            return text;
        }
    }
    return prompt;
}

QString lastMessageContent(const QJsonObject& request)
{
    const QJsonArray messages = request.value(u"messages").toArray();
    return messages.isEmpty() ? QString() : messages.last()[u"content"].toString();
}

} // namespace zelvane::test
