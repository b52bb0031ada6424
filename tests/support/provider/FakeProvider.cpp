// A provider that speaks the protocols of all online engines on loopback, for tests of the whole
// program and for the demonstration. It knows them by the path.

#include "support/LoopbackHttpServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

namespace zelvane::test {
namespace {

struct Settings
{
    quint16 port = 0;
    std::optional<QString> answer;
    QJsonObject map;
    QStringList models;
    int status = 200;
    std::optional<QByteArray> body;
    std::chrono::milliseconds delay{0};
    QString log;
};

/// Ends the program with a sentence about its wrong use.
[[noreturn]] void refuse(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    std::exit(2);
}

int number(const QCommandLineParser& parser, const QString& option, int maximum)
{
    bool isNumber = false;
    const int value = parser.value(option).toInt(&isNumber);
    if (!isNumber || value < 0 || value > maximum) {
        refuse(QStringLiteral("--%1 takes a number from 0 to %2.").arg(option).arg(maximum));
    }
    return value;
}

QJsonObject readMap(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        refuse(QStringLiteral("%1 can't be read: %2").arg(path, file.errorString()));
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject()) {
        refuse(QStringLiteral("%1 holds no JSON object.").arg(path));
    }
    return document.object();
}

Settings readSettings(const QCoreApplication& application)
{
    const auto option = [](const char* name, const char* description, const char* value,
                           const char* standard = "") {
        return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                                  QString::fromLatin1(value), QString::fromLatin1(standard));
    };
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Plays each of the online providers on 127.0.0.1 and prints \"port N\" when it listens.\n"
        "Without --answer and --map the translation is the text itself."));
    parser.addHelpOption();
    parser.addOptions(
        {option("port", "Port to listen on; 0 takes a free one.", "N", "0"),
         option("answer", "Translation of every text that --map doesn't know.", "TEXT"),
         option("map", "JSON object from texts to their translations.", "FILE"),
         option("models", "Models to list, separated by commas.", "NAMES",
                "gpt-fake,gemini-fake,claude-fake,deepseek-fake,mistral-fake,grok-fake"),
         option("status", "Status of every answer.", "N", "200"),
         option("body", "Body of every answer, as it stands.", "TEXT"),
         option("delay-ms", "Time before every answer.", "N", "0"),
         option("log", "File that each request is appended to as a line of JSON.", "FILE")});
    parser.process(application);

    Settings settings;
    settings.port = static_cast<quint16>(number(parser, QStringLiteral("port"), 65535));
    settings.status = number(parser, QStringLiteral("status"), 999);
    settings.delay =
        std::chrono::milliseconds(number(parser, QStringLiteral("delay-ms"), 3'600'000));
    settings.models = parser.value(QStringLiteral("models")).split(u',');
    settings.log = parser.value(QStringLiteral("log"));
    if (parser.isSet(QStringLiteral("answer"))) {
        settings.answer = parser.value(QStringLiteral("answer"));
    }
    if (parser.isSet(QStringLiteral("map"))) {
        settings.map = readMap(parser.value(QStringLiteral("map")));
    }
    if (parser.isSet(QStringLiteral("body"))) {
        settings.body = parser.value(QStringLiteral("body")).toUtf8();
    }
    return settings;
}

void appendToLog(const QString& path, const RecordedRequest& request)
{
    QJsonArray headers;
    for (const auto& [name, value] : request.headers) {
        headers.append(QJsonArray{QString::fromUtf8(name), QString::fromUtf8(value)});
    }
    const QJsonObject entry{
        {QStringLiteral("requestLine"), QString::fromUtf8(request.requestLine)},
        {QStringLiteral("headers"), headers},
        {QStringLiteral("body"), QString::fromUtf8(request.body)},
    };
    QFile file(path);
    const QByteArray line = QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
    if (!file.open(QIODevice::Append) || file.write(line) != line.size()) {
        refuse(QStringLiteral("%1 can't be written: %2").arg(path, file.errorString()));
    }
}

/// A protocol: how a request is known, where it holds the text, and how the answer holds the
/// translation.
struct Protocol
{
    QByteArray pathEnding;
    QString (*textOf)(const QJsonObject& request);
    QJsonObject (*answer)(const QString& translation);
};

/// The content of the last message.
QString lastMessage(const QJsonObject& request)
{
    const QJsonArray messages = request.value(u"messages").toArray();
    return messages.isEmpty() ? QString() : messages.last().toObject().value(u"content").toString();
}

QJsonObject chatAnswer(const QString& translation)
{
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("assistant")},
                              {QStringLiteral("content"), translation}};
    const QJsonObject choice{{QStringLiteral("index"), 0}, {QStringLiteral("message"), message}};
    return {{QStringLiteral("choices"), QJsonArray{choice}}};
}

QJsonObject textObject(const QString& text)
{
    return {{QStringLiteral("text"), text}};
}

QString firstPart(const QJsonObject& request)
{
    return request[u"contents"][0][u"parts"][0][u"text"].toString();
}

QJsonObject geminiAnswer(const QString& translation)
{
    const QJsonObject content{{QStringLiteral("role"), QStringLiteral("model")},
                              {QStringLiteral("parts"), QJsonArray{textObject(translation)}}};
    const QJsonObject candidate{{QStringLiteral("content"), content}};
    return {{QStringLiteral("candidates"), QJsonArray{candidate}}};
}

QJsonObject claudeAnswer(const QString& translation)
{
    QJsonObject block = textObject(translation);
    block.insert(QStringLiteral("type"), QStringLiteral("text"));
    return {{QStringLiteral("type"), QStringLiteral("message")},
            {QStringLiteral("content"), QJsonArray{block}}};
}

QString firstText(const QJsonObject& request)
{
    return request[u"text"][0].toString();
}

QJsonObject deepLAnswer(const QString& translation)
{
    return {{QStringLiteral("translations"), QJsonArray{textObject(translation)}}};
}

const std::array<Protocol, 4>& protocols()
{
    static const std::array<Protocol, 4> all{{
        {"/chat/completions", lastMessage, chatAnswer},
        {":generateContent", firstPart, geminiAnswer},
        {"/v1/messages", lastMessage, claudeAnswer},
        {"/v2/translate", firstText, deepLAnswer},
    }};
    return all;
}

/// A listing in both of the forms that there are.
QJsonObject listing(const QStringList& models)
{
    const QJsonArray methods{QStringLiteral("generateContent")};
    QJsonArray identified;
    QJsonArray named;
    for (const QString& model : models) {
        identified.append(QJsonObject{{QStringLiteral("id"), model}});
        named.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("models/") + model},
                                 {QStringLiteral("supportedGenerationMethods"), methods}});
    }
    return {{QStringLiteral("data"), identified}, {QStringLiteral("models"), named}};
}

/// What the provider says to a request that it understands.
std::optional<QJsonObject> replyTo(const RecordedRequest& request, const Settings& settings)
{
    const QByteArray path = request.target().split('?').first();
    if (request.method() == "GET" && path.endsWith("/models")) {
        return listing(settings.models);
    }
    const auto protocol = std::ranges::find_if(
        protocols(), [&](const Protocol& known) { return path.endsWith(known.pathEnding); });
    if (request.method() != "POST" || protocol == protocols().end()) {
        return std::nullopt;
    }
    const QString text = protocol->textOf(QJsonDocument::fromJson(request.body).object());
    return protocol->answer(settings.map.value(text).toString(settings.answer.value_or(text)));
}

Answer answerTo(const RecordedRequest& request, const Settings& settings)
{
    if (!settings.log.isEmpty()) {
        appendToLog(settings.log, request);
    }
    const std::optional<QJsonObject> reply = replyTo(request, settings);
    if (!reply) {
        return Answer::json(404, R"({"error":{"message":"no such operation"}})");
    }
    Answer answer;
    if (settings.delay.count() > 0) {
        answer.pause(settings.delay);
    }
    const QByteArray body = QJsonDocument(*reply).toJson(QJsonDocument::Compact);
    return answer.send(httpMessage(settings.status, settings.body.value_or(body)));
}

int run(const QCoreApplication& application)
{
    const Settings settings = readSettings(application);
    LoopbackHttpServer server(LoopbackHttpServer::Security::plain, settings.port);
    if (!server.isListening()) {
        refuse(QStringLiteral("Port %1 can't be listened on.").arg(settings.port));
    }
    server.setHandler(
        [&settings](const RecordedRequest& request) { return answerTo(request, settings); });
    std::printf("port %d\n", server.port());
    std::fflush(stdout);
    return QCoreApplication::exec();
}

} // namespace
} // namespace zelvane::test

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return zelvane::test::run(application);
}
