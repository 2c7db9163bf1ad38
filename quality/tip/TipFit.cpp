// SPDX-License-Identifier: MIT
#include "quality/tip/TipFit.h"

#include <Eigen/Dense>

#include <cmath>
#include <limits>

namespace tiltpole::quality {

using Eigen::Matrix3d;
using Eigen::Vector3d;

namespace {

constexpr double kConverged = 1e-9; // whole step [m]
constexpr int kMostIterations = 500;
constexpr double kRounding = 1e-12;    // of a misfit
constexpr double kAside = 0.1;         // of the antenna height
constexpr double kShortestStep = 1e-6; // share of a whole step below which no part of it helps

// A step downhill: Newton's where the misfit is convex, else that of Gauss and Newton.
Vector3d StepOf(const Matrix3d& whole, const Matrix3d& linear, const Vector3d& gradient)
{
    const Eigen::LDLT<Matrix3d> newton(whole);
    if (newton.info() == Eigen::Success && newton.isPositive()) {
        Vector3d step = newton.solve(-gradient);
        if (step.allFinite() && step.dot(gradient) < 0.0) return step;
    }
    return linear.ldlt().solve(-gradient);
}

} // namespace

std::vector<Antenna> FiniteAntennas(const std::vector<xyhCoord>& given)
{
    std::vector<Antenna> antennas;
    Vector3d origin = Vector3d::Zero();
    for (std::size_t k = 0; k < given.size(); ++k) {
        const Vector3d position(given[k].x, given[k].y, given[k].h);
        if (!position.allFinite()) continue;
        if (antennas.empty()) origin = position;
        antennas.push_back({position - origin, k});
    }
    return antennas;
}

TipFit::TipFit(const std::vector<Antenna>& antennas, double antennaHeight,
               const Vector3d& deviation)
    : m_antennas(antennas), m_antennaHeight(antennaHeight), m_variance(deviation.cwiseAbs2())
{
    for (const Antenna& antenna : m_antennas)
        m_middle += antenna.position / static_cast<double>(Count());
    Matrix3d scatter = Matrix3d::Zero();
    for (const Antenna& antenna : m_antennas)
        scatter += (antenna.position - m_middle) * (antenna.position - m_middle).transpose();
    m_across = Eigen::SelfAdjointEigenSolver<Matrix3d>(scatter).eigenvectors().col(0);
    // Beside the plane of a swing: within it, the misfit has no slope across it.
    m_tip = m_middle + antennaHeight * (Vector3d(0.0, 0.0, -1.0) + kAside * m_across);
}

Sight TipFit::At(std::size_t k, const Vector3d& tip) const
{
    const Vector3d towards = tip - m_antennas[k].position;
    const double distance = towards.norm();
    const Vector3d direction = towards / distance;
    return {direction, distance, distance - m_antennaHeight,
            1.0 / direction.cwiseAbs2().dot(m_variance)};
}

TipFit::WeightList TipFit::Weights() const
{
    WeightList weights(Count());
    for (std::size_t k = 0; k < Count(); ++k)
        weights[k] = At(k).weight;
    return weights;
}

double TipFit::Misfit(const Vector3d& tip, const WeightList& weights) const
{
    double sum = 0.0;
    for (std::size_t k = 0; k < Count(); ++k) {
        const double residual = (tip - m_antennas[k].position).norm() - m_antennaHeight;
        sum += weights[k] * residual * residual;
    }
    return sum;
}

// Half of the misfit's.
Vector3d TipFit::Gradient(const Vector3d& tip, const WeightList& weights) const
{
    Vector3d gradient = Vector3d::Zero();
    for (std::size_t k = 0; k < Count(); ++k) {
        const Sight sight = At(k, tip);
        gradient += weights[k] * sight.residual * sight.direction;
    }
    return gradient;
}

// Half of the misfit's second derivatives, the weights held; without the residuals' share it is the
// normal matrix.
Matrix3d TipFit::Curvature(const Vector3d& tip, const WeightList& weights, bool whole) const
{
    Matrix3d sum = Matrix3d::Zero();
    for (std::size_t k = 0; k < Count(); ++k) {
        const Sight sight = At(k, tip);
        const Matrix3d along = sight.direction * sight.direction.transpose();
        sum += weights[k] * along;
        if (whole)
            sum += weights[k] * sight.residual / sight.distance * (Matrix3d::Identity() - along);
    }
    return sum;
}

Matrix3d TipFit::Normal() const
{
    return Curvature(m_tip, Weights(), false);
}

Matrix3d TipFit::DirectionScatter() const
{
    Matrix3d scatter = Matrix3d::Zero();
    for (std::size_t k = 0; k < Count(); ++k) {
        const Vector3d direction = At(k).direction;
        scatter += direction * direction.transpose();
    }
    return scatter / static_cast<double>(Count());
}

Vector3d TipFit::HeightSlope() const
{
    Vector3d sum = Vector3d::Zero();
    for (std::size_t k = 0; k < Count(); ++k) {
        const Sight sight = At(k);
        sum += sight.weight * sight.direction;
    }
    return Normal().ldlt().solve(sum);
}

bool TipFit::Converge()
{
    for (m_iterations = 1; m_iterations <= kMostIterations; ++m_iterations) {
        const WeightList weights = Weights();
        const Vector3d gradient = Gradient(m_tip, weights);
        const Vector3d whole =
            StepOf(Curvature(m_tip, weights, true), Curvature(m_tip, weights, false), gradient);
        if (!whole.allFinite()) return false;
        if (whole.norm() <= kConverged) {
            m_tip += whole;
            return true;
        }
        const double before = Misfit(m_tip, weights) * (1.0 + kRounding);
        double part = 1.0;
        while (part > kShortestStep && !(Misfit(m_tip + part * whole, weights) <= before))
            part *= 0.5;
        if (part <= kShortestStep) return false;
        m_tip += part * whole;
    }
    return false;
}

TipFit TipFit::Mirrored() const
{
    TipFit mirrored = *this;
    mirrored.m_tip -= 2.0 * m_across.dot(m_tip - m_middle) * m_across;
    return mirrored;
}

// Misfit at the best place whose component along the vector is `offset` from the tip; `tip` is the
// place to start from, and that place afterwards.
double TipFit::LeastMisfitAt(const Vector3d& along, double offset, const WeightList& weights,
                             Vector3d& tip) const
{
    constexpr int kSteps = 20;
    constexpr double kNearEnough = 1e-6; // [m]
    Eigen::Matrix<double, 3, 2> beside;
    beside.col(0) = along.unitOrthogonal();
    beside.col(1) = along.cross(Vector3d(beside.col(0)));
    tip += (offset - along.dot(tip - m_tip)) * along;
    double least = Misfit(tip, weights);
    for (int i = 0; i < kSteps; ++i) {
        const Eigen::Vector2d gradient = beside.transpose() * Gradient(tip, weights);
        const Eigen::Matrix2d normal = beside.transpose() * Curvature(tip, weights, false) * beside;
        Vector3d step = beside * normal.ldlt().solve(-gradient);
        if (!step.allFinite()) break;
        while (step.norm() > kNearEnough && !(Misfit(tip + step, weights) <= least))
            step *= 0.5;
        if (step.norm() <= kNearEnough) break;
        tip += step;
        least = Misfit(tip, weights);
    }
    return least;
}

double TipFit::Reach(const Vector3d& along, double linear, double growth, double most) const
{
    constexpr int kSteps = 24;
    const WeightList weights = Weights();
    const double allowed = Misfit(m_tip, weights) + growth;
    double reach = linear;
    for (const double side : {1.0, -1.0}) {
        Vector3d tip = m_tip;
        double within = 0.0;
        double beyond = linear;
        while (LeastMisfitAt(along, side * beyond, weights, tip) < allowed) {
            within = beyond;
            beyond *= 1.25;
            if (beyond > most) return std::numeric_limits<double>::infinity();
        }
        if (within == 0.0) continue;
        for (int i = 0; i < kSteps && beyond - within > 1e-3 * beyond; ++i) {
            const double middle = 0.5 * (within + beyond);
            (LeastMisfitAt(along, side * middle, weights, tip) < allowed ? within : beyond) =
                middle;
        }
        reach = std::max(reach, beyond);
    }
    return reach;
}

} // namespace tiltpole::quality
