#include "desktop/linux/X11Pasteboard.h"

#include "desktop/linux/ClipboardWorker.h"
#include "desktop/linux/SelectionContent.h"
#include "foundation/Completion.h"

#include <utility>

namespace zelvane {

namespace {

// The hand-over bounds itself; this is for a server that has stopped answering.
constexpr int longestGoodbye = 2000;

} // namespace

std::expected<std::unique_ptr<X11Pasteboard>, QString>
X11Pasteboard::open(ClipboardExchange& exchange, const QByteArray& display)
{
    auto connection = XcbConnection::open(display, {XExtension::xfixes});
    if (!connection) {
        return std::unexpected(connection.error());
    }
    return std::unique_ptr<X11Pasteboard>(new X11Pasteboard(std::move(*connection), exchange));
}

X11Pasteboard::X11Pasteboard(std::unique_ptr<XcbConnection> connection, ClipboardExchange& exchange)
    : m_exchange(exchange)
    , m_connection(std::move(connection))
    , m_workerSide(std::make_unique<QObject>())
{
    m_thread.setObjectName(QStringLiteral("clipboard"));
    m_workerSide->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::started, m_workerSide.get(),
                     [this] { m_worker = std::make_unique<ClipboardWorker>(*m_connection); });
    QObject::connect(
        &m_thread, &QThread::finished, m_workerSide.get(), [this] { m_worker.reset(); },
        Qt::DirectConnection);
    m_thread.start();
}

X11Pasteboard::~X11Pasteboard()
{
    // Who waited may still put the clipboard back; that is done before it is handed over.
    for (const auto& end : std::exchange(m_waiting, {})) {
        end();
    }
    onWorker([this](ClipboardWorker& worker) { worker.handOver([this] { m_thread.quit(); }); });
    if (!m_thread.wait(longestGoodbye)) {
        m_connection->cutOff();
        m_thread.quit();
        m_thread.wait();
    }
}

void X11Pasteboard::onWorker(std::function<void(ClipboardWorker&)> task)
{
    QMetaObject::invokeMethod(
        m_workerSide.get(), [this, task = std::move(task)] { task(*m_worker); },
        Qt::QueuedConnection);
}

void X11Pasteboard::onMain(std::function<void()> task)
{
    QMetaObject::invokeMethod(&m_mainSide, std::move(task), Qt::QueuedConnection);
}

void X11Pasteboard::change(std::function<void(ClipboardWorker&)> task)
{
    m_exchange.changeBegun();
    onWorker([this, task = std::move(task)](ClipboardWorker& worker) {
        task(worker);
        onMain([this] { m_exchange.changeDone(); });
    });
}

template <typename T>
QCoro::Task<std::optional<T>> X11Pasteboard::read(
    std::function<void(ClipboardWorker&, std::function<void(std::optional<T>)>)> task)
{
    const Completion<std::optional<T>> done;
    const quint64 call = ++m_lastCall;
    m_waiting.insert(call, [done] { done.succeed(std::nullopt); });
    onWorker([this, call, done, task = std::move(task)](ClipboardWorker& worker) {
        task(worker, [this, call, done](std::optional<T> value) {
            onMain([this, call, done, value = std::move(value)] {
                m_waiting.remove(call);
                done.succeed(value);
            });
        });
    });
    co_return co_await done.result();
}

QCoro::Task<PasteboardSnapshot> X11Pasteboard::snapshot()
{
    const auto content = co_await read<SelectionContent>(
        [](ClipboardWorker& worker, auto onRead) { worker.snapshot(std::move(onRead)); });
    if (!content) {
        throw PasteboardError();
    }
    co_return snapshotOf(*content);
}

void X11Pasteboard::clear()
{
    m_exchange.contentReplaced();
    change([](ClipboardWorker& worker) { worker.put(emptiedContent()); });
}

QCoro::Task<std::optional<QString>> X11Pasteboard::string()
{
    co_return co_await read<QString>(
        [since = m_exchange.copyAt()](ClipboardWorker& worker, auto onRead) {
            worker.text(since, std::move(onRead));
        });
}

void X11Pasteboard::setString(const QString& text)
{
    m_exchange.contentReplaced();
    change([text](ClipboardWorker& worker) { worker.put(contentOfText(text)); });
}

void X11Pasteboard::restore(const PasteboardSnapshot& snapshot)
{
    const auto paste = m_exchange.paste();
    m_exchange.contentReplaced();
    change(
        [snapshot, paste](ClipboardWorker& worker) { worker.restore(contentOf(snapshot), paste); });
}

} // namespace zelvane
