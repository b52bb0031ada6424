#pragma once

#include "ui/components/Sheet.h"
#include "ui/components/TextField.h"
#include "ui/sheets/APIKeyEditModel.h"

namespace zelvane {

/// Edits an engine's key, which is on the screen as dots only.
class APIKeyEditSheet final : public Sheet
{
    Q_OBJECT

public:
    /// Over the window of `over`. `theme` must outlive the sheet.
    APIKeyEditSheet(const Theme& theme, QWidget& over, APIKeyEditModel model);

    [[nodiscard]] TextField& field() const { return *m_field; }
    [[nodiscard]] TextButton& saveButton() const { return *m_save; }

Q_SIGNALS:
    /// Empty if the key is to be cleared.
    void saved(const QString& key);

private:
    void retranslate();

    APIKeyEditModel m_model;
    // All owned by Qt's tree.
    TextField* m_field;
    TextButton* m_cancel;
    TextButton* m_save;
};

} // namespace zelvane
