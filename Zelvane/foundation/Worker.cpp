#include "foundation/Worker.h"

namespace zelvane {

Worker::Worker()
{
    m_thread.setMaxThreadCount(1);
}

Worker::~Worker()
{
    m_end.request_stop();
    m_thread.waitForDone();
}

void Worker::start(std::function<void()> call)
{
    m_thread.start(std::move(call));
}

void Worker::report(std::function<void()> effect)
{
    QMetaObject::invokeMethod(&m_mailbox, std::move(effect), Qt::QueuedConnection);
}

} // namespace zelvane
