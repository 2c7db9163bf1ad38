// SPDX-License-Identifier: MIT
//
// The pose sensor of a simulated pole: what it reads of the earth's field, of the pole's attitude
// and of its motion.
//
//   field    = strength (cos dip cos declination, cos dip sin declination, sin dip), level frame
//   raw A    = soft iron A * (field + disturbance, along the axes of A) + hard iron A + noise
//   raw B    = the same along the axes of B, which are those of A with x and y opposed
//
// every component rounded to a multiple of the step. Gyros and accelerometers:
//
//   rate          = true rate * (1 + scale error) + bias + noise, cut to the range
//   acceleration  = specific force along the axes + bias + noise
//
// Pitch and roll are the true ones, or those of a six-axis filter (TiltFilter.h). The correction
// that undoes it exactly exists in the form of the parameter file when the soft iron is lower
// triangular: see CorrectionOf. Angles are degrees, magnetometer values raw counts.
#pragma once

#include "positioning/MagneticParameters.h"
#include "positioning/PoseSensorData.h"
#include "simulation/Attitude.h"
#include "simulation/Random.h"
#include "simulation/TiltFilter.h"
#include <cstdint>
#include <optional>
#include <vector>

namespace simulation {

struct EarthField
{
    double strength = 534.0;  // [counts]: 49 microtesla at 1090 counts per gauss
    double dip = 66.0;        // [degrees] below the horizon, positive in the north
    double declination = 0.0; // [degrees] of magnetic north, east of the plane's x axis
};

struct MagnetometerModel
{
    Matrix softIron{};  // distortion of the field; identity: none
    Point3 hardIron{};  // reading where there is no field [counts]
    double noise = 0.0; // standard deviation per axis [counts]
};

/// What the sensor calls roll.
enum class RollReport : std::uint8_t {
    Leveling,    // the rotation about the forward axis after the pitch: headings are exact
    Inclination, // the slope of the right axis below the horizon, as two-axis inclinometers give
};

struct PoseSensor
{
    int type = 1; // sensor type of the heading computation
    MagnetometerModel a{};
    MagnetometerModel b{};
    double magneticStep = 0.0; // readings are multiples of it [counts]; 0: not rounded
    RollReport rollReport = RollReport::Leveling;
    double pitchOffset = 0.0;       // added to the reported pitch [degrees]
    double rollOffset = 0.0;        // added to the reported roll [degrees]
    double tiltNoise = 0.0;         // standard deviation of pitch and roll [degrees]
    double filterTime = 0.0;        // of the filter that forms pitch and roll [s]; 0: the true ones
    double gyroNoise = 0.0;         // standard deviation per axis [degrees/s]
    Point3 gyroBias{};              // [degrees/s]
    Point3 gyroScale{};             // relative error of each axis; 0.01: reads 1 % too much
    double gyroRange = 0.0;         // largest rate that is read [degrees/s]; 0: no limit
    double accelerationNoise = 0.0; // standard deviation per axis [g]
    Point3 accelerationBias{};      // [g]
};

/// A magnet or a piece of iron that is near for a while.
struct Magnet
{
    double from = 0.0;      // [s] since the start
    double to = 0.0;        // [s] since the start
    double strength = 0.0;  // of its field at magnetometer A [counts]
    double shareAtB = 0.8;  // of that strength at magnetometer B
    double azimuth = 0.0;   // direction of its field [degrees], from north, or from forward
    double elevation = 0.0; // of its field above the horizon [degrees]
    bool onPole = false;    // false: fixed in space; true: turns with the pole
};

/// A magnet that stands beside the pole: the field of a dipole, which falls with the cube of the
/// distance and differs between the magnetometers.
struct Dipole
{
    double from = 0.0;      // [s] since the start
    double to = 0.0;        // [s] since the start
    double strength = 0.0;  // of its field 1 m beside it, at right angles to its axis [counts]
    Point3 place{};         // from where the sensor's positions count, level frame [m]
    double azimuth = 0.0;   // of its axis, from north [degrees]
    double elevation = 0.0; // of its axis above the horizon [degrees]
};

/// What a sample shows, known exactly.
struct PoseTruth
{
    double seconds = 0.0; // since the start
    PoseAngles angles{};  // heading in [0, 360)
    bool disturbed = false;
};

/// One instant of a motion.
struct Motion
{
    Matrix attitude;
    Point3 position; // of the sensor, level frame [m]
};

/// One instant with its true rate and acceleration.
struct Instant
{
    Motion motion;
    Point3 rate;         // angular, in body axes [degrees/s]
    Point3 acceleration; // of the sensor, level frame [m/s^2]
};

/// What the sensor reports of these angles, offsets and noise aside.
PoseAngles ReportedAngles(RollReport report, const PoseAngles& angles);

/// The earth's field in the level frame [counts].
Point3 LevelField(const EarthField& field);

/// The correction parameters with which the heading comes out true: corrected readings are the true
/// field times the soft iron's first element.
/// @return nothing when the soft iron is not lower triangular or has a zero on its diagonal: eight
///         values cannot undo it
std::optional<Incline_MagneticCorrectParameter> CorrectionOf(const MagnetometerModel& magnetometer);

/// The bias angle of magnetometer A under which headings count from the plane's x axis [degrees].
/// B's own x axis points backwards: its heading is 180 degrees from that of A.
double BiasAngleOf(const EarthField& field);

/// The inverse of a matrix; nothing when the determinant is zero.
std::optional<Matrix> InverseOf(const Matrix& matrix);

/// Turns instants of a motion into samples, in order of time.
class SensorReadings
{
public:
    /// @param index  tells recordings with one seed apart, as the two turns of a calibration
    SensorReadings(const PoseSensor& sensor, const EarthField& field,
                   const std::vector<Magnet>& magnets, std::uint64_t seed, std::uint64_t index);

    /// The sample at `now`, between its neighbors `before` and `after`.
    /// @param interval     from `before` to `now` and from `now` to `after` [s]
    /// @param secondOfDay  time of day; whole days are taken off [s]
    /// @param seconds      since the start, for the magnets [s]
    /// @param truth        out: what the sample shows
    PoseSensorData Read(const Motion& before, const Motion& now, const Motion& after,
                        double interval, double secondOfDay, double seconds, PoseTruth& truth);

    /// The sample at an instant whose rate and acceleration are known.
    /// @param interval  since the last sample, for the filter of pitch and roll [s]
    PoseSensorData Read(const Instant& now, double interval, double secondOfDay, double seconds,
                        PoseTruth& truth);

    /// Magnets that stand beside the pole; none to begin with.
    void SetDipoles(const std::vector<Dipole>& dipoles) { m_dipoles = dipoles; }

private:
    PoseSensorData ReadAll(const Motion& now, const Point3& bodyRate, const Point3& acceleration,
                           double interval, double secondOfDay, double seconds, PoseTruth& truth);
    void ReadMagnetometers(const Motion& now, double seconds, PoseSensorData& sample,
                           PoseTruth& truth);
    void ReadTilt(const PoseAngles& angles, double interval, PoseSensorData& sample);
    void ReadInertial(const Point3& bodyRate, const Point3& bodyForce, PoseSensorData& sample);
    Point3 Distorted(const MagnetometerModel& magnetometer, const Point3& field,
                     Generator& noise) const;

    PoseSensor m_sensor;
    std::vector<Magnet> m_magnets;
    std::vector<Dipole> m_dipoles;
    std::optional<TiltFilter> m_filter;
    Point3 m_field;
    Generator m_noiseA;
    Generator m_noiseB;
    Generator m_noiseTilt;
    Generator m_noiseInertial;
};

} // namespace simulation
