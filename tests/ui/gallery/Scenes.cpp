#include "ui/gallery/Scenes.h"

#include "foundation/DescribedError.h"
#include "foundation/SystemClock.h"
#include "pipeline/TranslationError.h"
#include "settings/Localization.h"
#include "settings/SecretStore.h"
#include "support/FakeSecretBackend.h"
#include "ui/alert/AlertWindowPresenter.h"
#include "ui/gallery/StandIn.h"
#include "ui/gallery/StyleScenes.h"
#include "ui/gallery/Texts.h"
#include "ui/menubar/MenuBarController.h"
#include "ui/optionmenu/OptionMenuPopup.h"
#include "ui/result/ResultPopup.h"
#include "ui/style/Symbols.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPainter>
#include <QTest>

namespace zelvane::gallery {

namespace {

/// A result popup with settings of its own.
class PopupExhibit final : public Exhibit
{
public:
    PopupExhibit(const Stage& stage, const QString& original, const QString& translated,
                 TranslationWindowSize size)
        : m_secrets(m_defaults, m_backend)
        , m_settings(m_defaults, m_secrets, QStringLiteral("English (US)"))
        , m_origins(m_defaults, systemScreens())
    {
        m_settings.setResultWindowSize(size);
        m_popup = std::make_unique<ResultPopup>(stage.theme, stage.windows, m_origins, m_settings);
        m_popup->presentTranslationResult(original, translated, {});
    }

    [[nodiscard]] QWidget* window() override { return m_popup->panel(); }
    [[nodiscard]] ResultPopup& popup() { return *m_popup; }

private:
    OverlayUserDefaults m_defaults;
    test::FakeSecretBackend m_backend;
    SecretStore m_secrets;
    AppSettings m_settings;
    WindowOrigins m_origins;
    std::unique_ptr<ResultPopup> m_popup;
};

class AlertExhibit final : public Exhibit
{
public:
    AlertExhibit(const Stage& stage, const Alert& alert)
        : m_origins(m_defaults, systemScreens())
        , m_presenter(stage.theme, stage.windows, m_origins)
    {
        wait(alert);
    }

    [[nodiscard]] QWidget* window() override { return m_presenter.openAlerts().value(0); }

private:
    QCoro::Task<void> wait(Alert alert)
    {
        try {
            co_await m_presenter.present(alert);
        } catch (const CancellationError&) { // the exhibit is over
        }
    }

    OverlayUserDefaults m_defaults;
    WindowOrigins m_origins;
    AlertWindowPresenter m_presenter;
};

/// The icon set, in the colours of the theme, and the program's own pictures in their sizes.
class IconSheet final : public Exhibit
{
public:
    explicit IconSheet(const Stage& stage)
        : m_sheet(stage.theme)
    {
        m_sheet.setGeometry(200, 200, 520, 220);
        m_sheet.show();
        m_sheet.raise();
    }

    [[nodiscard]] QWidget* window() override { return &m_sheet; }

private:
    class Sheet final : public QWidget
    {
    public:
        explicit Sheet(const Theme& theme)
            : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
            , m_theme(theme)
        {
        }

    protected:
        void paintEvent(QPaintEvent*) override
        {
            QPainter painter(this);
            painter.fillRect(rect(), m_theme.colors().window);
            int x = 20;
            for (const QString& name :
                 {QStringLiteral("xmark"), QStringLiteral("doc.on.doc"),
                  QStringLiteral("checkmark"), QStringLiteral("checkmark.circle.fill"),
                  QStringLiteral("exclamationmark.triangle.fill")}) {
                painter.drawPixmap(x, 20, symbolPixmap(name, m_theme.colors().text, 16, 1));
                painter.drawPixmap(x, 50, symbolPixmap(name, m_theme.colors().text, 32, 1));
                x += 50;
            }
            for (const int size : {16, 18, 22, 24, 32, 48}) {
                painter.drawPixmap(x, 20, picturePixmap(QStringLiteral("MenuBarIcon"), size, 1));
                x += size + 8;
            }
            x = 20;
            for (const int size : {16, 24, 32, 48, 64, 96}) {
                painter.drawPixmap(x, 100,
                                   picturePixmap(QStringLiteral("org.zelvane.desk"), size, 1));
                x += size + 12;
            }
        }

    private:
        const Theme& m_theme;
    };

    Sheet m_sheet;
};

/// The tray's item with some settings; it needs no tray to open.
class TrayExhibit : public Exhibit
{
public:
    TrayExhibit(const Stage& stage, const QList<LanguagePair>& pairs)
        : m_secrets(m_defaults, m_backend)
        , m_settings(m_defaults, m_secrets, QStringLiteral("German"))
        , m_model(m_settings, &m_state.status, &m_state.isBusy)
    {
        m_settings.setPairs(pairs);
        m_controller = std::make_unique<MenuBarController>(
            m_model, stage.theme, m_clock, &m_state.trayAvailable, MenuBarActions());
    }

    [[nodiscard]] StandIn& state() { return m_state; }
    [[nodiscard]] MenuBarController& controller() { return *m_controller; }

private:
    OverlayUserDefaults m_defaults;
    test::FakeSecretBackend m_backend;
    SecretStore m_secrets;
    AppSettings m_settings;
    StandIn m_state;
    MenuBarModel m_model;
    SystemClock m_clock;
    std::unique_ptr<MenuBarController> m_controller;
};

/// The menu at Alt + right click, with the second entry under the pointer.
class OptionMenuExhibit final : public Exhibit
{
public:
    OptionMenuExhibit()
        : m_popup([](QPoint location) { return location; })
    {
        QList<QList<OptionMenuContent::Item>> groups;
        for (const QString& format :
             {LOCALIZATION_KEY("Translate %@"), LOCALIZATION_KEY("Translate %@ (window)")}) {
            QList<OptionMenuContent::Item> items;
            for (const QString& direction :
                 {QStringLiteral("Any Language → English (US)"),
                  QStringLiteral("English (US) → Chinese (Simplified)")}) {
                items += {localizedFormat(format, {direction}), {}};
            }
            groups += items;
        }
        m_popup.popUp({QStringLiteral("Zelvane Desk"), groups}, {300, 200},
                      [](const MenuChoice&) {});
        m_popup.menu()->setActiveAction(m_popup.menu()->actions().at(1));
    }

    [[nodiscard]] QWidget* window() override { return m_popup.menu(); }

private:
    OptionMenuPopup m_popup;
};

class MenuExhibit final : public TrayExhibit
{
public:
    MenuExhibit(const Stage& stage, const QList<LanguagePair>& pairs)
        : TrayExhibit(stage, pairs)
    {
        state().status = localizedText(QStringLiteral("Ready"));
        controller().menu().popup({200, 200});
        controller().menu().setActiveAction(controller().menu().actions().constLast());
    }

    [[nodiscard]] QWidget* window() override { return &controller().menu(); }
};

class TrayPanelExhibit final : public TrayExhibit
{
public:
    TrayPanelExhibit(const Stage& stage, const QList<LanguagePair>& pairs, const QString& status,
                     bool busy)
        : TrayExhibit(stage, pairs)
    {
        state().status = status;
        state().isBusy = busy;
        controller().togglePanel();
    }

    [[nodiscard]] QWidget* window() override { return controller().panel(); }
};

LanguagePair pair(const QString& source, const QString& target, std::optional<quint32> keyCode)
{
    LanguagePair pair;
    pair.id = QUuid::createUuid();
    pair.source = source;
    pair.target = target;
    if (keyCode) {
        pair.hotKey = KeyChord{*keyCode, KeyChord::control | KeyChord::option};
    }
    return pair;
}

QList<LanguagePair> somePairs()
{
    return {pair(QStringLiteral("Any Language"), QStringLiteral("English (US)"), 14),
            pair(QStringLiteral("English (US)"), QStringLiteral("German"), 2),
            pair(QStringLiteral("English (US)"), QStringLiteral("Hindi"), std::nullopt)};
}

QList<LanguagePair> tenPairs()
{
    QList<LanguagePair> pairs;
    for (quint32 i = 0; i < 10; ++i) {
        pairs.append(
            pair(QStringLiteral("Chinese (Simplified)"), QStringLiteral("Luxembourgish"), 18 + i));
    }
    return pairs;
}

Scene trayScene(const QString& name, const QList<LanguagePair>& pairs, const QString& status,
                bool busy = false)
{
    return {QStringLiteral("tray-") + name, [=](const Stage& stage) {
                return std::make_unique<TrayPanelExhibit>(stage, pairs, status, busy);
            }};
}

Scene popupScene(const QString& name, const QString& original, const QString& translated,
                 TranslationWindowSize size = TranslationWindowSize::medium)
{
    return {QStringLiteral("popup-") + name, [=](const Stage& stage) {
                return std::make_unique<PopupExhibit>(stage, original, translated, size);
            }};
}

Scene copiedScene()
{
    return {QStringLiteral("popup-copied"), [](const Stage& stage) {
                auto exhibit = std::make_unique<PopupExhibit>(stage, texts::shortEnglish(),
                                                              texts::shortGerman(),
                                                              TranslationWindowSize::medium);
                exhibit->popup().model()->copy();
                return exhibit;
            }};
}

/// The tray's panel with the pointer on a button and the keyboard on another one.
Scene handsScene()
{
    return {QStringLiteral("tray-hands"), [](const Stage& stage) {
                auto exhibit = std::make_unique<TrayPanelExhibit>(
                    stage, somePairs(), localizedText(QStringLiteral("Ready")), false);
                MenuBarTrayContent& content = exhibit->controller().panel()->content();
                content.quitButton().setAttribute(Qt::WA_UnderMouse);
                content.settingsButton().setFocus(Qt::TabFocusReason);
                return exhibit;
            }};
}

/// With the keyboard's focus after `tabs` presses of the Tab key.
Scene focusScene(const QString& name, int tabs)
{
    return {QStringLiteral("popup-focus-") + name, [tabs](const Stage& stage) {
                auto exhibit = std::make_unique<PopupExhibit>(stage, texts::shortEnglish(),
                                                              texts::shortGerman(),
                                                              TranslationWindowSize::medium);
                if (!QTest::qWaitForWindowActive(exhibit->window())) {
                    qFatal("The popup did not get the keyboard");
                }
                for (int i = 0; i < tabs; ++i) {
                    QTest::keyClick(exhibit->window(), Qt::Key_Tab);
                }
                return exhibit;
            }};
}

Scene alertScene(const QString& name, const Alert& alert)
{
    return {QStringLiteral("alert-") + name,
            [alert](const Stage& stage) { return std::make_unique<AlertExhibit>(stage, alert); }};
}

} // namespace

QList<Scene> allScenes()
{
    const QString failed = localizedText(QStringLiteral("Translation failed"));
    const QStringList permission{localizedText(QStringLiteral("Request Permission…")),
                                 localizedText(QStringLiteral("Relaunch Zelvane Desk")),
                                 localizedText(QStringLiteral("Cancel"))};
    QList<Scene> scenes = styleScenes();
    scenes += {
        {QStringLiteral("icons"),
         [](const Stage& stage) { return std::make_unique<IconSheet>(stage); }},
        {QStringLiteral("menu"),
         [](const Stage& stage) { return std::make_unique<MenuExhibit>(stage, somePairs()); }},
        {QStringLiteral("option-menu"),
         [](const Stage&) { return std::make_unique<OptionMenuExhibit>(); }},
        trayScene(QStringLiteral("panel"), somePairs(), localizedText(QStringLiteral("Ready"))),
        trayScene(QStringLiteral("busy"), somePairs(),
                  localizedFormat(QStringLiteral("Translating %@…"), {QStringLiteral("ANY-DE")}),
                  true),
        trayScene(QStringLiteral("none"), {}, localizedText(QStringLiteral("Ready"))),
        trayScene(QStringLiteral("ten"), tenPairs(),
                  localizedText(QStringLiteral("⌥\u2011menu: waiting for Accessibility…"))),
        handsScene(),
        popupScene(QStringLiteral("short"), texts::shortEnglish(), texts::shortGerman()),
        copiedScene(),
        focusScene(QStringLiteral("copy"), 1),
        focusScene(QStringLiteral("close"), 2),
        focusScene(QStringLiteral("text"), 3),
        popupScene(QStringLiteral("long"), texts::longEnglish(), texts::longGerman()),
        popupScene(QStringLiteral("words"), texts::shortEnglish(), texts::wordsGerman(),
                   TranslationWindowSize::extraSmall),
        popupScene(QStringLiteral("hindi"), texts::longEnglish(), texts::hindi()),
        popupScene(QStringLiteral("chinese"), texts::longEnglish(), texts::chinese(),
                   TranslationWindowSize::large),
        popupScene(QStringLiteral("arabic"), texts::shortEnglish(), texts::arabic(),
                   TranslationWindowSize::small),
        popupScene(QStringLiteral("extraLarge"), texts::longEnglish(), texts::longGerman(),
                   TranslationWindowSize::extraLarge),
        alertScene(QStringLiteral("one"),
                   {failed,
                    TranslationError(TranslationError::Code::emptyText).description(),
                    {localizedText(QStringLiteral("OK"))}}),
        alertScene(QStringLiteral("three"),
                   {failed,
                    TranslationError(TranslationError::Code::accessibilityDenied).description(),
                    permission}),
        alertScene(QStringLiteral("long"),
                   {failed,
                    texts::longEnglish() + QStringLiteral("\n\n") + texts::longGerman(),
                    {localizedText(QStringLiteral("OK"))}}),
    };
    scenes += manualScenes();
    scenes += onboardingScenes();
    scenes += settingsScenes();
    return scenes;
}

} // namespace zelvane::gallery
