// What engines cost a program that has none installed, what looking at an installed one costs, and
// how fast a model reaches the disk.

#include "Services/EngineRefresh.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "support/LoopbackHttpServer.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <sys/resource.h>

namespace zelvane {
namespace {

void needApplication()
{
    static int argc = 1;
    static char name[] = "bench";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
}

void writeBytes(const QString& path, qint64 size, QFile::Permissions permissions)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.resize(size) ||
        !file.setPermissions(permissions)) {
        qFatal("no file");
    }
}

/// As many files as a real runtime has.
void refresh(benchmark::State& state)
{
    const QTemporaryDir root;
    const EngineFiles files(root.path(), factsOf(SmartOfflineVariant::lmt60_4b));
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    for (int i = 0; i < 60; ++i) {
        writeBytes(files.serverFolder() + QStringLiteral("/lib%1.so").arg(i), 1000, permissions);
    }
    writeBytes(files.server(), 1000, permissions);
    writeBytes(files.model(), files.facts().expectedModelBytes, permissions);
    if (!files.writeReadyRecord()) {
        qFatal("no record");
    }
    EngineState engine;
    for (auto _ : state) {
        refreshStatus(engine, files);
    }
    if (!engine.is<engine_status::Ready>()) {
        qFatal("not complete");
    }
}
BENCHMARK(refresh)->Name("a look at an installed engine");

QCoro::Task<void> thenQuit(QCoro::Task<HttpResponse> download, QEventLoop* loop)
{
    co_await download;
    loop->quit();
}

/// Bytes that a server in a thread of its own sends as fast as they are taken.
void downloadModel(benchmark::State& state)
{
    needApplication();
    constexpr qint64 size = qint64(512) << 20;
    QThread thread;
    QObject context;
    context.moveToThread(&thread);
    thread.start();
    std::unique_ptr<test::LoopbackHttpServer> server;
    QUrl url;
    const auto onThread = [&context](const auto& action) {
        QMetaObject::invokeMethod(&context, action, Qt::BlockingQueuedConnection);
    };
    onThread([&] {
        server = std::make_unique<test::LoopbackHttpServer>();
        server->setHandler([](const test::RecordedRequest&) {
            return test::Answer()
                .send("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n")
                .flood(size);
        });
        url = server->url();
    });
    const QTemporaryDir folder(QDir::currentPath() + QStringLiteral("/bench-XXXXXX"));
    SystemClock clock;
    NetworkHttpTransport transport(clock);
    rusage before = {};
    ::getrusage(RUSAGE_SELF, &before);
    qint64 longestLag = 0;
    for (auto _ : state) {
        HttpRequest request;
        request.url = url;
        request.maximalBodySize = size;
        QEventLoop loop;
        QElapsedTimer sinceTick;
        sinceTick.start();
        QTimer tick;
        tick.setTimerType(Qt::PreciseTimer);
        QObject::connect(&tick, &QTimer::timeout, &tick,
                         [&] { longestLag = std::max(longestLag, sinceTick.restart() - 10); });
        tick.start(10);
        thenQuit(transport.download(request, folder.filePath(QStringLiteral("model")), {}, {}),
                 &loop);
        loop.exec();
    }
    rusage after = {};
    ::getrusage(RUSAGE_SELF, &after);
    state.SetBytesProcessed(state.iterations() * size);
    state.counters["MB more"] = double(after.ru_maxrss - before.ru_maxrss) / 1024;
    state.counters["lag ms"] = double(longestLag);
    onThread([&] { server.reset(); });
    thread.quit();
    thread.wait();
}
BENCHMARK(downloadModel)
    ->Name("a download of 512 MiB to the disk")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
} // namespace zelvane
