#pragma once

#include <QtGlobal>

#include <string_view>

namespace zelvane {

/// Spreads texts evenly, with random numbers of its own, so that nobody can prepare texts that get
/// the same value. Faster for words than Qt's hash. Values mean nothing outside this object and its
/// copies.
class KeyedHash
{
public:
    KeyedHash();

    [[nodiscard]] quint64 operator()(std::string_view text) const;

private:
    quint64 m_seed;
    quint64 m_factor;
};

} // namespace zelvane
