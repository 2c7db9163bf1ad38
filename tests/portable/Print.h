// SPDX-License-Identifier: MIT
//
// How the programs of this folder print what they compute, for compare.py. A line is
//
//   d NAME INTEGER       a decision, a count, a flag: the same everywhere
//   n NAME NUMBER SIZE   a number in hexadecimal; NaN and infinity are decisions. It may differ
//                        relative to the larger of itself and SIZE, the size of what it was made of
//   b NAME BYTES         the bytes of a text or of a saved file in hexadecimal: the same everywhere
//
// The input is the same everywhere: simulation/ computes it in portable arithmetic.
#pragma once

#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

namespace portable {

inline void Decision(const std::string& name, long long value)
{
    std::printf("d %s %lld\n", name.c_str(), value);
}

inline void Number(const std::string& name, double value, double size = 0.0)
{
    if (std::isnan(value))
        std::printf("n %s nan %a\n", name.c_str(), size); // whatever its sign
    else
        std::printf("n %s %a %a\n", name.c_str(), value, size);
}

inline void Bytes(const std::string& name, std::string_view bytes)
{
    std::printf("b %s ", name.c_str());
    for (const char c : bytes)
        std::printf("%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    std::printf("\n");
}

inline std::string Name(std::string_view subject, int index)
{
    return std::string(subject) + "." + std::to_string(index);
}

} // namespace portable
