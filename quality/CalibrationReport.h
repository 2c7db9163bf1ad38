// SPDX-License-Identifier: MIT
//
// Judges a calibration by its own samples: whether its headings can be trusted, and if not, why, and
// what the operator should do.
//
// A solver that returns 1 has found numbers, but has not checked them: a turn about an axis that is
// not the sensor's own converges and leaves the heading wrong. The verdict is based on the difference
// between the headings of the calibration and those of the joint fit (JointFit.h), which is valid for
// any axis. Thresholds and how often they err: docs/calibration-quality.md.
//
//     CalibrationReport report = AssessCalibration({recorded, used, calibration, answer});
//     if (IsAccepted(report.verdict)) Store(calibration);
//     Show(ToText(report));
//
// Angles are in degrees, readings in raw sensor counts; shares are fractions of one.
#pragma once

#include "framework/core/Export.h"
#include "quality/Calibration.h"
#include "quality/JointFit.h"
#include "quality/TurnFigures.h"

#include <optional>
#include <string>
#include <string_view>

namespace quality {

/// Heading differences up to these are good and usable. RMS [degrees]
inline constexpr double kGoodHeading = 1.0;
inline constexpr double kUsableHeading = 3.0;

/// The joint fit has an uncertainty of its own, which is added to the difference in quadrature before
/// a calibration is called good or usable: multiply the heading-dependent part by this factor; the
/// part common to all headings counts once (HeadingError::With). Nine of ten joint fits are off by
/// less than twice their uncertainty.
inline constexpr double kGoodCertainty = 2.0;
inline constexpr double kUsableCertainty = 1.0;

/// Without a joint fit: largest spread of the corrected field strength at which a calibration may
/// still be usable. Coefficient of variation.
inline constexpr double kUsableSpread = 0.01;

/// Pole length for which heading differences are converted to tip errors. [m]
inline constexpr double kReportPole = 2.0;

enum class Verdict { Good, Usable, Poor, Refused };

/// The reason for a verdict.
enum class Finding {
    HeadingsAgree,        // no fault found
    HeadingsRoughlyAgree, // no single cause stands out
    JointFitUncertain,    // the headings agree, but the joint fit itself is too uncertain
    SolverFailed,         // the solver returned 0
    NotFinite,            // a value of the calibration or of a sample is NaN or infinite
    TooFewSamples,        // a turn has fewer than ten samples
    Implausible,          // a scale of the calibration is below kLeastScale or above kMostScale
    HorizontalIncomplete, // the horizontal turn covers less than kLeastCovered
    VerticalIncomplete,   // the vertical turn covers less than kLeastCovered
    TiltUnusable,         // pitch and roll cannot be used
    FieldUneven,          // no joint fit, and the corrected field strength is not constant
    HorizontalAxis,       // the horizontal turn was not about the sensor's z axis
    VerticalAxis,         // the vertical turn was not about the sensor's y axis
    Wobble,               // the axis of a turn moved
    Disturbed,            // a magnet or iron was near during a part of a turn
    SectorsMissing,       // parts of a turn have no samples
    ConstantHeading,      // the headings differ by a constant angle
    BeyondEightValues,    // the distortion cannot be expressed by eight values
};

/// A vector by length and direction about the sensor's axes.
struct Direction
{
    double size = 0.0;
    double azimuth = 0.0;   // from x towards y [degrees] in [0, 360)
    double elevation = 0.0; // towards z [degrees]
};

/// How far the headings of the calibration differ from those of the joint fit.
struct TILTPOLE_API HeadingError
{
    double rms = 0.0;      // over all headings at tilts of 0, 15 and 30 degrees [degrees]
    double rmsLevel = 0.0; // at each tilt [degrees]
    double rms15 = 0.0;
    double rms30 = 0.0;
    double constant = 0.0; // its mean, which a bias angle removes [degrees]
    double tip15 = 0.0;    // tip error of a pole of length kReportPole due to rms15 and rms30 [mm]
    double tip30 = 0.0;
    /// Standard deviation of the joint fit's own headings, RMS over the same poses, and its part
    /// common to all of them. [degrees]
    double uncertainty = 0.0;
    double uncertaintyConstant = 0.0;

    /// Heading error including the joint fit's uncertainty u: √(rms² + c² + (certainty·v)²), with
    /// the common part c of u and the rest v = √(u² − c²). [degrees]
    double With(double certainty) const;
};

/// The distortion of one magnetometer, and how well the calibration removes it.
struct MagnetometerFigures
{
    double spreadBefore = 0.0;  // field strength of both turns, raw: coefficient of variation
    double spreadAfter = 0.0;   // the same, corrected
    Direction hardIron;         // offset of the raw readings [counts]
    double hardIronShare = 0.0; // its size as a share of the field
    Direction softIron;         // strongest gain over weakest, minus one; towards the strongest
    double disturbed = 0.0;     // share of readings that the joint fit left out
    std::optional<HeadingError> heading; // only with a joint fit
};

/// Heading of B minus heading of A over the horizontal turn, less the half turn between them.
/// [degrees]
struct HeadingAgreement
{
    double mean = 0.0;
    double deviation = 0.0;
    double largest = 0.0; // absolute value
};

struct CalibrationReport
{
    Verdict verdict = Verdict::Refused;
    bool weak = false; // judged without the joint fit; jointFit says why
    Finding reason = Finding::NotFinite;
    double headingError = 0.0; // the verdict's figure: the larger of A and B; 0 when weak [degrees]
    double headingBound = 0.0; // the same by With(kGoodCertainty): a calibration is good where it
                               // is below kGoodHeading [degrees]
    JointFitOutcome jointFit = JointFitOutcome::TooFewSamples;
    TurnFigures horizontal;
    TurnFigures vertical;
    MagnetometerFigures a;
    MagnetometerFigures b;
    std::optional<HeadingAgreement> agreement;
};

/// Computes all figures and the verdict. Figures that cannot be computed stay 0 or absent.
TILTPOLE_API CalibrationReport AssessCalibration(const CalibrationRun& run);

/// Good and usable calibrations are accepted.
inline bool IsAccepted(Verdict verdict)
{
    return verdict == Verdict::Good || verdict == Verdict::Usable;
}

/// "good", "usable", "poor" or "refused".
TILTPOLE_API std::string_view Name(Verdict verdict);

/// A short name of the reason: "vertical-axis".
TILTPOLE_API std::string_view Name(Finding finding);

/// The reason as a sentence.
TILTPOLE_API std::string_view Explain(Finding finding);

/// What the operator should do about it, as a sentence.
TILTPOLE_API std::string_view Advice(Finding finding);

/// The report as lines of text for an operator, with a decimal point in every locale.
TILTPOLE_API std::string ToText(const CalibrationReport& report);

} // namespace quality
