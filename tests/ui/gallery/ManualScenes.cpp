#include "ui/gallery/Scenes.h"

#include "foundation/Completion.h"
#include "foundation/SystemClock.h"
#include "pipeline/TranslationError.h"
#include "support/FakeSecretBackend.h"
#include "ui/gallery/Texts.h"
#include "ui/manual/ManualTranslationWindow.h"

namespace zelvane::gallery {

namespace {

/// What has become of the translation that the user asked for.
enum class Outcome { none, waiting, done, copied, failed };

struct Texts
{
    QString source;
    QString translation = texts::longGerman();
};

class ManualExhibit final : public Exhibit
{
public:
    ManualExhibit(const Stage& stage, const Texts& texts, Outcome outcome,
                  TranslationWindowSize size)
        : m_window(stage.theme, stage.windows, m_origins, m_settings, m_trace,
                   {[this](QString, QString, QString, std::stop_token) { return answer(); },
                    [](const QString&) {}})
    {
        m_settings.setManualWindowSize(size);
        m_window.showManualTranslationWindow();
        m_window.view()->sourceEditor().insertPlainText(texts.source);
        if (outcome != Outcome::none) {
            m_window.view()->translateButton().click();
        }
        if (outcome == Outcome::done || outcome == Outcome::copied) {
            m_answer.succeed(texts.translation);
        } else if (outcome == Outcome::failed) {
            m_answer.fail(TranslationError(TranslationError::Code::missingAPIKey));
        }
        if (outcome == Outcome::copied) {
            m_window.model()->copy();
            m_window.model()->setPinned(true);
        }
    }

    [[nodiscard]] QWidget* window() override { return m_window.panel(); }

private:
    QCoro::Task<QString> answer()
    {
        const Completion<QString> pending = m_answer;
        const QString text = co_await pending.result();
        co_return text;
    }

    OverlayUserDefaults m_defaults;
    test::FakeSecretBackend m_backend;
    SecretStore m_secrets{m_defaults, m_backend};
    AppSettings m_settings{m_defaults, m_secrets, QStringLiteral("German")};
    SystemClock m_clock;
    TranslationTrace m_trace{m_clock};
    WindowOrigins m_origins{m_defaults, systemScreens()};
    Completion<QString> m_answer;
    ManualTranslationWindow m_window;
};

Scene scene(const QString& name, const Texts& texts, Outcome outcome,
            TranslationWindowSize size = TranslationWindowSize::medium)
{
    return {QStringLiteral("manual-") + name, [=](const Stage& stage) {
                return std::make_unique<ManualExhibit>(stage, texts, outcome, size);
            }};
}

} // namespace

QList<Scene> manualScenes()
{
    return {
        scene(QStringLiteral("empty"), {}, Outcome::none),
        scene(QStringLiteral("typed"), {texts::shortEnglish()}, Outcome::none),
        scene(QStringLiteral("busy"), {texts::shortEnglish()}, Outcome::waiting),
        scene(QStringLiteral("done"), {texts::longEnglish()}, Outcome::done),
        scene(QStringLiteral("copied-pinned"), {texts::shortEnglish(), texts::shortGerman()},
              Outcome::copied),
        scene(QStringLiteral("failed"), {texts::shortEnglish()}, Outcome::failed),
        scene(QStringLiteral("long"),
              {texts::longEnglish().repeated(9), texts::longGerman().repeated(9)}, Outcome::done),
        scene(QStringLiteral("arabic"), {texts::longEnglish(), texts::arabic()}, Outcome::done),
        scene(QStringLiteral("smallest"), {texts::longEnglish()}, Outcome::failed,
              TranslationWindowSize::extraSmall),
        scene(QStringLiteral("largest"), {texts::longEnglish()}, Outcome::done,
              TranslationWindowSize::extraLarge),
    };
}

} // namespace zelvane::gallery
