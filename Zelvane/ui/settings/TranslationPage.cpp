#include "ui/settings/TranslationPage.h"

#include "foundation/Text.h"
#include "settings/FactorySettings.h"
#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/components/TabOrder.h"
#include "ui/sheets/APIKeyEditSheet.h"
#include "ui/sheets/PromptEditSheet.h"

#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr int promptHeight = 130;
constexpr int fieldWidth = 260;

QString endpointKey(AIProvider provider)
{
    return QStringLiteral("zv.endpoint.") + rawValue(provider);
}

} // namespace

TranslationPage::TranslationPage(const Theme& theme, SettingsServices& services)
    : SettingsPage(theme, SettingsCategory::translation)
    , m_services(services)
    , m_settings(services.settings)
    , m_models(services.settings, services.fetchModels, services.keyOfThisRun)
    , m_providerSection(addSection())
    , m_promptSection(addSection())
    , m_proSection(addSection())
{
    makeProvider();
    makePrompt();
    makeProMode();
    keepTranslated(*this, [this] { retranslate(); });
    watch();
}

TranslationPage::~TranslationPage() = default;

void TranslationPage::appeared()
{
    m_models.load();
}

void TranslationPage::makeProvider()
{
    const Theme& theme = this->theme();
    m_platformRow = new FormRow(theme);
    m_platform = new Picker(theme);
    m_platformRow->addControl(m_platform);
    m_keyRow = new FormRow(theme);
    m_editKey = new TextButton(theme, ControlKind::bordered);
    m_page = new LinkLabel(theme);
    m_keyRow->addControl(m_page);
    m_keyRow->addControl(m_editKey);
    m_modelRow = new FormRow(theme);
    m_model = new Picker(theme);
    m_refresh = new TextButton(theme, ControlKind::bordered);
    m_modelRow->addControl(m_model);
    m_modelRow->addControl(m_refresh);
    m_customRow = new FormRow(theme);
    m_custom = new TextField(theme);
    m_custom->setMonospaced(true);
    m_custom->setMinimumWidth(fieldWidth);
    m_customRow->addControl(m_custom);
    m_errorRow = new FormRow(theme);
    m_errorRow->setSymbol(QStringLiteral("exclamationmark.triangle.fill"), TextTone::warning);
    for (FormRow* row : {m_platformRow, m_keyRow, m_modelRow, m_customRow, m_errorRow}) {
        m_providerSection->card().addRow(row);
    }
    connect(m_platform, &Picker::activated, this, &TranslationPage::pickPlatform);
    connect(m_editKey, &QAbstractButton::clicked, this, &TranslationPage::editKey);
    connect(m_model, &Picker::activated, this, &TranslationPage::pickModel);
    connect(m_refresh, &QAbstractButton::clicked, &m_models, &ModelListModel::refresh);
    connect(m_custom, &QLineEdit::textEdited, &m_settings, &AppSettings::setModel);
}

void TranslationPage::makePrompt()
{
    const Theme& theme = this->theme();
    auto* row = new QWidget;
    auto* column = new QVBoxLayout(row);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(qRound(theme.tokens().spacing().sm));
    m_promptTitle = new ThemedLabel(theme, StyleFontRole::body, TextTone::primary);
    column->addWidget(m_promptTitle);
    m_prompt = new TextWell(theme);
    m_prompt->setMaximumSectionHeight(promptHeight);
    m_prompt->setInCard(true);
    column->addWidget(m_prompt);
    m_promptButtons = new FormRow(theme);
    m_editPrompt = new TextButton(theme, ControlKind::bordered);
    m_resetPrompt = new TextButton(theme, ControlKind::bordered);
    m_promptButtons->addControl(m_editPrompt);
    m_promptButtons->addControl(m_resetPrompt);
    m_promptIsUnused = new FormRow(theme);
    for (QWidget* part : std::initializer_list<QWidget*>{row, m_promptButtons, m_promptIsUnused}) {
        m_promptSection->card().addRow(part);
    }
    connect(m_editPrompt, &QAbstractButton::clicked, this, &TranslationPage::editPrompt);
    connect(m_resetPrompt, &QAbstractButton::clicked, this,
            [this] { m_settings.setPromptTemplate(defaultPromptTemplate()); });
}

void TranslationPage::makeProMode()
{
    m_proRow = new FormRow(theme());
    auto* control = new Switch(theme());
    m_proRow->addControl(control);
    m_proSection->card().addRow(m_proRow);
    observe(control, m_settings.bindableUseOwnAI(),
            [control](bool on) { control->setChecked(on); });
    connect(control, &QAbstractButton::clicked, &m_settings, &AppSettings::setUseOwnAI);

    m_endpointRow = new FormRow(theme());
    m_endpoint = new TextField(theme());
    m_endpoint->setMonospaced(true);
    m_endpoint->setMinimumWidth(fieldWidth);
    m_endpointRow->addControl(m_endpoint);
    m_proSection->card().addRow(m_endpointRow);
    connect(m_endpoint, &QLineEdit::textEdited, this, [this](const QString& address) {
        const QString key = endpointKey(m_settings.provider());
        if (text::isBlank(address)) {
            m_services.defaults.remove(key);
        } else {
            m_services.defaults.setValue(key, text::trimmed(address));
        }
    });
}

void TranslationPage::watch()
{
    observe(this, m_settings.bindableUseOwnAI(), [this](bool) {
        showPlatforms();
        showProvider();
    });
    observe(this, m_settings.bindableProvider(), [this](AIProvider) {
        showPlatforms();
        showProvider();
    });
    observe(this, m_settings.bindableApiKey(), [this](const QString&) { showKey(); });
    observe(this, m_settings.bindableModel(), [this](const QString&) { showModels(); });
    observe(this, m_settings.bindablePromptTemplate(), [this](const QString&) { showPrompt(); });
    observe(this, m_models.bindableRemoteModels(),
            [this](const QList<RemoteModel>&) { showModels(); });
    observe(this, m_models.bindableIsLoadingModels(), [this](bool) { showModels(); });
    observe(this, m_models.bindableAllowCustomModel(), [this](bool) { showModels(); });
    observe(this, m_models.bindableModelsError(), [this](const QString&) { showModels(); });
}

void TranslationPage::retranslate()
{
    m_providerSection->setTitle(localizedText(QStringLiteral("AI Provider")));
    m_platformRow->setTitle(localizedText(QStringLiteral("Platform")));
    m_keyRow->setTitle(localizedText(QStringLiteral("API Key status")));
    setButtonText(*m_editKey, localizedText(QStringLiteral("Edit Key")));
    m_modelRow->setTitle(localizedText(QStringLiteral("Model")));
    setButtonText(*m_refresh, localizedText(QStringLiteral("Refresh models")));
    m_customRow->setTitle(localizedText(QStringLiteral("Custom model ID")));
    m_promptSection->setTitle(localizedText(QStringLiteral("Translation Prompt")));
    m_prompt->setLabel(localizedText(QStringLiteral("Current translation prompt")));
    m_promptTitle->setText(localizedText(QStringLiteral("Current translation prompt")));
    m_promptButtons->setNote(localizedText(QStringLiteral("Placeholders: {{source}} {{target}}")));
    setButtonText(*m_editPrompt, localizedText(QStringLiteral("Edit prompt")));
    setButtonText(*m_resetPrompt, localizedText(QStringLiteral("Reset to default")));
    m_promptIsUnused->setTitle(localizedText(
        QStringLiteral("DeepL uses its own translation engine. The custom prompt is not sent.")));
    m_proSection->setTitle(localizedText(QStringLiteral("Pro Mode")));
    m_proSection->setNote(localizedText(
        QStringLiteral("When this is on, more platforms appear in the Platform menu and you can "
                       "enter your personal API key.")));
    m_proRow->setTitle(localizedText(QStringLiteral("I want to use my own AI models")));
    m_endpointRow->setTitle(localizedText(QStringLiteral("API address")));
    m_endpointRow->setNote(
        localizedText(QStringLiteral("For a gateway or a compatible server of your own. Leave it "
                                     "empty for the provider's own.")));
    m_endpoint->setPlaceholderText(QStringLiteral("https://"));
    showPlatforms();
    showProvider();
    showPrompt();
}

void TranslationPage::showPlatforms()
{
    QStringList names;
    int present = -1;
    for (const AIProvider provider : visibleProviders(m_settings.useOwnAI())) {
        if (provider == m_settings.provider()) {
            present = int(names.size());
        }
        names += displayName(provider);
    }
    m_platform->setItems(names);
    m_platform->setPlaceholder(displayName(m_settings.provider()));
    m_platform->setCurrentIndex(present);
    m_platformRow->setNote(providerDescription(m_settings.provider()));
}

void TranslationPage::showProvider()
{
    const AIProvider provider = m_settings.provider();
    const bool isDeepL = provider == AIProvider::deepL;
    m_keyRow->setVisible(isKeyProvider(provider));
    m_modelRow->setVisible(isKeyProvider(provider) && !isDeepL);
    m_prompt->parentWidget()->setVisible(!isDeepL);
    m_promptButtons->setVisible(!isDeepL);
    m_promptIsUnused->setVisible(isDeepL);
    m_endpointRow->setVisible(m_settings.useOwnAI() && isKeyProvider(provider));
    m_endpoint->setText(m_services.defaults.string(endpointKey(provider)).value_or(QString()));
    m_page->setLink(pageLinkLabel(provider), userFacingPage(provider));
    showKey();
    showModels();
    showEngine();
}

void TranslationPage::showEngine()
{
    const auto variant = smartOfflineVariantOf(m_settings.provider());
    if (variant == m_shownEngine) {
        return;
    }
    delete m_engine;
    m_engine = nullptr;
    m_shownEngine = variant;
    if (variant) {
        m_engine = new EngineRows(theme(), m_services.engine(*variant));
        m_providerSection->card().addRow(m_engine);
        tabInReadingOrder(*this);
    }
}

void TranslationPage::showKey()
{
    const QString key = m_settings.apiKey();
    m_keyRow->setNote(text::isBlank(key) ? localizedText(QStringLiteral("No API key set"))
                                         : maskedKey(key));
}

void TranslationPage::showModels()
{
    QStringList labels;
    m_modelIds.clear();
    for (const RemoteModel& model : m_models.remoteModels()) {
        m_modelIds += model.apiID;
        labels += model.label;
    }
    const QString chosen = m_settings.model();
    if (!chosen.isEmpty() && !m_modelIds.contains(chosen)) {
        m_modelIds += chosen;
        labels += localizedFormat(QStringLiteral("%@ (saved)"), {chosen});
    }
    m_model->setItems(labels);
    m_model->setPlaceholder(localizedText(QStringLiteral("No model loaded")));
    m_model->setCurrentIndex(int(m_modelIds.indexOf(chosen)));
    m_modelRow->setNote(modelNote());
    m_customRow->setVisible(m_modelRow->isVisibleTo(this) && m_models.allowCustomModel());
    if (m_custom->text() != chosen) {
        m_custom->setText(chosen);
    }
    const QString error = m_models.modelsError();
    m_errorRow->setTitle(error);
    m_errorRow->setVisible(!error.isEmpty());
}

QString TranslationPage::modelNote() const
{
    if (m_models.isLoadingModels()) {
        return localizedText(QStringLiteral("Loading models…"));
    }
    // The picker itself says so where it has no saved model to show.
    const bool says = m_models.remoteModels().isEmpty() && !m_settings.model().isEmpty();
    return says ? localizedText(QStringLiteral("No model loaded")) : QString();
}

void TranslationPage::showPrompt()
{
    m_prompt->setReadOnlyText(m_settings.promptTemplate());
}

void TranslationPage::pickPlatform(int index)
{
    const AIProvider picked =
        visibleProviders(m_settings.useOwnAI())[static_cast<std::size_t>(index)];
    if (picked == m_settings.provider()) {
        return; // a switch would take back a key that could not be stored
    }
    m_settings.setProvider(picked);
    m_services.providerPicked(picked);
}

void TranslationPage::pickModel(int index)
{
    m_settings.setModel(m_modelIds.at(index));
}

void TranslationPage::editKey()
{
    auto* sheet = new APIKeyEditSheet(
        theme(), *window(),
        APIKeyEditModel(displayName(m_settings.provider()), m_settings.apiKey()));
    connect(sheet, &APIKeyEditSheet::saved, &m_models, &ModelListModel::saveKey);
    sheet->present();
}

void TranslationPage::editPrompt()
{
    auto* sheet =
        new PromptEditSheet(theme(), *window(),
                            std::make_unique<PromptEditModel>(
                                localizedText(QStringLiteral("Global translation prompt")),
                                m_settings.promptTemplate()));
    connect(sheet, &PromptEditSheet::saved, &m_settings, &AppSettings::setPromptTemplate);
    sheet->present();
}

} // namespace zelvane
