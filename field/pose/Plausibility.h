// SPDX-License-Identifier: MIT
//
// What a pose sensor cannot mean. A sample with a fault is dropped, counted and named.
#pragma once

#include "field/Bridge.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tiltpole::field {

using ::field::Instant;
using ::field::PoseSample;

enum class PoseFault : std::uint8_t {
    None,
    NotFinite,  ///< an angle, a reading or the time is NaN or infinite
    OutOfRange, ///< |pitch| > 90, |roll| > 180, |heading| > 360 degrees, a count beyond 10^6
    Stuck,      ///< the 20th and every further equal reading of magnetometer A
    TimeBack,   ///< the sensor's clock did not advance
};

/// The fault in words: "a value is not a number".
std::string_view TextOf(PoseFault fault);

class Plausibility
{
public:
    /// Judges the next sample. Faulty samples do not change what the next one is compared with,
    /// except that equal readings are counted.
    PoseFault Judge(const PoseSample& sample);

    /// Whether the last sample judged began a new time of the sensor: it went back by more than a
    /// second and three samples ran on from there. The clock map and the ring must restart.
    bool ClockRestarted() const { return m_clockRestarted; }

    void Restart();

private:
    bool IsStuck(const PoseSample& sample);
    bool RunsBack(double seconds);

    double m_x = 0.0; // last reading of magnetometer A [counts]
    double m_y = 0.0;
    double m_z = 0.0;
    int m_equal = 0; // readings in a row that equal it
    std::optional<double> m_last;
    double m_other = 0.0; // last time of a clock that may have begun anew
    int m_otherCount = 0;
    bool m_clockRestarted = false;
};

} // namespace tiltpole::field
