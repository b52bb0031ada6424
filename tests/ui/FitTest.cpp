#include "settings/Localization.h"
#include "support/Await.h"
#include "support/TestRunner.h"
#include "ui/SettingsFixture.h"
#include "ui/components/LinkLabel.h"
#include "ui/licenses/ModelLicensesSheet.h"
#include "ui/onboarding/OnboardingWindow.h"
#include "ui/sheets/APIKeyEditSheet.h"
#include "ui/sheets/HotKeyBindSheet.h"
#include "ui/sheets/PromptEditSheet.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::IsEmpty;

/// What of the texts below `root` doesn't have the room that it needs.
QStringList cutTexts(const QWidget& root)
{
    QStringList cut;
    for (const auto* label : root.findChildren<ThemedLabel*>()) {
        if (!label->isVisible() || label->minimumSizeHint().width() == 0) {
            continue;
        }
        const bool fits = label->wordWrap()
                              ? label->height() >= label->heightForWidth(label->width())
                              : label->width() >= label->sizeHint().width();
        if (!fits) {
            cut += label->text();
        }
    }
    for (const auto* button : root.findChildren<QAbstractButton*>()) {
        const bool hasText = qobject_cast<const TextButton*>(button) ||
                             qobject_cast<const LinkLabel*>(button) ||
                             qobject_cast<const ListRow*>(button);
        if (button->isVisible() && hasText && button->width() < button->sizeHint().width()) {
            cut += button->text();
        }
    }
    return cut;
}

/// What reaches beyond the sides of the page that it stands in.
QStringList wideControls(const QWidget& page)
{
    QStringList wide;
    for (const auto* control : page.findChildren<QAbstractButton*>()) {
        const int right = control->mapTo(&page, QPoint(control->width(), 0)).x();
        if (control->isVisible() && right > page.parentWidget()->width()) {
            wide += control->accessibleName();
        }
    }
    return wide;
}

/// Each interface language, and a usual and a very large font.
class FitTest : public SettingsTest
{
protected:
    FitTest() { installLocalization(&defaults); }
    ~FitTest() override
    {
        QApplication::setFont(m_font);
        installLocalization(nullptr);
    }
    Q_DISABLE_COPY_MOVE(FitTest)

    void everywhere(const std::function<void()>& look)
    {
        for (const int points : {10, 20}) {
            QFont font = m_font;
            font.setPointSize(points);
            QApplication::setFont(font);
            for (const AppLanguage language : allAppLanguages) {
                SCOPED_TRACE(rawValue(language).toStdString() + ", font of " +
                             std::to_string(points));
                settings.setAppLanguage(language);
                look();
            }
        }
    }

    /// The settings, as small as they get, on that page.
    SettingsView& openAnew(SettingsCategory category)
    {
        view.reset();
        return open(category);
    }

    QFont m_font = QApplication::font();
};

TEST_F(FitTest, everyTextOfTheSettingsHasRoomInEveryLanguage)
{
    allowThisTest(std::chrono::seconds(60)); // eighty pages
    use(AIProvider::chatGPT);
    permissionState = State::denied;
    everywhere([this] {
        for (const SettingsCategory category : allSettingsCategories) {
            const SettingsView& shown = openAnew(category);
            EXPECT_THAT(cutTexts(shown), IsEmpty()) << rawValue(category).toStdString();
            EXPECT_THAT(wideControls(*shown.pageOf(category)), IsEmpty())
                << rawValue(category).toStdString();
        }
    });
}

TEST_F(FitTest, everySheetHasRoomInEveryLanguage)
{
    everywhere([this] {
        SettingsView& below = openAnew(SettingsCategory::general);
        const std::vector<Sheet*> sheets{
            new HotKeyBindSheet(theme, below,
                                std::make_unique<HotKeyBindModel>(QStringLiteral("ANY-DE"),
                                                                  std::nullopt, QSet<KeyChord>())),
            new PromptEditSheet(
                theme, below,
                std::make_unique<PromptEditModel>(QStringLiteral("ANY-DE"), QString())),
            new APIKeyEditSheet(theme, below, APIKeyEditModel(QStringLiteral("ChatGPT"), {})),
            new ModelLicensesSheet(theme, below)};
        for (Sheet* sheet : sheets) {
            sheet->present();
            QCoreApplication::processEvents();
            EXPECT_THAT(cutTexts(*sheet), IsEmpty());
            EXPECT_TRUE(below.rect().contains(sheet->panelRect()));
            sheet->dismiss();
        }
    });
}

TEST_F(FitTest, everySlideHasRoomInEveryLanguage)
{
    everywhere([this] {
        OnboardingModel model;
        OnboardingView slides(model, theme);
        slides.resize(OnboardingView::contentSize);
        slides.show();
        for (qsizetype i = 0; i < onboardingSlides().size(); ++i) {
            QCoreApplication::processEvents();
            EXPECT_THAT(cutTexts(slides), IsEmpty()) << model.index();
            EXPECT_LE(slides.body().mapTo(&slides, slides.body().rect().bottomLeft()).y(),
                      slides.dots().y());
            EXPECT_EQ(slides.height(), 520);
            model.stepForward();
        }
    });
}

TEST_F(FitTest, anOpenSheetSpeaksAnotherLanguageAtOnce)
{
    settings.setAppLanguage(AppLanguage::english);
    SettingsView& below = openAnew(SettingsCategory::general);
    (new ModelLicensesSheet(theme, below))->present();
    EXPECT_TRUE(shows(QStringLiteral("Third-Party Licenses")));
    settings.setAppLanguage(AppLanguage::spanish);
    QCoreApplication::postEvent(qApp, new QEvent(QEvent::LanguageChange));
    EXPECT_TRUE(waitUntil([this] { return shows(QStringLiteral("Licencias de terceros")); }));
    EXPECT_NE(named<TextButton>(QStringLiteral("Listo")), nullptr);
}

} // namespace
} // namespace zelvane::test
