// SPDX-License-Identifier: MIT
//
// Any bytes become well-formed text, which converts to UTF-8 and back without a change.
#include "framework/core/TextConversion.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::wstring text = framework::FromUtf8(bytes);
    const std::string clean = framework::ToUtf8(text);
    if (framework::FromUtf8(clean) != text) std::abort();

    // Strict conversion accepts exactly what is clean already.
    const int strict = size == 0 ? 0
                                 : MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                                       static_cast<int>(size), nullptr, 0);
    if ((strict != 0) != (size != 0 && clean == bytes)) std::abort();

    // Wide characters of any value encode without harm.
    std::wstring wild(size / sizeof(wchar_t), L'\0');
    for (std::size_t i = 0; i < wild.size() * sizeof(wchar_t); ++i)
        reinterpret_cast<std::uint8_t*>(wild.data())[i] = data[i];
    const std::string encoded = framework::ToUtf8(wild);
    if (framework::FromUtf8(encoded).size() != wild.size()) std::abort();
    return 0;
}
