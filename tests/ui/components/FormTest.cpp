#include "ui/components/Form.h"

#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/components/Picker.h"
#include "ui/components/Switch.h"

#include <gmock/gmock.h>

#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

class FormTest : public UiTest
{
protected:
    [[nodiscard]] static int lines(Card& card)
    {
        const QImage image = card.grab().toImage();
        int found = 0;
        for (int y = 4; y < image.height() - 4; ++y) {
            found += image.pixelColor(40, y) != image.pixelColor(40, y - 1) &&
                             image.pixelColor(40, y) != image.pixelColor(40, y + 1)
                         ? 1
                         : 0;
        }
        return found;
    }
};

TEST_F(FormTest, rowNamesItsControlAndRenamesItWithTheLanguage)
{
    FormRow row(theme);
    auto* control = new Switch(theme);
    row.addControl(control);
    row.setTitle(QStringLiteral("Auto-replace translated text"));
    row.setNote(QStringLiteral("At once."));
    EXPECT_EQ(control->accessibleName(), QStringLiteral("Auto-replace translated text"));
    EXPECT_EQ(control->accessibleDescription(), QStringLiteral("At once."));
    row.setTitle(QStringLiteral("Text ersetzen"));
    EXPECT_EQ(control->accessibleName(), QStringLiteral("Text ersetzen"));
}

TEST_F(FormTest, rowNamesNoMereText)
{
    FormRow row(theme);
    auto* text = new ThemedLabel(theme, StyleFontRole::body, TextTone::success);
    auto* control = new Switch(theme);
    row.addControl(text);
    row.addControl(control);
    row.setTitle(QStringLiteral("Start at login"));
    EXPECT_EQ(text->accessibleName(), QString());
    EXPECT_EQ(control->accessibleName(), QStringLiteral("Start at login"));
}

TEST_F(FormTest, rowLeavesAControlItsOwnName)
{
    FormRow row(theme);
    row.setTitle(QStringLiteral("API Key status"));
    auto* button = new TextButton(theme, ControlKind::bordered);
    button->setText(QStringLiteral("Edit Key"));
    row.addControl(button);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name),
              QStringLiteral("Edit Key"));
}

TEST_F(FormTest, aClickOnTheTextOfARowTurnsItsSwitch)
{
    FormRow row(theme);
    row.setTitle(QStringLiteral("Auto-replace"));
    auto* control = new Switch(theme);
    row.addControl(control);
    row.resize(400, 44);
    row.show();
    QTest::mouseClick(&row, Qt::LeftButton, {}, QPoint(30, 22));
    EXPECT_TRUE(control->isChecked());
    control->setEnabled(false);
    QTest::mouseClick(&row, Qt::LeftButton, {}, QPoint(30, 22));
    EXPECT_TRUE(control->isChecked());
}

TEST_F(FormTest, cardHasALineBetweenTheRowsThatShow)
{
    Card card(theme);
    QList<QWidget*> rows;
    for (int i = 0; i < 3; ++i) {
        auto* row = new QWidget;
        row->setFixedHeight(30);
        card.addRow(row);
        rows.append(row);
    }
    card.resize(200, 100);
    card.show();
    EXPECT_EQ(lines(card), 2);
    rows[0]->hide();
    QApplication::processEvents();
    EXPECT_EQ(lines(card), 1);
    rows[1]->hide();
    QApplication::processEvents();
    EXPECT_EQ(lines(card), 0);
}

TEST_F(FormTest, sectionIsAGroupOfItsTitle)
{
    Section section(theme);
    section.setTitle(QStringLiteral("Behavior"));
    section.setNote(QStringLiteral("How it acts."));
    const auto* element = QAccessible::queryAccessibleInterface(&section);
    EXPECT_EQ(element->role(), QAccessible::Grouping);
    EXPECT_EQ(element->text(QAccessible::Name), QStringLiteral("Behavior"));
    EXPECT_EQ(element->text(QAccessible::Description), QStringLiteral("How it acts."));
}

TEST_F(FormTest, longNotesWrapInsteadOfWideningTheForm)
{
    Section section(theme);
    section.setNote(QStringLiteral("Press once to replace the selected text. ").repeated(8));
    auto* row = new FormRow(theme);
    row->setTitle(QStringLiteral("Donaudampfschifffahrtsgesellschaft "));
    row->setNote(QStringLiteral("A note that goes on and on. ").repeated(8));
    row->addControl(new Switch(theme));
    section.card().addRow(row);
    section.resize(300, section.heightForWidth(300));
    section.show();
    EXPECT_LE(section.minimumSizeHint().width(), 300);
    EXPECT_GT(section.height(), 200);
}

TEST_F(FormTest, progressRowTellsTheShareAndTheCancellation)
{
    ProgressRow row(theme);
    row.setMessage(QStringLiteral("Installing…"));
    row.setFraction(0.416);
    row.setCancelText(QStringLiteral("Cancel"));
    int cancellations = 0;
    QObject::connect(&row, &ProgressRow::cancelRequested, &row, [&] { ++cancellations; });
    row.cancelButton().click();
    EXPECT_EQ(cancellations, 1);
    QStringList texts;
    for (const QLabel* label : row.findChildren<QLabel*>()) {
        texts += label->text();
    }
    EXPECT_TRUE(texts.contains(QStringLiteral("41%"))) << texts.join(u'|').toStdString();
    const auto* bar = row.findChild<ProgressBar*>();
    EXPECT_EQ(bar->value(), 416);
    EXPECT_EQ(bar->accessibleName(), QStringLiteral("Installing…"));
    row.setPercentage(QStringLiteral("38%"));
    EXPECT_EQ(bar->value(), 416);
    texts.clear();
    for (const QLabel* label : row.findChildren<QLabel*>()) {
        texts += label->text();
    }
    EXPECT_TRUE(texts.contains(QStringLiteral("38%"))) << texts.join(u'|').toStdString();
    row.setFraction(std::nullopt);
    EXPECT_EQ(bar->maximum(), 0);
}

/// The timers of `object`, to see that what is out of sight costs nothing.
class TimerCount final : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Timer ? 1 : 0;
        return false;
    }

    int count = 0;
};

TEST_F(FormTest, movingPartsRestWhileTheyCannotBeSeenAndWhereMotionIsUnwanted)
{
    ProgressBar bar(theme);
    Spinner wheel(theme);
    bar.setFraction(std::nullopt);
    for (QWidget* widget : QList<QWidget*>{&bar, &wheel}) {
        TimerCount timers;
        widget->installEventFilter(&timers);
        QTest::qWait(150);
        EXPECT_EQ(timers.count, 0);
        widget->show();
        EXPECT_TRUE(waitUntil([&] { return timers.count > 0; }));
        appearance.setReducedMotion(true);
        timers.count = 0;
        QTest::qWait(150);
        EXPECT_EQ(timers.count, 0);
        appearance.setReducedMotion(false);
        EXPECT_TRUE(waitUntil([&] { return timers.count > 0; }));
        widget->hide();
        timers.count = 0;
        QTest::qWait(150);
        EXPECT_EQ(timers.count, 0);
    }
}

TEST_F(FormTest, lightSaysItsStateInWords)
{
    StatusLight light(theme);
    light.setState(StatusLight::State::warning, QStringLiteral("Permission not granted"));
    EXPECT_EQ(light.accessibleName(), QStringLiteral("Permission not granted"));
}

} // namespace
} // namespace zelvane::test
