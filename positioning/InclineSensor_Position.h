// SPDX-License-Identifier: MIT
/// @class CInclineSensor_Position
/// Computes the tip of a tilted survey pole from one pose sample, the antenna coordinate and the
/// length of the pole.
///
///     CInclineSensor_Position sensor;
///     sensor.SetSensorType(1);
///     sensor.ConfigRead(L"calibration.cfg");       // without it: no correction, no bias
///
///     PoseSensorData sample;                       // pitch 3 and roll -8 degrees, two readings
///     sample.dPitch = 3.0;
///     sample.dRoll = -8.0;
///     sample.dMag_x = 150.0;                       // ... to dMag_z_2
///     xyhCoordinate point{4823.10, 1290.55, 87.42}; // the antenna
///     sensor.Position(sample, 2.0, point);         // now the tip of a pole of 2 m
///     if (sensor.IsStationary() && !sensor.IsMagneticInterference())
///         Record(point, sample.dYaw);
///
/// Units and axes:
///
///     angles        degrees in every public call
///     x, y, h       northing, easting, height [m]; azimuths count clockwise from +x toward +y
///     pitch, roll   positive pitch raises the forward axis, positive roll lowers the right side
///     magnetometer  raw sensor counts; A and B are mounted with their x and y axes opposed
///     sensor type   1: x forward, y left, z up the pole; other values: x right, y forward, z up.
///                   Type 2 also adds the tilt direction to the azimuth of the projection
///
/// Domain: poles that lean less than 90 degrees. Other poses give a result, too, but a pole beyond
/// the horizontal cannot be distinguished from an upright one. No operation throws. Arguments that
/// are not finite give results that are not finite.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "positioning/MagneticParameters.h"
#include "positioning/PoseSensorData.h"

namespace tiltpole::survey {
enum class Magnetometer;
enum class SensorAxes;
struct Point3;
struct Pose;
struct Reading;
} // namespace tiltpole::survey

namespace tiltpole::positioning {
enum class Trust;
struct Measured;
struct Observation;
} // namespace tiltpole::positioning

class TILTPOLE_API CInclineSensor_Position
{
public:
    void SetSensorType(int type) { m_nSensorType = type; }
    int GetSensorType() const { return m_nSensorType; }

    void SetMagneticCorrectPar_A(Incline_MagneticCorrectParameter par)
    {
        m_MagneticCorrectPar_A = par;
    }
    Incline_MagneticCorrectParameter GetMagneticCorrectPar_A() const
    {
        return m_MagneticCorrectPar_A;
    }
    void SetMagneticCorrectPar_B(Incline_MagneticCorrectParameter par)
    {
        m_MagneticCorrectPar_B = par;
    }
    Incline_MagneticCorrectParameter GetMagneticCorrectPar_B() const
    {
        return m_MagneticCorrectPar_B;
    }
    void SetMagneticTranslationPar(Incline_MagneticTranslationParameter par)
    {
        m_MagneticTranslationPar = par;
    }
    Incline_MagneticTranslationParameter GetMagneticTranslationPar() const
    {
        return m_MagneticTranslationPar;
    }

    /// The bias of a magnetometer is subtracted from its heading [degrees].
    void SetMagneticBiasAngle_A(double angle);
    double GetMagneticBiasAngle_A() const { return m_dMagneticBiasAngle_A; }
    void SetMagneticBiasAngle_B(double angle) { m_dMagneticBiasAngle_B = angle; }
    double GetMagneticBiasAngle_B() const { return m_dMagneticBiasAngle_B; }

    /// 1 if the pole was still at the last call of Position or CalculateYaw_A, otherwise 0.
    int IsStationary() const { return m_bStationary; }
    /// 1 if the magnetometers disagreed at the last call of Position or CalculateYaw_B, otherwise
    /// 0.
    int IsMagneticInterference() const { return m_bMagneticInterference; }

    /// Replaces the antenna coordinate in `point` by the coordinate of the pole tip.
    /// Fills the headings of `sample` and updates IsStationary and IsMagneticInterference. The
    /// other fields of `sample`, including the raw readings, are unchanged on return, so the same
    /// sample may be passed again.
    ///
    /// The tip is that of Position_Geometry_A, or straight below the antenna for a pole whose tilt
    /// angles are both below 1e-6 rad. Computed in one pass. Agrees with calling CalculateYaw_A,
    /// CalculateYaw_B and Position_Geometry_A in turn to 1e-11 m for a pole of 2 m, to 1.2e-13
    /// degrees in dYaw and dYaw_2 and to 1.3e-11 degrees in dYaw_Y; bit for bit in a heading near 0
    /// or 360, in both flags and in the projection angle that is kept
    /// (Position.AgreesWithItsFormulasAsDocumented).
    ///
    /// @param sample      pose at the moment of measurement [degrees, counts]
    /// @param poleLength  antenna to tip [m], used as given: a negative length leads upward
    /// @param point       in: antenna, out: tip [m]
    /// @return 1
    int Position(PoseSensorData& sample, double poleLength, xyhCoordinate& point);

    /// Computes the tip from the heading `sample.dYaw`, the elevation t of the pole and the azimuth
    /// az of its projection,
    ///
    ///   x = x_antenna + L·cos t·cos az
    ///   y = y_antenna + L·cos t·sin az
    ///   h = h_antenna − L·sin t
    ///
    /// and stores the projection angle for ConverseYaw.
    ///
    /// @return 1
    int Position_Geometry_A(xyhCoordinate antenna, PoseSensorData sample, double poleLength,
                            xyhCoordinate& tip);

    /// The same from dYaw_2 with pitch and roll negated. Does not store the projection angle.
    int Position_Geometry_B(xyhCoordinate antenna, PoseSensorData sample, double poleLength,
                            xyhCoordinate& tip);

    /// Leaves `tip` unchanged and returns 1.
    int Position_Math(xyhCoordinate antenna, PoseSensorData sample, double poleLength,
                      xyhCoordinate& tip) const;

    /// Corrects magnetometer A in place, updates IsStationary, fills dYaw and dYaw_Y.
    ///
    /// The pole is still while its sample differs from the first one of the still period by at most
    /// 1000 counts in the corrected readings (sum over the axes) and by at most 0.5 degrees each in
    /// roll and pitch. A sample that differs more starts the next period and does not itself count
    /// as still. dYaw_Y is dYaw minus the tilt direction, which is 90 where a tilt angle is exactly
    /// 0.
    ///
    /// @return 1
    int CalculateYaw_A(PoseSensorData& sample);

    /// Corrects magnetometer B in place, updates IsMagneticInterference, fills dYaw_2. Call
    /// CalculateYaw_A first: the test reads the corrected magnetometer A.
    ///
    /// Interference: the corrected reading differs by more than 300 counts (sum over the axes) from
    /// the one expected from magnetometer A and the translation parameter.
    ///
    /// @return 1
    int CalculateYaw_B(PoseSensorData& sample);

    /// Azimuth of (x, y) minus the last stored projection angle, and the opposite direction
    /// [degrees], each normalized by one step. Before the first measurement the stored angle is 0.
    ///
    /// @return 1
    int ConverseYaw(double x, double y, double& yaw, double& yawOpposite) const;

    /// Azimuth of (dx, dy) [degrees] in [0, 360]; a dy barely below 0 rounds to 360. |dx| < 1e-6
    /// counts as 0; the null vector gives 0.
    double ConverseYaw_True(double dx, double dy) const;

    /// Elevation of the pole above the horizontal: 90 when plumb [degrees].
    double GetAngleofPoletoHorizontal(double pitch, double roll) const;

    /// Azimuth of the pole's horizontal projection [degrees].
    ///
    ///   t = GetAngleofPoletoHorizontal,   u, v = the tilt angles (GetTiltAngle)
    ///   k1 = acos(tan t·tan u), negative for v > 0;   k3 = acos(−tan u·tan v)
    ///   azimuth = heading + k1, for sensor type 2 heading + k3 + k1
    ///
    /// Arguments of the arc cosines are limited to [-1, 1], so every finite pose has an azimuth.
    /// Near the plumb line, and where an argument is near 1, the result depends on the last digits
    /// of the input.
    ///
    /// @param store  nonzero: store k1 for ConverseYaw
    double GetAngleofPoleProject(double pitch, double roll, double heading, int store);

    /// Smooths two values in place. For the first n + 1 calls after a reset the result is the mean
    /// of all values so far; after that, each new value has the weight 1/(n + 1). All objects of
    /// this class share one state.
    ///
    /// @param values  array of two numbers; further elements are ignored
    /// @param reset   nonzero: discard the earlier values
    void filter(double* const values, int n, int reset);

    /// Writes the calibration (both corrections, the translation, both bias angles) as lines
    /// "[key]value" with ten decimals and CR LF. The file is replaced in one step: after a
    /// failure the old one is unchanged and no temporary file remains.
    ///
    /// @param path  UTF-8 on disk, in every locale
    /// @return 0 if the file could not be written completely, or a value is not finite or too long
    ///         for a line of 100 bytes; otherwise 1
    int ConfigSave(CString path);

    /// Reads a file written by ConfigSave. A parameter stays unchanged if its key is missing, its
    /// value is empty or no CR follows. Text that is not a decimal number within range is read as
    /// 0. The first occurrence of "[key]" counts, anywhere in the file.
    ///
    /// A damaged file is not refused: quality::LoadParameters (quality/ParameterFile.h) checks
    /// every key and loads only a complete and plausible calibration.
    ///
    /// @return 0 if the file does not exist or cannot be read (nothing changes); otherwise 1,
    ///         whatever the file contains
    int ConfigRead(CString path);

protected:
    double Deg2Rad(double degrees) const;
    double Rad2Deg(double radians) const;
    /// Arc sine and arc cosine [rad] of an argument limited to [-1, 1].
    double ASIN(double value) const;
    double ACOS(double value) const;

    /// Adds 360 to an azimuth below 0 and subtracts 360 above 360, once: -400 becomes -40.
    void AdjustAzimuth(double& azimuth) const;

    /// Replaces pitch and roll [degrees] by the tilt angles u and v [rad]: (p, r) for sensor type
    /// 1, (−asin(cos p·sin r), p) otherwise.
    void GetTiltAngle(double& first, double& second) const;

    /// The lower end of a line of this length [m] whose upper end is `point`; elevation and azimuth
    /// [degrees] point from the lower end to the upper one.
    xyhCoordinate GetInclinePoint(xyhCoordinate point, double length, double elevation,
                                  double azimuth) const;

    /// Distance [m]; 0 if it is at most 1 mm.
    double GetDistance(xyhCoordinate p, xyhCoordinate q) const;

    /// The lower of the two points at the distances r1, r2, r3 from p1, p2, p3 [m], computed
    /// relative to p1.
    ///
    /// @return 0, with `result` unchanged, if there is no such point, if the two points (nearly)
    ///         coincide, or if p1, p2 and p3 do not determine y and h (in a line, or all at one
    ///         height); otherwise 1
    int GetSolvePoint(xyhCoordinate p1, xyhCoordinate p2, xyhCoordinate p3, double r1, double r2,
                      double r3, xyhCoordinate& result) const;

private:
    /// Corrects the reading of magnetometer A, or of B if useA is 0, in place.
    void MagneticModify(const Incline_MagneticCorrectParameter& par, PoseSensorData& sample,
                        int useA) const;
    /// Heading of magnetometer A, or of B if useA is 0, from its corrected reading [degrees],
    /// normalized by one step. ADI is for sensor type 1, SCA for all others.
    double CalculateYaw_ADI(const PoseSensorData& sample, int useA) const;
    double CalculateYaw_SCA(const PoseSensorData& sample, int useA) const;
    tiltpole::survey::Pose PoseOf(const PoseSensorData& sample) const;
    double HeadingByAxes(const PoseSensorData& sample, tiltpole::survey::Magnetometer which,
                         tiltpole::survey::SensorAxes axes) const;
    double Heading(const PoseSensorData& sample, tiltpole::survey::Magnetometer which) const;

    tiltpole::positioning::Observation Observe(const PoseSensorData& sample, double length) const;
    tiltpole::positioning::Measured MeasureByFormulas(const PoseSensorData& sample, double length,
                                                      tiltpole::positioning::Trust trust,
                                                      tiltpole::survey::Point3 step) const;
    void JudgeStillness(const tiltpole::survey::Reading& a, double pitch, double roll);
    void JudgeInterference(const tiltpole::survey::Reading& a, const tiltpole::survey::Reading& b);
    void Keep(const PoseSensorData& sample);
    tiltpole::survey::Pose KeepPose(const PoseSensorData& sample);
    double ProjectionAngle() const;

    Incline_MagneticCorrectParameter m_MagneticCorrectPar_A;
    Incline_MagneticCorrectParameter m_MagneticCorrectPar_B;
    Incline_MagneticTranslationParameter m_MagneticTranslationPar;
    double m_dLastMag_x = 0.0; // corrected reading of A at the start of the still period [counts]
    double m_dLastMag_y = 0.0;
    double m_dLastMag_z = 0.0;
    double m_dLastPitch = 0.0; // pose at the start of the still period [degrees]
    double m_dLastRoll = 0.0;
    double m_dProjectBase = 0.0;  // 180 once a projection angle is stored; never read
    double m_dProjectAngle = 0.0; // stored last [degrees], unless m_bProjectByPose is 1
    double m_dProjectPitch = 0.0; // the pose from which ConverseYaw computes it
    double m_dProjectRoll = 0.0;
    int m_nProjectSensorType = 1;
    int m_bProjectByPose = 0;
    int m_nSensorType = 1;
    double m_dMagneticBiasAngle_A = 0.0; // [degrees]
    double m_dMagneticBiasAngle_B = 0.0;
    int m_bStationary = 0;
    int m_bMagneticInterference = 0;
    double m_dCosBiasAngle_A = 1.0; // of m_dMagneticBiasAngle_A; NaN beyond 1000 degrees, which
                                    // selects the step-by-step formulas
    double m_dSinBiasAngle_A = 0.0;
    double m_dPosePitch = 0.0; // of CalculateYaw_A [degrees], with sines and cosines: those of
    double m_dPoseRoll = 0.0;  // CalculateYaw_B as well, where its pose is the same
    double m_dSinPitch = 0.0;
    double m_dCosPitch = 1.0;
    double m_dSinRoll = 0.0;
    double m_dCosRoll = 1.0;
};
