#include "support/llama/LlamaServer.h"

#include "support/llama/LlamaPrompt.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

namespace zelvane::test {

namespace {

using std::chrono::milliseconds;

/// How long the server takes to end: with nobody there, with idle clients, and after a client with
/// a running request has gone at last.
constexpr milliseconds endsAlone{10};
constexpr milliseconds endsWithClients{160};
constexpr milliseconds endsAfterWork{1000};

QByteArray httpAnswer(const LlamaAnswer& answer)
{
    return "HTTP/1.1 " + QByteArray::number(answer.status) +
           (answer.status == 200 ? " OK" : " Error") +
           "\r\nServer: llama.cpp\r\nContent-Type: application/json; charset=utf-8\r\n"
           "Content-Length: " +
           QByteArray::number(answer.body.size()) + "\r\nKeep-Alive: timeout=5, max=100\r\n\r\n" +
           answer.body;
}

/// A number in its whole range, or the server's complaint.
template <typename T>
bool readNumber(const QString& text, T& number)
{
    bool isNumber = false;
    number = static_cast<T>(text.toInt(&isNumber));
    return isNumber;
}

} // namespace

std::expected<LlamaOptions, QString> LlamaOptions::parse(const QStringList& arguments)
{
    LlamaOptions options;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& name = arguments.at(i);
        if (name == QStringLiteral("--jinja")) {
            options.jinja = true;
            continue;
        }
        const QString value = arguments.value(i + 1);
        bool isFine = i + 1 < arguments.size();
        if (name == QStringLiteral("-m")) {
            options.model = value;
        } else if (name == QStringLiteral("--host")) {
            options.host = value;
        } else if (name == QStringLiteral("--port")) {
            isFine = isFine && readNumber(value, options.port);
        } else if (name == QStringLiteral("-ngl")) {
            isFine = isFine && readNumber(value, options.gpuLayers);
        } else if (name == QStringLiteral("-c")) {
            isFine = isFine && readNumber(value, options.context);
        } else if (name == QStringLiteral("-np")) {
            isFine = isFine && readNumber(value, options.slots) && options.slots > 0;
        } else if (name == QStringLiteral("--api-key")) {
            options.key = value;
        } else {
            return std::unexpected(QStringLiteral("error: invalid argument: %1").arg(name));
        }
        if (!isFine) {
            return std::unexpected(
                QStringLiteral("error while handling argument \"%1\"").arg(name));
        }
        ++i;
    }
    return options;
}

QByteArray LlamaRequest::header(const QByteArray& lowerCaseName) const
{
    const auto found = std::ranges::find_if(
        headers, [&](const auto& header) { return header.first == lowerCaseName; });
    return found == headers.end() ? QByteArray() : found->second;
}

/// One client, with at most one request at a time.
class LlamaConnection final : public QObject
{
public:
    LlamaConnection(LlamaServer& server, QTcpSocket* socket)
        : m_server(server)
        , m_socket(socket)
    {
        m_socket->setParent(this);
        connect(m_socket, &QTcpSocket::readyRead, this, &LlamaConnection::read);
        connect(
            m_socket, &QTcpSocket::disconnected, this, [this] { m_server.left(this); },
            Qt::QueuedConnection);
        QMetaObject::invokeMethod(this, &LlamaConnection::read, Qt::QueuedConnection);
    }

    void answer(const LlamaAnswer& answer)
    {
        m_isBusy = false;
        m_socket->write(httpAnswer(answer));
        QMetaObject::invokeMethod(this, &LlamaConnection::read, Qt::QueuedConnection);
    }
    /// Sends the first half of an answer for sure.
    void answerHalf(const LlamaAnswer& answer)
    {
        const QByteArray whole = httpAnswer(answer);
        m_socket->write(whole.first(whole.size() - answer.body.size() / 2));
        m_socket->flush();
    }
    void close() { m_socket->disconnectFromHost(); }

private:
    void read()
    {
        m_received += m_socket->readAll();
        if (m_isBusy) {
            return;
        }
        const qsizetype headEnd = m_received.indexOf("\r\n\r\n");
        if (headEnd < 0) {
            return;
        }
        LlamaRequest request;
        const QList<QByteArray> lines = m_received.first(headEnd).split('\n');
        const QList<QByteArray> opening = lines.first().trimmed().split(' ');
        request.method = opening.value(0);
        request.target = opening.value(1);
        for (const QByteArray& line : lines.sliced(1)) {
            const qsizetype colon = line.indexOf(':');
            request.headers.append({line.left(colon).toLower(), line.sliced(colon + 1).trimmed()});
        }
        const qsizetype bodySize = request.header("content-length").toLongLong();
        if (m_received.size() - headEnd - 4 < bodySize) {
            return;
        }
        request.body = m_received.sliced(headEnd + 4, bodySize);
        m_received.remove(0, headEnd + 4 + bodySize);
        m_isBusy = true;
        m_server.handle(*this, request);
    }

    LlamaServer& m_server;
    QTcpSocket* m_socket;
    QByteArray m_received;
    bool m_isBusy = false;
};

LlamaServer::LlamaServer(LlamaOptions options, LlamaScript script, QStringList arguments)
    : m_options(std::move(options))
    , m_script(std::move(script))
    , m_arguments(std::move(arguments))
{
    connect(&m_listener, &QTcpServer::pendingConnectionAvailable, this, &LlamaServer::accept);
}

LlamaServer::~LlamaServer() = default;

void LlamaServer::start()
{
    record(QStringLiteral("start"),
           {{QStringLiteral("pid"), qint64(::getpid())},
            {QStringLiteral("arguments"), QJsonArray::fromStringList(m_arguments)},
            {QStringLiteral("folder"), QDir::currentPath()},
            {QStringLiteral("libraryPath"), qEnvironmentVariable("LD_LIBRARY_PATH")}});
    if (m_options.gpuLayers > 0) {
        log("warning: no usable GPU found, --gpu-layers option will be ignored");
    }
    QTimer::singleShot(m_script.listenAfter, this, &LlamaServer::listen);
}

void LlamaServer::listen()
{
    if (!m_listener.listen(QHostAddress(m_options.host), m_options.port)) {
        log("start: couldn't bind HTTP server socket, hostname: " + m_options.host.toUtf8() +
            ", port: " + QByteArray::number(m_options.port));
        std::_Exit(1);
    }
    if (!modelIsUsable()) {
        refuseModel();
    }
    if (m_script.diesLoading || (m_script.diesWithGpu && m_options.gpuLayers > 0)) {
        log("ggml_backend: out of memory");
        std::_Exit(1);
    }
    if (!m_script.neverReady) {
        QTimer::singleShot(m_script.loadFor, this, &LlamaServer::load);
    }
}

void LlamaServer::load()
{
    log("main: model loaded");
    log("main: server is listening on http://" + m_options.host.toUtf8() + ":" +
        QByteArray::number(m_options.port));
    m_isReady = true;
    Q_EMIT loaded();
}

bool LlamaServer::modelIsUsable() const
{
    constexpr qint64 smallestModel = 32;
    QFile model(m_options.model);
    return model.open(QIODevice::ReadOnly) && model.size() >= smallestModel &&
           model.read(4) == "GGUF";
}

void LlamaServer::refuseModel() const
{
    log("common_init_from_params: failed to load model, '" + m_options.model.toUtf8() + "'");
    log("main: exiting due to model loading error");
    std::_Exit(1);
}

void LlamaServer::accept()
{
    while (QTcpSocket* socket = m_listener.nextPendingConnection()) {
        m_connections.push_back(std::make_unique<LlamaConnection>(*this, socket));
    }
}

bool LlamaServer::isAllowed(const LlamaRequest& request) const
{
    return m_options.key.isEmpty() ||
           request.header("authorization") == "Bearer " + m_options.key.toUtf8();
}

void LlamaServer::handle(LlamaConnection& connection, const LlamaRequest& request)
{
    record(QStringLiteral("request"),
           {{QStringLiteral("method"), QString::fromUtf8(request.method)},
            {QStringLiteral("target"), QString::fromUtf8(request.target)},
            {QStringLiteral("authorization"), QString::fromUtf8(request.header("authorization"))},
            {QStringLiteral("contentType"), QString::fromUtf8(request.header("content-type"))},
            {QStringLiteral("body"), QString::fromUtf8(request.body)}});
    const bool isPublic = request.target == "/health" || request.target == "/v1/models";
    if (!isPublic && !isAllowed(request)) {
        connection.answer(llamaError(401, QStringLiteral("authentication_error"),
                                     QStringLiteral("Invalid API Key")));
    } else if (!m_isReady) {
        connection.answer(
            llamaError(503, QStringLiteral("unavailable_error"), QStringLiteral("Loading model")));
    } else if (request.target == "/health") {
        connection.answer({200, R"({"status":"ok"})"});
    } else if (request.target == "/v1/models") {
        connection.answer({200, R"({"object":"list","data":[]})"});
    } else if (request.target == "/props") {
        connection.answer({200, R"({"total_slots":)" + QByteArray::number(m_options.slots) + "}"});
    } else if (request.method == "POST" && request.target == "/v1/chat/completions") {
        handleChat(connection, request);
    } else {
        connection.answer(
            llamaError(404, QStringLiteral("not_found_error"), QStringLiteral("File Not Found")));
    }
}

void LlamaServer::handleChat(LlamaConnection& connection, const LlamaRequest& request)
{
    log("srv  log_server_r: request: POST /v1/chat/completions 127.0.0.1 200" +
        QByteArray(450, ' ') + "end");
    if (m_script.logFlood > 0) {
        log(QByteArray(m_script.logFlood, '.'));
    }
    const QJsonDocument document = QJsonDocument::fromJson(request.body);
    if (!document.isObject()) {
        connection.answer(llamaError(500, QStringLiteral("server_error"),
                                     QStringLiteral("[json.exception.parse_error.101]")));
        return;
    }
    const QJsonObject object = document.object();
    if (!object.value(u"messages").isArray()) {
        connection.answer(llamaError(400, QStringLiteral("invalid_request_error"),
                                     QStringLiteral("'messages' is required")));
        return;
    }
    const qsizetype tokens = tokenCount(lastMessageContent(object));
    const qsizetype room = m_options.context / m_options.slots;
    if (tokens > room) {
        connection.answer(llamaError(
            400, QStringLiteral("exceed_context_size_error"),
            QStringLiteral("the request exceeds the available context size"),
            {{QStringLiteral("n_prompt_tokens"), tokens}, {QStringLiteral("n_ctx"), room}}));
        return;
    }
    const ModelMood mood = m_script.moods.at(std::min(m_asked, m_script.moods.size() - 1));
    ++m_asked;
    m_waiting.push_back(std::make_shared<Job>(Job{&connection, object, mood}));
    startJobs();
}

void LlamaServer::startJobs()
{
    while (!m_waiting.empty() && m_running.size() < static_cast<std::size_t>(m_options.slots)) {
        const auto job = m_waiting.front();
        m_waiting.pop_front();
        m_running.push_back(job);
        if (job->mood != ModelMood::silence) {
            QTimer::singleShot(m_script.answerAfter, this, [this, job] { finishJob(job); });
        }
    }
}

void LlamaServer::finishJob(const std::shared_ptr<Job>& job)
{
    if (std::erase(m_running, job) == 0) {
        return; // its client has gone
    }
    const LlamaAnswer answer = completion(job->mood, m_script, m_options.model, job->request);
    if (job->mood == ModelMood::cutOff || job->mood == ModelMood::die) {
        job->connection->answerHalf(answer);
        if (job->mood == ModelMood::die) {
            ::raise(SIGKILL);
        }
        job->connection->close();
    } else {
        job->connection->answer(answer);
    }
    startJobs();
    endIfIdle();
}

void LlamaServer::left(LlamaConnection* connection)
{
    const auto isOfIt = [connection](const auto& job) { return job->connection == connection; };
    std::erase_if(m_waiting, isOfIt);
    if (std::erase_if(m_running, isOfIt) > 0) {
        m_cancelled.start();
    }
    std::erase_if(m_connections, [connection](const auto& c) { return c.get() == connection; });
    startJobs();
    endIfIdle();
}

void LlamaServer::askToEnd()
{
    if (m_script.ignoresTerminate) {
        return;
    }
    m_listener.close();
    m_isEnding = true;
    // A generation that was cancelled takes a while to be noticed.
    m_hadToWait = !m_running.empty() || !m_waiting.empty() ||
                  (m_cancelled.isValid() && !m_cancelled.hasExpired(endsAfterWork.count()));
    endIfIdle();
}

void LlamaServer::endIfIdle()
{
    if (!m_isEnding || !m_running.empty() || !m_waiting.empty()) {
        return;
    }
    const milliseconds takes = m_hadToWait             ? endsAfterWork
                               : m_connections.empty() ? endsAlone
                                                       : endsWithClients;
    QTimer::singleShot(takes, this, [this] {
        record(QStringLiteral("end"), {{QStringLiteral("pid"), qint64(::getpid())}});
        QCoreApplication::exit(0);
    });
}

void LlamaServer::record(const QString& event, QJsonObject entry) const
{
    if (m_script.record.isEmpty()) {
        return;
    }
    entry.insert(QStringLiteral("event"), event);
    QFile file(m_script.record);
    const QByteArray line = QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
    if (!file.open(QIODevice::Append | QIODevice::Unbuffered) || file.write(line) != line.size()) {
        qFatal("the record can't be written");
    }
}

void LlamaServer::log(const QByteArray& line) const
{
    // Waits where nobody reads, as the real one does.
    const QByteArray text = line + '\n';
    qsizetype written = 0;
    while (written < text.size()) {
        const ssize_t count =
            ::write(STDERR_FILENO, text.constData() + written, std::size_t(text.size() - written));
        if (count <= 0) {
            return;
        }
        written += count;
    }
}

} // namespace zelvane::test
