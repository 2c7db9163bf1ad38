// SPDX-License-Identifier: MIT
//
// The motion of a pole on its tip and the errors of the sensors that follow it: least squares over
// one recording, of which everything is kept.
//
//   antenna = tip + (L + dL)·R(t)·n,   t = epoch + delay
//   ∫ w·R·(f − c) dt = up + h·∫ w''·R·n dt / g        in windows of a second, w as in Gravity.h
//   dR = R [(reading − b)·(1 − s) dt]
//
// Unknowns: tip, first attitude, gyro bias b and scale s, axis n, delay, accelerometer bias c,
// height h of the sensor, dL. With the errors at their last values, R changes with the unknowns of
// turning as
//
//   R' = Exp(phi − J·db − K·ds)·R,   J = ∫ R dt,   K = ∫ R·diag(rate) dt
#pragma once

#include "field/occupation/Rotations.h"

#include <Eigen/Core>
#include <Eigen/Geometry>

#include <array>
#include <vector>

namespace tiltpole::field {

/// One reading of all sensors in the axes forward, left, up.
struct SpotReading
{
    double time = 0.0;
    Eigen::Vector3d rate = Eigen::Vector3d::Zero();  // [rad/s]
    Eigen::Vector3d force = Eigen::Vector3d::Zero(); // [g]
    // Raw, of A and B in their own axes (B: back, right, up) [counts]; zero: none.
    std::array<Eigen::Vector3d, 2> magnetic{Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero()};
};

struct SpotEpoch
{
    double time = 0.0;
    Eigen::Vector3d position = Eigen::Vector3d::Zero(); // north, west, up, about the origin [m]
    double planSigma = 0.0;
    double heightSigma = 0.0;
};

namespace spot {

// Places of the unknowns.
inline constexpr int kTip = 0;
inline constexpr int kTurn = 3;
inline constexpr int kBias = 6;
inline constexpr int kScale = 9;
inline constexpr int kAxis = 12;
inline constexpr int kDelay = 14;
inline constexpr int kForce = 15;
inline constexpr int kHeight = 18;
inline constexpr int kLength = 19;
inline constexpr int kUnknowns = 20;
inline constexpr int kTurning = 9; // turn, bias and scale: what the attitude depends on

using Unknowns = Eigen::Matrix<double, kUnknowns, 1>;
using Normal = Eigen::Matrix<double, kUnknowns, kUnknowns>;
using Rows3 = Eigen::Matrix<double, 3, kUnknowns>;
using TurningRows = Eigen::Matrix<double, 3, kTurning>;

} // namespace spot

/// The attitude at one moment, and its derivatives: a turn of the world by turn, bias and scale.
struct SpotPose
{
    Eigen::Matrix3d attitude;
    Eigen::Matrix3d byBias;  // −J
    Eigen::Matrix3d byScale; // −K
    Eigen::Vector3d rate;    // of turning, in the world [rad/s]

    spot::TurningRows Turning() const;
};

struct SpotState
{
    Eigen::Vector3d tip = Eigen::Vector3d::Zero();
    Eigen::Quaterniond first = Eigen::Quaterniond::Identity(); // attitude at the first reading
    Eigen::Vector3d bias = Eigen::Vector3d::Zero();            // [rad/s]
    Eigen::Vector3d scale = Eigen::Vector3d::Zero();
    Eigen::Vector2d axis = Eigen::Vector2d::Zero();  // tangents
    double delay = 0.0;                              // [s]
    Eigen::Vector3d force = Eigen::Vector3d::Zero(); // accelerometer bias [g]
    double height = 0.0;                             // [m]
    double length = 0.0;                             // error of the length [m]
};

struct MotionSetup
{
    double poleLength = 2.0;
    double planSigma = 0.0;
    double heightSigma = 0.0;
    double lengthSigma = 0.0; // [m]
};

/// Wide priors of what is asked for, one sigma: none of them decides where the pole was moved
/// enough.
inline constexpr double kWideBias = 0.5 / 57.3; // [rad/s]
inline constexpr double kWideScale = 0.01;      // relative
inline constexpr double kWideAxis = 3.0 / 57.3; // tangent
inline constexpr double kWideForce = 0.03;      // [g]
inline constexpr double kWideDelay = 0.1;       // [s]
inline constexpr double kWideLength = 0.3;      // [m]

class MotionFit
{
public:
    MotionFit(const std::vector<SpotReading>& readings, const std::vector<SpotEpoch>& epochs);

    /// @return whether it came to an end
    bool Run(const MotionSetup& setup);

    const SpotState& State() const { return m_state; }
    /// With what the noise of the gyros adds in a recording of more than 20 s.
    spot::Normal Covariance() const;
    /// The attitude at reading `i`.
    SpotPose PoseAt(std::size_t i) const;

    double AntennaMisfit() const { return m_antennaMisfit; } // weighted sum of squares
    double Freedom() const { return m_freedom; }
    double ForceSigma() const { return m_forceSigma; } // of a window, as its residuals show [g]
    Eigen::Vector3d MeanSquares() const { return m_squares; } // of the antenna's residuals [m²]
    int Epochs() const { return static_cast<int>(m_rows.size()); }
    int Doubtful() const;
    double Spread() const { return m_spread; } // of the pole's directions [rad]

    struct Step
    {
        double size = 0.0; // [m]
        double gain = 0.0; // chi-square
    };
    /// The step of the tip at an epoch that explains most.
    Step StepOfTip() const;

private:
    struct Node // at each reading
    {
        Eigen::Quaterniond attitude;
        Eigen::Matrix3d turning; // J
        Eigen::Matrix3d scaled;  // K
    };
    struct Row
    {
        const SpotEpoch* epoch = nullptr;
        SpotPose pose;
        spot::Rows3 jacobian = spot::Rows3::Zero();
        Eigen::Vector3d residual = Eigen::Vector3d::Zero();
        Eigen::Vector3d weight = Eigen::Vector3d::Zero();
        double doubt = 1.0;
    };

    void Integrate();
    SpotPose PoseAt(double time) const;
    void Start(const MotionSetup& setup);
    void AddAntenna(const MotionSetup& setup, bool weigh);
    void AddForces();
    void AddPriors(const MotionSetup& setup);
    void Take(const spot::Unknowns& step);
    bool Iterate(const MotionSetup& setup);

    const std::vector<SpotReading>& m_readings;
    const std::vector<SpotEpoch>& m_epochs;
    std::vector<Node> m_nodes;
    std::vector<Row> m_rows;
    SpotState m_state;
    spot::Normal m_normal = spot::Normal::Zero();
    spot::Unknowns m_right = spot::Unknowns::Zero();
    spot::Normal m_covariance = spot::Normal::Zero();
    double m_antennaMisfit = 0.0;
    double m_freedom = 1.0;
    double m_forceSigma = 0.0;
    double m_forceSquares = 0.0;
    int m_windows = 0;
    double m_spread = 0.0;
    Eigen::Vector3d m_squares = Eigen::Vector3d::Zero();
};

} // namespace tiltpole::field
