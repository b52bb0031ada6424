#include "desktop/linux/session/SingleInstance.h"

#include "desktop/linux/session/BusNames.h"
#include "desktop/linux/session/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <latch>
#include <thread>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

/// Answers when it is told that the program was started again, or keeps silent.
class Activations final : public QDBusVirtualObject
{
public:
    explicit Activations(bool answers)
        : m_answers(answers)
    {
    }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.interface() == controlInterface() &&
            message.member() == QStringLiteral("Activate")) {
            ++count;
            if (m_answers) {
                connection.send(message.createReply());
            }
        }
        return true;
    }
    QString introspect(const QString&) const override { return {}; }

    std::atomic<int> count = 0;

private:
    bool m_answers;
};

/// The program that runs already, on a thread with an event loop of its own.
class RunningInstance
{
public:
    RunningInstance(PrivateBus& bus, const QString& folder, const QString& name,
                    bool answers = true)
        : activations(answers)
        , m_bus(bus.connect())
        , m_lock(folder, name)
        , m_name(name)
    {
        EXPECT_TRUE(m_lock.claim());
        activations.moveToThread(&m_thread);
        m_thread.start();
        EXPECT_TRUE(m_bus.registerVirtualObject(busObjectPath(), &activations));
    }
    ~RunningInstance()
    {
        end();
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY_MOVE(RunningInstance)

    void takeName() { EXPECT_TRUE(m_bus.registerService(m_name)); }
    void end()
    {
        PrivateBus::disconnect(m_bus);
        m_bus = noBus(); // the last hold on it
        m_lock.release();
    }

    Activations activations;

private:
    QDBusConnection m_bus;
    InstanceLock m_lock;
    QString m_name;
    QThread m_thread;
};

class SingleInstanceTest : public ::testing::Test
{
protected:
    std::expected<StartOutcome, QString> start(StartLimits limits = {2s, 2s})
    {
        return startOrHandOver(lock, client, name, limits);
    }

    QTemporaryDir folder;
    QString name = instanceName({});
    PrivateBus bus;
    QDBusConnection client = bus.connect();
    InstanceLock lock{folder.path(), name};
};

TEST_F(SingleInstanceTest, theFirstStartIsTheProgram)
{
    EXPECT_EQ(start(), StartOutcome::first);
    InstanceLock other(folder.path(), name);
    EXPECT_FALSE(other.claim());
}

TEST_F(SingleInstanceTest, aSecondStartHandsOver)
{
    RunningInstance running(bus, folder.path(), name);
    running.takeName();
    EXPECT_EQ(start(), StartOutcome::handedOver);
    EXPECT_EQ(start(), StartOutcome::handedOver);
    EXPECT_EQ(running.activations.count, 2);
}

TEST_F(SingleInstanceTest, waitsForOneThatIsJustStarting)
{
    RunningInstance running(bus, folder.path(), name);
    const std::jthread starting([&] {
        std::this_thread::sleep_for(150ms);
        running.takeName();
    });
    EXPECT_EQ(start(), StartOutcome::handedOver);
    EXPECT_EQ(running.activations.count, 1);
}

TEST_F(SingleInstanceTest, takesThePlaceOfOneThatIsJustEnding)
{
    RunningInstance running(bus, folder.path(), name, false);
    running.takeName();
    const std::jthread ending([&] {
        while (running.activations.count == 0) {
            std::this_thread::sleep_for(5ms);
        }
        running.end();
    });
    EXPECT_EQ(start(), StartOutcome::first);
}

TEST_F(SingleInstanceTest, saysThatOneIsFrozenWithinItsLimit)
{
    RunningInstance running(bus, folder.path(), name, false);
    running.takeName();
    const auto outcome = start({2s, 200ms});
    ASSERT_FALSE(outcome);
    EXPECT_THAT(outcome.error().toStdString(),
                HasSubstr("is running already as process " + std::to_string(::getpid())));
    EXPECT_THAT(outcome.error().toStdString(), HasSubstr("does not answer"));
}

TEST_F(SingleInstanceTest, saysThatOneNeverComesToItsName)
{
    const RunningInstance running(bus, folder.path(), name);
    const auto outcome = start({200ms, 2s});
    ASSERT_FALSE(outcome);
    EXPECT_THAT(outcome.error().toStdString(), HasSubstr("does not answer"));
}

TEST_F(SingleInstanceTest, withoutABusTheLockStillDecides)
{
    EXPECT_EQ(startOrHandOver(lock, noBus(), name, {100ms, 100ms}), StartOutcome::first);
    InstanceLock other(folder.path(), name);
    const auto outcome = startOrHandOver(other, noBus(), name, {100ms, 100ms});
    ASSERT_FALSE(outcome);
    EXPECT_THAT(outcome.error().toStdString(), HasSubstr("is running already. Without a session"));
}

TEST_F(SingleInstanceTest, profilesAreApart)
{
    RunningInstance running(bus, folder.path(), name);
    running.takeName();
    const QString profile = instanceName(QStringLiteral("/some/profile"));
    InstanceLock other(folder.path(), profile);
    EXPECT_EQ(startOrHandOver(other, client, profile), StartOutcome::first);
    EXPECT_EQ(running.activations.count, 0);
}

TEST_F(SingleInstanceTest, ofManyStartsAtOnceOneIsTheProgram)
{
    constexpr int starts = 8;
    std::atomic<int> firsts = 0;
    std::latch ready(starts);
    std::latch done(starts);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < starts; ++i) {
            threads.emplace_back([&] {
                InstanceLock own(folder.path(), name);
                ready.arrive_and_wait();
                firsts += startOrHandOver(own, noBus(), name, {100ms, 100ms}) ? 1 : 0;
                done.arrive_and_wait(); // nobody lets go before all have tried
            });
        }
    }
    EXPECT_EQ(firsts, 1);
}

} // namespace
} // namespace zelvane::test
