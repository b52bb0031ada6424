#include "ui/settings/LanguagePairRow.h"

#include "foundation/Text.h"
#include "settings/LanguageNames.h"
#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/settings/HotKeyCapture.h"
#include "ui/settings/SettingsPage.h"

#include "ui/sheets/PromptEditSheet.h"
#include "ui/style/Symbols.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace zelvane {

namespace {

constexpr int pickerWidth = 180;
constexpr int symbolSide = 16;

} // namespace

LanguagePairRow::LanguagePairRow(const Theme& theme, SettingsServices& services,
                                 const QUuid& pairID)
    : m_theme(theme)
    , m_services(services)
    , m_settings(services.settings)
    , m_pairID(pairID)
    , m_enabled(new Switch(theme))
    , m_source(new SearchableLanguagePicker(
          theme,
          {.options = offeredLanguages(), .localizesLanguageNames = true, .allowsCustom = true},
          pickerWidth))
    , m_arrow(new QLabel)
    , m_target(new SearchableLanguagePicker(
          theme,
          {.options = targetLanguages(), .localizesLanguageNames = true, .allowsCustom = true},
          pickerWidth))
    , m_remove(
          new IconButton(theme, QStringLiteral("minus.circle.fill"), nullptr, ControlKind::plain))
    , m_hotKeyRow(new FormRow(theme))
    , m_bind(new TextButton(theme, ControlKind::bordered))
    , m_clear(new TextButton(theme, ControlKind::bordered))
    , m_promptRow(new FormRow(theme))
    , m_useCustomPrompt(new Switch(theme))
    , m_setPrompt(new TextButton(theme, ControlKind::bordered))
{
    auto* languages = new QHBoxLayout;
    for (PickerButton* picker : {m_source, m_target}) {
        picker->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    languages->addWidget(m_enabled);
    languages->addWidget(m_source, 1);
    languages->addWidget(m_arrow);
    languages->addWidget(m_target, 1);
    languages->addWidget(m_remove);
    m_hotKeyRow->addControl(m_bind);
    m_hotKeyRow->addControl(m_clear);
    m_promptRow->addControl(m_useCustomPrompt);
    m_promptRow->addControl(m_setPrompt);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(languages);
    column->addWidget(m_hotKeyRow);
    column->addWidget(m_promptRow);

    connect(m_enabled, &QAbstractButton::clicked, this, [this](bool on) {
        change([on](LanguagePair& pair) { pair.enabled = on; });
        m_services.reloadHotKeys();
    });
    connect(m_source, &SearchableLanguagePicker::selectionChosen, this,
            [this](const QString& language) {
                change([&](LanguagePair& pair) { pair.source = canonicalSpelling(language); });
            });
    connect(m_target, &SearchableLanguagePicker::selectionChosen, this,
            [this](const QString& language) {
                change([&](LanguagePair& pair) { pair.target = canonicalSpelling(language); });
            });
    connect(m_remove, &QAbstractButton::clicked, this, [this] {
        // The row may go while the settings tell of it.
        SettingsServices& services = m_services;
        services.settings.removePair(m_pairID);
        services.reloadHotKeys();
    });
    connect(m_bind, &QAbstractButton::clicked, this, &LanguagePairRow::bindKeys);
    connect(m_clear, &QAbstractButton::clicked, this, [this] { setChord(std::nullopt); });
    connect(m_useCustomPrompt, &QAbstractButton::clicked, this,
            [this](bool on) { change([on](LanguagePair& pair) { pair.useCustomPrompt = on; }); });
    connect(m_setPrompt, &QAbstractButton::clicked, this, &LanguagePairRow::setPrompt);

    keepStyled(*this, theme, [this, column, languages] {
        const SpacingTokens spacing = m_theme.tokens().spacing();
        column->setSpacing(qRound(spacing.sm));
        languages->setSpacing(qRound(spacing.sm));
        m_arrow->setPixmap(symbolPixmap(QStringLiteral("arrow.right"),
                                        m_theme.colors().secondaryText, symbolSide,
                                        devicePixelRatioF()));
    });
    keepTranslated(*this, [this] { retranslate(); });
    observe(this, m_settings.bindablePairs(), [this](const QList<LanguagePair>&) { update(); });
    observe(this, m_settings.bindableProvider(), [this](AIProvider) { update(); });
}

std::optional<LanguagePair> LanguagePairRow::pair() const
{
    const QList<LanguagePair> pairs = m_settings.pairs();
    const auto found = std::ranges::find(pairs, m_pairID, &LanguagePair::id);
    return found == pairs.end() ? std::nullopt : std::optional(*found);
}

void LanguagePairRow::change(const std::function<void(LanguagePair&)>& apply)
{
    QList<LanguagePair> pairs = m_settings.pairs();
    const auto found = std::ranges::find(pairs, m_pairID, &LanguagePair::id);
    if (found != pairs.end()) {
        apply(*found);
        m_settings.setPairs(pairs);
    }
}

void LanguagePairRow::update()
{
    const auto pair = this->pair();
    if (!pair) {
        return; // the page removes the row
    }
    m_enabled->setChecked(pair->enabled);
    m_source->setSelection(pair->source);
    m_target->setSelection(pair->target);
    m_hotKeyRow->setNote(pair->hotKey ? displayText(*pair->hotKey)
                                      : localizedText(QStringLiteral("Not set")));
    m_clear->setEnabled(pair->hotKey.has_value());
    m_promptRow->setVisible(m_settings.provider() != AIProvider::deepL);
    m_useCustomPrompt->setChecked(pair->useCustomPrompt);
    m_promptRow->setNote(localizedText(text::isBlank(pair->customPrompt)
                                           ? QStringLiteral("Using default text until Set Prompt")
                                           : QStringLiteral("Custom prompt set")));
}

void LanguagePairRow::retranslate()
{
    m_enabled->setAccessibleName(localizedText(QStringLiteral("Enable this pair")));
    m_enabled->setToolTip(m_enabled->accessibleName());
    m_source->setAccessibleName(localizedText(QStringLiteral("Source")));
    m_target->setAccessibleName(localizedText(QStringLiteral("Target")));
    m_remove->setLabel(localizedText(QStringLiteral("Remove this pair")));
    m_hotKeyRow->setTitle(localizedText(QStringLiteral("Hotkey")));
    setButtonText(*m_bind, localizedText(QStringLiteral("Bind Keys")));
    setButtonText(*m_clear, localizedText(QStringLiteral("Clear")));
    m_promptRow->setTitle(localizedText(QStringLiteral("Use Custom prompt")));
    setButtonText(*m_setPrompt, localizedText(QStringLiteral("Set Prompt")));
    update();
}

void LanguagePairRow::bindKeys()
{
    const auto pair = this->pair();
    if (!pair) {
        return;
    }
    QSet<KeyChord> reserved;
    for (const LanguagePair& other : m_settings.pairs()) {
        if (other.id != m_pairID && other.hotKey) {
            reserved.insert(*other.hotKey);
        }
    }
    if (const auto manual = m_settings.manualTranslationHotKey()) {
        reserved.insert(*manual);
    }
    captureHotKey(m_theme, m_services, *this,
                  {.label = pairLabel(*pair),
                   .present = pair->hotKey,
                   .reserved = reserved,
                   .save = [this](const std::optional<KeyChord>& chord) { setChord(chord); }});
}

void LanguagePairRow::setChord(const std::optional<KeyChord>& chord)
{
    change([&](LanguagePair& pair) { pair.hotKey = chord; });
    m_services.reloadHotKeys();
}

void LanguagePairRow::setPrompt()
{
    const auto pair = this->pair();
    if (!pair) {
        return;
    }
    auto* sheet = new PromptEditSheet(
        m_theme, *window(),
        std::make_unique<PromptEditModel>(pairLabel(*pair), pair->customPrompt));
    connect(sheet, &PromptEditSheet::saved, this, [this](const QString& prompt) {
        change([&](LanguagePair& changed) { changed.customPrompt = prompt; });
    });
    sheet->present();
}

} // namespace zelvane
