#pragma once

#include "ui/components/Form.h"
#include "ui/components/Switch.h"
#include "ui/language/SearchableLanguagePicker.h"
#include "ui/settings/SettingsServices.h"

#include <QUuid>
#include <QWidget>

namespace zelvane {

/// One language pair: its languages, its shortcut, and its own prompt.
class LanguagePairRow final : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive the row.
    LanguagePairRow(const Theme& theme, SettingsServices& services, const QUuid& pairID);

    [[nodiscard]] const QUuid& pairID() const { return m_pairID; }

    // The controls, for tests.
    [[nodiscard]] Switch& enabledSwitch() const { return *m_enabled; }
    [[nodiscard]] SearchableLanguagePicker& sourcePicker() const { return *m_source; }
    [[nodiscard]] SearchableLanguagePicker& targetPicker() const { return *m_target; }
    [[nodiscard]] IconButton& removeButton() const { return *m_remove; }
    [[nodiscard]] TextButton& bindButton() const { return *m_bind; }
    [[nodiscard]] TextButton& clearButton() const { return *m_clear; }
    [[nodiscard]] FormRow& promptRow() const { return *m_promptRow; }

private:
    /// Changes the pair in the settings; does nothing if it has gone.
    void change(const std::function<void(LanguagePair&)>& apply);
    [[nodiscard]] std::optional<LanguagePair> pair() const;
    void update();
    void retranslate();
    void bindKeys();
    void setPrompt();
    void setChord(const std::optional<KeyChord>& chord);

    const Theme& m_theme;
    SettingsServices& m_services;
    AppSettings& m_settings;
    QUuid m_pairID;
    // All owned by Qt's tree.
    Switch* m_enabled;
    SearchableLanguagePicker* m_source;
    QLabel* m_arrow;
    SearchableLanguagePicker* m_target;
    IconButton* m_remove;
    FormRow* m_hotKeyRow;
    TextButton* m_bind;
    TextButton* m_clear;
    FormRow* m_promptRow;
    Switch* m_useCustomPrompt;
    TextButton* m_setPrompt;
};

} // namespace zelvane
