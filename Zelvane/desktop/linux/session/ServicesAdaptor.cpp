#include "desktop/linux/session/ServicesAdaptor.h"

#include "desktop/linux/session/BusNames.h"

namespace zelvane {

namespace {

/// The text of one call and then its translation.
class CallPasteboard final : public ServicePasteboard
{
public:
    explicit CallPasteboard(QString text)
        : m_text(std::move(text))
    {
    }

    [[nodiscard]] std::optional<QString> string() const override { return m_text; }
    void clearContents() override { m_text.clear(); }
    void setString(const QString& text) override { m_text = text; }

private:
    QString m_text;
};

} // namespace

ServicesAdaptor::ServicesAdaptor(QObject* object, ServicesProvider& provider,
                                 const QDBusConnection& bus)
    : QDBusAbstractAdaptor(object)
    , m_provider(provider)
    , m_bus(bus)
{
    m_threads.setMaxThreadCount(mostCalls);
    constexpr int idleMilliseconds = 5000;
    m_threads.setExpiryTimeout(idleMilliseconds);
}

ServicesAdaptor::~ServicesAdaptor()
{
    m_provider.close();
    m_threads.waitForDone();
}

QString ServicesAdaptor::TranslatePair1(const QString& text, const QDBusMessage& call)
{
    return run(&ServicesProvider::translatePair1, text, call);
}

QString ServicesAdaptor::TranslatePair2(const QString& text, const QDBusMessage& call)
{
    return run(&ServicesProvider::translatePair2, text, call);
}

QString ServicesAdaptor::TranslatePair3(const QString& text, const QDBusMessage& call)
{
    return run(&ServicesProvider::translatePair3, text, call);
}

QString ServicesAdaptor::TranslatePair1UI(const QString& text, const QDBusMessage& call)
{
    return run(&ServicesProvider::translatePair1UI, text, call);
}

QString ServicesAdaptor::TranslatePair2UI(const QString& text, const QDBusMessage& call)
{
    return run(&ServicesProvider::translatePair2UI, text, call);
}

QString ServicesAdaptor::TranslatePair3UI(const QString& text, const QDBusMessage& call)
{
    return run(&ServicesProvider::translatePair3UI, text, call);
}

QString ServicesAdaptor::run(ServicesProvider::Entry entry, const QString& text,
                             const QDBusMessage& call)
{
    call.setDelayedReply(true);
    if (text.size() > longestText) {
        m_bus.send(
            call.createErrorReply(busError::textTooLarge(),
                                  QStringLiteral("The text has more than a million characters.")));
        return {};
    }
    if (m_running >= mostCalls) {
        m_bus.send(call.createErrorReply(
            busError::tooManyCalls(),
            QStringLiteral("Too many translations are under way. Try again in a moment.")));
        return {};
    }
    ++m_running;
    m_threads.start([this, entry, text, call] {
        CallPasteboard pasteboard(text);
        const auto failure = (m_provider.*entry)(pasteboard);
        --m_running;
        // To a caller who has gone the bus delivers nothing, and nobody minds.
        m_bus.send(failure ? call.createErrorReply(busError::failed(), *failure)
                           : call.createReply(*pasteboard.string()));
    });
    return {};
}

} // namespace zelvane
