// SPDX-License-Identifier: MIT
//
// Whether the antenna's steps are those of a pole: explained by the change of the lean, by the
// speed and by the stated sigmas.
//
//   allowed = 5·√(σ²(before) + σ²(now)) + reach·dt
//   reach   speed of the receiver + 1 m/s while the pole moves; the speed alone while it stands still;
//           without a speed 3 m/s while the pole moves or nothing is known of it
//
// A step beyond that is a jump: the epoch is doubted, and the next one decides. Where it agrees
// with the epoch before the jump, the doubted one was wrong; where it agrees with the doubted one,
// the antenna is there, and between fixed epochs of a pole that stood still a step above a limit is
// another datum.
#pragma once

#include "field/Epoch.h"
#include "survey/Point.h"

#include <optional>

namespace tiltpole::field {

/// An epoch, as far as steps are concerned.
struct StepEpoch
{
    double seconds = 0.0; ///< any origin, no wrap at midnight
    ::field::Geodetic antenna;
    double sigma = 0.0; ///< of the antenna, largest axis [m]
    bool fixed = false;
    std::optional<survey::Point3> lean; ///< from tip to antenna: north, east, up [m]; none: no pose
    bool still = false;                 ///< the pole stands still by its pose
    std::optional<double> speed;        ///< by the receiver [m/s]
};

struct StepVerdict
{
    bool jump = false;
    double step = 0.0;    ///< not explained by the lean [m]
    double allowed = 0.0; ///< [m]
    /// The epoch before was doubted and this one shows that it was wrong.
    bool refuted = false;
    /// Between fixed epochs, above the limit, while the pole stood still; 0: none [m].
    double datumStep = 0.0;
};

class StepWatch
{
public:
    explicit StepWatch(double datumLimit) : m_datumLimit(datumLimit) {}

    StepVerdict Add(const StepEpoch& epoch);
    void Restart();

private:
    struct Motion
    {
        double step = 0.0;    // what the lean does not explain [m]
        double allowed = 0.0; // [m]
        bool Explained() const { return step <= allowed; }
    };
    Motion Between(const StepEpoch& before, const StepEpoch& now) const;
    void Accept(const StepEpoch& epoch, const StepEpoch* before);

    double m_datumLimit;
    std::optional<StepEpoch> m_last;          // accepted
    std::optional<StepEpoch> m_doubted;       // later than m_last
    std::optional<survey::Point3> m_velocity; // of the antenna between the last accepted two [m/s]
};

} // namespace tiltpole::field
