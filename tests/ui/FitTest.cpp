#include "settings/LanguageNames.h"
#include "settings/Localization.h"
#include "support/Await.h"
#include "support/TestRunner.h"
#include "ui/SettingsFixture.h"
#include "ui/components/LinkLabel.h"
#include "ui/language/SearchableLanguagePicker.h"
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

/// A size of the letters, and of the window in which there is to be room for them.
struct Letters
{
    int points;
    QSize window;
};

void PrintTo(const Letters& letters, std::ostream* out)
{
    *out << letters.points << " points";
}

class FitTest : public SettingsTest, public ::testing::WithParamInterface<Letters>
{
protected:
    FitTest()
    {
        installLocalization(&defaults);
        QFont font = m_font;
        font.setPointSize(GetParam().points);
        QApplication::setFont(font);
    }
    ~FitTest() override
    {
        QApplication::setFont(m_font);
        installLocalization(nullptr);
    }
    Q_DISABLE_COPY_MOVE(FitTest)

    void inEveryLanguage(const std::function<void()>& look)
    {
        for (const AppLanguage language : allAppLanguages) {
            if (language != AppLanguage::system) {
                SCOPED_TRACE(rawValue(language).toStdString());
                settings.setAppLanguage(language);
                look();
            }
        }
    }

    /// The settings on that page.
    SettingsView& openAnew(SettingsCategory category)
    {
        view.reset();
        open(category).resize(GetParam().window);
        QCoreApplication::processEvents();
        return *view;
    }

private:
    QFont m_font = QApplication::font();
};

/// What may be cut where letters are large.
class UsualFitTest : public FitTest
{
};

TEST_P(FitTest, everyTextOfTheSettingsHasRoomInEveryLanguage)
{
    allowThisTest(std::chrono::seconds(60)); // eighty pages
    use(AIProvider::chatGPT);
    permissionState = State::denied;
    inEveryLanguage([this] {
        for (const SettingsCategory category : allSettingsCategories) {
            const SettingsView& shown = openAnew(category);
            EXPECT_THAT(cutTexts(shown), IsEmpty()) << rawValue(category).toStdString();
            // Pages scroll up and down only.
            const SettingsPage* page = shown.pageOf(category);
            EXPECT_LE(page->width(), page->parentWidget()->width())
                << rawValue(category).toStdString();
        }
    });
}

TEST_P(FitTest, everySheetHasRoomInEveryLanguage)
{
    inEveryLanguage([this] {
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

TEST_P(FitTest, everySlideHasRoomInEveryLanguage)
{
    inEveryLanguage([this] {
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

TEST_P(UsualFitTest, theHintOfTheLanguageSearchHasRoomInEveryLanguage)
{
    inEveryLanguage([this] {
        SearchableLanguagePicker picker(theme, {.options = offeredLanguages()}, 150);
        picker.show();
        picker.togglePopup();
        QCoreApplication::processEvents();
        const SearchField& field = *picker.searchField();
        const QMargins margins = field.textMargins();
        EXPECT_LE(field.fontMetrics().horizontalAdvance(field.placeholderText()),
                  field.width() - margins.left() - margins.right());
    });
}

INSTANTIATE_TEST_SUITE_P(Usual, FitTest, ::testing::Values(Letters{10, {820, 580}}));
INSTANTIATE_TEST_SUITE_P(Usual, UsualFitTest, ::testing::Values(Letters{10, {820, 580}}));
/// The window as large as it gets on a small screen.
INSTANTIATE_TEST_SUITE_P(VeryLarge, FitTest, ::testing::Values(Letters{20, {1024, 580}}));

class OpenSheetTest : public SettingsTest
{
protected:
    OpenSheetTest() { installLocalization(&defaults); }
    ~OpenSheetTest() override { installLocalization(nullptr); }
    Q_DISABLE_COPY_MOVE(OpenSheetTest)

    /// Whether `sheet`, once open, has that title and that button after a change to Spanish.
    void expectSpanish(Sheet* sheet, const QString& title, const QString& button)
    {
        settings.setAppLanguage(AppLanguage::english);
        QCoreApplication::postEvent(qApp, new QEvent(QEvent::LanguageChange));
        sheet->present();
        QCoreApplication::processEvents();
        EXPECT_FALSE(shows(title));
        settings.setAppLanguage(AppLanguage::spanish);
        QCoreApplication::postEvent(qApp, new QEvent(QEvent::LanguageChange));
        EXPECT_TRUE(waitUntil([&] { return shows(title); })) << title.toStdString();
        EXPECT_NE(named<TextButton>(button), nullptr) << button.toStdString();
        sheet->dismiss();
    }
};

TEST_F(OpenSheetTest, speaksAnotherLanguageAtOnce)
{
    SettingsView& below = open(SettingsCategory::general);
    expectSpanish(new ModelLicensesSheet(theme, below), QStringLiteral("Licencias de terceros"),
                  QStringLiteral("Listo"));
    expectSpanish(
        new HotKeyBindSheet(theme, below,
                            std::make_unique<HotKeyBindModel>(QStringLiteral("ANY-DE"),
                                                              std::nullopt, QSet<KeyChord>())),
        QStringLiteral("Asignar teclas"), QStringLiteral("Guardar"));
    expectSpanish(
        new PromptEditSheet(theme, below,
                            std::make_unique<PromptEditModel>(QStringLiteral("ANY-DE"), QString())),
        QStringLiteral("Prompt propio"), QStringLiteral("Guardar"));
    expectSpanish(new APIKeyEditSheet(theme, below, APIKeyEditModel(QStringLiteral("ChatGPT"), {})),
                  QStringLiteral("Clave de API"), QStringLiteral("Guardar"));
}

} // namespace
} // namespace zelvane::test
