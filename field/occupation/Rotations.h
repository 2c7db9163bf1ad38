// SPDX-License-Identifier: MIT
//
// Rotations of space by rotation vectors [rad].
#pragma once

#include <Eigen/Geometry>

#include <cmath>

namespace tiltpole::field {

/// The matrix with Skew(a)·b = a × b.
inline Eigen::Matrix3d Skew(const Eigen::Vector3d& a)
{
    Eigen::Matrix3d s;
    s << 0.0, -a.z(), a.y(), a.z(), 0.0, -a.x(), -a.y(), a.x(), 0.0;
    return s;
}

/// The rotation by the vector `turn`: about its direction, by its length [rad].
inline Eigen::Quaterniond Exp(const Eigen::Vector3d& turn)
{
    const double half = 0.5 * turn.norm();
    // sin(x)/x to full precision where the quotient would be 0/0.
    const double sinc = half < 1e-4 ? 1.0 - half * half / 6.0 : std::sin(half) / half;
    const Eigen::Vector3d v = 0.5 * sinc * turn;
    return {std::cos(half), v.x(), v.y(), v.z()};
}

/// The shortest rotation that carries `up` to the vertical; `up` is not 0.
inline Eigen::Quaterniond Leveling(const Eigen::Vector3d& up)
{
    const Eigen::Vector3d u = up.normalized();
    const double cosine = 1.0 + u.z();               // twice the square of that of the half angle
    if (cosine < 1e-12) return {0.0, 1.0, 0.0, 0.0}; // upside down: about any level axis
    return Eigen::Quaterniond(cosine, u.y(), -u.x(), 0.0).normalized();
}

/// The shortest rotation vector of `q` [rad], at most π long.
inline Eigen::Vector3d Log(const Eigen::Quaterniond& q)
{
    const Eigen::Vector3d v = q.w() < 0.0 ? Eigen::Vector3d(-q.vec()) : Eigen::Vector3d(q.vec());
    const double sine = v.norm();
    if (sine < 1e-10) return 2.0 * v;
    return 2.0 * std::atan2(sine, std::fabs(q.w())) / sine * v;
}

/// Jl with Exp(a + da) ≈ Exp(Jl·da)·Exp(a): I + (1 − cos |a|)/|a|²·[a] + (|a| − sin |a|)/|a|³·[a]².
/// J. Solà et al., A micro Lie theory for state estimation in robotics, 2018, (145).
inline Eigen::Matrix3d LeftJacobian(const Eigen::Vector3d& a)
{
    const Eigen::Matrix3d s = Skew(a);
    const double n = a.norm();
    const bool tiny = n < 1e-3;
    const double first = tiny ? 0.5 - n * n / 24.0 : (1.0 - std::cos(n)) / (n * n);
    const double second = tiny ? 1.0 / 6.0 - n * n / 120.0 : (n - std::sin(n)) / (n * n * n);
    return Eigen::Matrix3d::Identity() + first * s + second * s * s;
}

} // namespace tiltpole::field
