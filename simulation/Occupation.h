// SPDX-License-Identifier: MIT
//
// A log of occupied points: on each the tip is planted and the pole moved for some seconds, while
// gyros, accelerometers and magnetometers are read many times a second and the antenna some times.
//
//   antenna(t) = tip(t - delay) + length * up the pole(t - delay) + noise + jumps
//   sensor     = pole turned by the mounting: its z axis misses the pole's axis by two small angles
//
// The first tip and the pole's true length are the truth; what a host is told may differ from it.
//
//     OccupationPlan plan;
//     plan.motion.leanTo = 30.0;
//     const Occupations log = SimulateOccupations({}, {}, plan, seed);
//     // log.rows[i].sample, log.rows[i].antenna; log.points[p].tip is true
#pragma once

#include "simulation/PlantedPole.h"
#include "simulation/Pole.h"
#include "simulation/Timeline.h"

#include <optional>
#include <string>
#include <vector>

namespace simulation {

/// Constant errors of a sensor on its pole that a host does not know.
struct PoleErrors
{
    double axisForward = 0.0;  // the pole's upper end leans so far to the sensor's front [degrees]
    double axisRight = 0.0;    // and to its right side [degrees]
    Point3 accelerationBias{}; // [g]
    Point3 gyroBias{};         // [degrees/s]
    Point3 gyroScale{};        // relative
    Point3 hardIronA{};        // left over by a calibration [counts]
    Point3 hardIronB{};        // [counts]
    Matrix softIronA{};        // left over by a calibration; identity: none
    Matrix softIronB{};
};

/// Standard deviations of such errors, each of every component. The defaults are a sensor that is
/// calibrated, but not on this pole: median errors of 0.126 degrees of the axis, 0.166 degrees of
/// the accelerometers and 10 counts of hard iron.
struct ErrorSpread
{
    double axis = 0.107;              // [degrees]
    double accelerationBias = 0.0025; // [g]
    double gyroBias = 0.03;           // [degrees/s]
    double gyroScale = 0.001;         // relative
    double hardIron = 6.6;            // [counts]
    double softIron = 0.01;           // of every element of the matrix
};

/// Errors drawn at random.
/// @param index  tells draws of one seed apart
PoleErrors DrawErrors(const ErrorSpread& spread, std::uint64_t seed, std::uint64_t index);

/// Antenna positions that are off for a while, as when the receiver loses its fix.
struct Jump
{
    double from = 0.0; // [s] since the start of the point
    double to = 0.0;   // [s] since the start of the point, not included
    Point3 by{};       // north, east, up [m]
};

/// Errors of an antenna as recorded, one after the other; between them they are interpolated.
struct RecordedNoise
{
    std::vector<Point3> errors{}; // north, east, up [m]; empty: none
    double interval = 1.0;        // [s]
};

struct OccupationPlan
{
    int points = 8;
    double rate = 50.0;                       // of the sensor [Hz]
    double antennaRate = 5.0;                 // epochs per second, not above `rate` [Hz]
    PlantedMotion motion{};                   // azimuth and heading are drawn for each point
    Point3 start{4500000.0, 500000.0, 100.0}; // first tip [m]
    double spacing = 5.0;                     // between neighboring points in plan [m]
    double relief = 0.2;                      // standard deviation of the heights of the points [m]
    double poleLength = 2.0;                  // antenna to tip, as a host is told [m]
    double poleError = 0.0;                   // of the true length, added to it [m]
    double axisForward = 0.0; // known part of the mounting, see PoleErrors [degrees]
    double axisRight = 0.0;   // [degrees]
    double delay = 0.0;       // of the antenna behind the sensor [s]
    AntennaNoise noise{};
    RecordedNoise recorded{}; // where given, instead of `noise`
    Losses losses{};          // of rows; times since the start of each point
    Losses epochLosses{};     // of epochs only
    std::vector<Jump> jumps{};
    std::vector<Magnet> magnets{}; // times since the start of each point
    std::vector<Dipole> dipoles{}; // places from the tip, north, east, down
    ErrorSpread spread{};          // drawn once for the log
    bool anew = false;             // drawn for each point: the sensor is mounted anew
    double startOfDay = 36000.0;   // time of day of the first sample [s]
    double travel = 10.0;          // between two points [s]
};

struct OccupationTruth
{
    PoseTruth pose; // of the sensor; seconds since the start of the point
    Point3 tip;     // where it is now [m]
    Point3 antenna; // now, without noise and delay [m]
};

struct OccupationRow
{
    int point = 0; // from 1
    PoseSensorData sample{};
    std::optional<Point3> antenna; // of an epoch [m]
    OccupationTruth truth;
};

struct OccupiedPoint
{
    Point3 tip;           // where it was planted [m]
    Point3 tipAtEnd;      // differs after a slip [m]
    double azimuth = 0.0; // of the lean [degrees]
    double heading = 0.0; // at the start [degrees]
    PoleErrors errors;
};

struct Occupations
{
    std::vector<OccupationRow> rows;
    std::vector<OccupiedPoint> points;
};

/// A sensor that is calibrated, so without iron, with its usual noise. Pitch and roll are slopes
/// that a filter forms.
PoseSensor CalibratedSensor();

/// One sentence on what makes a plan impossible; empty for a plan that can be carried out.
std::string ProblemOf(const OccupationPlan& plan);

/// The log; empty for a plan that cannot be carried out.
Occupations SimulateOccupations(const PoseSensor& sensor, const EarthField& field,
                                const OccupationPlan& plan, std::uint64_t seed);

} // namespace simulation
