// SPDX-License-Identifier: MIT
/// @class field::SpotCalibration
/// Calibration of a pole on the spot: its tip is planted on any fixed point and for some 20 s the
/// pole is rocked in all directions and turned about its own axis. Neither a turntable nor a known
/// point is needed.
///
///     field::SpotCalibration calibration({.poleLength = 2.0});
///     for (const Row& row : log) {
///         calibration.Add(row.sample, row.magneticB);   // raw readings, 20 to 200 Hz
///         if (row.antenna) calibration.Add(*row.antenna); // 1 to 20 Hz
///     }
///     const field::SpotResult found = calibration.Estimate();
///     if (!found.IsUsable()) Show(field::SpotText(found)); // "turn the pole about its axis: ..."
///     else occupation = field::Occupation(field::WithCalibration(occupationSetup, found));
///
/// The antenna's track and the gyros give the attitude at every moment, as in field::Occupation,
/// but with wide priors: what the sensors' errors are is the question here. From the attitude
/// follow
///
///     axis           where the pole's upper end lies in the sensor: angles from its z axis
///     accelerometer  reading of the sensor = specific force + bias
///     gyro           reading = rate·(1 + scale) + bias
///     magnetometer   reading = softIron·field + hardIron, in its own axes
///
///     axes     sensor type 1: x forward, y left, z up the pole; others: x right, y forward, z up the pole.
///              Magnetometer B is mounted with x and y opposed. Turns by the right hand are positive
///     survey   x north, y east, h up [m]; azimuths from north towards east [degrees]
///     time     [s], of one clock for sensors and antenna, of any origin
///
/// Sigmas are standard deviations. Model, derivation and measured figures: docs/occupation.md,
/// "Calibration on the spot".
#pragma once

#include "field/Occupation.h"
#include "positioning/MagneticParameters.h"

#include <array>
#include <memory>
#include <string>

namespace field {

/// What is known beforehand. Sigmas above 0.
struct SpotSetup
{
    double poleLength = 2.0; ///< antenna to tip [m]
    int sensorType = 1;
    double planSigma = 0.004;   ///< of an antenna position, independent after a second [m]
    double heightSigma = 0.011; ///< likewise [m]
    double poleSigma = 0.002;   ///< of the pole's length [m]
};

enum class SpotReason {
    Usable,
    TooShort,          ///< less than 10 s, or fewer than 10 antenna epochs
    TooLong,           ///< more than 35 s, in which gyros drift, or 30 000 samples or 3000 epochs
    NoInertialSamples, ///< none that could be taken
    NoAntennaEpochs,   ///< none that could be taken
    TimeRanBack,       ///< more than one in a hundred is not later than the one before
    Gap,               ///< the sensors paused for more than 0.15 s
    TurnMore,          ///< turn the pole about its axis
    LeanFurther,       ///< rock it further
    GoOn,              ///< moved enough, but something is not known well enough yet: longer
    TipMoved,          ///< the tip did not stay where it was
    WrongLength,       ///< the track shows another length of the pole
    FieldDisturbed,    ///< the magnetometer does not follow one constant field
    SensorsContradict, ///< sensors and antenna do not belong to a pole on its tip
    NoSolution,        ///< fewer than four antenna epochs lie within the time of the samples
    MagnetometerStuck, ///< an axis of a magnetometer reads the same however the pole turns
};

/// A value of three components and the standard deviation of each.
struct SpotVector
{
    SensorVector value;
    SensorVector sigma;
};

/// What was found for one magnetometer. Offsets in counts of the raw readings, in its own axes.
struct SpotMagnetometer
{
    bool found = false; ///< whether the rest is set: there were readings other than 0
    bool stuck = false; ///< whether an axis gave the same reading throughout
    SpotVector hardIron;
    /// Reading by field along the axes; the first element is 1, since readings alone do not tell
    /// how strong the field is.
    std::array<std::array<double, 3>, 3> softIron{};
    double softIronSigma = 0.0; ///< the largest of its elements
    /// The correction in the form of the parameter file that comes closest, and the heading by it
    /// minus the heading by the track [degrees]: declination, and what the form leaves of the soft
    /// iron.
    Incline_MagneticCorrectParameter correction;
    double bias = 0.0;
    double biasSigma = 0.0; ///< [degrees]
    double strength = 0.0;  ///< of corrected readings [counts]
    double strengthSigma = 0.0;
    double dip = 0.0;      ///< of corrected readings [degrees], positive below the horizon
    double dipSigma = 0.0; ///< [degrees]
    double residual = 0.0; ///< root mean square of each component of the readings [counts]
};

/// What a calibration on the spot found out about a pole and its sensors, and whether to use it.
struct SpotResult
{
    SpotReason reason = SpotReason::NoSolution;
    bool hasValues = false; ///< whether what follows is set, usable or not

    double axisX = 0.0;     ///< the pole's upper end in the sensor, towards its x axis [degrees]
    double axisY = 0.0;     ///< towards its y axis [degrees]
    double axisSigma = 0.0; ///< the larger of both [degrees]
    SpotVector accelerometerBias; ///< [g]
    SpotVector gyroBias;          ///< [degrees/s]
    SpotVector gyroScale;         ///< relative
    double sensorHeight = 0.0;    ///< of the sensor above the tip [m]
    double sensorHeightSigma = 0.0;
    double delay = 0.0; ///< antenna epochs are stamped this much too early [s]
    double delaySigma = 0.0;
    SpotMagnetometer a;
    SpotMagnetometer b;

    xyhCoordinate tip; ///< the place [m]
    double seconds = 0.0;
    int samples = 0;
    int epochs = 0;
    int rejected = 0;    ///< samples and epochs that were not finite or not later than the last
    double turned = 0.0; ///< about the pole's axis, from one extreme to the other [degrees]
    double leanSpread =
        0.0; ///< root mean square of the pole's directions about their mean [degrees]
    double planResidual = 0.0; ///< root mean square of each coordinate [m]
    double heightResidual = 0.0;
    double varianceFactor = 0.0; ///< what the residuals make of the stated antenna variances
    double lengthError = 0.0;    ///< true length minus poleLength, as the track shows it [m]
    double lengthSigma = 0.0;    ///< [m]
    double tipStep = 0.0;        ///< the step of the tip that would explain most [m]

    bool IsUsable() const { return reason == SpotReason::Usable; }
};

/// One sentence: "usable", or what to do and why.
TILTPOLE_API std::string SpotText(const SpotResult& result);

/// The setup of an occupation by the same sensor on the same pole: axis, biases, heading bias and,
/// where `setup` has none, the height of the sensor and the delay as priors with their sigmas,
/// everything else as in `setup`. The magnetic readings of its samples have to be corrected with
/// `result.a.correction`. A result that is not usable changes nothing.
TILTPOLE_API OccupationSetup WithCalibration(const OccupationSetup& setup,
                                             const SpotResult& result);

class TILTPOLE_API SpotCalibration
{
public:
    explicit SpotCalibration(const SpotSetup& setup);
    ~SpotCalibration();
    SpotCalibration(SpotCalibration&&) noexcept;
    SpotCalibration& operator=(SpotCalibration&&) noexcept;

    /// Begins anew.
    void Clear();

    /// @param sample     `magnetic` is the raw reading of magnetometer A [counts]; zero: none. `tilt` is
    ///                   not used; of a disturbed sample the magnetometers are not
    /// @param magneticB  raw reading of magnetometer B, in its own axes [counts]; zero: none
    /// @return whether it was taken: finite, and later than the last one
    bool Add(const InertialSample& sample, const SensorVector& magneticB = {});
    bool Add(const AntennaEpoch& epoch);

    /// From all that was added; some milliseconds.
    SpotResult Estimate() const;

private:
    struct Memory;
    std::unique_ptr<Memory> m_memory;
};

} // namespace field
