#include "glossary/KeyedHash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace zelvane::test {
namespace {

TEST(KeyedHash, isTheSameForTheSameTextInOneObjectAndItsCopies)
{
    const KeyedHash hash;
    const KeyedHash copy = hash;
    for (const char* text : {"", "a", "eight by", "nine byte", "two words, and some more"}) {
        EXPECT_EQ(hash(text), hash(std::string(text)));
        EXPECT_EQ(copy(text), hash(text));
    }
}

TEST(KeyedHash, isAnotherInEachObject)
{
    EXPECT_NE(KeyedHash()("word"), KeyedHash()("word"));
}

TEST(KeyedHash, tellsTextsApartThatDifferInAnyByteOrInLength)
{
    const KeyedHash hash;
    std::set<quint64> values;
    std::string text(24, 'a');
    for (size_t i = 0; i < text.size(); ++i) {
        std::string other = text;
        other[i] = 'b';
        values.insert(hash(other));
        values.insert(hash(text.substr(0, i)));
        values.insert(hash(std::string(i, '\0')));
    }
    EXPECT_EQ(values.size(), 71U); // the empty text comes twice
}

TEST(KeyedHash, spreadsSimilarTextsEvenly)
{
    const KeyedHash hash;
    std::vector<int> high(256);
    std::vector<int> low(256);
    for (int i = 0; i < 25'600; ++i) {
        const quint64 value = hash("wort " + std::to_string(i));
        ++high[value >> 56];
        ++low[value & 0xff];
    }
    // About 100 each: ten standard deviations make no false alarm.
    for (const std::vector<int>& counts : {high, low}) {
        EXPECT_GT(std::ranges::min(counts), 30);
        EXPECT_LT(std::ranges::max(counts), 210);
    }
}

} // namespace
} // namespace zelvane::test
