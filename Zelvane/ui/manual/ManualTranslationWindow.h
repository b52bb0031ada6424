#pragma once

#include "ui/manual/ManualTranslationModel.h"
#include "ui/manual/ManualTranslationView.h"
#include "ui/panel/TranslatorKeyablePanel.h"
#include "ui/panel/WindowOrigins.h"

#include <QObject>
#include <QPointer>
#include <QPropertyNotifier>

#include <optional>

namespace zelvane {

/// The window into which the user types what is to be translated, of which there is at most one.
///
/// The window, its text and its state exist only while it is open; only its place is remembered.
/// Main thread only.
class ManualTranslationWindow final : public QObject
{
    Q_OBJECT

public:
    /// All must outlive this object.
    ManualTranslationWindow(const Theme& theme, WindowSystem& windows, WindowOrigins& origins,
                            const AppSettings& settings, TranslationTrace& trace,
                            ManualTranslationModel::Services services);
    ~ManualTranslationWindow() override;
    Q_DISABLE_COPY_MOVE(ManualTranslationWindow)

    /// Opens the window, or brings the open one to the front as it is.
    void showManualTranslationWindow();

    /// False if there is no window to bring to the front.
    bool bringManualTranslationWindowForward();

    /// Closes the window and cancels a translation that is on its way. Gives the keyboard back to
    /// the program that had it. Does nothing without a window.
    void closeManualTranslationWindow();

    /// Gives an open window the size that the user has chosen and moves it to the middle.
    void resizeManualTranslationWindow();

    /// The window that is open; null if there is none.
    [[nodiscard]] TranslatorKeyablePanel* panel() const { return m_panel; }
    [[nodiscard]] ManualTranslationModel* model() const { return m_model; }
    [[nodiscard]] ManualTranslationView* view() const { return m_view; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// The window has opened, closed or been pinned: whether the program shows among the running
    /// ones may have changed.
    void presenceChanged();

private:
    void build();
    void place();
    void centre();
    void saveOrigin();

    const Theme& m_theme;
    WindowSystem& m_windows;
    WindowOrigins& m_origins;
    const AppSettings& m_settings;
    TranslationTrace& m_trace;
    ManualTranslationModel::Services m_services;
    QPropertyNotifier m_sizeChange;
    QPointer<TranslatorKeyablePanel> m_panel;
    QPointer<ManualTranslationModel> m_model;
    QPointer<ManualTranslationView> m_view;
    std::optional<FocusLoan> m_loan;
};

} // namespace zelvane
