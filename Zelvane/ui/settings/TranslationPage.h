#pragma once

#include "ui/components/LinkLabel.h"
#include "ui/components/Picker.h"
#include "ui/components/Switch.h"
#include "ui/components/TextField.h"
#include "ui/components/TextWell.h"
#include "ui/settings/EngineRows.h"
#include "ui/settings/ModelListModel.h"
#include "ui/settings/SettingsPage.h"
#include "ui/settings/SettingsServices.h"

namespace zelvane {

/// Which engine translates, with which key, model and prompt.
class TranslationPage final : public SettingsPage
{
    Q_OBJECT

public:
    /// Both must outlive the page.
    TranslationPage(const Theme& theme, SettingsServices& services);
    ~TranslationPage() override;

    /// The settings have come to the screen: looks anew at what may have changed meanwhile.
    void appeared();

    [[nodiscard]] Picker& platformPicker() const { return *m_platform; }
    [[nodiscard]] Picker& modelPicker() const { return *m_model; }
    [[nodiscard]] ModelListModel& models() { return m_models; }

private:
    void makeProvider();
    void makePrompt();
    void makeProMode();
    void watch();
    void retranslate();
    void showPlatforms();
    void showProvider();
    void showEngine();
    void showKey();
    void showModels();
    [[nodiscard]] QString modelNote() const;
    void showPrompt();
    void pickPlatform(int index);
    void pickModel(int index);
    void editKey();
    void editPrompt();

    SettingsServices& m_services;
    AppSettings& m_settings;
    ModelListModel m_models;
    /// The models as the picker lists them.
    QStringList m_modelIds;
    std::optional<SmartOfflineVariant> m_shownEngine;
    // All owned by Qt's tree.
    Section* m_providerSection;
    FormRow* m_platformRow;
    Picker* m_platform;
    FormRow* m_keyRow;
    TextButton* m_editKey;
    LinkLabel* m_page;
    FormRow* m_modelRow;
    Picker* m_model;
    TextButton* m_refresh;
    FormRow* m_customRow;
    TextField* m_custom;
    FormRow* m_errorRow;
    EngineRows* m_engine = nullptr;
    Section* m_promptSection;
    ThemedLabel* m_promptTitle;
    TextWell* m_prompt;
    FormRow* m_promptButtons;
    TextButton* m_editPrompt;
    TextButton* m_resetPrompt;
    FormRow* m_promptIsUnused;
    Section* m_proSection;
    FormRow* m_proRow;
    FormRow* m_endpointRow;
    TextField* m_endpoint;
};

} // namespace zelvane
