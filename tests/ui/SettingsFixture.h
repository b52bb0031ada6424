#pragma once

#include "foundation/Completion.h"
#include "glossary/GlossaryManager.h"
#include "support/FakeHttpTransport.h"
#include "ui/UiFixture.h"
#include "ui/settings/SettingsView.h"

#include <QTemporaryDir>

namespace zelvane::test {

/// The settings with all that they reach, and nothing behind it but memory.
class SettingsTest : public UiTest
{
protected:
    using State = AccessibilityPermission::State;

    class Inspector final : public SessionInspector
    {
    public:
        [[nodiscard]] QCoro::Task<SessionCapabilities> inspect() override
        {
            const SessionCapabilities found;
            co_return found;
        }
    };

    QCoro::Task<QList<RemoteModel>> models(AIProvider provider, QString key)
    {
        asked.append(rawValue(provider) + u' ' + key);
        const QList<RemoteModel> answer = listed;
        co_return answer;
    }

    /// A listing that answers when the test says so.
    static QCoro::Task<QList<RemoteModel>> waited(Completion<QList<RemoteModel>> answer)
    {
        const QList<RemoteModel> models = co_await answer.result();
        co_return models;
    }

    static QCoro::Task<QString> installIdentifier() { co_return QStringLiteral("an-install-id"); }

    /// Makes the window and shows it.
    SettingsView& open(SettingsCategory category = SettingsCategory::translation)
    {
        if (!view) {
            view = std::make_unique<SettingsView>(theme, services, clock);
            view->resize(view->minimumSize());
            view->show();
        }
        view->select(category);
        QCoreApplication::processEvents();
        return *view;
    }

    void use(AIProvider provider)
    {
        settings.setUseOwnAI(true);
        settings.setProvider(provider);
        QCoreApplication::processEvents();
    }

    /// The visible control of this class with this name; null if there is none.
    template <typename Control>
    Control* named(const QString& name)
    {
        for (auto* control : view->findChildren<Control*>()) {
            if (control->isVisible() && control->accessibleName() == name) {
                return control;
            }
        }
        return nullptr;
    }

    /// Whether a visible label says exactly this.
    bool shows(const QString& text)
    {
        for (const auto* label : view->findChildren<ThemedLabel*>()) {
            if (label->isVisible() && label->text() == text) {
                return true;
            }
        }
        return false;
    }

    QTemporaryDir folder;
    FakeHttpTransport transport;
    GlossaryManager glossaries{{defaults,
                                transport,
                                clock,
                                folder.path(),
                                {QStringLiteral("de"), QStringLiteral("German")}}};
    EngineState engine;
    QStringList engineCalls;
    int engineLooks = 0;
    QProperty<State> permissionState{State::granted};
    Inspector inspector;
    PermissionModel permission{&permissionState, inspector, clock, {[] {}, [](const QString&) {}}};
    QList<RemoteModel> listed{{QStringLiteral("gpt-a"), QStringLiteral("GPT A")}};
    QStringList asked;
    QString clipboard;
    QList<AIProvider> picked;
    int reloads = 0;
    int suspensions = 0;
    int resets = 0;
    SettingsServices services{
        .settings = settings,
        .defaults = defaults,
        .fetchModels = [this](AIProvider provider, QString key,
                              std::stop_token) { return models(provider, key); },
        .engine =
            [this](SmartOfflineVariant) {
                return EngineControls{&engine,
                                      [this] { engineCalls += QStringLiteral("install"); },
                                      [this] { engineCalls += QStringLiteral("cancel"); },
                                      [this] { engineCalls += QStringLiteral("delete"); },
                                      [] { return qint64(4'624'648'896); },
                                      [this] { ++engineLooks; }};
            },
        .providerPicked = [this](AIProvider provider) { picked.append(provider); },
        .glossaries = glossaries,
        .reloadHotKeys = [this] { ++reloads; },
        .suspendHotKeys = [this] { ++suspensions; },
        .isHeldElsewhere = {},
        .optionMenuChanged = [] {},
        .permissionState = QBindable<State>(&permissionState),
        .permission = permission,
        .resetWindowLocations = [this] { ++resets; },
        .installId = [](std::stop_token) { return installIdentifier(); },
        .writeToClipboard = [this](const QString& text) { clipboard = text; },
    };
    std::unique_ptr<SettingsView> view;
};

} // namespace zelvane::test
