// SPDX-License-Identifier: MIT
#include "framework/core/TextConversion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstring>
#include <cwchar>

static_assert(sizeof(wchar_t) == 4, "a wide character holds one Unicode scalar value");

namespace {

constexpr wchar_t kReplacement = 0xFFFD;
constexpr std::size_t kChunk = 1024;

struct Decoded
{
    wchar_t character;
    std::size_t length; // bytes used
    bool wellFormed;
};

// What must follow a lead byte: the number of bytes, and the range of the first of them (Unicode
// 15, table 3-7; the range excludes overlong forms, surrogates and values above U+10FFFF).
struct Lead
{
    unsigned char trailing, low, high;
};

constexpr Lead LeadOf(unsigned char byte)
{
    if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF};
    if (byte == 0xE0) return {2, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF};
    if (byte == 0xF0) return {3, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF};
    if (byte == 0xF4) return {3, 0x80, 0x8F};
    return {0, 0, 0};
}

// The character at the start of `bytes`, which is not empty.
Decoded Decode(const unsigned char* bytes, std::size_t size)
{
    const unsigned char first = bytes[0];
    if (first < 0x80) return {static_cast<wchar_t>(first), 1, true};

    const Lead lead = LeadOf(first);
    if (lead.trailing == 0) return {kReplacement, 1, false};

    unsigned value = first & (0x3Fu >> lead.trailing);
    for (std::size_t i = 1; i <= lead.trailing; ++i) {
        const unsigned char low = i == 1 ? lead.low : 0x80;
        const unsigned char high = i == 1 ? lead.high : 0xBF;
        if (i >= size || bytes[i] < low || bytes[i] > high) return {kReplacement, i, false};
        value = value << 6 | (bytes[i] & 0x3Fu);
    }
    return {static_cast<wchar_t>(value), lead.trailing + 1u, true};
}

bool IsScalarValue(unsigned value)
{
    return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

// Writes up to 4 bytes, returns how many.
std::size_t Encode(unsigned value, char* out)
{
    const auto trail = [value](int shift) {
        return static_cast<char>(0x80 | (value >> shift & 0x3F));
    };
    if (value < 0x80) {
        out[0] = static_cast<char>(value);
        return 1;
    }
    if (value < 0x800) {
        out[0] = static_cast<char>(0xC0 | value >> 6);
        out[1] = trail(0);
        return 2;
    }
    if (value < 0x10000) {
        out[0] = static_cast<char>(0xE0 | value >> 12);
        out[1] = trail(6);
        out[2] = trail(0);
        return 3;
    }
    out[0] = static_cast<char>(0xF0 | value >> 18);
    out[1] = trail(12);
    out[2] = trail(6);
    out[3] = trail(0);
    return 4;
}

bool IsAscii8(const unsigned char* bytes)
{
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return (word & 0x8080808080808080u) == 0;
}

bool IsAscii8(const wchar_t* text)
{
    std::uint32_t all = 0;
    for (std::size_t i = 0; i < 8; ++i)
        all |= std::bit_cast<std::uint32_t>(text[i]);
    return all < 0x80;
}

// Passes `bytes` to `sink` as wide characters, in chunks. Returns whether all were well-formed.
template <class Sink>
bool DecodeAll(std::string_view bytes, Sink sink)
{
    std::array<wchar_t, kChunk> chunk;
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* const end = in + bytes.size();
    bool wellFormed = true;
    while (in != end) {
        std::size_t n = 0;
        while (in != end && n + 8 <= kChunk) {
            if (end - in >= 8 && IsAscii8(in)) {
                for (std::size_t i = 0; i < 8; ++i)
                    chunk[n + i] = static_cast<wchar_t>(in[i]);
                n += 8;
                in += 8;
                continue;
            }
            const Decoded one = Decode(in, static_cast<std::size_t>(end - in));
            chunk[n++] = one.character;
            in += one.length;
            wellFormed = wellFormed && one.wellFormed;
        }
        sink(std::wstring_view(chunk.data(), n));
    }
    return wellFormed;
}

// Passes `text` to `sink` as UTF-8, in chunks. Returns whether all were scalar values.
template <class Sink>
bool EncodeAll(std::wstring_view text, Sink sink)
{
    std::array<char, 4 * kChunk> chunk;
    bool wellFormed = true;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t stop = std::min(text.size(), at + kChunk);
        std::size_t n = 0;
        while (at < stop) {
            if (stop - at >= 8 && IsAscii8(text.data() + at)) {
                for (std::size_t i = 0; i < 8; ++i)
                    chunk[n++] = static_cast<char>(text[at++]);
                continue;
            }
            auto value = std::bit_cast<std::uint32_t>(text[at++]);
            if (!IsScalarValue(value)) {
                value = std::bit_cast<std::uint32_t>(kReplacement);
                wellFormed = false;
            }
            n += Encode(value, chunk.data() + n);
        }
        sink(std::string_view(chunk.data(), n));
    }
    return wellFormed;
}

// Copies pieces into a caller's buffer as long as they fit, and counts all of them.
template <class Character>
struct BoundedCopy
{
    Character* target;
    std::size_t capacity;
    std::size_t count = 0;

    void operator()(std::basic_string_view<Character> piece)
    {
        if (count + piece.size() <= capacity) std::copy(piece.begin(), piece.end(), target + count);
        count += piece.size();
    }

    // Result of the platform functions: 0 where the target was too small.
    int Result() const
    {
        if (count > static_cast<std::size_t>(INT_MAX)) return 0;
        if (capacity != 0 && count > capacity) return 0;
        return static_cast<int>(count);
    }
};

template <class Character>
bool AreArgumentsUsable(UINT codePage, const void* source, int sourceLength,
                        const Character* target, int capacity)
{
    return (codePage == CP_UTF8 || codePage == CP_ACP) && source != nullptr && sourceLength >= -1
           && sourceLength != 0 && capacity >= 0 && (capacity == 0 || target != nullptr);
}

} // namespace

namespace framework {

std::string ToUtf8(std::wstring_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    EncodeAll(text, [&](std::string_view piece) { bytes.append(piece); });
    return bytes;
}

std::wstring FromUtf8(std::string_view bytes)
{
    std::wstring text;
    text.reserve(bytes.size());
    DecodeAll(bytes, [&](std::wstring_view piece) { text.append(piece); });
    return text;
}

} // namespace framework

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source, int sourceLength,
                        wchar_t* target, int capacity)
{
    if (!AreArgumentsUsable(codePage, source, sourceLength, target, capacity)) return 0;

    const std::size_t length =
        sourceLength < 0 ? std::strlen(source) + 1 : static_cast<std::size_t>(sourceLength);
    BoundedCopy<wchar_t> copy{target, static_cast<std::size_t>(capacity)};
    const bool wellFormed =
        DecodeAll({source, length}, [&](std::wstring_view piece) { copy(piece); });
    if (!wellFormed && (flags & MB_ERR_INVALID_CHARS) != 0) return 0;
    return copy.Result();
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* source, int sourceLength,
                        char* target, int capacity, const char* defaultChar, BOOL* usedDefault)
{
    if (!AreArgumentsUsable(codePage, source, sourceLength, target, capacity)) return 0;
    if (codePage == CP_UTF8 && (defaultChar != nullptr || usedDefault != nullptr)) return 0;

    const std::size_t length =
        sourceLength < 0 ? std::wcslen(source) + 1 : static_cast<std::size_t>(sourceLength);
    BoundedCopy<char> copy{target, static_cast<std::size_t>(capacity)};
    const bool wellFormed =
        EncodeAll({source, length}, [&](std::string_view piece) { copy(piece); });
    if (usedDefault != nullptr) *usedDefault = wellFormed ? FALSE : TRUE;
    if (!wellFormed && (flags & WC_ERR_INVALID_CHARS) != 0) return 0;
    return copy.Result();
}
