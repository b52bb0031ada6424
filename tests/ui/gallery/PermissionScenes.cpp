#include "ui/gallery/Scenes.h"

#include "foundation/SystemClock.h"
#include "ui/permission/PermissionWindow.h"

#include <QProperty>

namespace zelvane::gallery {

namespace {

using State = AccessibilityPermission::State;

class FixedInspector final : public SessionInspector
{
public:
    explicit FixedInspector(const SessionCapabilities& found)
        : m_found(found)
    {
    }

    [[nodiscard]] QCoro::Task<SessionCapabilities> inspect() override
    {
        const SessionCapabilities found = m_found;
        co_return found;
    }

private:
    SessionCapabilities m_found;
};

class PermissionExhibit final : public Exhibit
{
public:
    PermissionExhibit(const Stage& stage, State state, const SessionCapabilities& found)
        : m_state(state)
        , m_inspector(found)
        , m_model(&m_state, m_inspector, m_clock, {[] {}, [](const QString&) {}})
        , m_window(m_model, stage.theme)
    {
        m_window.show();
    }

    [[nodiscard]] QWidget* window() override { return &m_window; }

private:
    QProperty<State> m_state;
    FixedInspector m_inspector;
    SystemClock m_clock;
    PermissionModel m_model;
    PermissionWindow m_window;
};

Scene scene(const QString& name, State state, const SessionCapabilities& found)
{
    return {QStringLiteral("permission-") + name, [state, found](const Stage& stage) {
                return std::make_unique<PermissionExhibit>(stage, state, found);
            }};
}

} // namespace

QList<Scene> permissionScenes()
{
    constexpr auto there = Availability::available;
    constexpr auto missing = Availability::missing;
    return {
        scene(QStringLiteral("granted"), State::granted,
              {SessionKind::x11, there, there, there, there, there}),
        scene(QStringLiteral("stale"), State::stale,
              {SessionKind::x11, there, there, there, missing, there}),
        scene(QStringLiteral("wayland"), State::denied,
              {SessionKind::wayland, missing, missing, missing, missing, missing}),
        scene(QStringLiteral("unknown"), State::granted, {}),
    };
}

} // namespace zelvane::gallery
