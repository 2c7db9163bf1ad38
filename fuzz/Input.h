// SPDX-License-Identifier: MIT
//
// The bytes of one run, taken apart into what a fuzzer needs; once they are used up, all is 0.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace fuzz {

/// Where it does not hold, the run is a finding; the line is named.
inline void Require(bool condition, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE())
{
    if (condition) return;
    std::fprintf(stderr, "%s:%d: required\n", file, line);
    std::abort();
}

class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_rest(reinterpret_cast<const char*>(data), size)
    {}

    bool Ended() const { return m_rest.empty(); }

    unsigned Byte()
    {
        if (m_rest.empty()) return 0;
        const auto byte = static_cast<unsigned char>(m_rest.front());
        m_rest.remove_prefix(1);
        return byte;
    }

    /// 0 to count - 1; count up to 256.
    int Below(int count) { return static_cast<int>(Byte()) % count; }

    /// One of 65,536 values from low to high.
    double Between(double low, double high)
    {
        const unsigned code = Byte() << 8U | Byte();
        return low + (high - low) * code / 65535.0;
    }

    /// A small whole number most of the time; else one between -10 and 10, any bits of a double, or
    /// one that is easily forgotten.
    double Number()
    {
        const unsigned kind = Byte();
        if (kind < 128) return static_cast<double>(kind) / 8.0 - 8.0;
        if (kind < 208) return Between(-10.0, 10.0);
        if (kind < 224) return Bits();
        constexpr double kForgotten[] = {0.0,
                                         -0.0,
                                         1.0,
                                         -1.0,
                                         5e-324,
                                         -1e-320,
                                         std::numeric_limits<double>::min(),
                                         -std::numeric_limits<double>::min(),
                                         1e-160,
                                         1e160,
                                         std::numeric_limits<double>::max(),
                                         -std::numeric_limits<double>::max(),
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity(),
                                         std::numeric_limits<double>::quiet_NaN(),
                                         std::numeric_limits<double>::epsilon()};
        return kForgotten[kind % 16];
    }

    double Bits()
    {
        double value = 0.0;
        const std::size_t size = std::min(sizeof value, m_rest.size());
        std::memcpy(&value, m_rest.data(), size);
        m_rest.remove_prefix(size);
        return value;
    }

    /// As many as the next byte says, or what is left.
    std::string Bytes()
    {
        const std::size_t wanted = Byte();
        const std::size_t size = std::min(wanted, m_rest.size());
        std::string bytes(m_rest.substr(0, size));
        m_rest.remove_prefix(size);
        return bytes;
    }

    std::string_view Rest()
    {
        const std::string_view all = m_rest;
        m_rest = {};
        return all;
    }

private:
    std::string_view m_rest;
};

/// One input in `count`, by a hash of its bytes: for checks that cost as much as the rest of a run. Its length
/// would not do, short inputs come first.
inline bool IsOneIn(unsigned count, const std::uint8_t* data, std::size_t size)
{
    std::uint32_t hash = 2166136261U; // FNV-1a
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ data[i]) * 16777619U;
    return (hash >> 8U) % count == 0;
}

/// The same bits, or both NaN.
inline bool AreSame(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace fuzz
