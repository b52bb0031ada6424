#pragma once

#include <QObject>
#include <QProperty>
#include <QString>

#include <array>

namespace zelvane {

/// What a text is in the interface, from which its size and weight follow.
enum class StyleFontRole {
    headline,
    title2,
    title3,
    body,
    callout,
    calloutSemibold,
    caption,
    captionSemibold,
    bodySemibold,
    monospacedCaption,
    monospacedBody,
};

inline constexpr std::array allStyleFontRoles{
    StyleFontRole::headline,       StyleFontRole::title2,
    StyleFontRole::title3,         StyleFontRole::body,
    StyleFontRole::callout,        StyleFontRole::calloutSemibold,
    StyleFontRole::caption,        StyleFontRole::captionSemibold,
    StyleFontRole::bodySemibold,   StyleFontRole::monospacedCaption,
    StyleFontRole::monospacedBody,
};

/// The name of the case.
[[nodiscard]] QString rawValue(StyleFontRole role);

// All numbers of the tokens are points: device-independent pixels.

/// The panel at the tray icon.
struct TrayLayoutTokens
{
    double padding = 14;
    double width = 320;
    double contentSpacing = 12;

    friend bool operator==(const TrayLayoutTokens&, const TrayLayoutTokens&) = default;
};

struct SettingsLayoutTokens
{
    double minWidth = 820;
    double minHeight = 580;

    friend bool operator==(const SettingsLayoutTokens&, const SettingsLayoutTokens&) = default;
};

/// Sheets, pickers and the result popup.
struct SheetLayoutTokens
{
    double padding = 20;
    double minWidth = 420;
    double resultWidth = 500;
    double resultPadding = 20;
    double pickerWidth = 240;
    double pickerHeight = 300;

    friend bool operator==(const SheetLayoutTokens&, const SheetLayoutTokens&) = default;
};

struct TypographyTokens
{
    StyleFontRole panelTitle = StyleFontRole::headline;
    StyleFontRole sheetTitle = StyleFontRole::title2;
    StyleFontRole resultTitle = StyleFontRole::title3;
    StyleFontRole sectionLabel = StyleFontRole::calloutSemibold;
    StyleFontRole bodyHint = StyleFontRole::callout;
    StyleFontRole pairDirection = StyleFontRole::calloutSemibold;
    StyleFontRole hotKeyLabel = StyleFontRole::body;

    friend bool operator==(const TypographyTokens&, const TypographyTokens&) = default;
};

struct SpacingTokens
{
    double xs = 4;
    double sm = 8;
    double md = 12;
    double lg = 16;
    double xl = 20;
    double xxl = 24;
    double footerSpacing = 8;

    friend bool operator==(const SpacingTokens&, const SpacingTokens&) = default;
};

/// All sizes, radii and text roles of the interface, changeable while the program runs.
///
/// Nothing is stored: every start begins with the defaults. Main thread only.
class StyleTweaker final : public QObject
{
    Q_OBJECT

public:
    explicit StyleTweaker(QObject* parent = nullptr);

    [[nodiscard]] double panelRadius() const { return m_panelRadius; }
    void setPanelRadius(double radius) { m_panelRadius = radius; }
    [[nodiscard]] QBindable<double> bindablePanelRadius() { return &m_panelRadius; }

    [[nodiscard]] double wellRadius() const { return m_wellRadius; }
    void setWellRadius(double radius) { m_wellRadius = radius; }
    [[nodiscard]] QBindable<double> bindableWellRadius() { return &m_wellRadius; }

    [[nodiscard]] double controlRadius() const { return m_controlRadius; }
    void setControlRadius(double radius) { m_controlRadius = radius; }
    [[nodiscard]] QBindable<double> bindableControlRadius() { return &m_controlRadius; }

    [[nodiscard]] double listRowRadius() const { return m_listRowRadius; }
    void setListRowRadius(double radius) { m_listRowRadius = radius; }
    [[nodiscard]] QBindable<double> bindableListRowRadius() { return &m_listRowRadius; }

    [[nodiscard]] TrayLayoutTokens tray() const { return m_tray; }
    void setTray(const TrayLayoutTokens& tokens) { m_tray = tokens; }
    [[nodiscard]] QBindable<TrayLayoutTokens> bindableTray() { return &m_tray; }

    [[nodiscard]] SettingsLayoutTokens settings() const { return m_settings; }
    void setSettings(const SettingsLayoutTokens& tokens) { m_settings = tokens; }
    [[nodiscard]] QBindable<SettingsLayoutTokens> bindableSettings() { return &m_settings; }

    [[nodiscard]] SheetLayoutTokens sheets() const { return m_sheets; }
    void setSheets(const SheetLayoutTokens& tokens) { m_sheets = tokens; }
    [[nodiscard]] QBindable<SheetLayoutTokens> bindableSheets() { return &m_sheets; }

    [[nodiscard]] TypographyTokens typography() const { return m_typography; }
    void setTypography(const TypographyTokens& tokens) { m_typography = tokens; }
    [[nodiscard]] QBindable<TypographyTokens> bindableTypography() { return &m_typography; }

    [[nodiscard]] SpacingTokens spacing() const { return m_spacing; }
    void setSpacing(const SpacingTokens& tokens) { m_spacing = tokens; }
    [[nodiscard]] QBindable<SpacingTokens> bindableSpacing() { return &m_spacing; }

Q_SIGNALS:
    /// Some value has changed.
    void changed();

private:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(StyleTweaker, double, m_panelRadius, 20,
                                         &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(StyleTweaker, double, m_wellRadius, 12,
                                         &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(StyleTweaker, double, m_controlRadius, 8,
                                         &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(StyleTweaker, double, m_listRowRadius, 8,
                                         &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY(StyleTweaker, TrayLayoutTokens, m_tray, &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY(StyleTweaker, SettingsLayoutTokens, m_settings,
                               &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY(StyleTweaker, SheetLayoutTokens, m_sheets, &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY(StyleTweaker, TypographyTokens, m_typography, &StyleTweaker::changed)
    Q_OBJECT_BINDABLE_PROPERTY(StyleTweaker, SpacingTokens, m_spacing, &StyleTweaker::changed)
};

} // namespace zelvane
