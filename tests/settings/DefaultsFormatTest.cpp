#include "settings/DefaultsFormat.h"

#include <gtest/gtest.h>

#include <limits>

namespace zelvane::test {
namespace {

TEST(DefaultsFormat, writesAMemberInEachLineSortedByKey)
{
    const DefaultsContents contents{
        {QStringLiteral("b"), DefaultsValue(true)},
        {QStringLiteral("a"), DefaultsValue(QStringLiteral("say \"ä\"\n"))},
        {QStringLiteral("d"), DefaultsValue(QByteArray("\x00\xff", 2))},
        {QStringLiteral("c"), DefaultsValue(qint64(-1))},
        {QStringLiteral("e"), DefaultsValue(1.0)},
        {QStringLiteral("f"), ForeignValue{"{\"x\": [1,  2.50]}"}},
    };
    EXPECT_EQ(encodeDefaults(contents), QByteArray("{\n"
                                                   "  \"a\": \"say \\\"ä\\\"\\n\",\n"
                                                   "  \"b\": true,\n"
                                                   "  \"c\": -1,\n"
                                                   "  \"d\": {\"data\": \"AP8=\"},\n"
                                                   "  \"e\": 1.0,\n"
                                                   "  \"f\": {\"x\": [1,  2.50]}\n"
                                                   "}\n"));
    EXPECT_EQ(decodeDefaults(encodeDefaults(contents)), contents);
}

TEST(DefaultsFormat, writesNothingAsAnEmptyObject)
{
    EXPECT_EQ(encodeDefaults({}), QByteArray("{\n}\n"));
    EXPECT_EQ(decodeDefaults("{\n}\n"), DefaultsContents());
    EXPECT_EQ(decodeDefaults(" {} "), DefaultsContents());
}

class RoundTrip : public ::testing::TestWithParam<DefaultsValue>
{
};

TEST_P(RoundTrip, keepsValueAndType)
{
    const DefaultsContents contents{{QStringLiteral("k"), GetParam()}};
    EXPECT_EQ(decodeDefaults(encodeDefaults(contents)), contents)
        << encodeDefaults(contents).constData();
}

INSTANTIATE_TEST_SUITE_P(
    DefaultsFormat, RoundTrip,
    ::testing::Values(
        DefaultsValue(true), DefaultsValue(false), DefaultsValue(qint64(0)),
        DefaultsValue(qint64(1)), DefaultsValue(std::numeric_limits<qint64>::max()),
        DefaultsValue(std::numeric_limits<qint64>::min()), DefaultsValue(qint64(9007199254740993)),
        DefaultsValue(1.0), DefaultsValue(0.0), DefaultsValue(-2.0), DefaultsValue(0.1),
        DefaultsValue(1e300), DefaultsValue(1e21), DefaultsValue(5e-324),
        DefaultsValue(1234567890123456789.0), DefaultsValue(QString()),
        DefaultsValue(QStringLiteral("{\"data\": \"AA==\"}")),
        DefaultsValue(QStringLiteral("back\\slash \"quote\" , } ]\n\t\u2028 👨‍👩‍👧")),
        DefaultsValue(QString(QChar(0))), DefaultsValue(QString(QChar(0xd800))),
        DefaultsValue(QByteArray()), DefaultsValue(QByteArray("\xff\x00\n", 3))));

TEST(DefaultsFormat, tellsWholeNumbersFromDoubles)
{
    const auto read = [](const char* number) {
        const auto contents = decodeDefaults("{\"k\":" + QByteArray(number) + "}");
        return contents->value(QStringLiteral("k"));
    };
    EXPECT_EQ(read("1"), StoredValue(qint64(1)));
    EXPECT_EQ(read("1.0"), StoredValue(1.0));
    EXPECT_EQ(read("1e0"), StoredValue(1.0));
    EXPECT_EQ(read("1E2"), StoredValue(100.0));
    EXPECT_EQ(read("9223372036854775807"), StoredValue(qint64(9223372036854775807)));
}

TEST(DefaultsFormat, keepsWhatItDoesNotKnowByteForByte)
{
    for (const char* json : {"null", "[1, 2]", "{}", "{\"data\": 1}", "{\"data\": \"not base64!\"}",
                             "{\"data\": \"AA==\", \"type\": \"x\"}", "{\"date\": \"2030-01-01\"}",
                             "9223372036854775808", "-170141183460469231731687303715884105728",
                             R"({"deep": [{"a": "},]\""}, 1.50, 1e0]})"}) {
        const auto contents = decodeDefaults("{\"k\" : " + QByteArray(json) + " , \"l\":1}");
        ASSERT_TRUE(contents) << json;
        EXPECT_EQ(contents->value(QStringLiteral("k")), StoredValue(ForeignValue{json}));
        EXPECT_EQ(contents->value(QStringLiteral("l")), StoredValue(qint64(1)));
        EXPECT_EQ(decodeDefaults(encodeDefaults(*contents)), contents);
    }
}

TEST(DefaultsFormat, readsKeysWithEscapes)
{
    EXPECT_EQ(decodeDefaults(R"({"a\"\u00e4\\":true})"),
              (DefaultsContents{{QStringLiteral("a\"ä\\"), DefaultsValue(true)}}));
}

TEST(DefaultsFormat, takesTheLastOfTwoMembersOfOneKey)
{
    EXPECT_EQ(decodeDefaults(R"({"k":1,"k":2})"),
              (DefaultsContents{{QStringLiteral("k"), DefaultsValue(qint64(2))}}));
}

TEST(DefaultsFormat, readsNothingButAJsonObject)
{
    for (const char* bytes :
         {"", " ", "null", "[]", "1", "{", "{\"a\":1", "{\"a\":1}x", "{\"a\":1,}", "{a:1}",
          "{\"a\":01}", "{\"\xff\":1}", "{\"a\":\"\n\"}}"}) {
        EXPECT_EQ(decodeDefaults(bytes), std::nullopt) << bytes;
    }
    EXPECT_EQ(decodeDefaults(QByteArray(100, '\0')), std::nullopt);
    EXPECT_EQ(decodeDefaults("{\"a\":" + QByteArray(100000, '[') + QByteArray(100000, ']') + "}"),
              std::nullopt);
}

} // namespace
} // namespace zelvane::test
