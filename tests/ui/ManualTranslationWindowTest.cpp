#include "ui/manual/ManualTranslationWindow.h"

#include "foundation/Completion.h"
#include "foundation/DescribedError.h"
#include "pipeline/TranslationError.h"
#include "settings/Localization.h"
#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/components/OptionList.h"
#include "ui/components/TextField.h"
#include "ui/gallery/Texts.h"

#include <gmock/gmock.h>

#include <QClipboard>
#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ManualTranslationWindowTest : public UiTest
{
protected:
    ~ManualTranslationWindowTest() override { window.closeManualTranslationWindow(); }

    void open()
    {
        window.showManualTranslationWindow();
        ASSERT_NE(panel(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(panel()));
    }

    void type(const QString& text) { QTest::keyClicks(&view().sourceEditor(), text); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&view().sourceEditor(), key, modifiers);
    }

    [[nodiscard]] TranslatorKeyablePanel* panel() const { return window.panel(); }
    [[nodiscard]] ManualTranslationView& view() const { return *window.view(); }

    [[nodiscard]] double saved(const char* key) const
    {
        return defaults.number(QString::fromLatin1(key)).value_or(-1);
    }

    QCoro::Task<QString> translate(QString text, std::stop_token stop)
    {
        asked.append(text);
        const Completion<QString> mine = answer = Completion<QString>();
        const std::stop_callback onStop(stop, [mine] { mine.fail(CancellationError()); });
        const QString translated = co_await mine.result();
        co_return translated;
    }

    TranslationTrace trace{clock};
    QStringList asked;
    QString clipboard;
    Completion<QString> answer;
    ManualTranslationWindow window{theme,
                                   windows,
                                   origins,
                                   settings,
                                   trace,
                                   {[this](QString text, QString, QString, std::stop_token stop) {
                                        return translate(text, stop);
                                    },
                                    [this](const QString& text) { clipboard = text; }}};
};

TEST_F(ManualTranslationWindowTest, opensInTheMiddleAtTheChosenSizeAndTakesTheKeyboard)
{
    open();
    EXPECT_EQ(panel()->panelFrame(), QRect(480, 240, 640, 560));
    EXPECT_TRUE(view().sourceEditor().hasFocus());
    EXPECT_EQ(panel()->windowTitle(), QStringLiteral("Translation Window"));
    EXPECT_EQ(window.model()->targetLanguage(), QStringLiteral("English (US)"));
    EXPECT_EQ(view().sourcePicker().valueText(), QStringLiteral("Any Language"));
}

TEST_F(ManualTranslationWindowTest, mayGoWhileItIsOpenAndTranslates)
{
    auto other = std::make_unique<ManualTranslationWindow>(
        theme, windows, origins, settings, trace,
        ManualTranslationModel::Services{
            [this](QString text, QString, QString, std::stop_token stop) {
                return translate(text, stop);
            },
            [](const QString&) {}});
    other->showManualTranslationWindow();
    other->model()->translate(QStringLiteral("hello"));
    const QPointer<TranslatorKeyablePanel> shown = other->panel();
    other.reset();
    EXPECT_EQ(shown, nullptr);
    EXPECT_TRUE(answer.isDecided());
}

TEST_F(ManualTranslationWindowTest, isAnOrdinaryWindowAmongTheRunningPrograms)
{
    open();
    EXPECT_EQ(panel()->windowType(), Qt::Window);
    EXPECT_TRUE(panel()->promotesDockIcon());
    EXPECT_FALSE(panel()->isFloating());
    ASSERT_FALSE(windows.described.isEmpty());
    EXPECT_FALSE(windows.described.constLast().skipsTaskbar);
}

TEST_F(ManualTranslationWindowTest, translatesWhatIsTypedByKeyboardAlone)
{
    open();
    EXPECT_FALSE(view().translateButton().isEnabled());
    EXPECT_FALSE(view().copyButton().isEnabled());
    type(QStringLiteral("Guten Tag"));
    EXPECT_TRUE(view().translateButton().isEnabled());

    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(asked, QStringList{QStringLiteral("Guten Tag")});
    EXPECT_FALSE(view().translateButton().isEnabled());

    answer.succeed(QStringLiteral("Good day"));
    EXPECT_EQ(view().translationArea().toPlainText(), QStringLiteral("Good day"));
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard, QStringLiteral("Good day"));
}

TEST_F(ManualTranslationWindowTest, translatesAPastedMegabyteCharacterForCharacter)
{
    const QString text = QStringLiteral("The tide came in over the flats. ").repeated(31'000);
    open();
    QGuiApplication::clipboard()->setText(text);
    press(Qt::Key_V, Qt::ControlModifier);
    press(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked.first() == text);

    answer.succeed(text);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(clipboard == text);
}

TEST_F(ManualTranslationWindowTest, givesBothTextsTheSameRoomHoweverLongTheyAre)
{
    open();
    type(QStringLiteral("one"));
    press(Qt::Key_Return, Qt::ControlModifier);
    answer.succeed(gallery::texts::longGerman().repeated(9));
    QApplication::processEvents();
    EXPECT_NEAR(view().sourceEditor().height(), view().translationArea().height(), 1);
}

TEST_F(ManualTranslationWindowTest, copiesTheSelectionWhereThereIsOne)
{
    open();
    type(QStringLiteral("one"));
    press(Qt::Key_Return, Qt::ControlModifier);
    answer.succeed(QStringLiteral("eins"));
    view().sourceEditor().selectAll();
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard, QString());
}

TEST_F(ManualTranslationWindowTest, nothingButWhiteSpaceCannotBeTranslated)
{
    open();
    view().sourceEditor().setPlainText(QStringLiteral(" \t\n\n "));
    EXPECT_FALSE(view().translateButton().isEnabled());
    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_THAT(asked, IsEmpty());
    view().sourceEditor().setPlainText(QStringLiteral(" \t\n\nx"));
    EXPECT_TRUE(view().translateButton().isEnabled());
}

TEST_F(ManualTranslationWindowTest, showsAFailureInTheWindow)
{
    open();
    type(QStringLiteral("one"));
    view().translateButton().click();
    answer.fail(TranslationError(TranslationError::Code::missingAPIKey));
    bool shown = false;
    for (const ThemedLabel* label : view().findChildren<ThemedLabel*>()) {
        shown |=
            label->isVisible() &&
            label->text() == QStringLiteral("API key is not set. Open Settings and add your key.");
    }
    EXPECT_TRUE(shown);
}

TEST_F(ManualTranslationWindowTest, floatsWhileItIsPinned)
{
    open();
    QTest::mouseClick(&view().pinButton(), Qt::LeftButton);
    EXPECT_TRUE(panel()->isFloating());
    EXPECT_TRUE(panel()->isVisible());
    EXPECT_EQ(view().pinButton().toolTip(), QStringLiteral("Stop keeping window on top"));
    QTest::mouseClick(&view().pinButton(), Qt::LeftButton);
    EXPECT_FALSE(panel()->isFloating());
    EXPECT_EQ(view().pinButton().toolTip(), QStringLiteral("Keep window on top"));
}

TEST_F(ManualTranslationWindowTest, escClosesItFromEverywhereAndForgetsTextAndPin)
{
    open();
    type(QStringLiteral("one"));
    view().pinButton().click();
    press(Qt::Key_Escape);
    EXPECT_EQ(panel(), nullptr);

    open();
    EXPECT_EQ(view().sourceEditor().toPlainText(), QString());
    EXPECT_FALSE(panel()->isFloating());
    QTest::keyClick(&view().copyButton(), Qt::Key_Escape);
    EXPECT_EQ(panel(), nullptr);
}

TEST_F(ManualTranslationWindowTest, closingGivesTheKeyboardBack)
{
    open();
    window.closeManualTranslationWindow();
    EXPECT_EQ(windows.givenBack, QList<WindowSystem::Window>{77});
}

TEST_F(ManualTranslationWindowTest, closingCancelsTheTranslationAndTheTraceSaysSo)
{
    open();
    type(QStringLiteral("one"));
    press(Qt::Key_Return, Qt::ControlModifier);
    press(Qt::Key_Escape);
    EXPECT_TRUE(answer.isDecided());
    EXPECT_THAT(trace.report().toStdString(), HasSubstr("cancelled"));
}

TEST_F(ManualTranslationWindowTest, aSecondRequestBringsTheOpenWindowForwardAsItIs)
{
    open();
    type(QStringLiteral("one"));
    TranslatorKeyablePanel* first = panel();
    const int before = windows.activations;
    window.showManualTranslationWindow();
    EXPECT_EQ(panel(), first);
    EXPECT_EQ(view().sourceEditor().toPlainText(), QStringLiteral("one"));
    EXPECT_EQ(windows.activations, before + 1);
    EXPECT_TRUE(window.bringManualTranslationWindowForward());
    window.closeManualTranslationWindow();
    EXPECT_FALSE(window.bringManualTranslationWindowForward());
}

TEST_F(ManualTranslationWindowTest, remembersWhereItWasMoved)
{
    open();
    panel()->setPanelOrigin({100, 120});
    ASSERT_TRUE(waitUntil([this] { return saved("zv.manualWindow.originX") == 100; }));
    EXPECT_EQ(saved("zv.manualWindow.originY"), 120);
    window.closeManualTranslationWindow();
    EXPECT_EQ(saved("zv.manualWindow.originX"), 100);

    open();
    EXPECT_EQ(panel()->panelFrame().topLeft(), QPoint(100, 120));
}

TEST_F(ManualTranslationWindowTest, aPlaceOnAScreenThatHasGoneIsPulledOntoTheMainOne)
{
    defaults.setValue(QStringLiteral("zv.manualWindow.originX"), 5000.0);
    defaults.setValue(QStringLiteral("zv.manualWindow.originY"), 3000.0);
    open();
    EXPECT_EQ(panel()->panelFrame(), QRect(960, 440, 640, 560));
}

TEST_F(ManualTranslationWindowTest, anotherSizeCentresTheOpenWindowAndKeepsItsText)
{
    open();
    type(QStringLiteral("one"));
    panel()->setPanelOrigin({0, 40});
    settings.setManualWindowSize(TranslationWindowSize::large);
    ASSERT_TRUE(waitUntil([this] { return panel()->panelFrame().width() == 780; }));
    EXPECT_EQ(panel()->panelFrame(), QRect(410, 180, 780, 680));
    EXPECT_EQ(view().sourceEditor().toPlainText(), QStringLiteral("one"));
}

TEST_F(ManualTranslationWindowTest, theLanguagesAreChosenInThePickers)
{
    open();
    const auto choose = [](SearchableLanguagePicker& picker, const QString& name) {
        picker.click();
        QTest::keyClicks(picker.searchField(), name);
        QTest::keyClick(picker.searchField(), Qt::Key_Return);
    };
    choose(view().sourcePicker(), QStringLiteral("Polish"));
    choose(view().targetPicker(), QStringLiteral("Klingon"));
    EXPECT_EQ(window.model()->sourceLanguage(), QStringLiteral("Polish"));
    EXPECT_EQ(window.model()->targetLanguage(), QStringLiteral("Klingon"));
}

TEST_F(ManualTranslationWindowTest, theTargetCannotBeFoundOutAutomatically)
{
    open();
    view().targetPicker().click();
    EXPECT_EQ(view().targetPicker().list()->count(), 54);
    view().targetPicker().togglePopup();
    view().sourcePicker().click();
    EXPECT_EQ(view().sourcePicker().list()->count(), 55);
}

TEST_F(ManualTranslationWindowTest, keysBesideTheButtonsGiveWayWhereTheyWouldCutTheStatus)
{
    installLocalization(&defaults);
    settings.setAppLanguage(AppLanguage::german);
    settings.setManualWindowSize(TranslationWindowSize::extraSmall);
    open();
    EXPECT_EQ(view().copyButton().keyHint(), QString());
    EXPECT_EQ(view().copyButton().toolTip(), QStringLiteral("Ctrl+C"));
    EXPECT_EQ(view().translateButton().toolTip(), QStringLiteral("Ctrl+Return"));

    settings.setManualWindowSize(TranslationWindowSize::medium);
    ASSERT_TRUE(waitUntil([this] { return panel()->panelFrame().width() == 640; }));
    EXPECT_TRUE(
        waitUntil([this] { return view().copyButton().keyHint() == QStringLiteral("Ctrl+C"); }));
    EXPECT_EQ(view().translateButton().keyHint(), QStringLiteral("Ctrl+Return"));
    EXPECT_EQ(view().copyButton().toolTip(), QString());
    installLocalization(nullptr);
}

TEST_F(ManualTranslationWindowTest, allThatStandsAtTheLeftEdgeIsInOneLine)
{
    open();
    type(QStringLiteral("one"));
    view().translateButton().click();
    answer.fail(TranslationError(TranslationError::Code::missingAPIKey));
    QApplication::processEvents();
    const auto left = [this](const QWidget* widget) {
        return widget->mapTo(&view(), widget->contentsRect().topLeft()).x();
    };
    int inLine = 0;
    for (const QLabel* label : view().findChildren<QLabel*>()) {
        if (label->isVisible() && left(label) < 40) {
            EXPECT_EQ(left(label), 20) << label->text().toStdString();
            ++inLine;
        }
    }
    for (const TextWell* well : view().findChildren<TextWell*>()) {
        EXPECT_EQ(left(well), 20);
    }
    // The title, the source, both sections, the symbol of the failure, the status.
    EXPECT_EQ(inLine, 6);
}

TEST_F(ManualTranslationWindowTest, keepsItsStateWhenTheLanguageChanges)
{
    installLocalization(&defaults);
    open();
    type(QStringLiteral("one"));
    view().pinButton().click();
    settings.setAppLanguage(AppLanguage::french);
    QEvent change(QEvent::LanguageChange);
    QApplication::sendEvent(&view(), &change);
    EXPECT_EQ(panel()->windowTitle(), QStringLiteral("Fenêtre de traduction"));
    EXPECT_EQ(view().sourceEditor().toPlainText(), QStringLiteral("one"));
    EXPECT_TRUE(panel()->isFloating());
    installLocalization(nullptr);
}

TEST_F(ManualTranslationWindowTest, savesItsPlaceWhenItMovesAndAgainWhenItCloses)
{
    open();
    panel()->setPanelOrigin({100, 120});
    ASSERT_TRUE(waitUntil([this] { return saved("zv.manualWindow.originX") == 100; }));
    origins.resetWindowOrigins();
    window.closeManualTranslationWindow();
    EXPECT_EQ(saved("zv.manualWindow.originX"), 100);
    EXPECT_EQ(saved("zv.manualWindow.originY"), 120);
}

TEST_F(ManualTranslationWindowTest, twoHundredOpeningsLeaveNothingBehind)
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto windowsBefore = QApplication::topLevelWidgets().size();
    for (int i = 0; i < 200; ++i) {
        window.showManualTranslationWindow();
        view().translateButton().click();
        window.closeManualTranslationWindow();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_EQ(QApplication::topLevelWidgets().size(), windowsBefore);
}

TEST_F(ManualTranslationWindowTest, everyControlHasAName)
{
    open();
    EXPECT_THAT(unnamedControls(*panel()), IsEmpty());
}

} // namespace
} // namespace zelvane::test
