// SPDX-License-Identifier: MIT
/// @class field::Occupation
/// The tip of a pole from some seconds of an occupation: the antenna track tells where the pole
/// leans to, the gyros how it turned in between, the accelerometers where the vertical is. The
/// magnetometer is only a witness of the heading.
///
///     field::Occupation occupation(setup);       // once; allocates
///     occupation.Add(inertialSample);            // as samples come, 20 to 200 Hz
///     occupation.Add(antennaEpoch);              // as epochs come, 1 to 20 Hz
///     const auto estimate = occupation.Estimate(); // at any moment
///     if (estimate.advice == field::OccupationAdvice::Store) Store(estimate.tip);
///     else Show(field::OccupationText(estimate));
///
/// A sample whose magnetometer is doubted is marked, and the rest of it is used:
///
///     const auto verdict = monitor.Add(monitorSample);  // field::DisturbanceMonitor
///     inertialSample.disturbed = verdict.suspect || verdict.disturbed;
///
/// The tip must stay planted from the first sample to the last, and the pole must move: record the
/// lean-in, or rock the pole. Heading and tip follow from the motion; without it only the
/// magnetometer is left.
///
///     axes     sensor type 1: x forward, y left, z up the pole; others: x right, y forward, z up the pole.
///              Rates are positive for turns by the right hand about these axes; a pole at rest and plumb
///              reads +1 g along z
///     survey   x north, y east, h up [m]; azimuths from north towards east [degrees]
///     time     [s], of one clock for sensors and antenna, of any origin
///
/// Memory is bounded: a long occupation keeps every second, every fourth, ... sample and epoch, and
/// is refused where that does not follow the pole any more. Add and Estimate allocate nothing. One
/// object for each thread.
///
/// Model, derivation, meaning of each prior and measured figures: docs/occupation.md.
#pragma once

#include "field/ExactAttitude.h"
#include "framework/core/Export.h"
#include "positioning/PoseSensorData.h"

#include <memory>
#include <string>

namespace field {

/// One sample of the sensors.
struct InertialSample
{
    double seconds = 0.0;
    SensorVector rate;         ///< [degrees/s]
    SensorVector acceleration; ///< specific force [g]
    SensorVector magnetic;     ///< corrected reading of magnetometer A [any unit]; zero: none
    Tilt tilt;                 ///< used by EstimateWithoutGyros only; its sensor type is ignored
    bool disturbed = false;    ///< whether `magnetic` has no vote on the heading
};

/// One antenna position.
struct AntennaEpoch
{
    double seconds = 0.0;
    xyhCoordinate position;   ///< [m]
    double planSigma = 0.0;   ///< of x and y each [m]; 0: OccupationSetup::planSigma
    double heightSigma = 0.0; ///< [m]; 0: OccupationSetup::heightSigma
};

/// What is known beforehand. Sigmas are standard deviations, above 0 where nothing else is said.
struct OccupationSetup
{
    double poleLength = 2.0; ///< antenna to tip [m]
    int sensorType = 1;
    double sensorHeight = 0.0; ///< of the sensor above the tip, along the pole [m]; 0: is found out

    bool useMagnetometer = true;
    double magneticBias =
        0.0; ///< magnetic heading minus heading, as CInclineSensor_Position's [degrees]
    double headingSigma = 4.0; ///< of the magnetic heading [degrees]

    double gyroBiasSigma = 0.03;      ///< [degrees/s]
    double axisSigma = 0.15;          ///< of the pole's axis in the sensor, about x and y [degrees]
    double accelerometerSigma = 0.15; ///< of the vertical by a sensor at rest [degrees]
    double axisX = 0.0; ///< known part of the axis, towards the sensor's x axis [degrees]
    double axisY = 0.0; ///< and towards its y axis [degrees]
    SensorVector accelerometerBias{}; ///< known part, taken off the readings [g]
    SensorVector gyroBias{};          ///< likewise [degrees/s]
    double tiltSigma =
        0.5;            ///< of pitch and roll against the pole, constant; without gyros [degrees]
    double delay = 0.0; ///< known part: antenna epochs are stamped this much too early [s]
    double delaySigma = 0.03; ///< of the time between sensors and antenna [s]; 0: it is none

    double planSigma = 0.004;          ///< of an antenna position, independent after a second [m]
    double heightSigma = 0.011;        ///< likewise [m]
    double sharedPlanSigma = 0.003;    ///< common to all positions [m], not below 0
    double sharedHeightSigma = 0.0105; ///< likewise [m], not below 0
    double poleSigma = 0.002;          ///< of the pole's length [m], not below 0

    /// Largest semi-major axis and half height interval of a stored tip [m]; below 0.021 the
    /// default of sharedHeightSigma alone forbids to store. An error of the length of 0.05 m is
    /// excluded always.
    double tolerance = 0.05;
};

enum class OccupationAdvice {
    Store,
    Move,   ///< go on: the reason says how
    Refuse, ///< this occupation cannot be used: the reason says why
};

enum class OccupationReason {
    Sure,              ///< Store
    TooShort,          ///< Move: less than 2 s, or fewer than 4 antenna epochs that can be used
    HeadingUncertain,  ///< Move: rock a little more
    VerticalUncertain, ///< Move: hold still, the sensor is accelerated too much
    LengthUnchecked,   ///< Move: lean further, the track cannot confirm the pole's length yet
    TipUnchecked,      ///< Move: the track cannot confirm yet that the tip stood still, see tipStep
    AntennaUncertain,  ///< Move: wait, the antenna epochs are too few or too noisy
    NoInertialSamples, ///< Refuse
    NoAntennaEpochs,   ///< Refuse
    TimeRanBack,  ///< Refuse: more than one in a hundred samples is not later than the one before
    Gap,          ///< Refuse: the gyros paused for too long
    TooLong,      ///< Refuse: attitudes are kept too far apart, from about 160 s on
    AntennaStill, ///< Refuse: the gyros turn, the antenna does not move
    GyrosStill,   ///< Refuse: the antenna moves, the gyros hardly turn (rates in rad/s?)
    TipMoved,     ///< Refuse: see tipStep
    WrongLength, ///< Refuse: track and length disagree, see lengthError; a slip or gyros of a wrong
                 ///< scale look like that too
    SensorsContradict, ///< Refuse: no pole on its tip moves like that (axes, units, times)
    Rocked,            ///< Refuse: without gyros the pole has to be led slowly
    NoSolution,        ///< Refuse: the computation found no end
};

/// The tip of an occupation with its region, and whether to store it.
struct OccupationEstimate
{
    OccupationAdvice advice = OccupationAdvice::Refuse;
    OccupationReason reason = OccupationReason::NoSolution;
    bool hasTip = false; ///< whether what follows is set
    xyhCoordinate tip;
    double covariance[3][3] = {}; ///< of x, y, h, what all positions share included [m²]
    double ellipseMajor = 0.0;    ///< semi-axes of the 95 % ellipse [m]
    double ellipseMinor = 0.0;
    double ellipseAzimuth = 0.0;     ///< of the major axis [degrees], in [0, 180)
    double heightHalfInterval = 0.0; ///< 95 % [m]

    double heading =
        0.0; ///< of the levelled forward axis at the last sample [degrees], in [0, 360)
    double headingSigma = 0.0; ///< [degrees]
    double lean = 0.0;         ///< at the last sample [degrees]
    double turnSpread =
        0.0;               ///< root mean square of the pole's directions about their mean [degrees]
    SensorVector gyroBias; ///< [degrees/s], in the axes of the sensor
    double delay =
        0.0; ///< found, with the known part: antenna epochs are stamped this much too early [s]
    double delaySigma = 0.0; ///< [s]; 0: not asked for, or not enough motion

    /// Heading by the magnetometer minus that of the estimate [degrees]; NaN without readings, or
    /// where all were disturbed.
    double magneticDifference = 0.0;
    double disturbedPart = 0.0;  ///< of the time, in which samples were disturbed, 0 to 1
    double planResidual = 0.0;   ///< root mean square of each coordinate [m]
    double heightResidual = 0.0; ///< [m]
    double varianceFactor =
        0.0;              ///< what the residuals make of the stated antenna variances, times those
    int epochs = 0;       ///< antenna epochs in the estimate
    int doubtful = 0;     ///< of these, those that lost more than half of their weight
    int rejected = 0;     ///< epochs and samples that were not finite or not later than the last
    int gaps = 0;         ///< pauses of the gyros above 0.05 s
    double seconds = 0.0; ///< from the first sample to the last

    double tipStep = 0.0;      ///< the step of the tip that would explain most [m]
    double tipStepAt = 0.0;    ///< its time [s]
    double poleLength = 0.0;   ///< as in the setup [m]
    double lengthError = 0.0;  ///< true length minus poleLength, as the track shows it [m]
    double lengthSigma = 0.0;  ///< [m]
    double sensorHeight = 0.0; ///< used for taking off own motion [m]; 0: it was left
    double ownMotionFit =
        0.0; ///< part of the accelerations' variance that a planted pole explains, 0 to 1
};

/// What the estimate says to the surveyor, one sentence: "store", or what to do and why.
TILTPOLE_API std::string OccupationText(const OccupationEstimate& estimate);

class TILTPOLE_API Occupation
{
public:
    explicit Occupation(const OccupationSetup& setup);
    ~Occupation();
    Occupation(Occupation&&) noexcept;
    Occupation& operator=(Occupation&&) noexcept;

    /// Begins a new point.
    void Clear();

    /// @return whether it was taken: finite, and later than the last one
    bool Add(const InertialSample& sample);
    bool Add(const AntennaEpoch& epoch);

    /// From all that was added. Epochs later than the last inertial sample wait for the next
    /// estimate.
    OccupationEstimate Estimate();

    /// For sensors without gyros: pitch, roll and magnetic heading of each antenna epoch, with one
    /// unknown heading offset and constant errors of pitch and roll. An epoch takes those of the
    /// sample that was added last before it; with a disturbed one it is left out. Refuses a rocked
    /// pole, whose pitch and roll are those of its accelerations. Stores a pole only that was led
    /// slowly and held: otherwise neither its length nor that the tip stood still can be told from
    /// pitch and roll that lag. `useMagnetometer` off: readings still tell how the pole turns, but
    /// not which way north is.
    OccupationEstimate EstimateWithoutGyros();

private:
    struct Memory;
    std::unique_ptr<Memory> m_memory;
};

} // namespace field
