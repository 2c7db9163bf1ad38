// SPDX-License-Identifier: MIT
//
// Whether the tip of a pole stays where it is, from gyros and antenna alone. While it does, the
// antenna moves on a sphere about it, and the gyros say how far:
//
//   |antenna(t) - antenna(s)| = L |u(t) - u(s)|,   u: up the pole, carried along by the gyros
//
// whatever the heading and the lean. Epochs of some seconds are compared with each other; a tip
// that has moved breaks the equality.
#pragma once

#include "field/Occupation.h"
#include <deque>

namespace cli {

class TipWatch
{
public:
    explicit TipWatch(const field::OccupationSetup& setup);

    /// The next sample of the gyros, later than the one before.
    void Turn(const field::InertialSample& sample);

    enum class Finding {
        Stays,
        Doubtful, // this epoch does not fit: the next one decides
        Moved,
    };

    /// An epoch at the time of the last sample. After Moved the watch has begun again with it.
    Finding Look(const field::AntennaEpoch& epoch);

    void Clear();

private:
    struct Seen
    {
        double seconds;
        xyhCoordinate antenna;
        field::SensorVector up; // in the axes of the sensor now
        double speed;           // of the antenna about the tip [m/s]
    };

    bool Fits(const Seen& earlier, const Seen& now) const;

    double m_poleLength;
    double m_tolerance; // of the antenna [m]
    std::deque<Seen> m_seen;
    bool m_doubtful = false;
    bool m_started = false;
    double m_seconds = 0.0;
    field::SensorVector m_rate; // [degrees/s]
};

} // namespace cli
