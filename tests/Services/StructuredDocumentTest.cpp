#include "Services/StructuredDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Layout = StructuredDocument::Layout;

/// The document written again in one line; null if it is none.
QString compact(const QString& text)
{
    const auto document = StructuredDocument::parse(text);
    return document ? document->written(Layout::compact) : QString();
}

QString replaced(const QString& text, const QHash<QString, QString>& replacements)
{
    auto document = StructuredDocument::parse(text);
    if (!document) {
        return {};
    }
    document->replaceStrings(replacements);
    return document->written(Layout::compact);
}

std::vector<DocumentString> strings(const QString& text)
{
    const auto document = StructuredDocument::parse(text);
    return document ? document->strings() : std::vector<DocumentString>();
}

TEST(StructuredDocument, keepsTheOrderOfMembers)
{
    const QString text = QStringLiteral(R"({"z":1,"a":{"y":[],"b":null},"m":[true,false,{}]})");
    EXPECT_EQ(compact(text), text);
}

TEST(StructuredDocument, keepsNumbersLetterForLetter)
{
    const QString text = QStringLiteral(
        "[1.0,1e400,12345678901234567890,-0,0.10,1E+2,2e-7,-12.50e05,123456789012345678901234567890"
        ".0]");
    EXPECT_EQ(compact(text), text);
}

TEST(StructuredDocument, keepsRepeatedMembers)
{
    const QString text = QStringLiteral(R"({"a":"x","b":1,"a":"y","a":{"a":"z"}})");
    EXPECT_EQ(compact(text), text);
    const auto found = strings(text);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(replaced(text, {{found[0].path, QStringLiteral("1")},
                              {found[1].path, QStringLiteral("2")},
                              {found[2].path, QStringLiteral("3")}}),
              QStringLiteral(R"({"a":"1","b":1,"a":"2","a":{"a":"3"}})"));
}

TEST(StructuredDocument, tellsWhereEachStringStands)
{
    EXPECT_THAT(
        strings(QStringLiteral(R"({"a":"x","b":{"c":["y",1,["z"]],"":"e"},"d":[{"f":"w"}]})")),
        ElementsAre(DocumentString{QStringLiteral("$.a"), QStringLiteral("x")},
                    DocumentString{QStringLiteral("$.b.c[0]"), QStringLiteral("y")},
                    DocumentString{QStringLiteral("$.b.c[2][0]"), QStringLiteral("z")},
                    DocumentString{QStringLiteral("$.b."), QStringLiteral("e")},
                    DocumentString{QStringLiteral("$.d[0].f"), QStringLiteral("w")}));
    EXPECT_THAT(strings(QStringLiteral(R"(["x"])")),
                ElementsAre(DocumentString{QStringLiteral("$[0]"), QStringLiteral("x")}));
    EXPECT_THAT(strings(QStringLiteral(R"({"name":1})")), IsEmpty());
}

TEST(StructuredDocument, replacesStringsAndNothingElse)
{
    EXPECT_EQ(replaced(QStringLiteral(R"({"a":"a","b":["a","c"]})"),
                       {{QStringLiteral("$.a"), QStringLiteral("A \"q\"\n")},
                        {QStringLiteral("$.b[1]"), QString()},
                        {QStringLiteral("$.b"), QStringLiteral("no")}}),
              QStringLiteral(R"({"a":"A \"q\"\n","b":["a",""]})"));
}

TEST(StructuredDocument, namesWithDotsMayShareAPath)
{
    EXPECT_EQ(replaced(QStringLiteral(R"({"a.b":"x","a":{"b":"y"}})"),
                       {{QStringLiteral("$.a.b"), QStringLiteral("z")}}),
              QStringLiteral(R"({"a.b":"z","a":{"b":"z"}})"));
}

TEST(StructuredDocument, readsEveryEscapeAndWritesOnlyThoseNeeded)
{
    const QString text = QStringLiteral(
        R"(["\"\\\/\b\f\n\r\t\u0001\u001F\u00e9\u20AC\ud83d\ude00 / é €", {"\u006bey\/":""}])");
    const auto found = strings(text);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].value, QStringLiteral("\"\\/\b\f\n\r\t\u0001\u001fé€😀 / é €"));
    EXPECT_EQ(
        compact(text),
        QStringLiteral("[\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001fé€😀 / é €\",{\"key/\":\"\"}]"));
}

TEST(StructuredDocument, escapesHalvesOfSurrogatePairs)
{
    const QString text =
        QStringLiteral(R"(["\ud83d","\ude00","\ude00\ud83d","\ud83dx\ud83d\ude00"])");
    EXPECT_EQ(compact(text), QStringLiteral(R"(["\ud83d","\ude00","\ude00\ud83d","\ud83dx😀"])"));
    // One that was never escaped is written as one that was.
    EXPECT_EQ(compact(QStringLiteral("[\"") + QChar(0xd83d) + QStringLiteral("\"]")),
              QStringLiteral(R"(["\ud83d"])"));
}

TEST(StructuredDocument, keepsANullCharacterInAString)
{
    const QString text = QStringLiteral(R"({"\u0000":"a\u0000b"})");
    EXPECT_EQ(compact(text), text);
}

TEST(StructuredDocument, ignoresWhiteSpaceBetweenPieces)
{
    EXPECT_EQ(compact(QStringLiteral(" \r\n\t{ \"a\" :\n[ 1 ,\t2 ] , \"b\" : { } }\n")),
              QStringLiteral(R"({"a":[1,2],"b":{}})"));
}

TEST(StructuredDocument, isIndentedByTwoBlanks)
{
    const auto document = StructuredDocument::parse(
        u"{\"a\":\"x/y\",\"b\":[1,{\"c\":null},[]],\"d\":{},\"e\":[[2]]}");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->written(Layout::indented), QStringLiteral(R"({
  "a": "x/y",
  "b": [
    1,
    {
      "c": null
    },
    []
  ],
  "d": {},
  "e": [
    [
      2
    ]
  ]
})"));
    EXPECT_EQ(StructuredDocument::parse(u"[ ]")->written(Layout::indented), QStringLiteral("[]"));
}

class NoDocument : public ::testing::TestWithParam<const char16_t*>
{
};

TEST_P(NoDocument, isWhatBreaksARuleOfTheFormat)
{
    EXPECT_FALSE(StructuredDocument::parse(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    StructuredDocument, NoDocument,
    ::testing::Values(u"", u" ", u"1", u"\"text\"", u"true", u"null", u"Good morning", u"{", u"[",
                      u"}", u"]", u"{]", u"[}", u"[1", u"[1,", u"[1,]", u"[,1]", u"[1 2]", u"[1]]",
                      u"[1] x", u"[1][2]", u"{\"a\"}", u"{\"a\":}", u"{\"a\":1,}", u"{,}", u"{a:1}",
                      u"{'a':1}", u"{1:1}", u"{\"a\" 1}", u"{\"a\":1 \"b\":2}", u"{\"a\":1",
                      u"{\"a", u"{\"a\"", u"{\"a\":", u"[tru]", u"[truex]", u"[True]", u"[nul",
                      u"[NaN]", u"[Infinity]", u"[01]", u"[-]", u"[+1]", u"[.5]", u"[1.]",
                      u"[1.e1]", u"[1e]", u"[1e+]", u"[0x1]", u"[-01]", u"[1_0]", u"[\"]",
                      u"[\"\\\"]", u"[\"\\x\"]", u"[\"\\u12\"]", u"[\"\\u12g4\"]", u"[\"\\u\"]",
                      u"[\"\\ud83", u"[\"\\", u"[\"a\nb\"]", u"[\"a\tb\"]", u"[\"\x01\"]",
                      u"[1]//x", u"[/**/1]", u"\uFEFF[1]", u"[\u00a01]"));

TEST(StructuredDocument, aTextWithANullCharacterIsNone)
{
    const QString null(QChar(u'\0'));
    EXPECT_FALSE(StructuredDocument::parse(QStringLiteral("[1]") + null));
    EXPECT_FALSE(StructuredDocument::parse(null + QStringLiteral("[1]")));
    EXPECT_FALSE(StructuredDocument::parse(QStringLiteral("[") + null + QStringLiteral("1]")));
    EXPECT_FALSE(StructuredDocument::parse(QStringLiteral("[\"") + null + QStringLiteral("\"]")));
}

TEST(StructuredDocument, hasAtMost512Levels)
{
    const auto nested = [](qsizetype depth) { return QString(depth, u'[') + QString(depth, u']'); };
    EXPECT_EQ(compact(nested(512)), nested(512));
    EXPECT_EQ(compact(nested(513)), QString());
}

TEST(StructuredDocument, aHostileDepthIsNone)
{
    EXPECT_FALSE(StructuredDocument::parse(QString(5'000'000, u'[')));
    EXPECT_FALSE(StructuredDocument::parse(QStringLiteral("{\"a\":").repeated(1'000'000)));
}

TEST(StructuredDocument, namesThatWouldFillTheMemoryAreNone)
{
    // A megabyte of name before each of 100,000 strings: 200 GB of paths.
    const QString text = QStringLiteral("{\"") + QString(1'000'000, u'n') + QStringLiteral("\":[") +
                         QStringLiteral("\"a b\",").repeated(100'000) + QStringLiteral("0]}");
    EXPECT_FALSE(StructuredDocument::parse(text));
    const QString nested =
        (QStringLiteral("{\"") + QString(100'000, u'n') + QStringLiteral("\":")).repeated(30) +
        u'1' + QString(30, u'}');
    EXPECT_FALSE(StructuredDocument::parse(nested));
}

TEST(StructuredDocument, aLargeDocumentIsOne)
{
    const QString text = QStringLiteral("[") + QStringLiteral("{\"a\":\"x y\"},").repeated(10'000) +
                         QStringLiteral("0]");
    EXPECT_EQ(compact(text), text);
    EXPECT_EQ(strings(text).size(), 10'000U);
}

} // namespace
} // namespace zelvane::test
