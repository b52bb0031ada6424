#include "foundation/Completion.h"
#include "ui/UiFixture.h"
#include "ui/alert/AlertWindowPresenter.h"
#include "ui/gallery/Texts.h"
#include "ui/manual/ManualTranslationWindow.h"
#include "ui/menubar/MenuBarController.h"
#include "ui/result/ResultPopup.h"
#include "ui/style/InterfaceStyle.h"

#include <QCursor>
#include <QTest>

namespace zelvane::test {
namespace {

namespace texts = gallery::texts;

/// One of the windows that users see every day, to be opened and closed.
class Shown
{
public:
    Shown() = default;
    virtual ~Shown() = default;
    Q_DISABLE_COPY_MOVE(Shown)

    [[nodiscard]] virtual QWidget& window() = 0;
};

/// What the windows are made with.
struct Surroundings
{
    const Theme& theme;
    WindowSystem& windows;
    WindowOrigins& origins;
    const AppSettings& settings;
    Clock& clock;
};

class ShownPopup final : public Shown
{
public:
    explicit ShownPopup(const Surroundings& s)
        : m_popup(s.theme, s.windows, s.origins, s.settings)
    {
        m_popup.presentTranslationResult(texts::longEnglish(), texts::shortGerman(), {});
        m_popup.model()->copy();
    }
    [[nodiscard]] QWidget& window() override { return *m_popup.panel(); }

private:
    ResultPopup m_popup;
};

class ShownManual final : public Shown
{
public:
    explicit ShownManual(const Surroundings& s)
        : m_trace(s.clock)
        , m_window(s.theme, s.windows, s.origins, s.settings, m_trace,
                   {[](QString, QString, QString, std::stop_token) -> QCoro::Task<QString> {
                        co_return texts::longGerman();
                    },
                    [](const QString&) {}})
    {
        m_window.showManualTranslationWindow();
        m_window.view()->sourceEditor().setPlainText(texts::longEnglish());
        m_window.view()->translateButton().click();
        m_window.view()->translationArea().setFocus();
    }
    [[nodiscard]] QWidget& window() override { return *m_window.panel(); }

private:
    TranslationTrace m_trace;
    ManualTranslationWindow m_window;
};

class ShownAlert final : public Shown
{
public:
    explicit ShownAlert(const Surroundings& s)
        : m_alert({QStringLiteral("Translation failed"),
                   QStringLiteral("Accessibility permission is required to replace text."),
                   {QStringLiteral("Request Permission…"), QStringLiteral("Cancel")}},
                  s.theme, s.windows)
    {
        m_alert.show();
    }
    [[nodiscard]] QWidget& window() override { return m_alert; }

private:
    AlertWindow m_alert;
};

class ShownPanel final : public Shown
{
public:
    explicit ShownPanel(const Surroundings& s)
        : m_model(s.settings, &m_state.status, &m_state.isBusy)
        , m_controller(m_model, s.theme, s.clock, &m_state.trayAvailable, {})
    {
        m_controller.togglePanel();
    }
    [[nodiscard]] QWidget& window() override { return *m_controller.panel(); }

private:
    class State final : public QObject
    {
    public:
        Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(State, QString, status, QStringLiteral("Ready"))
        Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(State, bool, isBusy, false)
        Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(State, bool, trayAvailable, false)
    };

    State m_state;
    MenuBarModel m_model;
    MenuBarController m_controller;
};

template <typename T>
std::unique_ptr<Shown> make(const Surroundings& surroundings)
{
    return std::make_unique<T>(surroundings);
}

struct Kind
{
    const char* name;
    std::unique_ptr<Shown> (*open)(const Surroundings&);
};

/// Something that the user, the desktop or a developer changes while windows are open.
struct Change
{
    const char* name;
    void (*apply)(StyleTweaker&, DesktopAppearance&);
    /// The windows that show it.
    QByteArrayList kinds;
};

const QByteArrayList everyWindow{"tray", "popup", "manual", "alert"};

template <auto Get, auto Set, auto Member, int Value>
void put(StyleTweaker& tokens, DesktopAppearance&)
{
    auto group = (tokens.*Get)();
    group.*Member = Value;
    (tokens.*Set)(group);
}

template <auto Role>
void putRole(StyleTweaker& tokens, DesktopAppearance&)
{
    TypographyTokens typography = tokens.typography();
    typography.*Role = StyleFontRole::monospacedBody;
    tokens.setTypography(typography);
}

template <auto Member, int Value>
constexpr auto tray = put<&StyleTweaker::tray, &StyleTweaker::setTray, Member, Value>;
template <auto Member, int Value>
constexpr auto sheets = put<&StyleTweaker::sheets, &StyleTweaker::setSheets, Member, Value>;
template <auto Member, int Value>
constexpr auto spacing = put<&StyleTweaker::spacing, &StyleTweaker::setSpacing, Member, Value>;

QList<Change> changes()
{
    using Tray = TrayLayoutTokens;
    using Sheets = SheetLayoutTokens;
    using Spacing = SpacingTokens;
    using Type = TypographyTokens;
    return {
        {"panelRadius", [](auto& tokens, auto&) { tokens.setPanelRadius(6); }, everyWindow},
        {"wellRadius", [](auto& tokens, auto&) { tokens.setWellRadius(2); }, {"popup", "manual"}},
        {"controlRadius", [](auto& tokens, auto&) { tokens.setControlRadius(2); }, everyWindow},
        {"trayPadding", tray<&Tray::padding, 30>, {"tray"}},
        {"trayWidth", tray<&Tray::width, 400>, {"tray"}},
        {"trayContentSpacing", tray<&Tray::contentSpacing, 30>, {"tray"}},
        {"sheetPadding", sheets<&Sheets::padding, 36>, {"alert"}},
        {"sheetMinWidth", sheets<&Sheets::minWidth, 520>, {"alert"}},
        {"resultWidth", sheets<&Sheets::resultWidth, 620>, {"popup"}},
        {"resultPadding", sheets<&Sheets::resultPadding, 36>, {"popup"}},
        {"spacingXs", spacing<&Spacing::xs, 14>, {"popup", "manual", "alert"}},
        {"spacingSm", spacing<&Spacing::sm, 18>, {"popup", "manual"}},
        {"spacingMd", spacing<&Spacing::md, 30>, {"popup", "manual"}},
        {"spacingLg", spacing<&Spacing::lg, 40>, {"popup", "alert"}},
        {"spacingXl", spacing<&Spacing::xl, 40>, {"manual", "alert"}},
        {"footerSpacing", spacing<&Spacing::footerSpacing, 24>, {"tray", "popup", "alert"}},
        {"panelTitle", putRole<&Type::panelTitle>, {"tray"}},
        {"resultTitle", putRole<&Type::resultTitle>, {"popup", "manual"}},
        {"sectionLabel", putRole<&Type::sectionLabel>, {"popup", "manual"}},
        {"bodyHint", putRole<&Type::bodyHint>, {"tray", "popup", "manual"}},
        {"pairDirection", putRole<&Type::pairDirection>, {"tray"}},
        {"hotKeyLabel", putRole<&Type::hotKeyLabel>, {"tray"}},
        {"dark", [](auto&, auto& appearance) { appearance.setColorScheme(ColorScheme::dark); },
         everyWindow},
        {"accent", [](auto&, auto& appearance) { appearance.setAccent(QColor(0xc2, 0x18, 0x5b)); },
         everyWindow},
        {"highContrast", [](auto&, auto& appearance) { appearance.setHighContrast(true); },
         everyWindow},
        {"reducedTransparency",
         [](auto&, auto& appearance) { appearance.setReducedTransparency(true); }, everyWindow},
        {"noCompositor", [](auto&, auto& appearance) { appearance.setCompositing(false); },
         everyWindow},
        {"largerFont",
         [](auto&, auto& appearance) {
             QFont font = QApplication::font();
             font.setPointSizeF(font.pointSizeF() * 1.4);
             appearance.setSystemFont(font);
         },
         everyWindow},
    };
}

/// Changes what an open window stands on, in each window that shows it.
class Restyle : public UiTest, public ::testing::WithParamInterface<std::tuple<Kind, Change>>
{
public:
    Restyle()
    {
        // Neither the caret nor the pointer may make a difference.
        QApplication::setCursorFlashTime(0);
        QCursor::setPos(5, 790);
        dressApplication(theme);
        appearance.setCompositing(true);
        appearance.setBlursBehind(true);
    }

    ~Restyle() override
    {
        QApplication::setFont(m_font);
        QApplication::setStyle(QStringLiteral("Fusion"));
    }

protected:
    [[nodiscard]] std::unique_ptr<Shown> open()
    {
        auto shown = std::get<Kind>(GetParam()).open({theme, windows, origins, settings, clock});
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&shown->window()));
        return shown;
    }

    [[nodiscard]] static QImage picture(Shown& shown)
    {
        QApplication::processEvents();
        return shown.window().grab().toImage();
    }

private:
    QFont m_font = QApplication::font();
};

TEST_P(Restyle, ofAnOpenWindowLooksAsIfItHadOpenedAfterwards)
{
    const auto& change = std::get<Change>(GetParam());
    std::unique_ptr<Shown> shown = open();
    const QImage before = picture(*shown);
    change.apply(tokens, appearance);
    const QImage after = picture(*shown);
    EXPECT_EQ(before != after, change.kinds.contains(std::get<Kind>(GetParam()).name));

    shown.reset();
    shown = open();
    const QImage anew = picture(*shown);
    EXPECT_EQ(after.size(), anew.size());
    EXPECT_TRUE(after == anew);
}

INSTANTIATE_TEST_SUITE_P(Windows, Restyle,
                         ::testing::Combine(::testing::Values(Kind{"tray", make<ShownPanel>},
                                                              Kind{"popup", make<ShownPopup>},
                                                              Kind{"manual", make<ShownManual>},
                                                              Kind{"alert", make<ShownAlert>}),
                                            ::testing::ValuesIn(changes())),
                         [](const auto& info) {
                             return std::string(std::get<Kind>(info.param).name) + "_" +
                                    std::get<Change>(info.param).name;
                         });

} // namespace
} // namespace zelvane::test
