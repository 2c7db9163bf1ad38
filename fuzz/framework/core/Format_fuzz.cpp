// SPDX-License-Identifier: MIT
//
// Any format, with arguments of every kind in an order that the input chooses, is harmless.
#include "framework/core/String.h"

#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 10 || size > 64) return 0; // long fields would only cost time
    double real = 0.0;
    std::memcpy(&real, data, sizeof real);
    std::int64_t integer = 0;
    std::memcpy(&integer, data, sizeof integer);
    const CString format(reinterpret_cast<const char*>(data + 8), static_cast<int>(size - 8));
    CString text;
    switch (data[0] % 4) {
    case 0:
        text.Format(format, real, integer, L"wide", "narrow", static_cast<int>(integer));
        break;
    case 1:
        text.Format(format, static_cast<short>(integer), real, real, CString(L"own"));
        break;
    case 2:
        text.Format(format, data[1] % 20, data[2] % 20, real, L'c', nullptr);
        break;
    default:
        text.Format(format);
        break;
    }
    return 0;
}
