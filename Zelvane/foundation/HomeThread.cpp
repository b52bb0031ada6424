#include "foundation/HomeThread.h"

#include <QObject>
#include <QThread>

#include <mutex>

namespace zelvane {

struct HomeThread::Mailbox
{
    std::mutex lock;
    /// Takes the calls as events, which go with it.
    std::unique_ptr<QObject> receiver = std::make_unique<QObject>();
    const QThread* const thread = QThread::currentThread();
};

HomeThread::HomeThread()
    : m_mailbox(std::make_shared<Mailbox>())
{
}

HomeThread::~HomeThread()
{
    close();
}

bool HomeThread::isCurrent() const
{
    return QThread::currentThread() == m_mailbox->thread;
}

void HomeThread::post(std::function<void()> call)
{
    const std::scoped_lock lock(m_mailbox->lock);
    if (m_mailbox->receiver) {
        QMetaObject::invokeMethod(m_mailbox->receiver.get(), std::move(call), Qt::QueuedConnection);
    }
}

void HomeThread::close()
{
    std::unique_ptr<QObject> receiver;
    {
        const std::scoped_lock lock(m_mailbox->lock);
        receiver = std::move(m_mailbox->receiver);
    }
    // Without the lock: what goes with the calls may post again.
}

} // namespace zelvane
