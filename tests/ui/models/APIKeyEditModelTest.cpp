#include "ui/sheets/APIKeyEditModel.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(APIKeyEditModel, savesTheKeyWithoutWhiteSpaceAtItsEnds)
{
    APIKeyEditModel model(QStringLiteral("Mistral"), QStringLiteral("old"));
    EXPECT_EQ(model.providerName(), QStringLiteral("Mistral"));
    EXPECT_EQ(model.draft(), QStringLiteral("old"));

    model.setDraft(QStringLiteral(" sk-new key\n"));
    EXPECT_EQ(model.keyToSave(), QStringLiteral("sk-new key"));
}

TEST(APIKeyEditModel, savesNothingForABlankDraft)
{
    APIKeyEditModel model(QStringLiteral("Mistral"), QStringLiteral("old"));
    model.setDraft(QStringLiteral(" \t\n"));
    EXPECT_EQ(model.keyToSave(), QString());
}

TEST(MaskedKey, showsTheLastFourCharactersOfALongKey)
{
    EXPECT_EQ(maskedKey(QStringLiteral("sk-0123456789ab")), QStringLiteral("•••••••••••89ab"));
    EXPECT_EQ(maskedKey(QStringLiteral(" 0123456789abcdef\n")), QStringLiteral("••••••••••••cdef"));
}

TEST(MaskedKey, hidesAtLeastEightCharacters)
{
    EXPECT_EQ(maskedKey(QStringLiteral("123456789")), QStringLiteral("••••••••6789"));
}

TEST(MaskedKey, showsNothingOfAShortKeyButItsLength)
{
    EXPECT_EQ(maskedKey(QStringLiteral("12345678")), QStringLiteral("••••••••"));
    EXPECT_EQ(maskedKey(QStringLiteral("abc")), QStringLiteral("•••"));
    EXPECT_EQ(maskedKey(QStringLiteral("  ")), QString());
}

TEST(MaskedKey, hidesAllButFourFromThirteenCharactersOn)
{
    const QString key = QStringLiteral("0123456789abcdef");
    const QStringList masked{QString(),
                             QStringLiteral("•"),
                             QStringLiteral("••"),
                             QStringLiteral("•••"),
                             QStringLiteral("••••"),
                             QStringLiteral("•••••"),
                             QStringLiteral("••••••"),
                             QStringLiteral("•••••••"),
                             QStringLiteral("••••••••"),
                             QStringLiteral("••••••••5678"),
                             QStringLiteral("••••••••6789"),
                             QStringLiteral("••••••••789a"),
                             QStringLiteral("••••••••89ab"),
                             QStringLiteral("•••••••••9abc"),
                             QStringLiteral("••••••••••abcd")};
    for (qsizetype length = 0; length < masked.size(); ++length) {
        EXPECT_EQ(maskedKey(key.first(length)), masked[length]) << length;
    }
}

TEST(MaskedKey, keepsSurrogatesTogether)
{
    EXPECT_EQ(maskedKey(QStringLiteral("😀😀😀😀😀😀😀😀")), QStringLiteral("••••••••"));
    EXPECT_EQ(maskedKey(QStringLiteral("😀😀😀😀😀😀😀😀😀")), QStringLiteral("••••••••😀😀😀😀"));
}

TEST(MaskedKey, countsWhatAReaderCountsAndSplitsNothing)
{
    EXPECT_EQ(maskedKey(QStringLiteral("01234567e\u0301xyz")),
              QStringLiteral("••••••••e\u0301xyz"));
}

} // namespace
} // namespace zelvane::test
