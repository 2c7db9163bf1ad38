// SPDX-License-Identifier: MIT
//
// Any bytes of a client: what passes is frames alone, whatever the pieces, and a true frame behind them
// passes, too. A frame that was begun before may end inside that one with a checksum that is right by
// chance, which one of 16.7 million is; the next one passes then.
#include "field/nmea/RtcmFilter.h"
#include "fuzz/Input.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void Demand(bool condition)
{
    if (!condition) std::abort();
}

void CheckFrames(std::string_view passed)
{
    while (!passed.empty()) {
        Demand(passed.size() >= 6 && passed[0] == '\xD3');
        const auto byte = [passed](std::size_t i) {
            return static_cast<std::size_t>(static_cast<std::uint8_t>(passed[i]));
        };
        const std::size_t size = 6 + (byte(1) << 8U | byte(2));
        Demand(size <= 1029 && size <= passed.size());
        const std::uint32_t stated = static_cast<std::uint32_t>(
            byte(size - 3) << 16U | byte(size - 2) << 8U | byte(size - 1));
        Demand(tiltpole::field::Crc24q(passed.substr(0, size - 3)) == stated);
        passed.remove_prefix(size);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    tiltpole::field::RtcmFilter whole;
    const std::string passed = whole.Feed(bytes);
    CheckFrames(passed);

    tiltpole::field::RtcmFilter pieces;
    const std::size_t most = fuzz::IsOneIn(4, data, size) ? 1 : 61;
    std::string joined;
    for (std::size_t at = 0; at < size; at += most)
        joined += pieces.Feed(bytes.substr(at, most));
    Demand(joined == passed);

    const std::string frame("\xD3\x00\x00\x47\xEA\x4B", 6);
    const std::string behind = whole.Feed(frame);
    CheckFrames(behind);
    Demand(!behind.empty());
    Demand(whole.Feed(frame) == frame);
    return 0;
}
