// SPDX-License-Identifier: MIT
//
// Where the tip of a tilted pole stands: one pose sample, the antenna coordinate, the pole length.
//
//   angles        degrees in every public call; radians live only inside a function body
//   x, y, h       plane coordinates and height, metres; azimuths count from +x towards +y
//   magnetometer  raw sensor counts; A and B are mounted with x and y opposed
//   sensor type   1: first axis convention; any other value: second; 2 also turns the projection
//
// A host makes one object, sets the sensor type, reads the calibration with ConfigRead, and calls
// Position per sample. Nothing throws; numbers that are not finite give results that are not.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "positioning/MagneticParameters.h"
#include "positioning/PoseSensorData.h"

namespace tiltpole::survey {
struct Reading;
} // namespace tiltpole::survey

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

    /// What is subtracted from a heading [degrees].
    void SetMagneticBiasAngle_A(double angle);
    double GetMagneticBiasAngle_A() const { return m_dMagneticBiasAngle_A; }
    void SetMagneticBiasAngle_B(double angle) { m_dMagneticBiasAngle_B = angle; }
    double GetMagneticBiasAngle_B() const { return m_dMagneticBiasAngle_B; }

    /// 1 while the pole is held still, as the last CalculateYaw_A found it.
    int IsStationary() const { return m_bStationary; }
    /// 1 when the magnetometers disagree, as the last CalculateYaw_B found it.
    int IsMagneticInterference() const { return m_bMagneticInterference; }

    /// Replaces the antenna coordinate in `point` by the coordinate of the pole tip.
    /// Fills the headings of `sample` and refreshes IsStationary and IsMagneticInterference. The
    /// raw readings in `sample` come back unchanged, so the same sample may be passed again.
    ///
    /// The tip is that of Position_Geometry_A, or straight below the antenna for a pole whose tilt
    /// angles are both below 1e-6 rad. It comes by a shorter way than that operation,
    /// CalculateYaw_A and CalculateYaw_B one by one: within 1e-11 m of theirs for a pole of 2 m,
    /// headings within 1.2e-13 degrees, dYaw_Y within 1.3e-11 degrees, each in their very digits
    /// near 0 and 360.
    ///
    /// @param sample      pose at the moment of measurement [degrees, counts]
    /// @param poleLength  antenna to tip [m], used as given
    /// @param point       in: antenna, out: tip [m]
    /// @return 1, or 0 when no heading could be formed
    int Position(PoseSensorData& sample, double poleLength, xyhCoordinate& point);

    /// The tip from the heading dYaw that `sample` carries: down the pole by its elevation t and
    /// the azimuth of its projection,
    ///
    ///   x = x_antenna + L·cos t·cos az,   y = y_antenna + L·cos t·sin az,   h = h_antenna − L·sin
    ///   t
    ///
    /// and the projection angle is kept for ConverseYaw.
    ///
    /// @return 1
    int Position_Geometry_A(xyhCoordinate antenna, PoseSensorData sample, double poleLength,
                            xyhCoordinate& tip);

    /// The same from dYaw_2, pitch and roll negated, keeping nothing.
    int Position_Geometry_B(xyhCoordinate antenna, PoseSensorData sample, double poleLength,
                            xyhCoordinate& tip);

    /// Leaves `tip` as it is and answers 1.
    int Position_Math(xyhCoordinate antenna, PoseSensorData sample, double poleLength,
                      xyhCoordinate& tip) const;

    /// Corrects magnetometer A in place, judges stillness, fills dYaw and dYaw_Y.
    ///
    /// The pole is still while, against the first sample of the still period, the corrected
    /// readings differ by at most 1000 counts in sum and roll and pitch by at most 0.5 degrees
    /// each. A sample that differs more begins the next period and is itself not still.
    /// dYaw_Y is dYaw less the tilt-direction angle; a tilt angle of exactly 0 counts as 90.
    ///
    /// @return 1
    int CalculateYaw_A(PoseSensorData& sample);

    /// Corrects magnetometer B in place, judges interference, fills dYaw_2. Reads the corrected
    /// magnetometer A, so CalculateYaw_A comes first.
    ///
    /// Interference: the reading differs by more than 300 counts in sum from the one that
    /// magnetometer A and the translation parameter let expect.
    ///
    /// @return 1
    int CalculateYaw_B(PoseSensorData& sample);

    /// Azimuth of (x, y) less the kept projection angle, and the opposite of it [degrees], each
    /// normalised by one step.
    ///
    /// @return 1
    int ConverseYaw(double x, double y, double& yaw, double& yawOpposite) const;

    /// Azimuth of (dx, dy) [degrees], 0 to 360; a dy hardly below 0 rounds to 360. |dx| < 1e-6
    /// counts as 0; the null vector gives 0.
    double ConverseYaw_True(double dx, double dy) const;

    /// Elevation of the pole above the horizontal: 90 when plumb [degrees].
    double GetAngleofPoletoHorizontal(double pitch, double roll) const;

    /// Azimuth of the pole's horizontal projection [degrees].
    ///
    ///   t = GetAngleofPoletoHorizontal,   u, v = the tilt angles
    ///   k1 = acos(tan t·tan u), negative for v > 0;   k3 = acos(−tan u·tan v)
    ///   azimuth = heading + k1, for sensor type 2 heading + k3 + k1
    ///
    /// Arc cosines are taken of limited arguments, so every pose gives a number. Near the plumb
    /// line and where an argument nears 1 the last digit of the input decides.
    ///
    /// @param store  other than 0: k1 is kept for ConverseYaw
    double GetAngleofPoleProject(double pitch, double roll, double heading, int store);

    /// Smooths two values in place: the mean of all since the last reset up to n + 1 calls, then
    /// each new one weighs 1/(n + 1). One state serves all objects of this class.
    ///
    /// @param values  two numbers, however long the array is
    /// @param reset   other than 0: forget what was before
    void filter(double* const values, int n, int reset);

    /// Writes the calibration (both corrections, the translation, both bias angles) as lines
    /// "[key]value" with ten decimals and CR LF. The file is replaced as a whole: after a failure
    /// the old one is as it was and nothing is left beside it.
    ///
    /// @param path  UTF-8 on disk, in every locale
    /// @return 0 where the file could not be written whole, or a value is not finite or too long
    ///         for a line of 100 bytes
    int ConfigSave(CString path);

    /// Reads what ConfigSave wrote. A key that is missing, empty or without a CR behind its value
    /// leaves its value as it was; a text that is no decimal number within range gives 0. The first
    /// place in the file that reads "[key]" counts, wherever it stands.
    ///
    /// @return 0 where there is no such file or it cannot be read, with nothing changed; 1 else,
    ///         whatever the file holds
    int ConfigRead(CString path);

protected:
    double Deg2Rad(double degrees) const;
    double Rad2Deg(double radians) const;
    /// Arc sine and arc cosine [rad] of an argument limited to [-1, 1].
    double ASIN(double value) const;
    double ACOS(double value) const;

    /// Adds a turn below 0, takes one off above 360; one step, no loop.
    void AdjustAzimuth(double& azimuth) const;

    /// Pitch and roll [degrees] become the tilt angles u and v [rad]: (p, r) for sensor type 1,
    /// (−asin(cos p·sin r), p) otherwise.
    void GetTiltAngle(double& first, double& second) const;

    /// The lower end of a line of this length whose upper end is `point`; the azimuth leads from
    /// the lower end to the upper.
    xyhCoordinate GetInclinePoint(xyhCoordinate point, double length, double elevation,
                                  double azimuth) const;

    /// Distance [m]; 0 up to a millimetre.
    double GetDistance(xyhCoordinate p, xyhCoordinate q) const;

    /// The lower of the two points at the distances r1, r2, r3 from p1, p2, p3 [m], formed
    /// relative to p1.
    ///
    /// @return 0, with `result` as it was, where there is none, the two (nearly) coincide, or the
    ///         points do not determine y and h (in a line, or all of equal height)
    int GetSolvePoint(xyhCoordinate p1, xyhCoordinate p2, xyhCoordinate p3, double r1, double r2,
                      double r3, xyhCoordinate& result) const;

private:
    void MagneticModify(const Incline_MagneticCorrectParameter& par, PoseSensorData& sample,
                        int useA) const;
    void JudgeStillness(const tiltpole::survey::Reading& a, double pitch, double roll);
    void JudgeInterference(const tiltpole::survey::Reading& a, const tiltpole::survey::Reading& b);
    /// Heading of magnetometer A, or B where useA is 0, from its corrected reading: ADI for sensor
    /// type 1, SCA for the others [degrees], normalised by one step.
    double CalculateYaw_ADI(const PoseSensorData& sample, int useA) const;
    double CalculateYaw_SCA(const PoseSensorData& sample, int useA) const;
    double HeadingByType(const PoseSensorData& sample, int useA, int sensorType) const;
    double Heading(const PoseSensorData& sample, int useA) const;
    double LessBias_A(double azimuth) const;
    double LessBias_B(double azimuth) const;

    template <int SensorType>
    int PositionOfType(PoseSensorData& sample, double poleLength, xyhCoordinate& point);
    void FillHeadings_A(PoseSensorData& corrected) const;
    void HeadingsByFormulas(PoseSensorData& sample) const;
    int PositionByFormulas(PoseSensorData& sample, double poleLength, xyhCoordinate& point);
    void KeepProjection(double angle);
    void KeepProjection(double pitch, double roll, int sensorType);
    double ProjectionAngle() const;

    Incline_MagneticCorrectParameter m_MagneticCorrectPar_A;
    Incline_MagneticCorrectParameter m_MagneticCorrectPar_B;
    Incline_MagneticTranslationParameter m_MagneticTranslationPar;
    double m_dLastMag_x = 0.0; // corrected reading of A at the start of the still period [counts]
    double m_dLastMag_y = 0.0;
    double m_dLastMag_z = 0.0;
    double m_dLastPitch = 0.0; // pose at the start of the still period [degrees]
    double m_dLastRoll = 0.0;
    double m_dProjectBase = 0.0;  // 180 once a projection angle is kept
    double m_dProjectAngle = 0.0; // the projection angle kept last [degrees], or instead of it
    double m_dProjectPitch = 0.0; // the pose it belongs to: the angle is formed when asked for
    double m_dProjectRoll = 0.0;
    int m_nProjectSensorType = 1;
    int m_bProjectByPose = 0;
    int m_nSensorType = 1;
    double m_dMagneticBiasAngle_A = 0.0; // [degrees]
    double m_dMagneticBiasAngle_B = 0.0;
    int m_bStationary = 0;
    int m_bMagneticInterference = 0;
    double m_dCosBiasAngle_A = 1.0; // of m_dMagneticBiasAngle_A; no numbers where it is huge
    double m_dSinBiasAngle_A = 0.0;
};
