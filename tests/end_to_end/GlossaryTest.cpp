// Word lists and the program's own binary: dictionaries instead of an engine.

#include "end_to_end/CommandFixture.h"
#include "end_to_end/ZelvaneSession.h"
#include "glossary/GlossaryDirection.h"
#include "settings/FileSystemLocations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

const char* const englishToGerman = "apple\tApfel\t30.0\n"
                                    "ice cream\tEis|Speiseeis\t30.0\n"
                                    "bank\tBank|Ufer\t12.0\n"
                                    "house\tHaus\t30.0\n";

/// Installs a dictionary in a profile, as a file in its place.
void install(const QString& profile, const QString& direction, const QByteArray& content)
{
    const QString support = ProfileLocations(profile).applicationSupportDirectory();
    ASSERT_TRUE(QDir().mkpath(glossaryFolder(support)));
    QFile file(glossaryFile(support, direction));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

class GlossaryEndToEnd : public ::testing::Test
{
protected:
    GlossaryEndToEnd()
    {
        session.desktop.setVariable(QStringLiteral("ZELVANE_API_KEY"), QString());
        session.zelvane({QStringLiteral("defaults"), QStringLiteral("write"),
                         QStringLiteral("zv.provider"), QStringLiteral("Smart Offline")});
        install(session.desktop.home() + QStringLiteral("/profile"), QStringLiteral("en-de"),
                englishToGerman);
        session.setClipboard("the user's own");
        session.start();
    }

    ZelvaneSession session;
};

TEST_F(GlossaryEndToEnd, replacesAWordListWithoutKeyModelOrServer)
{
    session.openEditor("1. apple\n  House\n\nice  cream\n");
    session.key(ZelvaneSession::toGerman);
    const std::string report = session.waitForReport().toStdString();
    EXPECT_THAT(report, HasSubstr("request ready · Smart Offline / "));
    EXPECT_THAT(report, HasSubstr("glossary · 3 hits"));
    EXPECT_THAT(report, HasSubstr("replaced: true"));
    EXPECT_EQ(session.editorText(), "1. Apfel\n  Haus\n\nEis");
    EXPECT_TRUE(session.clipboardBecomes("the user's own"));
    EXPECT_THAT(session.askedTexts(), IsEmpty());
}

TEST_F(GlossaryEndToEnd, leavesTheTextAloneIfALineNeedsAMissingEngine)
{
    session.openEditor("apple\nthe bank by the river\n");
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(QStringLiteral("^Translation failed$"));
    EXPECT_TRUE(session.clipboardBecomes("the user's own"));
    session.key("Return");
    session.waitUntilGone(QStringLiteral("^Translation failed$"));
    session.desktop.focusWindow(session.desktop.waitForWindow(QStringLiteral("letter.txt")));
    EXPECT_EQ(session.unchangedEditorText(), "apple\nthe bank by the river");
}

class GlossaryCommands : public Commands
{
protected:
    GlossaryCommands()
    {
        environment.remove(QStringLiteral("ZELVANE_API_KEY"));
        install(home.filePath(QStringLiteral("profile")), QStringLiteral("en-de"), englishToGerman);
    }
};

TEST_F(GlossaryCommands, translateAWordListWithAnEngineOfThisMachine)
{
    const Ended ended = run({"translate", "--from", "English", "--to", "German", "--engine",
                             "smartoffline", "--trace", "-"},
                            "2. house\napple\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "2. Haus\nApfel\n");
    EXPECT_THAT(ended.errors, HasSubstr("glossary · 2 hits"));
}

TEST_F(GlossaryCommands, translateSaysThatTheEngineIsMissingForWhatTheDictionaryHasHintsForOnly)
{
    const Ended ended = run({"translate", "--from", "English", "--to", "German", "--engine",
                             "smartoffline", "--trace", "bank"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("is not installed"));
    EXPECT_THAT(ended.errors, HasSubstr("glossary · 1 hits"));
}

TEST_F(GlossaryCommands, translateLooksIntoNoDictionaryForOtherEngines)
{
    environment.insert(QStringLiteral("ZELVANE_API_KEY"), QStringLiteral("command-key"));
    answer("Wohnhaus");
    const Ended ended =
        run({"translate", "--from", "English", "--to", "German", "--trace", "house"});
    EXPECT_EQ(ended.output, "Wohnhaus\n");
    EXPECT_THAT(ended.errors, ::testing::Not(HasSubstr("glossary")));
}

} // namespace
} // namespace zelvane::test
