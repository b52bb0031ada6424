#include "ui/manual/ManualTranslationWindow.h"

#include "ui/components/Observe.h"

#include <QEvent>

#include <utility>

namespace zelvane {

ManualTranslationWindow::ManualTranslationWindow(const Theme& theme, WindowSystem& windows,
                                                 WindowOrigins& origins,
                                                 const AppSettings& settings,
                                                 TranslationTrace& trace,
                                                 ManualTranslationModel::Services services)
    : m_theme(theme)
    , m_windows(windows)
    , m_origins(origins)
    , m_settings(settings)
    , m_trace(trace)
    , m_services(std::move(services))
{
    m_sizeChange = settings.bindableManualWindowSize().addNotifier([this] {
        // In a later turn, so that all that hangs on the setting sees the same window.
        QMetaObject::invokeMethod(this, &ManualTranslationWindow::resizeManualTranslationWindow,
                                  Qt::QueuedConnection);
    });
}

ManualTranslationWindow::~ManualTranslationWindow()
{
    if (m_panel) {
        m_panel->removeEventFilter(this); // what it tells while it goes comes from half a panel
    }
    delete m_panel;
}

void ManualTranslationWindow::showManualTranslationWindow()
{
    if (bringManualTranslationWindowForward()) {
        return;
    }
    m_loan = FocusLoan(m_windows);
    build();
    place();
    m_panel->installEventFilter(this);
    m_panel->presentInFront();
    m_view->focusEditor();
    Q_EMIT presenceChanged();
}

bool ManualTranslationWindow::bringManualTranslationWindowForward()
{
    if (!m_panel) {
        return false;
    }
    m_panel->presentInFront();
    Q_EMIT presenceChanged();
    return true;
}

void ManualTranslationWindow::closeManualTranslationWindow()
{
    if (!m_panel) {
        return;
    }
    const bool hasKeyboard = m_panel->isActiveWindow();
    saveOrigin();
    m_panel->removeEventFilter(this);
    m_panel->hide();
    // The translation ends at once; the panel may be the one whose key press is being handled.
    delete m_view;
    delete m_model;
    m_panel->deleteLater();
    m_panel.clear();
    if (hasKeyboard && m_loan) {
        m_loan->giveBack();
    }
    m_loan.reset();
    Q_EMIT presenceChanged();
}

void ManualTranslationWindow::resizeManualTranslationWindow()
{
    if (m_panel) {
        m_panel->setContentSize(manualWindowContentSize(m_settings.manualWindowSize()));
        centre();
    }
}

bool ManualTranslationWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_panel && event->type() == QEvent::Move && m_panel->isVisible()) {
        saveOrigin();
    }
    return QObject::eventFilter(watched, event);
}

void ManualTranslationWindow::build()
{
    m_panel = new TranslatorKeyablePanel(m_theme, m_windows, PanelRole::window);
    m_panel->setPromotesDockIcon(true);
    m_model = new ManualTranslationModel(m_settings, m_trace, m_services);
    m_model->setParent(m_panel);
    m_view = new ManualTranslationView(*m_model, m_theme);
    m_panel->setContent(m_view);
    m_panel->setWindowTitle(m_view->windowTitle());
    connect(m_panel, &TranslatorKeyablePanel::closeRequested, this,
            &ManualTranslationWindow::closeManualTranslationWindow);
    connect(m_view, &ManualTranslationView::closeRequested, this,
            &ManualTranslationWindow::closeManualTranslationWindow);
    observe(m_view, m_model->bindableIsPinned(), [this](bool pinned) {
        m_panel->setFloating(pinned);
        Q_EMIT presenceChanged();
    });
}

void ManualTranslationWindow::place()
{
    const QSize size = manualWindowContentSize(m_settings.manualWindowSize());
    m_panel->setContentSize(size);
    if (const auto origin =
            m_origins.loadWindowOrigin(WindowKind::manual, size.width(), size.height())) {
        m_panel->setPanelOrigin(origin->toPoint());
    } else {
        centre();
    }
}

void ManualTranslationWindow::centre()
{
    const QSize size = m_panel->panelFrame().size();
    m_panel->setPanelOrigin(m_origins.centre(size.width(), size.height()).toPoint());
}

void ManualTranslationWindow::saveOrigin()
{
    const QPoint origin = m_panel->panelFrame().topLeft();
    m_origins.saveWindowOrigin(WindowKind::manual, origin.x(), origin.y());
}

} // namespace zelvane
