#include "glossary/KeyedHash.h"

#include <QRandomGenerator>

#include <cstring>

namespace zelvane {

namespace {

__extension__ using Wide = unsigned __int128;

/// Every bit of the result depends on all bits of both factors.
quint64 foldedProduct(quint64 left, quint64 right)
{
    const Wide product = Wide(left) * right;
    return static_cast<quint64>(product) ^ static_cast<quint64>(product >> 64);
}

/// Up to eight bytes as a number.
quint64 wordOf(std::string_view bytes)
{
    quint64 word = 0;
    std::memcpy(&word, bytes.data(), bytes.size());
    return word;
}

} // namespace

KeyedHash::KeyedHash()
    : m_seed(QRandomGenerator::global()->generate64())
    , m_factor(QRandomGenerator::global()->generate64() | 1)
{
}

quint64 KeyedHash::operator()(std::string_view text) const
{
    constexpr size_t wordSize = sizeof(quint64);
    quint64 hash = m_seed ^ text.size(); // a text isn't its beginning
    while (text.size() > wordSize) {
        hash = foldedProduct(hash ^ wordOf(text.substr(0, wordSize)), m_factor);
        text.remove_prefix(wordSize);
    }
    return foldedProduct(foldedProduct(hash ^ wordOf(text), m_factor) ^ m_seed, m_factor);
}

} // namespace zelvane
