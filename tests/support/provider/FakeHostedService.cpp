// A hosted translation service on loopback, for tests of the whole program and for trying things
// out by hand. Its own operations, below /model/, do what an operator of the service does.

#include "foundation/SystemClock.h"
#include "support/LoopbackHttpServer.h"
#include "support/provider/HostedModel.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>
#include <QUuid>

#include <cstdio>

namespace zelvane::test {
namespace {

/// Ends the program with a sentence about its wrong use.
[[noreturn]] void refuse(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    std::exit(2);
}

qint64 number(const QCommandLineParser& parser, const QString& option, qint64 maximum)
{
    bool isNumber = false;
    const qint64 value = parser.value(option).toLongLong(&isNumber);
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

/// The service with the operations of its operator.
class Service
{
public:
    Service(HostedModel& model, QString log)
        : m_model(model)
        , m_log(std::move(log))
    {
    }

    Answer answerTo(const RecordedRequest& request)
    {
        log(request);
        const QUrl url = QUrl::fromEncoded(request.target());
        return url.path().startsWith(QStringLiteral("/model/")) ? operate(url)
                                                                : m_model.answerTo(request);
    }

private:
    Answer operate(const QUrl& url)
    {
        const QUrlQuery query(url);
        const auto value = [&](const char* name) {
            return query.queryItemValue(QString::fromLatin1(name), QUrl::FullyDecoded);
        };
        const QString operation = url.path().sliced(7);
        const QString id = value("installId");
        bool isDone = true;
        if (operation == QStringLiteral("revoke")) {
            isDone = m_model.revokeToken(id);
        } else if (operation == QStringLiteral("ban")) {
            isDone = m_model.ban(id, value("reason"));
        } else if (operation == QStringLiteral("ban-device")) {
            isDone = m_model.banDevice(id, value("reason"));
        } else if (operation == QStringLiteral("unban")) {
            isDone = m_model.unban(id);
        } else if (operation == QStringLiteral("forget")) {
            isDone = m_model.forget(id);
        } else if (operation == QStringLiteral("config")) {
            m_model.rules.model = value("model");
            ++m_model.rules.version;
        } else if (operation != QStringLiteral("state")) {
            isDone = false;
        }
        const QByteArray state = QJsonDocument(m_model.state()).toJson();
        return isDone ? Answer::json(200, state)
                      : Answer::json(404, R"({"error":"no such operation or installation"})");
    }

    /// One line for each request: no header, no body, so that no token gets there.
    void log(const RecordedRequest& request) const
    {
        if (m_log.isEmpty()) {
            return;
        }
        QFile file(m_log);
        const QByteArray line = request.requestLine + ' ' + request.header("X-Install-Id") + '\n';
        if (!file.open(QIODevice::Append) || file.write(line) != line.size()) {
            refuse(QStringLiteral("%1 can't be written: %2").arg(m_log, file.errorString()));
        }
    }

    HostedModel& m_model;
    QString m_log;
};

void addOptions(QCommandLineParser& parser)
{
    const auto option = [](const char* name, const char* description, const char* value,
                           const char* standard = "") {
        return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                                  QString::fromLatin1(value), QString::fromLatin1(standard));
    };
    parser.setApplicationDescription(QStringLiteral(
        "Plays the hosted translation service on 127.0.0.1 and prints \"port N\" when it listens.\n"
        "Without --map the translation is the text itself. What an operator does:\n"
        "  /model/state                            show all installations\n"
        "  /model/revoke?installId=ID              make a token worthless\n"
        "  /model/ban?installId=ID&reason=TEXT     block an installation; /model/unban\n"
        "  /model/ban-device?installId=ID          block its machine, too\n"
        "  /model/forget?installId=ID              forget an installation\n"
        "  /model/config?model=NAME                prescribe another model"));
    parser.addHelpOption();
    parser.addOptions(
        {option("port", "Port to listen on; 0 takes a free one.", "N", "0"),
         option("map", "JSON object from texts to their translations.", "FILE"),
         option("day-limit", "Translations of one installation in a day.", "N", "200"),
         option("minute-limit", "Translations of one installation in a minute.", "N", "20"),
         option("log", "File that a line is appended to for each request.", "FILE")});
}

int run(const QCoreApplication& application)
{
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(application);

    const SystemClock clock;
    HostedModel model(clock, QUuid::createUuid().toByteArray());
    constexpr qint64 highestLimit = 1'000'000'000;
    model.rules.dayLimit = number(parser, QStringLiteral("day-limit"), highestLimit);
    model.rules.minuteLimit = number(parser, QStringLiteral("minute-limit"), highestLimit);
    if (parser.isSet(QStringLiteral("map"))) {
        model.translator = [map = readMap(parser.value(QStringLiteral("map")))](
                               const QString& text) { return map.value(text).toString(text); };
    }
    const auto port = static_cast<quint16>(number(parser, QStringLiteral("port"), 65535));
    LoopbackHttpServer server(LoopbackHttpServer::Security::plain, port);
    if (!server.isListening()) {
        refuse(QStringLiteral("Port %1 can't be listened on.").arg(port));
    }
    Service service(model, parser.value(QStringLiteral("log")));
    server.setHandler(
        [&service](const RecordedRequest& request) { return service.answerTo(request); });
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
