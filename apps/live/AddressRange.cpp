// SPDX-License-Identifier: MIT
#include "apps/live/AddressRange.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <fmt/format.h>

namespace live {

namespace {

constexpr std::array<std::uint8_t, 12> kWrapped = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};

unsigned Bits(const Address& address)
{
    return address.isV6 ? 128 : 32;
}

// Bits that are set in the byte `index` of a prefix.
std::uint8_t MaskAt(unsigned prefix, std::size_t index)
{
    const unsigned before = static_cast<unsigned>(8 * index);
    if (prefix >= before + 8) return 0xff;
    if (prefix <= before) return 0;
    return static_cast<std::uint8_t>(0xff00U >> (prefix - before));
}

} // namespace

std::optional<Address> ParseAddress(const std::string& text)
{
    Address address;
    if (inet_pton(AF_INET, text.c_str(), address.bytes.data()) == 1) return address;
    if (inet_pton(AF_INET6, text.c_str(), address.bytes.data()) != 1) return std::nullopt;
    address.isV6 = true;
    if (std::equal(kWrapped.begin(), kWrapped.end(), address.bytes.begin())) {
        std::copy(address.bytes.begin() + 12, address.bytes.end(), address.bytes.begin());
        std::fill(address.bytes.begin() + 4, address.bytes.end(), std::uint8_t{0});
        address.isV6 = false;
    }
    return address;
}

bool IsLoopback(const Address& address)
{
    if (!address.isV6) return address.bytes[0] == 127;
    return std::all_of(address.bytes.begin(), address.bytes.end() - 1,
                       [](std::uint8_t byte) { return byte == 0; })
           && address.bytes.back() == 1;
}

bool AddressRange::Holds(const Address& address) const
{
    if (address.isV6 != first.isV6) return false;
    for (std::size_t i = 0; i < address.bytes.size(); ++i)
        if (((address.bytes[i] ^ first.bytes[i]) & MaskAt(prefix, i)) != 0) return false;
    return true;
}

ParsedRange ParseRange(std::string_view text)
{
    const std::size_t slash = text.find('/');
    const auto address = ParseAddress(std::string(text.substr(0, slash)));
    if (!address)
        return {std::nullopt, fmt::format("'{}' is not ADDRESS/BITS, as in 192.168.1.0/24", text)};
    AddressRange range{*address, Bits(*address)};
    if (slash != text.npos) {
        const std::string_view bits = text.substr(slash + 1);
        const char* const end = bits.data() + bits.size();
        const auto [stop, error] = std::from_chars(bits.data(), end, range.prefix);
        if (error != std::errc() || stop != end || range.prefix > Bits(*address))
            return {std::nullopt, fmt::format("'{}' has '{}' after the slash, not a number of bits "
                                              "from 0 to {}",
                                              text, bits, Bits(*address))};
    }
    for (std::size_t i = 0; i < range.first.bytes.size(); ++i) {
        if ((range.first.bytes[i] & ~MaskAt(range.prefix, i)) != 0)
            return {std::nullopt, fmt::format("'{}' has bits of its address beyond the first {}",
                                              text, range.prefix)};
    }
    return {range, {}};
}

bool MayConnect(const std::vector<AddressRange>& allowed, const Address& address)
{
    return allowed.empty() || IsLoopback(address)
           || std::any_of(allowed.begin(), allowed.end(),
                          [&](const AddressRange& range) { return range.Holds(address); });
}

} // namespace live
