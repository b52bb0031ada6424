#pragma once

#include <QColor>
#include <QFont>
#include <QObject>
#include <QProperty>
#include <QRegion>

#include <functional>
#include <optional>
#include <utility>

class QWindow;

namespace zelvane {

enum class ColorScheme {
    light,
    dark,
};

/// How the user wants programs to look, and what the desktop can show.
///
/// A platform adapter writes it while the program runs; the interface reads it. Main thread only.
class DesktopAppearance final : public QObject
{
    Q_OBJECT

public:
    explicit DesktopAppearance(QObject* parent = nullptr);

    [[nodiscard]] ColorScheme colorScheme() const { return m_colorScheme; }
    void setColorScheme(ColorScheme scheme) { m_colorScheme = scheme; }
    [[nodiscard]] QBindable<ColorScheme> bindableColorScheme() { return &m_colorScheme; }

    /// The colour that the user chose for controls; none if the desktop has no such choice.
    [[nodiscard]] std::optional<QColor> accent() const { return m_accent; }
    void setAccent(const std::optional<QColor>& accent) { m_accent = accent; }
    [[nodiscard]] QBindable<std::optional<QColor>> bindableAccent() { return &m_accent; }

    /// The font of body texts; none if Qt's own choice is as good.
    [[nodiscard]] std::optional<QFont> systemFont() const { return m_systemFont; }
    void setSystemFont(const std::optional<QFont>& font) { m_systemFont = font; }
    [[nodiscard]] QBindable<std::optional<QFont>> bindableSystemFont() { return &m_systemFont; }

    /// Whether windows may be translucent, with smooth corners and a shadow.
    [[nodiscard]] bool compositing() const { return m_compositing; }
    void setCompositing(bool on) { m_compositing = on; }
    [[nodiscard]] QBindable<bool> bindableCompositing() { return &m_compositing; }

    /// Whether the desktop blurs what is behind a translucent window that asks for it.
    [[nodiscard]] bool blursBehind() const { return m_blursBehind; }
    void setBlursBehind(bool on) { m_blursBehind = on; }
    [[nodiscard]] QBindable<bool> bindableBlursBehind() { return &m_blursBehind; }

    /// Asks the desktop to blur what is behind `region` of `window`, a window that has been shown
    /// or is about to be; an empty region takes it back.
    void blurBehind(QWindow& window, const QRegion& region) const { m_blur(window, region); }
    /// What carries such a request out, from the platform's adapter.
    void setBlur(std::function<void(QWindow&, const QRegion&)> blur) { m_blur = std::move(blur); }

    [[nodiscard]] bool reducedTransparency() const { return m_reducedTransparency; }
    void setReducedTransparency(bool on) { m_reducedTransparency = on; }
    [[nodiscard]] QBindable<bool> bindableReducedTransparency() { return &m_reducedTransparency; }

    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }
    void setReducedMotion(bool on) { m_reducedMotion = on; }
    [[nodiscard]] QBindable<bool> bindableReducedMotion() { return &m_reducedMotion; }

    [[nodiscard]] bool highContrast() const { return m_highContrast; }
    void setHighContrast(bool on) { m_highContrast = on; }
    [[nodiscard]] QBindable<bool> bindableHighContrast() { return &m_highContrast; }

Q_SIGNALS:
    /// Some value has changed.
    void changed();

private:
    std::function<void(QWindow&, const QRegion&)> m_blur = [](QWindow&, const QRegion&) {};
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, ColorScheme, m_colorScheme,
                                         ColorScheme::light, &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY(DesktopAppearance, std::optional<QColor>, m_accent,
                               &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY(DesktopAppearance, std::optional<QFont>, m_systemFont,
                               &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, bool, m_compositing, false,
                                         &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, bool, m_blursBehind, false,
                                         &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, bool, m_reducedTransparency, false,
                                         &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, bool, m_reducedMotion, false,
                                         &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, bool, m_highContrast, false,
                                         &DesktopAppearance::changed)
};

} // namespace zelvane
