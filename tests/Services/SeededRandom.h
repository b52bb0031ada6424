#pragma once

#include <gtest/gtest.h>

#include <QtGlobal>

namespace zelvane::test {

/// Numbers that the seed of the test run decides, so that a failure can be had again.
class SeededRandom
{
public:
    /// From 0 to `limit` - 1.
    qsizetype below(qsizetype limit)
    {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return qsizetype(m_state >> 33) % limit;
    }

    template <typename List>
    auto oneOf(const List& list)
    {
        return list[below(qsizetype(std::size(list)))];
    }

private:
    quint64 m_state = quint64(::testing::UnitTest::GetInstance()->random_seed());
};

} // namespace zelvane::test
