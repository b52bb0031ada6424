#include "settings/TranslationCatalogue.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(TranslationCatalogue, readsEntriesOfOneAndOfSeveralLines)
{
    const auto catalogue = parseCatalogue("msgid \"\"\n"
                                          "msgstr \"Language: de\\n\"\n"
                                          "\n"
                                          "#: Zelvane/a.cpp\n"
                                          "#, objc-format\n"
                                          "msgid \"Error %@\"\n"
                                          "msgstr \"Fehler %@\"\n"
                                          "msgid \"\"\n"
                                          "\"One\\n\"\n"
                                          "\"\\\"two\\\" \\\\ \\t\"\r\n"
                                          "msgstr \"\"\n"
                                          "\"Eins\\n\"\n"
                                          "\"„zwei“\"");
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(*catalogue,
              (TranslationCatalogue{
                  {QStringLiteral("Error %@"), QStringLiteral("Fehler %@")},
                  {QStringLiteral("One\n\"two\" \\ \t"), QStringLiteral("Eins\n„zwei“")}}));
}

TEST(TranslationCatalogue, leavesOutWhatIsEmptyFuzzyOrObsolete)
{
    const auto catalogue = parseCatalogue("#, fuzzy, objc-format\n"
                                          "msgid \"a\"\n"
                                          "msgstr \"A\"\n"
                                          "\n"
                                          "msgid \"b\"\n"
                                          "msgstr \"B\"\n"
                                          "\n"
                                          "msgid \"c\"\n"
                                          "msgstr \"\"\n"
                                          "\n"
                                          "#~ msgid \"d\"\n"
                                          "#~ msgstr \"D\"\n");
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(*catalogue, (TranslationCatalogue{{QStringLiteral("b"), QStringLiteral("B")}}));
}

TEST(TranslationCatalogue, readsNothingFromNothing)
{
    EXPECT_EQ(parseCatalogue(""), TranslationCatalogue());
}

TEST(TranslationCatalogue, isNoneIfAnyLineDoesNotBelongThere)
{
    for (const char* text :
         {"x", "\"a\"", "msgstr \"a\"", "msgid a", "msgid \"a", "msgid \"a\\\"", "msgid \"a\\x\"",
          "msgid \"a\" \"b\"", "msgid \"a\"\nmsgstr \"b\"\nmsgstr \"c\"",
          "msgctxt \"x\"\nmsgid \"a\"\nmsgstr \"b\"",
          "msgid \"a\"\nmsgid_plural \"as\"\nmsgstr[0] \"b\"", "msgid \"\xff\""}) {
        EXPECT_EQ(parseCatalogue(text), std::nullopt) << text;
    }
}

} // namespace
} // namespace zelvane::test
