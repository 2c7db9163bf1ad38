// SPDX-License-Identifier: MIT
//
// The tip of one epoch: antenna, pose and declination in, tip in latitude and longitude out.
//
//   heading true = magnetic - axis offset + D      (NorthSource::File: magnetic - bias)
//   tip = Offset(antenna, step)                    step: Position about a zero point with L
//
//   L        poleLength + phaseCenter [m]
//   step     from antenna to tip, x true north, y east, z up [m]
//   offset   bias angle of magnetometer A in the calibration
//
// A heading that the sensor formed is magnetic. The calibration of the magnetometers is not applied
// to it, nor their axis offset: true = heading + D. With NorthSource::File the bias is what leads
// to true north and is taken off such a heading, too. The solver has no state: every call stands
// alone. Derivation: docs/live-formulas.md, "Tip".
#pragma once

#include "field/Bridge.h"
#include "field/North.h"
#include "survey/Point.h"

#include <optional>
#include <vector>

namespace tiltpole::field {

inline constexpr double kTipLatitude = 85.0;       // largest, north and south [degrees]
inline constexpr double kLeastHorizontal = 2000.0; // of the field, below it no north [nT]
inline constexpr double kUsualHorizontal = 6000.0; // below it a note [nT]

/// Changes of what was measured, for derivatives.
struct PoseChange
{
    double pitch = 0.0;   // [degrees]
    double roll = 0.0;    // [degrees]
    double heading = 0.0; // [degrees]
    double length = 0.0;  // [m]
};

/// What is known about the tip of an epoch.
struct TipSolution
{
    /// Without sigma (see Covariance.h) and antennaSpeed. None: the reasons say why not.
    std::optional<::field::Tip> tip;
    /// Known from pitch and roll alone; NaN without a pose.
    double lean = 0.0; // [degrees]
    double drop = 0.0; // height of the antenna above the tip, L·cos(lean) [m]
    /// By the model, whatever NorthSource is; NaN where it has none.
    ::field::Field model;
    /// Why there is no tip, the most important first, and notes (WeakField).
    std::vector<::field::Reason> reasons;
};

class TipSolver
{
public:
    /// Keeps a copy.
    explicit TipSolver(const ::field::Setup& setup);

    /// @param pose         interpolated to the epoch's moment; its readings and headings of A and B
    ///                     (dYaw true, dYaw_2) are in the tip's pose
    /// @param decimalYear  NaN: the date is not known
    TipSolution Solve(const ::field::Epoch& epoch, const ::field::PoseSample& pose,
                      double decimalYear) const;

    /// The step from antenna to tip by a pose; `Solve` adds it to the antenna. The negative one
    /// over time is the antenna's velocity relative to the tip.
    /// @param declination  [degrees]; of no effect with NorthSource::File
    /// @return NaN where pitch and roll belong to no inclination
    survey::Point3 Step(const ::field::PoseSample& pose, double declination,
                        const PoseChange& change = {}) const;

    const ::field::Setup& GetSetup() const { return m_setup; }

private:
    ::field::Setup m_setup;
};

} // namespace tiltpole::field
