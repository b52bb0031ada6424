#include "desktop/linux/atspi/AtSpiFocusInspector.h"

#include "settings/Localization.h"

#include <QFileInfo>

#include <utility>

namespace zelvane {

namespace {

std::optional<FocusedElement> toFocusedElement(const std::optional<AtSpiElement>& element)
{
    if (!element) {
        return std::nullopt;
    }
    const bool takesText = element->editable == true;
    return FocusedElement{.editable = element->editable,
                          .selectedTextSettable = takesText,
                          .valueSettable = takesText,
                          .role = QString::fromLatin1(element->role)};
}

} // namespace

QString AtSpiFocusInspector::sessionBusAddress()
{
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty()) {
        return address;
    }
    // Where the login manager puts it. The libraries would go on and start a bus of their own,
    // on which there would be nobody.
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString socket = folder + QStringLiteral("/bus");
    return !folder.isEmpty() && QFileInfo::exists(socket) ? QStringLiteral("unix:path=") + socket
                                                          : QString();
}

AtSpiFocusInspector::AtSpiFocusInspector(Clock& clock, const QString& busAddress)
    : m_clock(clock)
    , m_watcher(busAddress.toStdString())
{
}

AtSpiFocusInspector::~AtSpiFocusInspector()
{
    const auto waiting = std::exchange(m_waiting, {});
    for (const auto& answer : waiting) {
        answer.succeed(std::nullopt);
    }
}

QCoro::Task<std::optional<FocusedElement>> AtSpiFocusInspector::focusedElement()
{
    if (unavailable()) {
        m_watcher.reconnect();
        co_return std::nullopt;
    }
    const quint64 call = ++m_lastCall;
    const Completion<std::optional<FocusedElement>> answer;
    m_waiting.insert(call, answer);
    const auto limit = m_clock.callLater(timeLimit, [this, call] { settle(call, std::nullopt); });
    m_watcher.inspect(std::chrono::steady_clock::now() + timeLimit,
                      [this, call](const std::optional<AtSpiElement>& element) {
                          QMetaObject::invokeMethod(
                              &m_mainThread,
                              [this, call, element] { settle(call, toFocusedElement(element)); },
                              Qt::QueuedConnection);
                      });
    co_return co_await answer.result();
}

void AtSpiFocusInspector::settle(quint64 call, const std::optional<FocusedElement>& element)
{
    if (m_waiting.contains(call)) {
        m_waiting.take(call).succeed(element);
    }
}

std::optional<QString> AtSpiFocusInspector::unavailable() const
{
    switch (m_watcher.status()) {
    case AtSpiWatcher::Status::connecting:
    case AtSpiWatcher::Status::ready:
        return std::nullopt;
    case AtSpiWatcher::Status::noSessionBus:
        return localizedText(QStringLiteral(
            "There is no session bus, so Zelvane Desk can't tell text that can be edited from text "
            "that can't, and pastes into both. Everything else works."));
    case AtSpiWatcher::Status::noAccessibilityBus:
        return localizedText(QStringLiteral(
            "There is no accessibility bus (at-spi2-core), so Zelvane Desk can't tell text that "
            "can be edited from text that can't, and pastes into both. Everything else works."));
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
