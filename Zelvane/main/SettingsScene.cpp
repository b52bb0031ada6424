#include "main/SettingsScene.h"

#include "ui/linux/LinuxSessionInspector.h"
#include "ui/permission/PermissionModel.h"
#include "ui/settings/SettingsView.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QGuiApplication>

#include <utility>

namespace zelvane {

namespace {

void copyText(const QString& text)
{
    QGuiApplication::clipboard()->setText(text);
}

/// Whether the chord can't be registered while the program's own shortcuts are suspended.
bool isHeldElsewhere(HotKeyRegistrar& registrar, const KeyChord& chord)
{
    // An id that no shortcut of the program has.
    const HotKeyID probe{HotKeyManager::hotKeySignature, HotKeyManager::manualHotKeyID + 1};
    const auto reference = registrar.registerHotKey(chord, probe);
    if (!reference) {
        return true;
    }
    registrar.unregisterHotKey(*reference);
    return false;
}

} // namespace

struct SettingsScene::Parts
{
    Parts(UserInterface& interface, const Links& links)
        : inspector(QDBusConnection::sessionBus(),
                    {[&desktop = links.desktop] { return desktop.inputAbilities().pressesKeys; },
                     [&desktop = links.desktop] { return desktop.inputAbilities().watchesKeys; },
                     interface.trayAvailable()})
        , permission(links.model.bindableAccessibilityState(), inspector, links.core.clock(),
                     {[&links] { links.permission.relaunch(); }, copyText,
                      [&links] {
                          links.permission.requestPrompt();
                          links.model.refreshAccessibilityState();
                      }})
        , services(servicesOf(interface, links))
        , view(interface.theme(), services, links.core.clock())
    {
        QObject::connect(&view, &SettingsView::appeared, &view, [&links] { appear(links); });
        QObject::connect(&view, &SettingsView::disappeared, &view, links.disappeared);
    }

    void open(const Links& links)
    {
        view.show();
        // Also if the window was there already, with another page.
        if (links.settings.takePendingSection() == SettingsWindow::PendingSection::accessibility) {
            view.select(SettingsCategory::accessibility);
        }
    }

    static void appear(const Links& links)
    {
        if (!links.permission.focusAccessibilitySection()) {
            links.permission.schedulePrompt();
        }
    }

    [[nodiscard]] EngineControls controlsOf(OfflineEngines& engines, SmartOfflineVariant variant)
    {
        SmartOfflineEngineManager& engine = engines.engine(variant);
        return {.state = &engine.state(),
                .install =
                    [this, &engine] {
                        installs.start(
                            [&engine](std::stop_token stop) { return engine.install(stop); });
                    },
                .cancelInstall = [&engine] { engine.cancelInstall(); },
                .deleteEngine = [&engine] { engine.deleteEngine(); },
                .displaySizeBytes = [&engine] { return engine.displaySizeBytes(); },
                .refresh = [&engine] { engine.refreshStatus(); }};
    }

    [[nodiscard]] SettingsServices servicesOf(UserInterface& interface, const Links& links)
    {
        ProgramCore& core = links.core;
        return {
            .settings = core.settings(),
            .defaults = core.defaults(),
            .fetchModels =
                [&core](AIProvider provider, QString key, std::stop_token stop) {
                    return core.onlineEngines().models().fetchRemoteModels(provider, std::move(key),
                                                                           std::move(stop));
                },
            .keyOfThisRun = core.keyOfThisRun(),
            .engine =
                [this, &core](SmartOfflineVariant variant) {
                    return controlsOf(core.offlineEngines(), variant);
                },
            .providerPicked =
                [&core](AIProvider provider) { core.offlineEngines().providerPicked(provider); },
            .glossaries = core.glossaryManager(),
            .reloadHotKeys = [&links] { links.model.reloadHotKeys(); },
            .suspendHotKeys = [&links] { links.hotKeys.reload({}, std::nullopt); },
            .isHeldElsewhere =
                [&links](const KeyChord& chord) {
                    return isHeldElsewhere(links.desktop.hotKeys(), chord);
                },
            .optionMenuChanged =
                [&links, &core] {
                    links.optionMenu.setWanted(core.settings().optionRightClickMenu());
                    links.model.refreshOptionMenuStatus();
                },
            .permissionState = links.model.bindableAccessibilityState(),
            .permission = permission,
            .resetWindowLocations = [&interface] { interface.resetWindowLocations(); },
            .installId =
                [&core](std::stop_token stop) {
                    return core.onlineEngines().hosted().installId(std::move(stop));
                },
            .writeToClipboard = copyText,
            .languageChosen = [&links] { links.model.refreshStatusText(); },
            .buildNumber = QStringLiteral(ZELVANE_BUILD_NUMBER),
        };
    }

    LinuxSessionInspector inspector;
    PermissionModel permission;
    /// Installations go on when the window is closed.
    TaskScope installs;
    SettingsServices services;
    SettingsView view;
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
        m_links.settings.registerOpenAction([this] { m_parts->open(m_links); });
    }
    return true;
}

} // namespace zelvane
