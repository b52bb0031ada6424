#include "cli/EngineOptions.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using Verb = EngineOptions::Verb;

std::expected<EngineOptions, QString> parse(std::initializer_list<const char*> words)
{
    QStringList arguments;
    for (const char* word : words) {
        arguments << QString::fromUtf8(word);
    }
    return parseEngineOptions(arguments);
}

TEST(EngineOptions, nameAVerbAndAnEngine)
{
    const auto install = parse({"install", "smart"});
    ASSERT_TRUE(install);
    EXPECT_EQ(install->verb, Verb::install);
    EXPECT_EQ(install->engine, SmartOfflineVariant::hyMT2_7b);
    EXPECT_FALSE(install->json);
    EXPECT_EQ(parse({"cancel", "fast"})->verb, Verb::cancel);
    EXPECT_EQ(parse({"delete", "fast"})->verb, Verb::remove);
    EXPECT_EQ(parse({"status", "fast"})->verb, Verb::status);
    EXPECT_EQ(parse({"list"})->verb, Verb::list);
    EXPECT_TRUE(parse({"list", "--json"})->json);
    EXPECT_TRUE(parse({"status", "--json", "balanced"})->json);
}

TEST(EngineOptions, knowAnEngineByAnyOfItsNames)
{
    for (const char* name : {"smart", "SMART", "hymt2-7b", "smartOffline", "SmartOffline"}) {
        EXPECT_EQ(parse({"install", name})->engine, SmartOfflineVariant::hyMT2_7b) << name;
    }
    EXPECT_EQ(parse({"install", rawValue(AIProvider::smartOffline).toUtf8().constData()})->engine,
              SmartOfflineVariant::hyMT2_7b);
    EXPECT_EQ(parse({"install", "balanced"})->engine, SmartOfflineVariant::euroLLM_9b);
    EXPECT_EQ(parse({"install", "eurollm-9b"})->engine, SmartOfflineVariant::euroLLM_9b);
    EXPECT_EQ(parse({"install", "fast"})->engine, SmartOfflineVariant::lmt60_4b);
    EXPECT_EQ(parse({"install", "lmt60-4b"})->engine, SmartOfflineVariant::lmt60_4b);
}

TEST(EngineOptions, askForHelp)
{
    EXPECT_TRUE(parse({"--help"})->help);
    EXPECT_TRUE(parse({"-h"})->help);
    EXPECT_TRUE(parse({"install", "--help"})->help);
}

TEST(EngineOptions, saysWhatIsWrong)
{
    const auto complaint = [](std::initializer_list<const char*> words) {
        return parse(words).error().toStdString();
    };
    EXPECT_EQ(complaint({}), "engine needs one of list, install, cancel, delete and status");
    EXPECT_EQ(complaint({"remove"}), "unknown command \"engine remove\"");
    EXPECT_EQ(complaint({"install"}), "engine install needs one of smart, balanced and fast");
    EXPECT_EQ(complaint({"install", "smart", "fast"}),
              "engine install needs one of smart, balanced and fast");
    EXPECT_EQ(complaint({"install", "ChatGPT"}), "there is no engine \"ChatGPT\" on this machine");
    EXPECT_EQ(complaint({"status", ""}), "there is no engine \"\" on this machine");
    EXPECT_EQ(complaint({"list", "smart"}), "engine list takes no argument \"smart\"");
    EXPECT_EQ(complaint({"list", "--yaml"}), "unknown option \"--yaml\"");
}

} // namespace
} // namespace zelvane::test
