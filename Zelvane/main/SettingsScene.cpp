#include "main/SettingsScene.h"

#include "ui/linux/LinuxSessionInspector.h"
#include "ui/permission/PermissionModel.h"
#include "ui/permission/PermissionWindow.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QGuiApplication>

#include <utility>

namespace zelvane {

struct SettingsScene::Parts
{
    Parts(UserInterface& interface, const Links& links)
        : inspector(QDBusConnection::sessionBus(),
                    {[&desktop = links.desktop] { return desktop.inputAbilities().pressesKeys; },
                     [&desktop = links.desktop] { return desktop.inputAbilities().watchesKeys; },
                     interface.trayAvailable()})
        , model(links.state, inspector, links.clock,
                {links.relaunch,
                 [](const QString& text) { QGuiApplication::clipboard()->setText(text); }})
        , window(model, interface.theme())
    {
        QObject::connect(&window, &PermissionWindow::disappeared, &window, links.disappeared);
    }

    LinuxSessionInspector inspector;
    PermissionModel model;
    PermissionWindow window;
};

SettingsScene::SettingsScene(UserInterface& interface, Links links)
    : m_interface(interface)
    , m_links(std::move(links))
{
}

SettingsScene::~SettingsScene() = default;

bool SettingsScene::openFirst()
{
    if (!m_parts) {
        m_parts = std::make_unique<Parts>(m_interface, m_links);
        m_links.settings.registerOpenAction([&window = m_parts->window] { window.show(); });
    }
    return true;
}

} // namespace zelvane
