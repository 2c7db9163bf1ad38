// SPDX-License-Identifier: MIT
//
// The tip by directions of the pole that are known but for one heading offset h and the constant
// errors a, b of pitch and roll:
//
//   antenna = tip + L·Rz(h)·R·(a, b, 1) / |(a, b, 1)|
//
// R is the attitude by pitch, roll and magnetic heading. What differs from epoch to epoch is not of
// the antenna alone: the heading's part moves it across the lean, that of pitch and roll along it
// and in height. Derivation: docs/occupation.md, "Without gyros".
#pragma once

#include "field/occupation/Alternatives.h"
#include "field/occupation/Track.h"

namespace tiltpole::field {

struct GyroFreeSetup
{
    double poleLength = 2.0;
    double planSigma = 0.004;
    double heightSigma = 0.011;
    double offsetSigma = 0.07; // of the heading offset [rad]
    double tiltSigma = 0.01;   // of the constant errors of pitch and roll [rad]
};

/// Tip, heading offset, errors of the direction to the sensor's front and to its left.
inline constexpr int kGyroFreeUnknowns = 6;
using GyroFreeMatrix = Eigen::Matrix<double, kGyroFreeUnknowns, kGyroFreeUnknowns>;

struct GyroFreeFit
{
    bool converged = false;
    Eigen::Vector3d tip = Eigen::Vector3d::Zero();
    double offset = 0.0;                            // towards west [rad]
    Eigen::Vector2d tilt = Eigen::Vector2d::Zero(); // a, b
    GyroFreeMatrix cofactor = GyroFreeMatrix::Zero();
    double misfit = 0.0;
    double freedom = 0.0;
    Eigen::Vector3d square = Eigen::Vector3d::Zero(); // mean of the squared residuals [m²]
    Eigen::Vector3d lean = Eigen::Vector3d::UnitZ();  // the pole's direction at the last epoch
    double rocking = 0.0;                             // way of the pole's direction over its extent
    double pace = 0.0;                                // mean speed of that direction [rad/s]
    double spread = 0.0;                              // [rad]
    Score length;                                     // of the pole beyond poleLength [m]
    double step = 0.0;      // of the tip in plan, the one that is excluded worst [m] ...
    double stepBound = 0.0; // ... what is excluded with 99 % [m] ...
    double stepAt = 0.0;    // ... and its time [s]
    Jump jump;              // sudden: beyond 7 sigma of the residuals about it
    int epochs = 0;
};

/// What an epoch says at the present estimate.
struct LeanRow
{
    const Epoch* epoch = nullptr;
    Eigen::Vector3d pole = Eigen::Vector3d::Zero();     // up it, of length 1
    Eigen::Vector3d residual = Eigen::Vector3d::Zero(); // predicted − observed [m]
    Eigen::Matrix3d weight = Eigen::Matrix3d::Zero();
    Eigen::Matrix<double, 3, kGyroFreeUnknowns> jacobian;
};

/// Keeps its memory from run to run: nothing is allocated after the construction.
class GyroFreeFitter
{
public:
    explicit GyroFreeFitter(std::size_t epochs) { m_rows.reserve(epochs); }

    GyroFreeFit Run(const Track& track, const GyroFreeSetup& setup);

private:
    void SetRows(const Track& track, const GyroFreeFit& fit, const GyroFreeSetup& setup);
    double Improve(GyroFreeFit& fit, const GyroFreeSetup& setup);
    Score LengthScore(const GyroFreeFit& fit) const;
    void SetStep(GyroFreeFit& fit) const;

    std::vector<LeanRow> m_rows;
    double m_share = 1.0; // weight of an epoch: those of a second are one observation
};

} // namespace tiltpole::field
