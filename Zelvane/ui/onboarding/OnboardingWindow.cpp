#include "ui/onboarding/OnboardingWindow.h"

#include <QApplication>

#include <algorithm>
#include <array>
#include <chrono>

namespace zelvane {

namespace {

using namespace std::chrono_literals;

constexpr std::array<std::chrono::milliseconds, 5> raiseMoments{50ms, 200ms, 500ms, 1000ms, 2000ms};
constexpr std::chrono::milliseconds continuationDelay{250};

/// A question of the program's own waits for an answer, and would not be seen behind the panel.
bool alertIsOpen()
{
    return std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget* window) {
        const auto* panel = qobject_cast<const TranslatorKeyablePanel*>(window);
        return panel && panel->role() == PanelRole::alert && panel->isVisible();
    });
}

} // namespace

OnboardingWindow::OnboardingWindow(const Theme& theme, WindowSystem& windows,
                                   const WindowOrigins& origins, AppSettings& settings,
                                   Clock& clock)
    : m_theme(theme)
    , m_windows(windows)
    , m_origins(origins)
    , m_settings(settings)
    , m_clock(clock)
{
}

OnboardingWindow::~OnboardingWindow()
{
    delete m_panel;
}

void OnboardingWindow::showOnboarding()
{
    if (m_panel && m_panel->isVisible()) {
        m_panel->presentInFront();
        return;
    }
    delete m_panel;
    m_loan = FocusLoan(m_windows);
    build();
    m_links.becomeAccessory();
    m_panel->presentInFront();
    m_view->focusForward();
    m_links.visibilityChanged(true);
    scheduleRaises();
}

void OnboardingWindow::build()
{
    m_panel = new TranslatorKeyablePanel(m_theme, m_windows, PanelRole::floating);
    m_model = new OnboardingModel;
    m_model->setParent(m_panel);
    m_view = new OnboardingView(*m_model, m_theme);
    m_panel->setContent(m_view);
    m_panel->setWindowTitle(m_view->title().text());
    connect(m_view, &OnboardingView::titleChanged, m_panel, &QWidget::setWindowTitle);
    connect(m_model, &OnboardingModel::finished, this, &OnboardingWindow::finish);
    // A window manager may ask as well, for which the same holds as for Esc.
    connect(m_panel, &TranslatorKeyablePanel::closeRequested, m_model, &OnboardingModel::finish);

    const QSize size = OnboardingView::contentSize;
    m_panel->setContentSize(size);
    m_panel->setPanelOrigin(m_origins.centre(size.width(), size.height()).toPoint());
}

void OnboardingWindow::scheduleRaises()
{
    m_raises.clear();
    for (const auto moment : raiseMoments) {
        m_raises.push_back(m_clock.callLater(moment, [this] { raiseAgain(); }));
    }
}

void OnboardingWindow::raiseAgain()
{
    if (m_panel && m_panel->isVisible()) {
        m_links.hideSettings();
        if (!alertIsOpen()) {
            m_panel->presentInFront();
        }
    }
}

void OnboardingWindow::finish()
{
    m_settings.setHasSeenOnboarding(true);
    close();
    m_continuation = m_clock.callLater(continuationDelay, [this] { m_links.afterwards(); });
}

void OnboardingWindow::close()
{
    m_raises.clear();
    const bool hasKeyboard = m_panel->isActiveWindow();
    m_panel->hide();
    // The panel may be the one whose key press is being handled.
    m_panel->deleteLater();
    m_panel.clear();
    m_model.clear();
    m_view.clear();
    if (hasKeyboard && m_loan) {
        m_loan->giveBack();
    }
    m_loan.reset();
    m_links.visibilityChanged(false);
    m_links.updateActivationPolicy();
}

} // namespace zelvane
