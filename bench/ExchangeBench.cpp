// What an exchange costs over Qt's bare network access, with the same server on loopback, and what
// a kept connection saves.

#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "online/GeminiClient.h"
#include "support/LoopbackHttpServer.h"
#include "support/TrustLoopbackServer.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QThread>

namespace zelvane {
namespace {

using test::Answer;
using test::LoopbackHttpServer;

constexpr char answer[] = R"({"candidates":[{"content":{"parts":[{"text":"Guten Morgen"}]}}]})";

/// Event loops need an application; it lives as long as the process.
void needApplication()
{
    static int argc = 1;
    static char name[] = "bench";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
}

/// What becomes of the connection behind an answer.
enum class Connection { kept, closed };

/// A server in a thread of its own.
class ServerThread
{
public:
    ServerThread(LoopbackHttpServer::Security security, Connection connection)
    {
        needApplication();
        m_context.moveToThread(&m_thread);
        m_thread.start();
        onThread([&] {
            m_server = std::make_unique<LoopbackHttpServer>(security);
            m_server->setHandler([connection](const test::RecordedRequest&) {
                if (connection == Connection::kept) {
                    return Answer::json(200, answer);
                }
                return Answer()
                    .send(test::httpMessage(200, answer, {{"Connection", "close"}}))
                    .close();
            });
            m_url = m_server->url();
        });
    }
    ~ServerThread()
    {
        onThread([this] { m_server.reset(); });
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY_MOVE(ServerThread)

    [[nodiscard]] const QUrl& url() const { return m_url; }

private:
    template <typename Action>
    void onThread(const Action& action)
    {
        QMetaObject::invokeMethod(&m_context, action, Qt::BlockingQueuedConnection);
    }

    QThread m_thread;
    QObject m_context;
    std::unique_ptr<LoopbackHttpServer> m_server;
    QUrl m_url;
};

/// The engine as the program makes it, pointed at the server.
struct Engine
{
    explicit Engine(const ServerThread& server)
    {
        defaults.setValue(QStringLiteral("zv.endpoint.Gemini"), server.url().toString());
    }

    SystemClock clock;
    OverlayUserDefaults defaults;
    NetworkHttpTransport transport{clock};
    GeminiClient client{transport, defaults};
};

HttpRequest requestTo(const ServerThread& server)
{
    HttpRequest request;
    request.method = "POST";
    request.url = server.url().resolved(
        QUrl(geminiPath(QStringLiteral("gemini-2.0-flash"), QStringLiteral("k"))));
    request.headers = {{"Content-Type", "application/json"}};
    request.body = QJsonDocument(geminiRequestBody(QStringLiteral("Good morning"),
                                                   QStringLiteral("Translate.")))
                       .toJson(QJsonDocument::Compact);
    return request;
}

QCoro::Task<void> thenQuit(QCoro::Task<HttpResponse> exchange, QEventLoop* loop)
{
    const HttpResponse response = co_await exchange;
    if (response.body != answer) {
        qFatal("another answer");
    }
    loop->quit();
}

QCoro::Task<void> thenQuit(QCoro::Task<QString> translation, QEventLoop* loop)
{
    const QString text = co_await translation;
    if (text != QStringLiteral("Guten Morgen")) {
        qFatal("another translation");
    }
    loop->quit();
}

void bareExchange(benchmark::State& state, LoopbackHttpServer::Security security,
                  Connection connection)
{
    const ServerThread server(security, connection);
    const test::TrustLoopbackServer trust;
    const HttpRequest request = requestTo(server);
    QNetworkAccessManager manager;
    manager.setProxy(QNetworkProxy::NoProxy);
    for (auto _ : state) {
        QNetworkRequest bare(request.url);
        bare.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
        QNetworkReply* reply = manager.post(bare, request.body);
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        if (reply->readAll() != answer) {
            qFatal("another answer");
        }
        delete reply;
    }
}

void exchange(benchmark::State& state, LoopbackHttpServer::Security security, Connection connection)
{
    const ServerThread server(security, connection);
    const test::TrustLoopbackServer trust;
    const HttpRequest request = requestTo(server);
    Engine engine(server);
    for (auto _ : state) {
        QEventLoop loop;
        thenQuit(engine.transport.send(request, {}), &loop);
        loop.exec();
    }
}

void translation(benchmark::State& state, LoopbackHttpServer::Security security,
                 Connection connection)
{
    const ServerThread server(security, connection);
    const test::TrustLoopbackServer trust;
    Engine engine(server);
    for (auto _ : state) {
        QEventLoop loop;
        thenQuit(engine.client.translateWithGemini(
                     QStringLiteral("Good morning"), QStringLiteral("Translate."),
                     QStringLiteral("k"), QStringLiteral("gemini-2.0-flash"), {}),
                 &loop);
        loop.exec();
    }
}

constexpr auto plain = LoopbackHttpServer::Security::plain;
constexpr auto tls = LoopbackHttpServer::Security::selfSigned;

BENCHMARK_CAPTURE(bareExchange, keptConnection, plain, Connection::kept)->UseRealTime();
BENCHMARK_CAPTURE(exchange, keptConnection, plain, Connection::kept)->UseRealTime();
BENCHMARK_CAPTURE(translation, keptConnection, plain, Connection::kept)->UseRealTime();
BENCHMARK_CAPTURE(bareExchange, newConnection, plain, Connection::closed)->UseRealTime();
BENCHMARK_CAPTURE(exchange, newConnection, plain, Connection::closed)->UseRealTime();
BENCHMARK_CAPTURE(bareExchange, keptTlsConnection, tls, Connection::kept)->UseRealTime();
BENCHMARK_CAPTURE(exchange, keptTlsConnection, tls, Connection::kept)->UseRealTime();
BENCHMARK_CAPTURE(bareExchange, newTlsConnection, tls, Connection::closed)->UseRealTime();
BENCHMARK_CAPTURE(exchange, newTlsConnection, tls, Connection::closed)->UseRealTime();

} // namespace
} // namespace zelvane
