// SPDX-License-Identifier: MIT
//
// Times of epochs out of any text, and the clock map of what they give.
#include "field/time/EpochClock.h"
#include "field/time/LeastDelay.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using tiltpole::field::EpochClock;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    EpochClock clock;
    tiltpole::field::LeastDelay delay;
    field::Instant arrival{};
    while (!rest.empty()) {
        const std::size_t end = rest.find(',');
        const std::string_view utc = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        const EpochClock::Result result = clock.Advance(utc, {});
        if (!std::isfinite(result.seconds) || !std::isfinite(result.change)) std::abort();
        arrival += std::chrono::milliseconds(utc.size() * 100);
        if (result.step == EpochClock::Step::Jump) delay.Restart();
        if (result.step == EpochClock::Step::NoTime || result.step == EpochClock::Step::Repeated)
            continue;
        delay.Add(result.seconds, arrival);
        if (!delay.HostTime(result.seconds)) std::abort();
        if (*delay.HostTime(result.seconds) > arrival + std::chrono::nanoseconds(100)) std::abort();
    }
    return 0;
}
