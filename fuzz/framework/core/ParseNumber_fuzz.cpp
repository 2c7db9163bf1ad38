// SPDX-License-Identifier: MIT
//
// Wide and narrow text of the same characters yield the same number and use no more than the text.
#include "framework/core/ParseNumber.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string narrow(reinterpret_cast<const char*>(data), size);
    const std::wstring wide(data, data + size);
    for (const auto forms :
         {framework::NumberForms::Decimal, framework::NumberForms::DecimalAndSpecial}) {
        const auto a = framework::ParseDouble(narrow, forms);
        const auto b = framework::ParseDouble(wide, forms);
        if (std::bit_cast<std::uint64_t>(a.value) != std::bit_cast<std::uint64_t>(b.value)
            || a.used != b.used || a.inRange != b.inRange || a.used > size)
            std::abort();
    }
    const auto i = framework::ParseInteger(narrow);
    const auto j = framework::ParseInteger(wide);
    if (i.value != j.value || i.used != j.used || i.inRange != j.inRange || i.used > size)
        std::abort();
    return 0;
}
