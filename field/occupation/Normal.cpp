// SPDX-License-Identifier: MIT
#include "field/occupation/Normal.h"

#include <cmath>

namespace tiltpole::field {

void NormalEquations::Clear()
{
    m_matrix.setZero();
    m_right.setZero();
}

void NormalEquations::Add(const AntennaJacobian& rows, const Eigen::Vector3d& weight,
                          const Eigen::Vector3d& residual)
{
    for (int k = 0; k < 3; ++k)
        for (int j = 0; j < kUnknowns; ++j) {
            const double weighted = weight[k] * rows(k, j);
            if (weighted == 0.0) continue; // heights of most columns, gaps that are none
            m_right[j] -= weighted * residual[k];
            for (int i = j; i < kUnknowns; ++i)
                m_matrix(i, j) += weighted * rows(k, i);
        }
}

void NormalEquations::Add(const Unknowns& row, double weight, double residual)
{
    for (int j = 0; j < kUnknowns; ++j) {
        const double weighted = weight * row[j];
        m_right[j] -= weighted * residual;
        for (int i = j; i < kUnknowns; ++i)
            m_matrix(i, j) += weighted * row[i];
    }
}

double NormalEquations::AddPair(AntennaJacobian rows, const Eigen::Matrix2d& covariance,
                                const Eigen::Vector2d& residual)
{
    // Rows of the inverse of its root: (x / s, (y - c x / v) / s').
    const double slope = covariance(1, 0) / covariance(0, 0);
    const Eigen::Vector3d weight(1.0 / covariance(0, 0),
                                 1.0 / (covariance(1, 1) - slope * covariance(1, 0)), 0.0);
    rows.row(1) -= slope * rows.row(0);
    const Eigen::Vector3d apart(residual.x(), residual.y() - slope * residual.x(), 0.0);
    Add(rows, weight, apart);
    return weight.dot(apart.cwiseAbs2());
}

void NormalEquations::AddPrior(int at, double value, double weight)
{
    m_matrix(at, at) += weight;
    m_right[at] -= weight * value;
}

bool NormalEquations::Factor()
{
    for (int j = 0; j < kUnknowns; ++j) {
        double pivot = m_matrix(j, j);
        for (int k = 0; k < j; ++k)
            pivot -= m_factor(j, k) * m_factor(j, k);
        if (!(pivot > 0.0) || !std::isfinite(pivot)) return false;
        m_factor(j, j) = std::sqrt(pivot);
        for (int i = j + 1; i < kUnknowns; ++i) {
            double value = m_matrix(i, j);
            for (int k = 0; k < j; ++k)
                value -= m_factor(i, k) * m_factor(j, k);
            m_factor(i, j) = value / m_factor(j, j);
        }
    }
    return true;
}

Unknowns NormalEquations::Whitened(const Unknowns& column) const
{
    Unknowns x = column;
    for (int j = 0; j < kUnknowns; ++j) {
        x[j] /= m_factor(j, j);
        for (int i = j + 1; i < kUnknowns; ++i)
            x[i] -= m_factor(i, j) * x[j];
    }
    return x;
}

// L⁻ᵀ of a column.
Unknowns NormalEquations::Back(const Unknowns& whitened) const
{
    Unknowns x = whitened;
    for (int j = kUnknowns; j-- > 0;) {
        for (int i = j + 1; i < kUnknowns; ++i)
            x[j] -= m_factor(i, j) * x[i];
        x[j] /= m_factor(j, j);
    }
    return x;
}

Unknowns NormalEquations::Solution() const
{
    return Back(Whitened(m_right));
}

NormalMatrix NormalEquations::Inverse() const
{
    NormalMatrix inverse;
    for (int j = 0; j < kUnknowns; ++j) {
        Unknowns unit = Unknowns::Zero();
        unit[j] = 1.0;
        inverse.col(j) = Back(Whitened(unit));
    }
    return inverse;
}

} // namespace tiltpole::field
