#include "end_to_end/Tray.h"

#include "support/Await.h"

#include <stdexcept>

namespace zelvane::test {

namespace {

using namespace std::chrono_literals;

} // namespace

Tray::Tray(ZelvaneSession& session, int monitor)
    : m_session(session)
{
    const QString settings = session.desktop.writeFile(
        QStringLiteral("tint2rc"),
        "panel_items = S\npanel_position = bottom right horizontal\npanel_size = 200 32\n"
        "systray_icon_size = 22\npanel_monitor = " +
            QByteArray::number(monitor) + '\n');
    session.desktop.start(QStringLiteral("tint2"), {QStringLiteral("-c"), settings});
}

QString Tray::openPanel()
{
    const auto opens = [this] {
        clickIcon();
        return waitUntil([this] { return m_session.windowIsVisible(panelTitle); }, 1s);
    };
    if (!waitUntil(opens, 5s)) {
        throw std::runtime_error("end to end: the tray's icon opens no panel");
    }
    return m_session.waitForWindow(panelTitle);
}

void Tray::clickIcon()
{
    const auto xdotool = [this](const QStringList& arguments) {
        return QString::fromLatin1(
            m_session.desktop.run(QStringLiteral("xdotool"), arguments).output.trimmed());
    };
    const QString icon = xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                  QStringLiteral("--class"), QStringLiteral("elvane")});
    xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), icon, QStringLiteral("11"),
             QStringLiteral("11"), QStringLiteral("click"), QStringLiteral("1")});
}

} // namespace zelvane::test
