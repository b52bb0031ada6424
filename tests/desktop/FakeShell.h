#pragma once

#include "desktop/ActivationPolicy.h"
#include "desktop/ApplicationWindows.h"

#include <QStringList>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

/// Recording stand-ins for what surrounds the controller. They write into the test's log.
namespace zelvane::test {

/// A log as matchers compare it with literals.
inline std::vector<std::string> texts(const QStringList& log)
{
    std::vector<std::string> lines;
    for (const QString& line : log) {
        lines.push_back(line.toStdString());
    }
    return lines;
}

class FakeActivationPolicy final : public ActivationPolicy
{
public:
    explicit FakeActivationPolicy(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] Kind current() const override { return kind; }
    void set(Kind newKind) override
    {
        m_log << (newKind == Kind::regular ? QStringLiteral("regular")
                                           : QStringLiteral("accessory"));
        kind = newKind;
    }

    Kind kind = Kind::accessory;

private:
    QStringList& m_log;
};

class FakeApplicationWindows final : public ApplicationWindows
{
public:
    explicit FakeApplicationWindows(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] QList<ApplicationWindow> windows() const override { return list; }
    void addObserver(Observer observer) override
    {
        m_log << QStringLiteral("observe");
        m_observers << std::move(observer);
    }
    void activateApplication() override { m_log << QStringLiteral("activate application"); }
    void makeKeyAndOrderFront(Id window) override { note(QStringLiteral("key and front"), window); }
    void orderFrontRegardless(Id window) override
    {
        note(QStringLiteral("front regardless"), window);
    }
    void orderOut(Id window) override { note(QStringLiteral("order out"), window); }

    /// What the platform tells.
    void becomeKey()
    {
        for (const Observer& observer : std::as_const(m_observers)) {
            observer.becameKeyOrMain();
        }
    }
    /// A window closes: it is told of while it still shows, and then it doesn't.
    void close(std::optional<Id> window)
    {
        for (const Observer& observer : std::as_const(m_observers)) {
            observer.willClose(window);
        }
        const auto found = std::ranges::find(
            list, window, [](const ApplicationWindow& own) { return std::optional(own.id); });
        if (found != list.end()) {
            found->isVisible = false;
        }
    }

    QList<ApplicationWindow> list;

private:
    void note(const QString& what, Id window)
    {
        m_log << QStringLiteral("%1 %2").arg(what).arg(window);
    }

    QStringList& m_log;
    QList<Observer> m_observers;
};

} // namespace zelvane::test
