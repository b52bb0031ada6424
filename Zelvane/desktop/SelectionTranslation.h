#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/FocusInspector.h"
#include "desktop/KeystrokePoster.h"
#include "desktop/Pasteboard.h"
#include "pipeline/TextTranslator.h"
#include "pipeline/TranslationTrace.h"
#include "settings/AppSettings.h"

#include <QCoroTask>
#include <QObject>
#include <QString>

#include <exception>
#include <optional>
#include <stop_token>

namespace zelvane {

/// Where a translation of the selection goes.
enum class TranslateOutputMode {
    automatic,     ///< in place where that is possible, else the popup
    autoAndWindow, ///< in place where that is possible, and the popup in any case
    windowOnly,    ///< the popup
};

/// The mode's name in the timing report.
[[nodiscard]] QString caseName(TranslateOutputMode mode);

struct TranslateSelectionResult
{
    /// The selected text, trimmed.
    QString original;
    /// As the engine returned it.
    QString translated;
    /// The translation was pasted into the foreign program.
    bool replaced = false;
    /// The caller is to open the result popup.
    bool showWindow = false;
    /// The timing report.
    QString diagnostics;
};

/// Takes the selection of the program in front, translates it, and pastes the translation over it.
///
/// Foreign programs are never asked for their text by a richer interface than copy and paste, which
/// every one of them has. The user's clipboard is saved first and restored last; at the latest when
/// this object goes. Main thread, one run at a time.
class SelectionTranslation final : public QObject
{
    Q_OBJECT

public:
    /// What the flow stands on. All must outlive the flow's object and its calls.
    struct Parts
    {
        const AppSettings& settings;
        AccessibilityPermission& permission;
        Pasteboard& pasteboard;
        KeystrokePoster& keystrokes;
        FocusInspector& focus;
        TextTranslator& translator;
        TranslationTrace& trace;
        Clock& clock;
    };

    explicit SelectionTranslation(const Parts& parts);
    /// Puts the user's clipboard back if a run has not done so. A run that still waits ends with
    /// `CancellationError`.
    ~SelectionTranslation() override;

    /// One run. `autoReplace` is the setting at the moment of the press. Throws `TranslationError`,
    /// `PasteboardError`, or what the engine fails with.
    [[nodiscard]] QCoro::Task<TranslateSelectionResult> translateSelection(LanguagePair pair,
                                                                           TranslateOutputMode mode,
                                                                           bool autoReplace,
                                                                           std::stop_token stop);

private:
    void beginTrace(const LanguagePair& pair, TranslateOutputMode mode, bool autoReplace);
    void requirePermission();
    [[nodiscard]] QCoro::Task<void> backUpPasteboard();
    void restorePasteboard();
    /// The trimmed selection. Throws `emptyText` after restoring the clipboard.
    [[nodiscard]] QCoro::Task<QString> copySelection(std::stop_token stop);
    [[nodiscard]] QCoro::Task<bool> focusedElementIsStatic();
    [[nodiscard]] QCoro::Task<QString> translate(QString text, LanguagePair pair,
                                                 std::stop_token stop);
    /// False if there was no window left to paste into.
    [[nodiscard]] QCoro::Task<bool> paste(QString translation, std::stop_token stop);
    /// Restores the clipboard on the way out of a run that fails.
    void abandon(const std::exception_ptr& error);
    void markOutcome(const TranslateSelectionResult& result);

    Parts m_parts;
    /// The user's clipboard, for as long as something else stands there.
    std::optional<PasteboardSnapshot> m_saved;
};

} // namespace zelvane
