#include "ui/gallery/Scenes.h"

#include "foundation/SystemClock.h"
#include "support/FakeSecretBackend.h"
#include "ui/onboarding/OnboardingWindow.h"

namespace zelvane::gallery {

namespace {

class OnboardingExhibit final : public Exhibit
{
public:
    OnboardingExhibit(const Stage& stage, int slide)
        : m_window(stage.theme, stage.windows, m_origins, m_settings, m_clock)
    {
        m_window.showOnboarding();
        for (int i = 0; i < slide; ++i) {
            m_window.view()->forwardButton().click();
        }
    }

    [[nodiscard]] QWidget* window() override { return m_window.panel(); }

private:
    OverlayUserDefaults m_defaults;
    test::FakeSecretBackend m_backend;
    SecretStore m_secrets{m_defaults, m_backend};
    AppSettings m_settings{m_defaults, m_secrets, QStringLiteral("German")};
    SystemClock m_clock;
    WindowOrigins m_origins{m_defaults, systemScreens()};
    OnboardingWindow m_window;
};

} // namespace

QList<Scene> onboardingScenes()
{
    QList<Scene> scenes;
    for (const OnboardingSlide& slide : onboardingSlides()) {
        scenes.append({QStringLiteral("onboarding-%1").arg(slide.id), [id = slide.id](auto& stage) {
                           return std::make_unique<OnboardingExhibit>(stage, id);
                       }});
    }
    return scenes;
}

} // namespace zelvane::gallery
