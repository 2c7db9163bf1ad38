// SPDX-License-Identifier: MIT
//
// What can be said about a calibration from its own samples: whether its headings can be trusted,
// and if not, why, and what the operator should do.
//
// A solver that answers 1 has found numbers, not proved them: a turn that was not about the
// sensor's own axis converges and leaves the heading wrong. The verdict rests on the difference
// between the headings of the calibration and those of the joint fit (JointFit.h), which holds for
// any axis. Thresholds and how often they err: docs/calibration-quality.md.
//
//     CalibrationReport report = AssessCalibration({recorded, used, calibration, answer});
//     if (IsAccepted(report.verdict)) Store(calibration);
//     Show(ToText(report));
//
// Angles are degrees, shares are parts of one.
#pragma once

#include "framework/core/Export.h"
#include "quality/Calibration.h"
#include "quality/JointFit.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quality {

/// Heading differences up to these are good and usable. RMS [degrees]
inline constexpr double kGoodHeading = 1.0;
inline constexpr double kUsableHeading = 3.0;

/// The joint fit has an uncertainty of its own, which is added to the difference as the root of the
/// sum of squares: what varies with the heading so many times before a calibration is called good
/// or usable, what all headings share once (HeadingError::With). Nine of ten joint fits are off by
/// less than twice their uncertainty.
inline constexpr double kGoodCertainty = 2.0;
inline constexpr double kUsableCertainty = 1.0;

/// Without a joint fit: spread of the corrected field strength up to which a calibration may still
/// be usable. Coefficient of variation.
inline constexpr double kUsableSpread = 0.01;

/// Pole length for which heading differences are shown as tip errors. [m]
inline constexpr double kReportPole = 2.0;

enum class Verdict { Good, Usable, Poor, Refused };

/// The one reason that a verdict names.
enum class Finding {
    HeadingsAgree,        // nothing to complain about
    HeadingsRoughlyAgree, // no single cause stands out
    JointFitUncertain,    // the headings agree, but the joint fit itself is not known well enough
    SolverFailed,         // the solver answered 0
    NotFinite,            // a value of the calibration or of a sample is no number
    TooFewSamples,        // a turn has fewer than ten samples
    Implausible,          // a scale of the calibration is below kLeastScale or above kMostScale
    HorizontalIncomplete, // the horizontal turn covers less than kLeastCovered
    VerticalIncomplete,   // the vertical turn covers less than kLeastCovered
    TiltUnusable,         // pitch and roll cannot be used
    FieldUneven,          // no joint fit, and the corrected field strength is not constant
    HorizontalAxis,       // the horizontal turn was not about the sensor's z axis
    VerticalAxis,         // the vertical turn was not about the sensor's y axis
    Wobble,               // the axis of a turn moved
    Disturbed,            // something magnetic was near for a part of a turn
    SectorsMissing,       // parts of a turn have no samples
    ConstantHeading,      // the headings differ by a constant angle
    BeyondEightValues,    // the distortion cannot be expressed by eight values
};

/// A part of a turn without samples, by azimuth about the turn's centre, whole degrees in
/// multiples of five. `to` may be below `from` where it reaches over 360.
struct TILTPOLE_API MissingSector
{
    int from = 0;
    int to = 360;

    /// "040-055"
    std::string Name() const;
};

/// The circle through the raw readings of magnetometer A in the plane of a turn. [counts]
struct TurnCircle
{
    double x = 0.0;      // centre
    double second = 0.0; // centre, y or z
    double radius = 0.0;
};

/// How one turn was made.
struct TurnFigures
{
    int recorded = 0;                   // samples before screening
    int used = 0;                       // samples after it
    TurnCircle circle;                  // of the recorded samples
    double covered = 0.0;               // of the turn, used samples [degrees]
    std::vector<MissingSector> missing; // gaps wider than 15 degrees
    double turningBack = 0.0;           // share of recorded samples behind the furthest one
    double circleA = 0.0;               // corrected readings off the circle in the turn's plane,
    double circleB = 0.0;               // RMS, share of its radius
    double axisError = 0.0;             // between the turn's axis and the sensor's [degrees]
    double wobble = 0.0;                // of that axis, standard deviation [degrees]
    std::optional<double> levelError;   // of the axis in space, where tilt is usable [degrees]
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
    double constant = 0.0; // its mean: what a bias angle takes away [degrees]
    double tip15 = 0.0;    // tip error of a pole of kReportPole by rms15 and rms30 [mm]
    double tip30 = 0.0;
    /// Of the joint fit's own headings, RMS over the same ones, and its part that all of them
    /// have in common. [degrees]
    double uncertainty = 0.0;
    double uncertaintyConstant = 0.0;

    /// Heading error, the joint fit's uncertainty included: √(rms² + c² + (certainty·v)²) with
    /// its common part c and the rest v = √(u² − c²). [degrees]
    double With(double certainty) const;
};

/// What one magnetometer suffers from, and how well that is removed.
struct MagnetometerFigures
{
    double spreadBefore = 0.0;  // field strength of both turns, raw: coefficient of variation
    double spreadAfter = 0.0;   // corrected
    Direction hardIron;         // offset of the raw readings [counts]
    double hardIronShare = 0.0; // its size as a share of the field
    Direction softIron;         // strongest against weakest gain less one; the strongest direction
    double disturbed = 0.0;     // share of readings that the joint fit left out
    std::optional<HeadingError> heading; // only with a joint fit
};

/// Heading of B against A over the horizontal turn, the half turn between them taken off.
struct HeadingAgreement
{
    double mean = 0.0;
    double deviation = 0.0;
    double largest = 0.0; // absolute difference
};

struct CalibrationReport
{
    Verdict verdict = Verdict::Refused;
    bool weak = false; // judged without the joint fit, for the reason in jointFit
    Finding reason = Finding::NotFinite;
    double headingError = 0.0; // the verdict's figure: the larger of A and B; 0 when weak [degrees]
    double headingBound = 0.0; // the same with kGoodCertainty uncertainties: to be called good it
                               // must stay below kGoodHeading [degrees]
    JointFitOutcome jointFit = JointFitOutcome::TooFewSamples;
    TurnFigures horizontal;
    TurnFigures vertical;
    MagnetometerFigures a;
    MagnetometerFigures b;
    std::optional<HeadingAgreement> agreement;
};

/// Computes all figures and the verdict. Never fails: what cannot be computed stays 0 or absent.
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

/// What the operator should do about it, a sentence.
TILTPOLE_API std::string_view Advice(Finding finding);

/// The whole report as lines of text for an operator, numbers with a decimal point.
TILTPOLE_API std::string ToText(const CalibrationReport& report);

} // namespace quality
