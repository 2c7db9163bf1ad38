// SPDX-License-Identifier: MIT
#include "field/job/PointBlob.h"

#include <array>
#include <bit>
#include <cstddef>

namespace tiltpole::field {

namespace {

constexpr std::uint8_t kVersion1 = 0;
constexpr std::uint8_t kLittleEndianNoEnvelope = 1;
constexpr std::uint8_t kEmpty = 16;
constexpr std::uint8_t kLittleEndian = 1;
constexpr std::uint32_t kPointZ = 1001;
constexpr std::uint32_t kExtendedPointZ = 0x80000001; // by older programs
constexpr std::size_t kHeader = 8;
constexpr std::size_t kPoint = 1 + 4 + 3 * 8;

template <class Unsigned>
void Append(std::string& bytes, Unsigned value)
{
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
        bytes += static_cast<char>((value >> (8 * i)) & 0xff);
}

template <class Unsigned>
Unsigned Take(std::string_view bytes, std::size_t at, bool little)
{
    Unsigned value = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
        const std::size_t from = little ? sizeof(Unsigned) - 1 - i : i;
        value = static_cast<Unsigned>(value << 8) | static_cast<std::uint8_t>(bytes[at + from]);
    }
    return value;
}

} // namespace

std::string PointBlob(const Geodetic& point)
{
    std::string bytes = "GP";
    Append(bytes, kVersion1);
    Append(bytes, kLittleEndianNoEnvelope);
    Append(bytes, static_cast<std::uint32_t>(kGeodetic3D));
    Append(bytes, kLittleEndian);
    Append(bytes, kPointZ);
    for (const double value : {point.longitude, point.latitude, point.ellipsoidalHeight})
        Append(bytes, std::bit_cast<std::uint64_t>(value));
    return bytes;
}

std::optional<Geodetic> PointOf(std::string_view blob)
{
    if (blob.size() < kHeader + kPoint || blob.substr(0, 2) != "GP") return std::nullopt;
    const auto flags = static_cast<std::uint8_t>(blob[3]);
    constexpr std::array<std::size_t, 5> kEnvelopes{0, 32, 48, 48, 64};
    const std::size_t envelope = (flags >> 1) & 7;
    if (envelope >= kEnvelopes.size() || (flags & kEmpty) != 0) return std::nullopt;
    const std::size_t begin = kHeader + kEnvelopes[envelope];
    if (blob.size() < begin + kPoint) return std::nullopt;
    const bool little = blob[begin] == 1;
    const auto type = Take<std::uint32_t>(blob, begin + 1, little);
    if (type != kPointZ && type != kExtendedPointZ) return std::nullopt;
    const auto coordinate = [&](std::size_t i) {
        return std::bit_cast<double>(Take<std::uint64_t>(blob, begin + 5 + 8 * i, little));
    };
    return Geodetic{coordinate(1), coordinate(0), coordinate(2)};
}

} // namespace tiltpole::field
