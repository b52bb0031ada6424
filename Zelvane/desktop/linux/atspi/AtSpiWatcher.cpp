#include "desktop/linux/atspi/AtSpiWatcher.h"

#include "desktop/linux/atspi/AtSpiSession.h"
#include "desktop/linux/atspi/GLibLoop.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace zelvane {

using std::chrono::steady_clock;

class AtSpiWatcher::Worker
{
public:
    explicit Worker(std::string sessionBusAddress)
        : m_address(std::move(sessionBusAddress))
        , m_thread([this](const std::stop_token& stop) { run(stop); })
    {
    }

    [[nodiscard]] Status status() const { return m_status; }

    void post(steady_clock::time_point deadline, Answer onAnswer)
    {
        const std::scoped_lock lock(m_lock);
        m_inspections.push_back({deadline, std::move(onAnswer)});
        wake();
    }

    void requestConnection()
    {
        const std::scoped_lock lock(m_lock);
        m_wantsConnection = true;
        wake();
    }

private:
    struct Inspection
    {
        steady_clock::time_point deadline;
        Answer onAnswer;
    };

    void wake()
    {
        if (m_loop) {
            m_loop->wake();
        }
    }

    void setLoop(GLibLoop* loop)
    {
        const std::scoped_lock lock(m_lock);
        m_loop = loop;
    }

    void run(const std::stop_token& stop)
    {
        GLibLoop loop(stop);
        AtSpiSession session(loop, m_address);
        setLoop(&loop);
        while (!loop.isStopping()) {
            m_status = session.maintain();
            if (takeConnectionRequest()) {
                session.encourage();
                m_status = session.connect();
            } else if (auto inspection = takeInspection()) {
                inspection->onAnswer(session.inspect(inspection->deadline));
            } else {
                loop.waitForWork();
            }
        }
        setLoop(nullptr);
    }

    bool takeConnectionRequest()
    {
        const std::scoped_lock lock(m_lock);
        return std::exchange(m_wantsConnection, false);
    }

    std::optional<Inspection> takeInspection()
    {
        const std::scoped_lock lock(m_lock);
        if (m_inspections.empty()) {
            return std::nullopt;
        }
        auto inspection = std::move(m_inspections.front());
        m_inspections.pop_front();
        return inspection;
    }

    const std::string m_address;
    std::atomic<Status> m_status = Status::connecting;

    std::mutex m_lock;
    GLibLoop* m_loop = nullptr;
    std::deque<Inspection> m_inspections;
    bool m_wantsConnection = true;

    std::jthread m_thread; // the last, so that it ends first
};

AtSpiWatcher::AtSpiWatcher(std::string sessionBusAddress)
    : m_worker(std::make_unique<Worker>(std::move(sessionBusAddress)))
{
}

AtSpiWatcher::~AtSpiWatcher() = default;

AtSpiWatcher::Status AtSpiWatcher::status() const
{
    return m_worker->status();
}

void AtSpiWatcher::inspect(steady_clock::time_point deadline, Answer onAnswer)
{
    m_worker->post(deadline, std::move(onAnswer));
}

void AtSpiWatcher::reconnect()
{
    m_worker->requestConnection();
}

} // namespace zelvane
