// SPDX-License-Identifier: MIT
//
// Least squares of the tip on a sphere of known radius: every antenna position P_k lies one antenna
// height L from the tip T.
//
//   minimize  Σ w_k·r_k²     r_k = |T − P_k| − L     1/w_k = d_k·diag(σ²)·d_k
//
// d_k is the unit vector from antenna to tip and σ the standard deviations of an antenna
// coordinate. The weights follow from the directions, so they are held during a step and formed
// anew after it; the solution is the point where the step vanishes. Derivation: docs/formulas.md,
// "Honest tip estimate".
#pragma once

#include "geometry/TiltPoint.h"

#include <Eigen/Core>

#include <cstddef>
#include <span>
#include <vector>

namespace tiltpole::quality {

struct Antenna
{
    Eigen::Vector3d position; // about the first one [m]
    std::size_t index;        // as given
};

/// The positions that are finite, about the first of them.
std::vector<Antenna> FiniteAntennas(const std::vector<xyhCoord>& given);

// One antenna position seen from a tip.
struct Sight
{
    Eigen::Vector3d direction; // unit, antenna to tip
    double distance;           // [m]
    double residual;           // distance − antenna height [m]
    double weight;             // 1 / variance of the distance [1/m²]
};

class TipFit
{
public:
    /// @param antennas   kept by reference
    /// @param deviation  standard deviation of each antenna coordinate [m]
    TipFit(const std::vector<Antenna>& antennas, double antennaHeight,
           const Eigen::Vector3d& deviation);

    /// Steps until a whole step is shorter than a nanometer.
    /// @return false where it does not come to that
    bool Converge();

    /// The fit that starts on the other side of the plane in which the antennas lie best. There a
    /// second tip fits almost as well when they lie close to that plane.
    TipFit Mirrored() const;

    /// How far the tip can move along a unit vector, to the worse side, before the misfit has grown
    /// by `growth`, the other two directions fitted anew at each place. The linear theory says
    /// `linear`; the result is never less, and infinite beyond `most` [m].
    double Reach(const Eigen::Vector3d& along, double linear, double growth, double most) const;

    Sight At(std::size_t k, const Eigen::Vector3d& tip) const;
    Sight At(std::size_t k) const { return At(k, m_tip); }
    std::size_t Count() const { return m_antennas.size(); }
    int Freedom() const { return static_cast<int>(Count()) - 3; }
    const Eigen::Vector3d& Tip() const { return m_tip; }
    bool IsBelowTheAntennas() const { return m_tip.z() < m_middle.z(); }
    int Iterations() const { return m_iterations; }
    double Misfit() const { return Misfit(m_tip, Weights()); }
    Eigen::Matrix3d Normal() const;
    Eigen::Matrix3d DirectionScatter() const;

    /// How the tip follows the antenna height [m per m].
    Eigen::Vector3d HeightSlope() const;

private:
    using WeightList = std::vector<double>;

    WeightList Weights() const;
    double Misfit(const Eigen::Vector3d& tip, const WeightList& weights) const;
    Eigen::Vector3d Gradient(const Eigen::Vector3d& tip, const WeightList& weights) const;
    Eigen::Matrix3d Curvature(const Eigen::Vector3d& tip, const WeightList& weights,
                              bool whole) const;
    double LeastMisfitAt(const Eigen::Vector3d& along, double offset, const WeightList& weights,
                         Eigen::Vector3d& tip) const;

    std::span<const Antenna> m_antennas;
    double m_antennaHeight;
    Eigen::Vector3d m_variance;
    Eigen::Vector3d m_middle = Eigen::Vector3d::Zero(); // of the antennas
    Eigen::Vector3d m_across; // normal of the plane in which the antennas lie best
    Eigen::Vector3d m_tip;
    int m_iterations = 0;
};

} // namespace tiltpole::quality
