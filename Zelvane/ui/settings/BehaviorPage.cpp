#include "ui/settings/BehaviorPage.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/settings/HotKeyCapture.h"

namespace zelvane {

BehaviorPage::BehaviorPage(const Theme& theme, SettingsServices& services, Clock& clock)
    : SettingsPage(theme, SettingsCategory::behavior)
    , m_services(services)
    , m_settings(services.settings)
    , m_clock(clock)
    , m_behavior(addSection())
    , m_windows(addSection())
    , m_location(addSection())
{
    makeBehavior();
    makeWindows();
    keepTranslated(*this, [this] { retranslate(); });
    observe(this, m_settings.bindableAutoReplace(), [this](bool) { explain(); });
    observe(this, m_settings.bindableDoubleHotKeyWindow(), [this](bool) { explain(); });
    observe(this, m_settings.bindableManualTranslationHotKey(),
            [this](const std::optional<KeyChord>&) { showHotKey(); });
}

BehaviorPage::~BehaviorPage() = default;

FormRow* BehaviorPage::addSwitch(Section& section, QBindable<bool> value,
                                 void (AppSettings::*set)(bool))
{
    auto* row = new FormRow(theme());
    auto* control = new Switch(theme());
    row->addControl(control);
    section.card().addRow(row);
    observe(control, value, [control](bool on) { control->setChecked(on); });
    connect(control, &QAbstractButton::clicked, &m_settings, set);
    return row;
}

Picker* BehaviorPage::addSizePicker(FormRow& row, QBindable<TranslationWindowSize> value,
                                    void (AppSettings::*set)(TranslationWindowSize))
{
    auto* picker = new Picker(theme());
    row.addControl(picker);
    keepTranslated(*picker, [picker, value] {
        QStringList titles;
        for (const TranslationWindowSize size : allTranslationWindowSizes) {
            titles += title(size);
        }
        picker->setItems(titles);
        picker->setCurrentIndex(int(value.value()));
    });
    observe(picker, value,
            [picker](TranslationWindowSize size) { picker->setCurrentIndex(int(size)); });
    connect(picker, &Picker::activated, &m_settings, [this, set](int index) {
        (m_settings.*set)(allTranslationWindowSizes.at(std::size_t(index)));
    });
    return picker;
}

void BehaviorPage::makeBehavior()
{
    m_autoReplace =
        addSwitch(*m_behavior, m_settings.bindableAutoReplace(), &AppSettings::setAutoReplace);
    m_doublePress = addSwitch(*m_behavior, m_settings.bindableDoubleHotKeyWindow(),
                              &AppSettings::setDoubleHotKeyWindow);
    m_optionMenu = addSwitch(*m_behavior, m_settings.bindableOptionRightClickMenu(),
                             &AppSettings::setOptionRightClickMenu);
    m_startAtLogin =
        addSwitch(*m_behavior, m_settings.bindableStartAtLogin(), &AppSettings::setStartAtLogin);
    observe(m_optionMenu, m_settings.bindableOptionRightClickMenu(),
            [this](bool) { m_services.optionMenuChanged(); });
}

void BehaviorPage::makeWindows()
{
    m_hotKey = new FormRow(theme());
    m_bind = new TextButton(theme(), ControlKind::bordered);
    m_clear = new TextButton(theme(), ControlKind::bordered);
    m_hotKey->addControl(m_bind);
    m_hotKey->addControl(m_clear);
    m_windows->card().addRow(m_hotKey);
    connect(m_bind, &QAbstractButton::clicked, this, &BehaviorPage::bindHotKey);
    connect(m_clear, &QAbstractButton::clicked, this, [this] {
        m_settings.setManualTranslationHotKey(std::nullopt);
        m_services.reloadHotKeys();
    });

    m_manualSize = new FormRow(theme());
    m_windows->card().addRow(m_manualSize);
    m_manualSizePicker = addSizePicker(*m_manualSize, m_settings.bindableManualWindowSize(),
                                       &AppSettings::setManualWindowSize);
    m_resultSize = new FormRow(theme());
    m_windows->card().addRow(m_resultSize);
    m_resultSizePicker = addSizePicker(*m_resultSize, m_settings.bindableResultWindowSize(),
                                       &AppSettings::setResultWindowSize);

    m_reset = new FormRow(theme());
    m_done = new ThemedLabel(theme(), &TypographyTokens::bodyHint, TextTone::success);
    m_resetButton = new TextButton(theme(), ControlKind::bordered);
    // Before the button, which stays under the pointer.
    m_reset->addControl(m_done);
    m_reset->addControl(m_resetButton);
    m_done->hide();
    m_location->card().addRow(m_reset);
    connect(m_resetButton, &QAbstractButton::clicked, this, &BehaviorPage::resetLocations);
}

void BehaviorPage::retranslate()
{
    m_behavior->setTitle(localizedText(QStringLiteral("Behavior")));
    m_autoReplace->setTitle(localizedText(QStringLiteral("Auto-replace translated text")));
    m_doublePress->setTitle(
        localizedText(QStringLiteral("Double-press hotkey also opens the window")));
    m_optionMenu->setTitle(localizedText(QStringLiteral("⌥ + right-click translation menu")));
    m_optionMenu->setNote(localizedText(
        QStringLiteral("Needs Accessibility (and sometimes Input Monitoring). Ordinary right-click "
                       "is unchanged.")));
    m_startAtLogin->setTitle(localizedText(QStringLiteral("Start at login")));
    m_windows->setTitle(localizedText(QStringLiteral("Translation Windows")));
    m_windows->setNote(localizedText(
        QStringLiteral("The text input window translates typed or pasted text without "
                       "Accessibility permission. Window sizes are stored independently.")));
    m_hotKey->setTitle(localizedText(QStringLiteral("Open Text Translation")));
    setButtonText(*m_bind, localizedText(QStringLiteral("Bind Keys")));
    setButtonText(*m_clear, localizedText(QStringLiteral("Clear")));
    m_manualSize->setTitle(localizedText(QStringLiteral("Classic Translation Window Size")));
    m_resultSize->setTitle(localizedText(QStringLiteral("Translation Result Popup Size")));
    m_reset->setNote(localizedText(
        QStringLiteral("Use this button if you lost your translation window or result popup and "
                       "want to return it to the center of the screen.")));
    setButtonText(*m_resetButton,
                  localizedText(QStringLiteral("Reset translation windows location")));
    m_done->setText(localizedText(QStringLiteral("Done")));
    explain();
    showHotKey();
}

void BehaviorPage::explain()
{
    if (!m_settings.autoReplace()) {
        m_doublePress->setNote(localizedText(
            QStringLiteral("Hotkey always opens the translation window with a Copy button — the "
                           "selected text is never replaced.")));
    } else if (!m_settings.doubleHotKeyWindow()) {
        m_doublePress->setNote(localizedText(
            QStringLiteral("Hotkey replaces the selected text immediately. Use the menu bar item "
                           "to show a translation in a window instead.")));
    } else {
        m_doublePress->setNote(localizedText(
            QStringLiteral("Press once to replace the selected text; press twice within 1 second "
                           "to replace it and also open the translation window. A single press "
                           "waits ~1 second before acting.")));
    }
}

void BehaviorPage::showHotKey()
{
    const auto chord = m_settings.manualTranslationHotKey();
    m_hotKey->setNote(chord ? displayText(*chord) : localizedText(QStringLiteral("Not set")));
    m_clear->setEnabled(chord.has_value());
}

void BehaviorPage::bindHotKey()
{
    QSet<KeyChord> reserved;
    for (const LanguagePair& pair : m_settings.pairs()) {
        if (pair.hotKey) {
            reserved.insert(*pair.hotKey);
        }
    }
    captureHotKey(theme(), m_services, *this,
                  {.label = localizedText(QStringLiteral("Open Translation Window")),
                   .present = m_settings.manualTranslationHotKey(),
                   .reserved = reserved,
                   .save = [this](const std::optional<KeyChord>& chord) {
                       m_settings.setManualTranslationHotKey(chord);
                   }});
}

void BehaviorPage::resetLocations()
{
    m_services.resetWindowLocations();
    m_done->show();
    m_doneTimer = m_clock.callLater(doneShownFor, [this] { m_done->hide(); });
}

} // namespace zelvane
