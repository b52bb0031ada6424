#pragma once

#include "ui/panel/TranslatorKeyablePanel.h"
#include "ui/panel/WindowOrigins.h"
#include "ui/result/TranslationResultModel.h"
#include "ui/result/TranslationResultView.h"

#include <QObject>
#include <QObjectCleanupHandler>
#include <QPointer>
#include <QPropertyNotifier>

#include <optional>

namespace zelvane {

/// Shows the outcome of a translation in a floating panel, of which there is at most one.
///
/// The panel exists only while it is shown. Main thread only; nothing here fails.
class ResultPopup final : public QObject
{
    Q_OBJECT

public:
    /// All must outlive this object.
    ResultPopup(const Theme& theme, WindowSystem& windows, WindowOrigins& origins,
                const AppSettings& settings);
    ~ResultPopup() override;
    Q_DISABLE_COPY_MOVE(ResultPopup)

    /// Shows a result in place of the one that may be on show, where the user left the last one,
    /// in front of all programs and with the keyboard.
    void presentTranslationResult(const QString& original, const QString& translated,
                                  const QString& diagnostics);

    /// Closes the popup, remembers its place, and gives the keyboard back to the program that had
    /// it. Does nothing without a popup.
    void closeTranslationResult();

    /// Gives a visible popup the size that the user has chosen and moves it to the middle.
    void resizeTranslationResult();

    /// The popup that is on show; null if there is none.
    [[nodiscard]] TranslatorKeyablePanel* panel() const { return m_panel; }
    [[nodiscard]] TranslationResultModel* model() const { return m_model; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build(TranslationResult result);
    /// Takes the panel off the screen without giving the keyboard back.
    void dismiss();
    void fitContent();
    void centre();

    const Theme& m_theme;
    WindowSystem& m_windows;
    WindowOrigins& m_origins;
    const AppSettings& m_settings;
    QPropertyNotifier m_sizeChange;
    QPointer<TranslatorKeyablePanel> m_panel;
    /// Every panel that exists: a closed one stays until the event loop takes it away.
    QObjectCleanupHandler m_panels;
    QPointer<TranslationResultModel> m_model;
    QPointer<TranslationResultView> m_view;
    std::optional<FocusLoan> m_loan;
};

} // namespace zelvane
