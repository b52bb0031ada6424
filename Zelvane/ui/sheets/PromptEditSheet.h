#pragma once

#include "ui/components/Sheet.h"
#include "ui/components/TextWell.h"
#include "ui/sheets/PromptEditModel.h"

#include <memory>

namespace zelvane {

/// Edits a prompt. Nothing is saved but by its button.
class PromptEditSheet final : public Sheet
{
    Q_OBJECT

public:
    /// Over the window of `over`. `theme` must outlive the sheet.
    PromptEditSheet(const Theme& theme, QWidget& over, std::unique_ptr<PromptEditModel> model);

    [[nodiscard]] QPlainTextEdit& editor() const { return m_editor->editor(); }
    [[nodiscard]] TextButton& saveButton() const { return *m_save; }
    [[nodiscard]] TextButton& resetButton() const { return *m_reset; }

Q_SIGNALS:
    void saved(const QString& prompt);

private:
    void retranslate();

    std::unique_ptr<PromptEditModel> m_model;
    // All owned by Qt's tree.
    TextWell* m_editor;
    ThemedLabel* m_note;
    TextButton* m_reset;
    TextButton* m_cancel;
    TextButton* m_save;
};

} // namespace zelvane
