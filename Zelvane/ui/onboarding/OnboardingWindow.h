#pragma once

#include "foundation/Clock.h"
#include "settings/AppSettings.h"
#include "ui/onboarding/OnboardingModel.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/panel/TranslatorKeyablePanel.h"
#include "ui/panel/WindowOrigins.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zelvane {

/// The panel with the introduction, of which there is at most one.
///
/// It floats above everything, and insists on it during its first two seconds: other windows of a
/// launch come up in the same moments. Main thread only.
class OnboardingWindow final : public QObject
{
    Q_OBJECT

public:
    /// What the introduction does to the rest of the program.
    struct Links
    {
        /// The program no longer shows among the running ones.
        std::function<void()> becomeAccessory = [] {};
        /// Takes the settings off the screen.
        std::function<void()> hideSettings = [] {};
        /// Decides anew whether the program shows among the running ones.
        std::function<void()> updateActivationPolicy = [] {};
        /// The panel has come to the screen, or has gone.
        std::function<void(bool)> visibilityChanged = [](bool) {};
        /// What the launch goes on with when the user has finished, a moment later.
        std::function<void()> afterwards = [] {};
    };

    /// All must outlive this object.
    OnboardingWindow(const Theme& theme, WindowSystem& windows, const WindowOrigins& origins,
                     AppSettings& settings, Clock& clock);
    ~OnboardingWindow() override;
    Q_DISABLE_COPY_MOVE(OnboardingWindow)

    /// To be called before the panel is first shown.
    void setLinks(Links links) { m_links = std::move(links); }

    /// Opens the panel at the first slide, or brings the open one to the front as it is.
    void showOnboarding();

    /// The panel that is open; null if there is none.
    [[nodiscard]] TranslatorKeyablePanel* panel() const { return m_panel; }
    [[nodiscard]] OnboardingView* view() const { return m_view; }

private:
    void build();
    void scheduleRaises();
    void raiseAgain();
    /// The user has understood.
    void finish();
    void close();

    const Theme& m_theme;
    WindowSystem& m_windows;
    const WindowOrigins& m_origins;
    AppSettings& m_settings;
    Clock& m_clock;
    Links m_links;
    QPointer<TranslatorKeyablePanel> m_panel;
    QPointer<OnboardingModel> m_model;
    QPointer<OnboardingView> m_view;
    std::optional<FocusLoan> m_loan;
    std::vector<std::unique_ptr<Timer>> m_raises;
    std::unique_ptr<Timer> m_continuation;
};

} // namespace zelvane
