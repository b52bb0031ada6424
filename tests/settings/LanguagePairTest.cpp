#include "settings/LanguagePair.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const QUuid someId = QUuid::fromString(u"{e621e1f8-c36c-495a-93fc-0c247a3e6e5f}");

TEST(LanguagePair, isStoredUnderItsMemberNames)
{
    const LanguagePair pair{someId,
                            false,
                            QStringLiteral("Any Language"),
                            QStringLiteral("German"),
                            KeyChord{17, 0x1800},
                            true,
                            QStringLiteral("Say \"{{text}}\"\n")};
    EXPECT_EQ(encodePairs({pair}),
              QByteArray(R"([{"customPrompt":"Say \"{{text}}\"\n","enabled":false,)"
                         R"("hotKey":{"carbonModifiers":6144,"keyCode":17},)"
                         R"("id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F",)"
                         R"("source":"Any Language","target":"German","useCustomPrompt":true}])"));
    EXPECT_EQ(decodePairs(encodePairs({pair})), QList<LanguagePair>{pair});
}

TEST(LanguagePair, withoutAShortcutIsStoredWithoutTheMember)
{
    EXPECT_FALSE(encodePairs({pairFromAnyLanguage(QStringLiteral("Polish"))}).contains("hotKey"));
}

TEST(LanguagePair, loadsWithoutTheOptionalMembers)
{
    const auto pairs = decodePairs(
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"a","target":"b"},)"
        R"({"id":"00000000-0000-0000-0000-000000000000","enabled":true,"source":"","target":"",)"
        R"("hotKey":null,"useCustomPrompt":null,"customPrompt":null,"later":[1]}])");
    ASSERT_TRUE(pairs.has_value());
    EXPECT_EQ(pairs->at(0), (LanguagePair{someId, true, QStringLiteral("a"), QStringLiteral("b"),
                                          std::nullopt, false, QString()}));
    EXPECT_EQ(pairs->at(1),
              (LanguagePair{QUuid(), true, QString(), QString(), std::nullopt, false, QString()}));
}

class DamagedPairs : public ::testing::TestWithParam<const char*>
{
};

TEST_P(DamagedPairs, makeTheWholeListUndecodable)
{
    EXPECT_EQ(decodePairs(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    LanguagePair, DamagedPairs,
    ::testing::Values(
        R"([{"enabled":true,"source":"a","target":"b"}])",
        R"([{"id":"nonsense","enabled":true,"source":"a","target":"b"}])",
        R"([{"id":"{e621e1f8-c36c-495a-93fc-0c247a3e6e5f}","enabled":true,"source":"a","target":"b"}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","source":"a","target":"b"}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":1,"source":"a","target":"b"}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"target":"b"}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"a","target":null}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"a","target":"b",)"
        R"("hotKey":{"keyCode":17}}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"a","target":"b",)"
        R"("useCustomPrompt":"yes"}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"a","target":"b",)"
        R"("customPrompt":1}])",
        R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"a","target":"b"},)"
        R"(7])",
        R"({"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"a","target":"b"})",
        "[", "", "null"));

TEST(LanguagePair, listOfNoneIsAList)
{
    EXPECT_EQ(decodePairs("[]"), QList<LanguagePair>());
}

TEST(LanguagePair, isLabelledByBothShortCodes)
{
    const auto label = [](const QString& source, const QString& target) {
        LanguagePair pair;
        pair.source = source;
        pair.target = target;
        return pairLabel(pair);
    };
    EXPECT_EQ(label(QStringLiteral("Any Language"), QStringLiteral("German")),
              QStringLiteral("ANY-DE"));
    EXPECT_EQ(label(QStringLiteral("English (UK)"), QStringLiteral("Montenegrin")),
              QStringLiteral("EN-GB-CNR"));
    EXPECT_EQ(label(QString(), QStringLiteral("quenya")), QStringLiteral("?-QU"));
}

TEST(DefaultPairs, leadToEnglishAndToTheLanguageOfTheUser)
{
    const QList<LanguagePair> pairs = defaultPairs(QStringLiteral("German"));
    ASSERT_EQ(pairs.size(), 2);
    for (const LanguagePair& pair : pairs) {
        EXPECT_FALSE(pair.id.isNull());
        EXPECT_TRUE(pair.enabled);
        EXPECT_EQ(pair.source, QStringLiteral("Any Language"));
        EXPECT_EQ(pair.hotKey, std::nullopt);
        EXPECT_FALSE(pair.useCustomPrompt);
        EXPECT_EQ(pair.customPrompt, QString());
    }
    EXPECT_NE(pairs[0].id, pairs[1].id);
    EXPECT_EQ(pairs[0].target, QStringLiteral("English (US)"));
    EXPECT_EQ(pairs[1].target, QStringLiteral("German"));
}

TEST(DefaultPairs, areOneForAnAmericanAndTwoForABriton)
{
    EXPECT_EQ(defaultPairs(QStringLiteral("English (US)")).size(), 1);
    EXPECT_EQ(defaultPairs(QStringLiteral("english (us)")).size(), 1);
    EXPECT_EQ(defaultPairs(QStringLiteral("English (UK)")).size(), 2);
}

} // namespace
} // namespace zelvane::test
