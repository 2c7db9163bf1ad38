// SPDX-License-Identifier: MIT
//
// Addresses of computers and ranges of them: 192.168.1.0/24, fd00::/8.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace live {

/// An address of IPv4 or IPv6. An IPv4 address that IPv6 wraps (::ffff:10.0.0.1) is one of IPv4.
struct Address
{
    bool isV6 = false;
    std::array<std::uint8_t, 16> bytes{}; // the first 4 of IPv4
};

/// @return nullopt for what is not written in digits
std::optional<Address> ParseAddress(const std::string& text);

bool IsLoopback(const Address& address);

struct AddressRange
{
    Address first;
    unsigned prefix = 0; // leading bits that are the same for all

    bool Holds(const Address& address) const;
};

struct ParsedRange
{
    std::optional<AddressRange> range;
    std::string problem; // one sentence where there is none
};

/// ADDR/BITS or one address.
ParsedRange ParseRange(std::string_view text);

/// Whether an address may connect: this computer always, others where a range holds them; without
/// ranges everybody.
bool MayConnect(const std::vector<AddressRange>& allowed, const Address& address);

} // namespace live
