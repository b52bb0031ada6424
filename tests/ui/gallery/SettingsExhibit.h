#pragma once

#include "foundation/SystemClock.h"
#include "glossary/GlossaryManager.h"
#include "support/FakeHttpTransport.h"
#include "support/FakeSecretBackend.h"
#include "ui/gallery/Scenes.h"
#include "ui/settings/SettingsView.h"

#include <QTemporaryDir>

namespace zelvane::gallery {

class SettingsExhibit;

/// What becomes of the list of models that a provider is asked for.
enum class ModelListing { comes, isAwaited, isEmpty, fails };

[[nodiscard]] SessionCapabilities fullSession();

/// How a scene differs from a fresh profile.
struct Situation
{
    SettingsCategory category = SettingsCategory::translation;
    AIProvider provider = AIProvider::smartOffline;
    bool useOwnAI = true;
    QString apiKey = QStringLiteral("sk-0123456789abcdef");
    ModelListing listing = ModelListing::comes;
    EngineStatus engine = engine_status::NotInstalled{};
    std::optional<EngineDownloadProgress> download = {};
    AccessibilityPermission::State permission = AccessibilityPermission::State::granted;
    SessionCapabilities session = fullSession();
    /// As high as the window is; the least that it allows if this is none.
    int height = 0;
    /// Before there is a window.
    std::function<void(AppSettings&)> prepare = {};
    /// The dictionaries that are installed, of as many pairs of languages.
    qsizetype glossaries = 1;
    /// Once it is on the screen.
    std::function<void(SettingsExhibit&)> open = {};
};

/// The settings with all that they reach, and nothing behind it but memory.
class SettingsExhibit final : public Exhibit
{
public:
    SettingsExhibit(const Stage& stage, const Situation& situation);

    [[nodiscard]] QWidget* window() override { return m_view.get(); }
    void takeStep() override;

    [[nodiscard]] const Theme& theme() const { return m_theme; }
    [[nodiscard]] SettingsView& view() { return *m_view; }
    [[nodiscard]] test::FakeHttpTransport& transport() { return m_transport; }
    [[nodiscard]] GlossaryManager& glossaries() { return m_glossaries; }

    /// The visible control of the class at `index`, in the order in which they were made.
    template <typename Control>
    [[nodiscard]] Control& control(int index = 0)
    {
        for (auto* found : m_view->findChildren<Control*>()) {
            if (found->isVisible() && index-- == 0) {
                return *found;
            }
        }
        qFatal("there is no such control");
    }

private:
    class Inspector final : public SessionInspector
    {
    public:
        [[nodiscard]] QCoro::Task<SessionCapabilities> inspect() override
        {
            const SessionCapabilities found = session;
            co_return found;
        }

        SessionCapabilities session;
    };

    [[nodiscard]] SettingsServices services();
    /// Does as the situation says with a provider that is asked for its models.
    static QCoro::Task<QList<RemoteModel>> models(ModelListing listing, std::stop_token stop);

    const Theme& m_theme;
    Situation m_situation;
    QTemporaryDir m_folder;
    OverlayUserDefaults m_defaults;
    test::FakeSecretBackend m_backend;
    SecretStore m_secrets{m_defaults, m_backend};
    AppSettings m_settings{m_defaults, m_secrets, QStringLiteral("German")};
    SystemClock m_clock;
    test::FakeHttpTransport m_transport;
    GlossaryManager m_glossaries;
    EngineState m_engine;
    QProperty<AccessibilityPermission::State> m_permission;
    Inspector m_inspector;
    PermissionModel m_permissionModel{
        &m_permission, m_inspector, m_clock, {[] {}, [](const QString&) {}}};
    SettingsServices m_services;
    std::unique_ptr<SettingsView> m_view;
};

[[nodiscard]] Scene settingsScene(const QString& name, const Situation& situation);

} // namespace zelvane::gallery
