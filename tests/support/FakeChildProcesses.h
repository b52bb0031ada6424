#pragma once

#include "Services/ChildProcess.h"

#include <functional>
#include <vector>

namespace zelvane::test {

/// Starts nothing, but notes what it is asked to start; a test plays the children.
class FakeChildProcesses final : public ChildProcessLauncher
{
public:
    /// A child as the test sees and plays it.
    struct Child
    {
        ChildProcessCommand command;
        ChildProcess::Listener listener;
        qint32 pid = 0;
        bool isRunning = true;
        /// "terminate" and "kill" in their order, and "gone" when the process object went.
        QStringList calls;

        void print(const QByteArray& bytes) const
        {
            if (const auto output = listener.output) {
                output(bytes);
            }
        }
        void end(ChildProcessEnd how = {})
        {
            isRunning = false;
            if (const auto ended = listener.ended) {
                ended(how);
            }
        }
    };

    [[nodiscard]] QCoro::Task<std::unique_ptr<ChildProcess>>
    launch(ChildProcessCommand command, ChildProcess::Listener listener) override
    {
        auto child = std::make_shared<Child>();
        child->command = command;
        child->listener = std::move(listener);
        child->pid = firstPid + static_cast<qint32>(children.size());
        if (launchFails) {
            throw ChildLaunchError(command.executable, QStringLiteral("it is a fake"));
        }
        children.push_back(child);
        if (onLaunch) {
            onLaunch(*child);
        }
        co_return std::make_unique<Process>(child);
    }

    static constexpr qint32 firstPid = 1001;

    bool launchFails = false;
    /// Called for each child that was started, before anyone has it.
    std::function<void(Child&)> onLaunch;
    std::vector<std::shared_ptr<Child>> children;

private:
    class Process final : public ChildProcess
    {
    public:
        explicit Process(std::shared_ptr<Child> child)
            : m_child(std::move(child))
        {
        }
        ~Process() override
        {
            m_child->calls += QStringLiteral("gone");
            m_child->listener = {};
        }
        [[nodiscard]] bool isRunning() const override { return m_child->isRunning; }
        [[nodiscard]] qint32 pid() const override { return m_child->pid; }
        void terminate() override { m_child->calls += QStringLiteral("terminate"); }
        void kill() override { m_child->calls += QStringLiteral("kill"); }

    private:
        std::shared_ptr<Child> m_child;
    };
};

} // namespace zelvane::test
