// What a screen reader finds in the program's windows, over a real accessibility bus.

#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QRegularExpression>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Element
{
    QString role;
    QString name;
    bool focused = false;
};

class ScreenReaderTest : public ::testing::Test
{
protected:
    ScreenReaderTest()
    {
        m_session.setVariable(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"),
                              QStringLiteral("1"));
    }

    /// Shows a window of the gallery and walks through it.
    [[nodiscard]] QList<Element> walk(const QString& scene)
    {
        QProcess& gallery =
            m_session.start(QStringLiteral(ZELVANE_GALLERY), {QStringLiteral("--hold"), scene});
        const auto outcome =
            m_session.run(QStringLiteral(ZELVANE_WALK_ACCESSIBLE), {QStringLiteral("gallery")});
        DesktopSession::kill(gallery);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
        QList<Element> elements;
        for (QString line : QString::fromUtf8(outcome.output).split(u'\n', Qt::SkipEmptyParts)) {
            const bool focused = line.endsWith(QStringLiteral(" *"));
            line.chop(focused ? 2 : 0);
            const QStringList fields = line.split(u'\t');
            elements.append({fields.value(0), fields.value(1), focused});
        }
        return elements;
    }

    /// Of elements that users act on or read.
    [[nodiscard]] static QStringList names(const QList<Element>& elements)
    {
        QStringList names;
        for (const Element& element : elements) {
            if (element.role != QStringLiteral("filler") &&
                element.role != QStringLiteral("graphic") &&
                element.role != QStringLiteral("label")) {
                names += element.role + QStringLiteral(": ") + element.name;
            }
        }
        return names;
    }

    [[nodiscard]] static QStringList unnamed(const QList<Element>& elements)
    {
        return names(elements).filter(QRegularExpression(QStringLiteral(": $")));
    }

    [[nodiscard]] static QStringList focusedControls(const QList<Element>& elements)
    {
        QStringList focused;
        for (const Element& element : elements) {
            if (element.focused && element.role != QStringLiteral("filler")) {
                focused += element.name;
            }
        }
        return focused;
    }

    DesktopSession m_session{{.windowManager = true, .sessionBus = true, .accessibilityBus = true}};
};

TEST_F(ScreenReaderTest, findsEverythingInThePopup)
{
    const auto elements = walk(QStringLiteral("popup-short"));
    EXPECT_THAT(names(elements),
                ElementsAre(QStringLiteral("dialog: Translation"),
                            QStringLiteral("push button: Close"), QStringLiteral("text: Original"),
                            QStringLiteral("text: Translation"),
                            QStringLiteral("push button: Copy")));
    EXPECT_THAT(focusedControls(elements), ElementsAre(QStringLiteral("Translation")));
}

TEST_F(ScreenReaderTest, findsEverythingInTheAlert)
{
    const auto elements = walk(QStringLiteral("alert-three"));
    EXPECT_THAT(names(elements), ElementsAre(QStringLiteral("alert message: Translation failed"),
                                             QStringLiteral("push button: Request Permission…"),
                                             QStringLiteral("push button: Relaunch Zelvane Desk"),
                                             QStringLiteral("push button: Cancel")));
    EXPECT_THAT(focusedControls(elements), ElementsAre(QStringLiteral("Request Permission…")));
}

TEST_F(ScreenReaderTest, findsEverythingInThePanelOfTheTray)
{
    const auto elements = walk(QStringLiteral("tray-panel"));
    EXPECT_THAT(names(elements), ElementsAre(QStringLiteral("dialog: Zelvane Desk"),
                                             QStringLiteral("push button: Translation Window"),
                                             QStringLiteral("push button: Settings"),
                                             QStringLiteral("push button: Quit")));
    QStringList texts;
    for (const Element& element : elements) {
        texts += element.name;
    }
    for (const char* text : {"Ready", "Any Language → English", "⌃⌥E", "—"}) {
        EXPECT_TRUE(texts.contains(QString::fromUtf8(text))) << text;
    }
    EXPECT_THAT(focusedControls(elements), ElementsAre(QStringLiteral("Translation Window")));
}

TEST_F(ScreenReaderTest, findsTheListOfALanguagePicker)
{
    const auto elements = walk(QStringLiteral("style-languages-search"));
    EXPECT_THAT(names(elements),
                ElementsAre(QStringLiteral("combo box: Target"), QStringLiteral("dialog: Target"),
                            QStringLiteral("text: Search or type custom…"),
                            QStringLiteral("push button: Clear"), QStringLiteral("list: Target"),
                            QStringLiteral("list item: Portuguese"),
                            QStringLiteral("list item: port")));
}

TEST_F(ScreenReaderTest, findsNothingWithoutANameInAForm)
{
    EXPECT_THAT(unnamed(walk(QStringLiteral("style-form"))), IsEmpty());
}

} // namespace
} // namespace zelvane::test
