// SPDX-License-Identifier: MIT
//
// What an occupation keeps of its samples, in bounded memory: the attitude integrated from the
// gyros, the integrals that belong to it, and the antenna epochs.
//
//   axes    sensor: forward, left, up the pole; world: north, west, up. Both right-handed
//   units   m, s, rad, rad/s, g
#pragma once

#include <Eigen/Geometry>

#include <cstddef>
#include <vector>

namespace tiltpole::field {

/// One reading of the inertial sensors, in the axes of the track.
struct Reading6
{
    double time = 0.0;
    Eigen::Vector3d rate = Eigen::Vector3d::Zero();     // [rad/s]
    Eigen::Vector3d force = Eigen::Vector3d::Zero();    // specific force [g]
    Eigen::Vector3d magnetic = Eigen::Vector3d::Zero(); // [any unit]
    bool disturbed = false;                             // `magnetic` is then left out
};

/// The state of the integration at a reading.
struct Node
{
    double time = 0.0;
    Eigen::Quaterniond attitude = Eigen::Quaterniond::Identity(); // sensor to world, first guess
    Eigen::Matrix3d turning = Eigen::Matrix3d::Zero();            // J = ∫ R dt [s]
    Eigen::Vector3d force = Eigen::Vector3d::Zero();              // ∫ R·f dt [g·s]
    Eigen::Vector3d magnetic = Eigen::Vector3d::Zero();           // ∫ R·m dt
};

struct Epoch
{
    double time = 0.0;
    Eigen::Vector3d position = Eigen::Vector3d::Zero(); // north, west, up, about the origin [m]
    double planSigma = 0.0;                             // of each coordinate, 0: not stated [m]
    double heightSigma = 0.0;
    // Up the pole and to the sensor's front, by pitch, roll and magnetic heading: unit vectors in
    // north, west, up; 0 where not known.
    Eigen::Vector3d lean = Eigen::Vector3d::Zero();
    Eigen::Vector3d forward = Eigen::Vector3d::Zero();
};

/// The attitude of the first guess at one instant.
struct Pose3
{
    Eigen::Matrix3d attitude;
    Eigen::Matrix3d turning;
    Eigen::Matrix3d slope; // of `turning`, by time
    Eigen::Vector3d rate;  // of turning, in the world [rad/s]
    int gaps;              // that lie before
};

/// A pause of the inertial readings that was bridged by the mean rate of both ends.
struct Gap
{
    double end = 0.0;    // [s]
    double length = 0.0; // [s]
    double sigma = 0.0;  // of the turn that it hides, about each axis [rad]
};

/// With fewer antenna epochs nothing is estimated.
inline constexpr int kFewestEpochs = 4;

/// Beyond this length a pause is a gap, if it is also beyond one and a half of the shortest
/// interval: readings at 20 Hz, whose intervals are 0.05 s but for rounding, have none.
inline constexpr double kGap = 0.05; // [s]

/// Where a memory is full, every second entry is dropped and only every second one taken from then
/// on: the whole window stays covered. After the construction nothing is allocated.
class Track
{
public:
    Track(std::size_t nodes, std::size_t epochs);

    void Clear();
    /// Begins with the attitude `first`, or goes on from the last reading.
    void Add(const Reading6& reading, const Eigen::Quaterniond& first);
    void Add(const Epoch& epoch);

    const std::vector<Node>& Nodes() const { return m_nodes; }
    const std::vector<Epoch>& Epochs() const { return m_epochs; }
    const Reading6& Last() const { return m_last; }
    const Node& End() const { return m_end; } // of the integration, kept or not
    bool Covers(double time) const;
    /// The longest gaps, in the order of time. Others are counted only.
    const std::vector<Gap>& Gaps() const { return m_gaps; }
    int GapCount() const { return m_gapCount; }
    /// Time with disturbed readings [s].
    double DisturbedTime() const { return m_disturbedTime; }
    /// Between the nodes about `time`; beyond them the nearest interval is carried on.
    Pose3 At(double time) const;

private:
    void Keep(const Node& node);
    void KeepGap(const Reading6& after);

    std::vector<Node> m_nodes;
    std::vector<Epoch> m_epochs;
    std::vector<Gap> m_gaps;
    int m_gapCount = 0;
    double m_shortest = kGap; // interval, at most kGap [s]
    double m_disturbedTime = 0.0;
    std::size_t m_nodeStride = 1, m_epochStride = 1;
    std::size_t m_nodesSeen = 0, m_epochsSeen = 0;
    Reading6 m_last;
    Node m_end;
};

} // namespace tiltpole::field
