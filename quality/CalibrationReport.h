// SPDX-License-Identifier: MIT
/// @struct quality::CalibrationReport
/// Judges a calibration by its own samples: whether its headings can be trusted, and if not, why,
/// and what the operator should do.
///
/// A solver that returns 1 has found numbers, but has not checked them: a turn about an axis that
/// is not the sensor's own converges and leaves the heading wrong. The verdict is based on the
/// difference between the headings of the calibration and those of the joint fit (JointFit.h),
/// which is valid for any axis. Thresholds and how often they err: docs/calibration-quality.md.
///
///     CalibrationReport report = AssessCalibration({recorded, used, calibration, answer});
///     if (IsAccepted(report.verdict)) Store(calibration);
///     Show(ToText(report));
///
/// Angles are in degrees, readings in raw sensor counts; shares are fractions of one.
#pragma once

#include "framework/core/Export.h"
#include "quality/Calibration.h"
#include "quality/JointFit.h"
#include "quality/TurnFigures.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quality {

/// Heading differences up to these are good and usable. RMS [degrees]
inline constexpr double kGoodHeading = 1.0;
inline constexpr double kUsableHeading = 3.0;

/// The joint fit has an uncertainty of its own, which is added to the difference in quadrature
/// before a calibration is called good or usable: multiply the heading-dependent part by this
/// factor; the part common to all headings counts once (HeadingError::With). Nine of ten joint fits
/// are off by less than twice their uncertainty.
inline constexpr double kGoodCertainty = 2.0;
inline constexpr double kUsableCertainty = 1.5;

/// Without a joint fit: a calibration is poor where the spread of the corrected field strength is
/// above this. Coefficient of variation.
inline constexpr double kUsableSpread = 0.01;

/// A and B have to agree: beyond this systematic difference of their headings a calibration is
/// refused. RMS [degrees]
inline constexpr double kMostDisagreement = 10.0;

/// Pole length for which heading differences are converted to tip errors. [m]
inline constexpr double kReportPole = 2.0;

/// Unchecked: there is no joint fit, and no fault was found without it. One in five of these is off
/// by more than kUsableHeading.
enum class Verdict { Good, Usable, Unchecked, Poor, Refused };

/// The reason for a verdict.
enum class Finding {
    HeadingsAgree,         // no fault found
    JointFitCertain,       // the calibration is the joint fit, whose uncertainty is small
    HeadingsRoughlyAgree,  // no single cause stands out
    JointFitUncertain,     // no fault found, but the joint fit itself is too uncertain
    SolverFailed,          // the solver returned 0
    JointFitFailed,        // the calibration was to be the joint fit, and there is none
    NotFinite,             // a value of the calibration or of a sample is NaN or infinite
    TooFewSamples,         // a turn has fewer than ten samples
    Implausible,           // a scale of the calibration is below kLeastScale or above kMostScale
    HorizontalIncomplete,  // the horizontal turn covers less than kLeastCovered
    VerticalIncomplete,    // the vertical turn covers less than kLeastCovered
    TiltUnusable,          // pitch and roll cannot be used
    Swung,                 // a turn was swung, so that pitch and roll cannot be used
    FieldUneven,           // no joint fit, and the corrected field strength is not constant
    HorizontalAxis,        // the horizontal turn was not about the sensor's z axis
    VerticalAxis,          // the vertical turn was not about the sensor's y axis
    Wobble,                // the axis of a turn moved
    Disturbed,             // a magnet or iron was near during a part of a turn
    SectorsMissing,        // parts of a turn have no samples
    ConstantHeading,       // the headings differ by a constant angle
    BeyondEightValues,     // the distortion cannot be expressed by eight values
    AxesMisnamed,          // axes of a magnetometer are reversed or exchanged
    TiltOff,               // pitch and roll have an offset, or drift
    TurnsDiffer,           // the dip differs between the turns
    MagnetometersDisagree, // A and B find headings that differ by more than kMostDisagreement
    LogsExchanged,         // the horizontal log holds the vertical turn
    Mounting,              // the turns were about other axes than those of the sensor type
    TiltUnseen,            // no gyros, or type 2: of pitch and roll two turns cannot show enough
    MagnetometerStuck,     // an axis of a magnetometer reads the same however the pole turns
};

/// A vector by length and direction about the sensor's axes.
struct Direction
{
    double size = 0.0;
    double azimuth = 0.0;   // from x towards y [degrees] in [0, 360)
    double elevation = 0.0; // towards z [degrees]
};

/// An error of pitch and roll that the turns tell of, and how well it is known. [degrees]
struct TILTPOLE_API TiltError
{
    double pitch = 0.0;
    double roll = 0.0;
    double pitchDeviation = 0.0;
    double rollDeviation = 0.0;

    /// Of the squares of both, less what chance explains. [degrees²]
    double Excess() const;
};

/// Errors of pitch and roll that the gyros of the turns tell of: the vertical stands still in space
/// while the pole turns. Offsets are known no better than how gyros sit against inclinometers.
struct GyroTilt
{
    TiltError offset; // mean over both turns
    TiltError step;   // from the horizontal turn to the vertical one
    TiltError drift;  // from the first to the last sample of a turn, alike in both
};

/// Errors of pitch and roll. An offset that turns the inclinometers as a whole against the pole is
/// seen no better than it is known how the magnetometers are mounted.
struct TiltEvidence
{
    // With other sensor types than 1 these are not checked, and all zero.
    TiltError offset;   // mean over both turns
    TiltError drift;    // from the first to the last sample of a turn, alike in both
    double swing = 0.0; // apparent tilt by what the accelerations of the turns show beside gravity,
                        // of the turn with more of it [degrees]
    std::optional<GyroTilt> gyros; // nothing where a log has no gyros, or none that know a step of
                                   // the tilt to 0.6 degrees, or what they see cannot be weighed;
                                   // with sensor type 1 alone
};

/// Heading errors that leave the residuals of the joint fit small, as far as the turns tell of
/// them. RMS over all headings [degrees]
struct HiddenError
{
    double tilt =
        0.0; // by errors of pitch and roll that can be seen, by swing, and by what is left
             // of such errors unseen
    double tiltInUse =
        0.0;            // the same of headings formed with pitch and roll as reported after both
                        // turns: offsets that stay do them no harm
    double turns = 0.0; // by a field, a gain or a tilt that differs between the turns
    double gains =
        0.0; // the part of `turns` by what A and B find different, counted twice for good
    double noise = 0.0; // by the noise of the readings, and by joint fits of A and B that disagree
    double dipDifference = 0.0; // of the vertical turn and the horizontal one [degrees]
};

/// How far the headings of the calibration differ from those of the joint fit.
struct TILTPOLE_API HeadingError
{
    double rms = 0.0;      // over all headings at tilts of 0, 15 and 30 degrees [degrees]
    double rmsLevel = 0.0; // at each tilt [degrees]
    double rms15 = 0.0;
    double rms30 = 0.0;
    double constant = 0.0; // its mean, which a bias angle removes [degrees]
    /// Tip error of a pole of length kReportPole due to rms15 and rms30; where the calibration is
    /// the joint fit itself, due to the uncertainty as well. [mm]
    double tip15 = 0.0;
    double tip30 = 0.0;
    /// Standard deviation of the joint fit's own headings, RMS over the same poses, and its part
    /// common to all of them. [degrees]
    double uncertainty = 0.0;
    double uncertaintyConstant = 0.0;
    HiddenError hidden; // of the joint fit

    /// Heading error including the joint fit's uncertainty u and hidden errors h:
    /// √(rms² + c² + (certainty·v)² + h²), with the common part c of u and the rest v = √(u² − c²).
    /// [degrees]
    double With(double certainty) const;
};

/// The earth's field in the vertical turn against that in the horizontal one, as the joint fit
/// finds it: iron or masts near one of the places show here.
struct FieldChange
{
    double length = 0.0; // share by which it is longer
    double dip = 0.0;    // by which it is steeper, below the horizon [degrees]
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
    std::optional<FieldChange> change;   // only with a joint fit
};

/// Heading of B minus heading of A over the horizontal turn, less the half turn between them.
/// [degrees]
struct HeadingAgreement
{
    double mean = 0.0;
    double deviation = 0.0;
    double largest = 0.0; // absolute value
    /// What is not noise: RMS of the mean, and of what goes once and twice round with the heading.
    double systematic = 0.0;
};

struct CalibrationReport
{
    Verdict verdict = Verdict::Refused;
    bool weak = false; // judged without the joint fit; jointFit says why
    Finding reason = Finding::NotFinite;
    bool isJoint = false;      // of the run: the difference from the joint fit is that from itself
    double headingError = 0.0; // RMS difference from the joint fit, the larger of A and B; 0 when
                               // weak [degrees]
    /// The same by With(kUsableCertainty): a calibration is usable where it is below
    /// kUsableHeading. Without gyros that know the tilt of both turns all but the difference counts
    /// twice. [degrees]
    double headingUncertainty = 0.0;
    /// The same by With(kGoodCertainty): a calibration is good where it is below kGoodHeading with
    /// hidden.gains counted twice, and only if gyros know the tilt of both turns. [degrees]
    double headingBound = 0.0;
    JointFitOutcome jointFit = JointFitOutcome::TooFewSamples;
    TurnFigures horizontal;
    TurnFigures vertical;
    MagnetometerFigures a;
    MagnetometerFigures b;
    std::optional<HeadingAgreement> agreement;
    TiltEvidence tilt; // only with a joint fit
    /// What looks wrong with axes and logs, as half sentences: "magnetometer A: y looks reversed".
    /// Of several one is meant, and the turns do not tell which.
    std::vector<std::string> suspects;
};

/// Computes all figures and the verdict. Figures that cannot be computed stay 0 or absent.
TILTPOLE_API CalibrationReport AssessCalibration(const CalibrationRun& run);

/// Good and usable calibrations are accepted.
inline bool IsAccepted(Verdict verdict)
{
    return verdict == Verdict::Good || verdict == Verdict::Usable;
}

/// "good", "usable", "unchecked", "poor" or "refused"; empty for a number that is none.
TILTPOLE_API std::string_view Name(Verdict verdict);

/// A short name of the reason: "vertical-axis".
TILTPOLE_API std::string_view Name(Finding finding);

/// The reason as a sentence.
TILTPOLE_API std::string_view Explain(Finding finding);

/// What the operator should do about it, as a sentence.
TILTPOLE_API std::string_view Advice(Finding finding);

/// The verdict with its figure: "poor, heading error 3.95 degrees RMS". For the joint fit itself
/// the figure includes its uncertainty: "usable, heading uncertain by 1.39 degrees RMS".
TILTPOLE_API std::string Headline(const CalibrationReport& report);

/// The report as lines of text for an operator, with a decimal point in every locale.
TILTPOLE_API std::string ToText(const CalibrationReport& report);

} // namespace quality
