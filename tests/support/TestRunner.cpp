#include "support/TestRunner.h"

#include <gtest/gtest.h>

#include <QString>
#include <QtGlobal>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds testLimit(10);

/// Ends the program if one test runs for too long: a hang must be a failure with a name.
class Watchdog final : public ::testing::EmptyTestEventListener
{
public:
    Watchdog()
        : m_thread([this](const std::stop_token& stop) { watch(stop); })
    {
    }
    ~Watchdog() override
    {
        {
            const std::scoped_lock lock(m_lock); // or the thread might just be going to wait
            m_thread.request_stop();
        }
        m_changed.notify_all();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    void OnTestStart(const ::testing::TestInfo& info) override
    {
        const std::scoped_lock lock(m_lock);
        m_name = std::string(info.test_suite_name()) + "." + info.name();
        m_start = Clock::now();
        m_limit = testLimit;
        m_changed.notify_all();
    }
    void OnTestEnd(const ::testing::TestInfo&) override
    {
        const std::scoped_lock lock(m_lock);
        m_name.clear();
        m_changed.notify_all();
    }

    void setLimit(std::chrono::seconds limit)
    {
        const std::scoped_lock lock(m_lock);
        m_limit = limit;
        m_changed.notify_all();
    }

private:
    void watch(const std::stop_token& stop)
    {
        std::unique_lock lock(m_lock);
        while (!stop.stop_requested()) {
            if (m_name.empty()) {
                m_changed.wait(lock);
                continue;
            }
            m_changed.wait_until(lock, m_start + m_limit);
            if (!m_name.empty() && Clock::now() >= m_start + m_limit) {
                std::fprintf(stderr, "[  FAILED  ] %s: still running after %d s\n", m_name.c_str(),
                             int(m_limit.count()));
                std::fflush(stderr);
                std::_Exit(70);
            }
        }
    }

    std::mutex m_lock;
    std::condition_variable m_changed;
    std::string m_name;
    Clock::time_point m_start;
    std::chrono::seconds m_limit = testLimit;
    std::jthread m_thread;
};

/// Owned by GoogleTest; null before the first test.
Watchdog* watchdog = nullptr;

/// What Qt says of the platform on which tests show windows: it has no window manager and no tray.
bool tellsOfThePlatform(const QString& message)
{
    return message.startsWith(QStringLiteral("This plugin does not support ")) ||
           message.contains(QStringLiteral("QPlatformNativeInterface::systemTrayWindowChanged"));
}

/// What Qt 6.4 says, sometimes, of its own mistake when a server hangs up within an answer.
bool tellsOfAFaultOfQt(const QString& message)
{
    return message == QStringLiteral("QNetworkReplyImplPrivate::error: Internal problem, this "
                                     "method must only be called once.");
}

void failOnWarning(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (tellsOfThePlatform(message) || tellsOfAFaultOfQt(message)) {
        return;
    }
    if (type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg) {
        ADD_FAILURE() << "unexpected Qt message: " << message.toStdString();
    }
    std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
}

} // namespace

namespace zelvane::test {

int runAllTests()
{
    qInstallMessageHandler(failOnWarning);
    watchdog = new Watchdog;
    ::testing::UnitTest::GetInstance()->listeners().Append(watchdog);
    return RUN_ALL_TESTS();
}

void allowThisTest(std::chrono::seconds limit)
{
    watchdog->setLimit(limit);
}

} // namespace zelvane::test
