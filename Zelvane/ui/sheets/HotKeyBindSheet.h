#pragma once

#include "ui/components/Sheet.h"
#include "ui/sheets/HotKeyBindModel.h"

#include <memory>

namespace zelvane {

/// Listens for a new shortcut. No key but Esc reaches a control while it does.
class HotKeyBindSheet final : public Sheet
{
    Q_OBJECT

public:
    /// Over the window of `over`. `theme` must outlive the sheet.
    HotKeyBindSheet(const Theme& theme, QWidget& over, std::unique_ptr<HotKeyBindModel> model);
    ~HotKeyBindSheet() override;

    [[nodiscard]] HotKeyBindModel& model() { return *m_model; }
    [[nodiscard]] TextButton& saveButton() const { return *m_save; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// None if the shortcut is to be removed.
    void saved(const std::optional<zelvane::KeyChord>& chord);

private:
    void retranslate();
    void showState();

    std::unique_ptr<HotKeyBindModel> m_model;
    // All owned by Qt's tree.
    QWidget* m_box;
    ThemedLabel* m_chord;
    ThemedLabel* m_hint;
    TextButton* m_clear;
    TextButton* m_cancel;
    TextButton* m_save;
};

} // namespace zelvane
