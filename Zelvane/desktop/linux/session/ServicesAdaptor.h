#pragma once

#include "desktop/ServicesProvider.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QThreadPool>

#include <atomic>
#include <memory>

namespace zelvane {

/// The services on the bus: text in, translation out. Each call blocks a thread of its own.
class ServicesAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.zelvane.desk.Services")

public:
    /// More calls at a time are turned away: none has to wait for another one's 60 seconds.
    static constexpr int mostCalls = 16;
    /// In UTF-16 units. No engine gets through more in 60 seconds.
    static constexpr qsizetype longestText = 1'000'000;

    /// `provider` must outlive the adaptor.
    ServicesAdaptor(QObject* object, ServicesProvider& provider, const QDBusConnection& bus);
    /// Ends the calls under way.
    ~ServicesAdaptor() override;

public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers)
    // The names are those on the bus.
    QString TranslatePair1(const QString& text, const QDBusMessage& call);
    QString TranslatePair2(const QString& text, const QDBusMessage& call);
    QString TranslatePair3(const QString& text, const QDBusMessage& call);
    QString TranslatePair1UI(const QString& text, const QDBusMessage& call);
    QString TranslatePair2UI(const QString& text, const QDBusMessage& call);
    QString TranslatePair3UI(const QString& text, const QDBusMessage& call);

private:
    /// Answers later; what it returns is not sent.
    QString run(ServicesProvider::Entry entry, const QString& text, const QDBusMessage& call);

    ServicesProvider& m_provider;
    QDBusConnection m_bus;
    std::atomic<int> m_running = 0;
    QThreadPool m_threads;
};

} // namespace zelvane
