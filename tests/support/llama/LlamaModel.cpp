#include "support/llama/LlamaModel.h"

#include "support/llama/LlamaPrompt.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace zelvane::test {

namespace {

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// The message of the assistant, and why it ended.
struct Message
{
    QString content;
    QString reasoning;
    bool isCut = false;
};

QString translated(const QStringList& lines, const LlamaScript& script)
{
    QStringList result;
    for (const QString& line : lines) {
        result += line.trimmed().isEmpty() ? line : script.translate(line);
    }
    return result.join(u'\n');
}

Message compose(ModelMood mood, const LlamaScript& script, const QString& text)
{
    QStringList lines = text.split(u'\n');
    switch (mood) {
    case ModelMood::dropLine:
        if (lines.size() > 1) {
            lines.removeLast();
        }
        return {translated(lines, script), {}};
    case ModelMood::addLine:
        return {translated(lines, script) + QStringLiteral("\nand more"), {}};
    case ModelMood::repeat:
        return {QStringList(5, QStringLiteral("again")).join(u'\n'), {}};
    case ModelMood::think:
        return {QStringLiteral("<think>\nLet me see.\n</think>\n\n") + translated(lines, script),
                {}};
    case ModelMood::thinkCut:
        return {{}, QStringLiteral("<think>Let me see. First"), true};
    case ModelMood::fence:
        return {QStringLiteral("```text\n") + translated(lines, script) + QStringLiteral("\n```"),
                {}};
    case ModelMood::reasoning:
        return {{}, translated(lines, script)};
    case ModelMood::blank:
        return {{}, {}};
    default:
        return {translated(lines, script), {}};
    }
}

QJsonObject answerObject(const Message& message, const QString& modelPath, qsizetype promptTokens)
{
    QJsonObject spoken{{QStringLiteral("role"), QStringLiteral("assistant")},
                       {QStringLiteral("content"), message.content}};
    if (!message.reasoning.isEmpty()) {
        spoken.insert(QStringLiteral("reasoning_content"), message.reasoning);
    }
    const QJsonObject choice{{QStringLiteral("finish_reason"),
                              message.isCut ? QStringLiteral("length") : QStringLiteral("stop")},
                             {QStringLiteral("index"), 0},
                             {QStringLiteral("message"), spoken}};
    const qsizetype own = tokenCount(message.content + message.reasoning);
    const QJsonObject usage{{QStringLiteral("completion_tokens"), own},
                            {QStringLiteral("prompt_tokens"), promptTokens},
                            {QStringLiteral("total_tokens"), own + promptTokens},
                            {QStringLiteral("prompt_tokens_details"),
                             QJsonObject{{QStringLiteral("cached_tokens"), 0}}}};
    return {{QStringLiteral("choices"), QJsonArray{choice}},
            {QStringLiteral("created"), 1700000000},
            {QStringLiteral("model"), modelPath},
            {QStringLiteral("system_fingerprint"), QStringLiteral("b10437-0000000")},
            {QStringLiteral("object"), QStringLiteral("chat.completion")},
            {QStringLiteral("usage"), usage},
            {QStringLiteral("id"), QStringLiteral("chatcmpl-fake")},
            {QStringLiteral("timings"), QJsonObject{{QStringLiteral("prompt_n"), promptTokens},
                                                    {QStringLiteral("predicted_n"), own}}}};
}

} // namespace

LlamaAnswer llamaError(int status, const QString& type, const QString& message,
                       const QJsonObject& more)
{
    QJsonObject error{{QStringLiteral("message"), message},
                      {QStringLiteral("type"), type},
                      {QStringLiteral("code"), status}};
    for (auto entry = more.constBegin(); entry != more.constEnd(); ++entry) {
        error.insert(entry.key(), entry.value());
    }
    return {status, compact({{QStringLiteral("error"), error}})};
}

LlamaAnswer completion(ModelMood mood, const LlamaScript& script, const QString& modelPath,
                       const QJsonObject& request)
{
    switch (mood) {
    case ModelMood::refuse:
        return llamaError(503, QStringLiteral("unavailable_error"),
                          QStringLiteral("Loading model"));
    case ModelMood::notJson:
        return {200, "<html>not what you think</html>"};
    case ModelMood::noChoices:
        return {200, R"({"object":"chat.completion","choices":[]})"};
    default:
        break;
    }
    const QString prompt = lastMessageContent(request);
    return {200, compact(answerObject(compose(mood, script, textToTranslate(prompt)), modelPath,
                                      tokenCount(prompt)))};
}

qsizetype tokenCount(const QString& text)
{
    constexpr qsizetype charactersPerToken = 4;
    return (text.size() + charactersPerToken - 1) / charactersPerToken;
}

} // namespace zelvane::test
