#include "main/DesktopParts.h"

#include <QApplication>
#include <QWindow>

namespace zelvane {

namespace {

/// The menu at Option + right click is not part of this build: nothing listens, nothing is wrong.
class NoOptionClickMenu final : public OptionClickMenu
{
public:
    void setOnSelect(std::function<void(LanguagePair, TranslateOutputMode)>) override {}
    void setOnActivated(std::function<void()>) override {}
    void setWanted(bool) override {}
    void reconcile() override {}
    [[nodiscard]] bool isListening() const override { return false; }
    [[nodiscard]] QString lastError() const override { return {}; }
};

} // namespace

DesktopParts::DesktopParts(ProgramCore& core, Desktop& desktop)
    : m_permission(desktop.accessibility(), core.defaults(), core.clock())
    , m_selection({core.settings(), m_permission, desktop.pasteboard(), desktop.keystrokes(),
                   desktop.focus(), core.dispatch(), core.trace(), core.clock()})
    , m_hotKeys(desktop.hotKeys())
    , m_optionMenu(std::make_unique<NoOptionClickMenu>())
    , m_interface(core.defaults(), core.settings())
    , m_model({core.settings(), m_selection, m_hotKeys, *m_optionMenu, m_permission,
               m_interface.alerts(), m_interface, core.clock()})
    , m_tray(m_interface, core.settings(), m_model, core.clock())
{
    core.hostedStartUp().start();
    tellOfActivation();
}

DesktopParts::~DesktopParts() = default;

void DesktopParts::tellOfActivation()
{
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &m_model,
                     [this](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive) {
                             m_model.activated();
                         }
                     });
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &m_model,
                     [this](const QWindow* window) {
                         if (window) {
                             m_model.activated();
                         }
                     });
}

} // namespace zelvane
