#pragma once

#include "foundation/Clock.h"
#include "ui/components/Picker.h"
#include "ui/components/Switch.h"
#include "ui/settings/SettingsPage.h"
#include "ui/settings/SettingsServices.h"

#include <memory>

namespace zelvane {

/// How long the settings say that something is done.
inline constexpr std::chrono::seconds doneShownFor{2};

/// Shortcuts, windows, and what becomes of a translation.
class BehaviorPage final : public SettingsPage
{
    Q_OBJECT

public:
    /// Both must outlive the page.
    BehaviorPage(const Theme& theme, SettingsServices& services, Clock& clock);
    ~BehaviorPage() override;

private:
    void makeBehavior();
    void makeWindows();
    void retranslate();
    void explain();
    void showHotKey();
    void bindHotKey();
    void resetLocations();
    /// A row of the section with a switch that shows and writes a setting.
    FormRow* addSwitch(Section& section, QBindable<bool> value, void (AppSettings::*set)(bool));
    Picker* addSizePicker(FormRow& row, QBindable<TranslationWindowSize> value,
                          void (AppSettings::*set)(TranslationWindowSize));

    SettingsServices& m_services;
    AppSettings& m_settings;
    Clock& m_clock;
    std::unique_ptr<Timer> m_doneTimer;
    // All owned by Qt's tree.
    Section* m_behavior;
    FormRow* m_autoReplace;
    FormRow* m_doublePress;
    FormRow* m_optionMenu;
    FormRow* m_startAtLogin;
    Section* m_windows;
    FormRow* m_hotKey;
    TextButton* m_bind;
    TextButton* m_clear;
    FormRow* m_manualSize;
    Picker* m_manualSizePicker;
    FormRow* m_resultSize;
    Picker* m_resultSizePicker;
    Section* m_location;
    FormRow* m_reset;
    ThemedLabel* m_done;
    TextButton* m_resetButton;
};

} // namespace zelvane
