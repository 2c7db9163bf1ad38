// SPDX-License-Identifier: MIT
//
// A full correction brought into the eight values of the parameter file and a bias angle.
//
//   x' = rx − x0,  y' = a·rx + b·ry − y0,  z' = c·rx + d·ry + e·rz − z0
//
// Eight values keep x as it is, a full matrix does not: what is left is a rotation. Its part about
// the sensor's z axis is the bias angle; for the rest the values are chosen so that the headings
// differ least. Derivation: docs/formulas.md, "From the full matrix to eight values".
#pragma once

#include "positioning/MagneticParameters.h"
#include "quality/calibration/LevelFrame.h"
#include "quality/calibration/SphereFit.h"

#include <optional>
#include <vector>

namespace tiltpole::quality {

/// One pose in which headings are compared, the headings all around evenly shared.
struct Pose
{
    LevelFrame frame;
    double heading = 0.0; // [degrees]
    double weight = 0.0;  // the weights of one tilt sum to one third
    int tilt = 0;         // place in kTilts
};

inline constexpr double kTilts[] = {0.0, 15.0, 30.0}; // [degrees]

/// Poses at all headings, plumb and leaning all round by each of kTilts.
std::vector<Pose> HeadingGrid(int sensorType, Magnetometer which);

/// The correction of the parameter file as a full one, offsets included.
FullCorrection FullOf(const Incline_MagneticCorrectParameter& values);

/// How much one correction's headings differ from another's.
struct HeadingDifference
{
    double rms = 0.0;     // over all poses [degrees]
    double rmsAt[3] = {}; // at each of kTilts [degrees]
    double mean = 0.0;    // over all poses [degrees]
};

/// Heading by `judged`, less its bias angle, minus heading by `reference`.
/// @param elevation  sine of the field's elevation that the poses are computed for
HeadingDifference Compare(const FullCorrection& judged, double biasAngle,
                          const FullCorrection& reference, double elevation,
                          const std::vector<Pose>& grid);

/// How well the headings of a fit are known, as standard deviations [degrees].
struct HeadingUncertainty
{
    double constant = 0.0; // of what all headings have in common
    double varying = 0.0;  // of the rest: root of its mean variance over the grid
};

/// @param covariance  of the fit's weights and offset
/// @param elevation   sine of the field's elevation that the poses are computed for
HeadingUncertainty UncertaintyOf(const FullCorrection& fit, const CorrectionCovariance& covariance,
                                 double elevation, const std::vector<Pose>& grid);

struct EightValues
{
    Incline_MagneticCorrectParameter values;
    double biasAngle = 0.0; // [degrees]
};

/// The eight values and the bias angle whose headings over the grid come closest to those of
/// `full`, by least squares.
/// @return nothing when no finite values are found
std::optional<EightValues> Reduced(const FullCorrection& full, double elevation,
                                   const std::vector<Pose>& grid);

} // namespace tiltpole::quality
