#include "ui/result/ResultPopup.h"

#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/components/FocusRing.h"
#include "ui/gallery/Texts.h"

#include <gmock/gmock.h>

#include <QClipboard>
#include <QScrollBar>
#include <QTextBlock>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
namespace texts = gallery::texts;

class ResultPopupTest : public UiTest
{
protected:
    ~ResultPopupTest() override { popup.closeTranslationResult(); }

    void present(const QString& original = QStringLiteral("Hello"),
                 const QString& translated = QStringLiteral("Hallo"))
    {
        popup.presentTranslationResult(original, translated, QStringLiteral("total 12 ms"));
        ASSERT_NE(panel(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(panel()));
    }

    [[nodiscard]] TranslatorKeyablePanel* panel() const { return popup.panel(); }

    [[nodiscard]] QList<TextWell*> wells() const { return panel()->findChildren<TextWell*>(); }

    [[nodiscard]] TextButton* copyButton() const { return panel()->findChild<TextButton*>(); }

    [[nodiscard]] double saved(const char* key) const
    {
        return defaults.number(QString::fromLatin1(key)).value_or(-1);
    }

    ResultPopup popup{theme, windows, origins, settings};
};

TEST_F(ResultPopupTest, showsBothTextsAndKeepsTheDiagnostics)
{
    present(QStringLiteral("Hello <b>you</b>"), QStringLiteral("Hallo\ndu"));
    ASSERT_EQ(wells().size(), 2);
    EXPECT_EQ(wells()[0]->editor().toPlainText(), QStringLiteral("Hello <b>you</b>"));
    EXPECT_EQ(wells()[1]->editor().toPlainText(), QStringLiteral("Hallo\ndu"));
    EXPECT_EQ(popup.model()->result().diagnostics, QStringLiteral("total 12 ms"));
}

TEST_F(ResultPopupTest, staysAboveOtherWindowsAndOutOfTheTaskbar)
{
    present();
    EXPECT_TRUE(panel()->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(panel()->windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(panel()->windowType(), Qt::Tool);
    EXPECT_FALSE(panel()->promotesDockIcon());
    ASSERT_FALSE(windows.described.isEmpty());
    EXPECT_TRUE(windows.described.constLast().skipsTaskbar);
}

TEST_F(ResultPopupTest, escClosesItEvenFromATextArea)
{
    for (int i = 0; i < 2; ++i) {
        present();
        wells()[i]->editor().setFocus(Qt::MouseFocusReason);
        QTest::keyClick(&wells()[i]->editor(), Qt::Key_Escape);
        EXPECT_EQ(panel(), nullptr);
    }
}

TEST_F(ResultPopupTest, escClosesItFromAnotherWindowOfTheProgram)
{
    present();
    QWidget other;
    other.show();
    QTest::keyClick(&other, Qt::Key_Escape);
    EXPECT_EQ(panel(), nullptr);
}

TEST_F(ResultPopupTest, escIsLeftToADialogInFront)
{
    present();
    QWidget dialog(nullptr, Qt::Dialog);
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_NE(panel(), nullptr);
}

TEST_F(ResultPopupTest, otherKeysPass)
{
    present();
    QTest::keyClick(panel(), Qt::Key_A);
    EXPECT_NE(panel(), nullptr);
}

TEST_F(ResultPopupTest, closesByItsButtonAndByTheWindowManager)
{
    present();
    QTest::mouseClick(panel()->findChild<IconButton*>(), Qt::LeftButton);
    EXPECT_EQ(panel(), nullptr);
    present();
    panel()->close();
    EXPECT_EQ(panel(), nullptr);
}

TEST_F(ResultPopupTest, leavesNoWindowBehind)
{
    present();
    const QPointer<TranslatorKeyablePanel> gone = panel();
    popup.closeTranslationResult();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(gone.isNull());
}

TEST_F(ResultPopupTest, copyPutsTheTranslationOnTheClipboardAndSaysSo)
{
    QGuiApplication::clipboard()->clear();
    present();
    EXPECT_EQ(copyButton()->text(), QStringLiteral("Copy"));
    QTest::mouseClick(copyButton(), Qt::LeftButton);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("Hallo"));
    EXPECT_EQ(copyButton()->text(), QStringLiteral("Copied"));
    EXPECT_EQ(copyButton()->accessibleName(), QStringLiteral("Copied"));
    QStringList shown;
    for (const auto* label : panel()->findChildren<QLabel*>()) {
        shown += label->text();
    }
    EXPECT_TRUE(shown.contains(QStringLiteral("Copied")));
}

TEST_F(ResultPopupTest, copiesByReturnAndByTheCopyKeys)
{
    for (const auto press :
         {+[](QWidget* w) { QTest::keyClick(w, Qt::Key_Return); },
          +[](QWidget* w) { QTest::keyClick(w, Qt::Key_C, Qt::ControlModifier); }}) {
        QGuiApplication::clipboard()->clear();
        present();
        press(panel()->focusWidget());
        EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("Hallo"));
    }
}

TEST_F(ResultPopupTest, copyKeysTakeASelectionWhereThereIsOne)
{
    present();
    QPlainTextEdit& original = wells()[0]->editor();
    original.setFocus(Qt::MouseFocusReason);
    original.selectAll();
    QTest::keyClick(&original, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("Hello"));
    EXPECT_FALSE(popup.model()->copied());
}

TEST_F(ResultPopupTest, shortTextsGetTheMinimalHeightInTheMiddleOfTheScreen)
{
    present();
    EXPECT_EQ(panel()->panelFrame(), QRect(540, 380, 520, 280));
}

TEST_F(ResultPopupTest, longTextsKeepTheSectionLimitAndScroll)
{
    present(texts::longEnglish().repeated(20), texts::hindi().repeated(20));
    for (TextWell* well : wells()) {
        EXPECT_EQ(well->height(), 140);
        EXPECT_GT(well->editor().verticalScrollBar()->maximum(), 0);
    }
    EXPECT_GT(panel()->panelFrame().height(), 280);
}

TEST_F(ResultPopupTest, showsAMegabyteOfAnythingWithinItsLimits)
{
    const QString control = QStringLiteral("\u202Etfel\u202C \u2067x\u2069") + QChar(0xDC00) +
                            QChar(u'\0') + QStringLiteral("word ");
    const QString text = control.repeated(1'000'000 / control.size());
    QGuiApplication::clipboard()->clear();
    present(text, text);
    EXPECT_EQ(panel()->panelFrame().width(), 520);
    for (TextWell* well : wells()) {
        EXPECT_EQ(well->height(), 140);
        EXPECT_TRUE(well->text() == text);
    }
    QTest::mouseClick(copyButton(), Qt::LeftButton);
    EXPECT_TRUE(QGuiApplication::clipboard()->text() == text);
}

TEST_F(ResultPopupTest, twoHundredOfThemLeaveNothingBehind)
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto windowsBefore = QApplication::topLevelWidgets().size();
    for (int i = 0; i < 200; ++i) {
        popup.presentTranslationResult(QStringLiteral("Hello"), QStringLiteral("Hallo"), {});
        popup.closeTranslationResult();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_EQ(QApplication::topLevelWidgets().size(), windowsBefore);
    EXPECT_EQ(popup.findChildren<QObject*>().size(), 0);
}

TEST_F(ResultPopupTest, isAsWideAsTheChosenSizeAndTheTokenSay)
{
    settings.setResultWindowSize(TranslationWindowSize::large);
    SheetLayoutTokens sheets = tokens.sheets();
    sheets.resultWidth = 480;
    tokens.setSheets(sheets);
    present();
    EXPECT_EQ(panel()->panelFrame().width(), 640);
}

TEST_F(ResultPopupTest, aNewSizeAppliesAtOnceAndCentres)
{
    present(texts::longEnglish(), texts::longGerman());
    panel()->setPanelOrigin({5, 50});
    settings.setResultWindowSize(TranslationWindowSize::small);
    ASSERT_TRUE(waitUntil([&] { return panel()->panelFrame().width() == 460; }));
    const QRect frame = panel()->panelFrame();
    EXPECT_EQ(frame.x(), (1600 - 460) / 2);
    for (TextWell* well : wells()) {
        EXPECT_LE(well->height(), 115);
    }
}

TEST_F(ResultPopupTest, remembersItsPlaceOnlyWhenItCloses)
{
    present();
    panel()->setPanelOrigin({200, 300});
    EXPECT_EQ(saved("zv.resultWindow.originX"), -1);
    popup.closeTranslationResult();
    EXPECT_EQ(saved("zv.resultWindow.originX"), 200);
    EXPECT_EQ(saved("zv.resultWindow.originY"), 300);
}

TEST_F(ResultPopupTest, aSecondOneSavesThePlaceOfTheFirstAndOpensThere)
{
    present();
    const QPointer<TranslatorKeyablePanel> first = panel();
    panel()->setPanelOrigin({200, 300});
    present(QStringLiteral("Bye"), QStringLiteral("Tschüss"));
    EXPECT_TRUE(!first || !first->isVisible());
    EXPECT_EQ(saved("zv.resultWindow.originX"), 200);
    EXPECT_EQ(panel()->panelFrame().topLeft(), QPoint(200, 300));
    EXPECT_EQ(wells()[1]->editor().toPlainText(), QStringLiteral("Tschüss"));
}

TEST_F(ResultPopupTest, opensOnTheScreenThoughItWasLeftOutsideOfIt)
{
    origins.saveWindowOrigin(WindowKind::result, 4000, -500);
    present();
    EXPECT_EQ(panel()->panelFrame().topLeft(), QPoint(1600 - 520, 40));
}

TEST_F(ResultPopupTest, keepsItsPlaceWhenTheCompositorComesAndGoes)
{
    present();
    panel()->setPanelOrigin({200, 300});
    const QRect frame = panel()->panelFrame();
    EXPECT_EQ(panel()->geometry(), frame);
    appearance.setCompositing(true);
    EXPECT_EQ(panel()->panelFrame(), frame);
    EXPECT_TRUE(panel()->geometry().contains(frame.adjusted(-20, -15, 20, 20)));
    EXPECT_NE(windows.described.constLast().shadow, QMargins());
    appearance.setCompositing(false);
    EXPECT_EQ(panel()->geometry(), frame);
    EXPECT_EQ(windows.described.constLast().shadow, QMargins());
}

TEST_F(ResultPopupTest, describesItselfAnewWhenItGrows)
{
    present();
    const auto descriptions = windows.described.size();
    settings.setResultWindowSize(TranslationWindowSize::extraLarge);
    ASSERT_TRUE(waitUntil([&] { return panel()->panelFrame().width() == 800; }));
    EXPECT_TRUE(waitUntil([&] { return windows.described.size() > descriptions; }));
}

TEST_F(ResultPopupTest, asksForBlurWhereThePanelLetsThrough)
{
    QList<QRegion> requests;
    appearance.setBlur([&](QWindow&, const QRegion& region) { requests.append(region); });
    appearance.setCompositing(true);
    present();
    EXPECT_TRUE(requests.constLast().isEmpty());
    appearance.setBlursBehind(true);
    const QRect inner = panel()->panelFrame().translated(-panel()->pos());
    EXPECT_EQ(requests.constLast().boundingRect(), inner);
    EXPECT_FALSE(requests.constLast().contains(inner.topLeft()));
    const QImage glass = panel()->grab().toImage();
    EXPECT_LT(glass.pixelColor(inner.topLeft() + QPoint(60, 8)).alpha(), 250);
    appearance.setReducedTransparency(true);
    EXPECT_TRUE(requests.constLast().isEmpty());
    EXPECT_EQ(panel()->grab().toImage().pixelColor(inner.topLeft() + QPoint(60, 8)).alpha(), 255);
}

TEST_F(ResultPopupTest, takesTheKeyboardAndGivesItBack)
{
    present();
    EXPECT_EQ(windows.activations, 1);
    EXPECT_EQ(panel()->focusWidget(), &wells()[1]->editor());
    popup.closeTranslationResult();
    EXPECT_THAT(windows.givenBack, ElementsAre(77));
}

TEST_F(ResultPopupTest, oneThatReplacesAnotherGivesTheKeyboardToTheFirstLender)
{
    present();
    windows.foreign = 0; // the popup itself is in front now
    present();
    EXPECT_TRUE(windows.givenBack.isEmpty());
    popup.closeTranslationResult();
    EXPECT_THAT(windows.givenBack, ElementsAre(77));
}

TEST_F(ResultPopupTest, leavesTheKeyboardWhereTheUserHasTakenIt)
{
    present();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    popup.closeTranslationResult();
    EXPECT_TRUE(windows.givenBack.isEmpty());
}

TEST_F(ResultPopupTest, closingWithoutAPopupDoesNothing)
{
    popup.closeTranslationResult();
    popup.resizeTranslationResult();
    EXPECT_EQ(saved("zv.resultWindow.originX"), -1);
}

TEST_F(ResultPopupTest, namesEveryControlForScreenReaders)
{
    present();
    EXPECT_EQ(unnamedControls(*panel()).join(u' ').toStdString(), "");
    EXPECT_THAT(controlNames(*panel()),
                ElementsAre(QStringLiteral("Translation"), QStringLiteral("Close"),
                            QStringLiteral("Original"), QStringLiteral("Translation"),
                            QStringLiteral("Copy")));
}

TEST_F(ResultPopupTest, tabReachesEveryControlWithAVisibleRing)
{
    present();
    const auto* ring = panel()->findChild<FocusRing*>();
    EXPECT_FALSE(ring->isVisible());
    QStringList visited;
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(panel()->focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(ring->isVisible());
        ASSERT_NE(ring->target(), nullptr);
        EXPECT_TRUE(ring->geometry().contains(
            QRect(ring->target()->mapTo(panel(), QPoint()), ring->target()->size())));
        visited += panel()->focusWidget()->accessibleName();
    }
    EXPECT_THAT(visited, ElementsAre(QStringLiteral("Copy"), QStringLiteral("Close"),
                                     QStringLiteral("Original"), QStringLiteral("Translation")));
    QTest::mouseClick(wells()[0]->editor().viewport(), Qt::LeftButton);
    EXPECT_FALSE(ring->isVisible());
}

TEST_F(ResultPopupTest, followsLightAndDarkWhileItIsOpen)
{
    present();
    const QColor light = panel()->grab().toImage().pixelColor(10, 10);
    appearance.setColorScheme(ColorScheme::dark);
    const QColor dark = panel()->grab().toImage().pixelColor(10, 10);
    EXPECT_GT(light.lightness(), 200);
    EXPECT_LT(dark.lightness(), 60);
}

TEST_F(ResultPopupTest, rightToLeftTextBeginsAtTheRight)
{
    present(QStringLiteral("Hello"), texts::arabic());
    const QPlainTextEdit& editor = wells()[1]->editor();
    EXPECT_EQ(editor.document()->firstBlock().textDirection(), Qt::RightToLeft);
    EXPECT_EQ(editor.horizontalScrollBar()->value(), 0);
    EXPECT_EQ(editor.horizontalScrollBar()->maximum(), 0);
}

} // namespace
} // namespace zelvane::test
