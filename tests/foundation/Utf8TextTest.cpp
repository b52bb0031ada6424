#include "foundation/Utf8Text.h"

#include "foundation/Text.h"

#include <gtest/gtest.h>

#include <random>

namespace zelvane::test {
namespace {

std::string composedLowerCased(const QString& text)
{
    std::string result;
    text::utf8::appendComposedLowerCased(text.toStdString(), result);
    return result;
}

std::string simplified(const QString& text)
{
    std::string result;
    text::utf8::appendSimplified(text.toStdString(), result);
    return result;
}

TEST(Utf8Text, composesAndLowersCase)
{
    EXPECT_EQ(composedLowerCased(QStringLiteral("E\u0301T\u00c9 ΟΣ İ Ⱥ")),
              QStringLiteral("\u00e9t\u00e9 ος i\u0307 ⱥ").toStdString());
    EXPECT_EQ(composedLowerCased(QString()), "");
}

TEST(Utf8Text, appendsToWhatIsThere)
{
    std::string result = "a";
    text::utf8::appendComposedLowerCased("Ä", result);
    text::utf8::appendSimplified(" b ", result);
    EXPECT_EQ(result, "aäb");
}

TEST(Utf8Text, leavesOneBlankBetweenWords)
{
    EXPECT_EQ(simplified(QStringLiteral(" \u3000ice \t\u2003cream\r\n")), "ice cream");
    EXPECT_EQ(simplified(QStringLiteral("äpfel")), "äpfel");
    EXPECT_EQ(simplified(QStringLiteral("\u2028 ")), "");
    EXPECT_EQ(simplified(QString(QChar(u'\0')) + QStringLiteral(" a")), std::string("\0 a", 3));
}

TEST(Utf8Text, agreesWithTheRulesForUtf16)
{
    // Blocks in which case, composition, or both are out of the ordinary.
    constexpr std::pair<int, int> blocks[] = {
        {0x00, 0x24f},    {0x300, 0x3ff},   {0x400, 0x4ff},   {0x900, 0x97f},   {0x1100, 0x11ff},
        {0x1e00, 0x1fff}, {0x2000, 0x206f}, {0x2c60, 0x2c7f}, {0xac00, 0xac40}, {0x1d160, 0x1d164}};
    std::mt19937 random(7); // NOLINT: the same texts in each run
    const auto below = [&](size_t limit) { return random() % limit; };
    for (int round = 0; round < 20'000; ++round) {
        QString text;
        for (size_t left = 1 + below(8); left > 0; --left) {
            const auto [first, last] = blocks[below(std::size(blocks))];
            const char32_t codePoint = char32_t(first) + char32_t(below(size_t(last - first + 1)));
            text += QString::fromUcs4(&codePoint, 1);
        }
        ASSERT_EQ(composedLowerCased(text), text::lowerCased(text::composed(text)).toStdString())
            << text.toStdString();
    }
}

} // namespace
} // namespace zelvane::test
