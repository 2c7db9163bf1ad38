// SPDX-License-Identifier: MIT
//
// In the place of GeographicLib's sum, for processors that it is not installed for: the same sum by the
// recursions of the associated Legendre functions, Schmidt semi-normalized, and their derivatives.
//
//   V = sum over n, m of (a/r)^(n+1) (C cos(m l) + S sin(m l)) P(n, m)(cos t)
//   C = c + years c',  S = s + years s';   r, t, l: distance, angle from the pole, longitude
//
// Not at the poles.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

namespace GeographicLib {

class SphericalHarmonic1
{
public:
    enum normalization { SCHMIDT };

    SphericalHarmonic1() = default;
    /// Order by order: C of all degrees of order 0 first, S from order 1 on. Refers to the columns.
    SphericalHarmonic1(const std::vector<double>& c, const std::vector<double>& s, int degree,
                       const std::vector<double>& cChange, const std::vector<double>& sChange, int,
                       double radius, normalization)
        : m_c(&c), m_s(&s), m_cChange(&cChange), m_sChange(&sChange), m_degree(degree),
          m_radius(radius)
    {}

    double operator()(double years, double x, double y, double z, double& slopeX, double& slopeY,
                      double& slopeZ) const
    {
        const double equatorial = std::hypot(x, y);
        const double r = std::hypot(equatorial, z);
        const double cosT = z / r;
        const double sinT = equatorial / r;
        const double cosL = x / equatorial;
        const double sinL = y / equatorial;
        double value = 0.0;
        double outward = 0.0; // along the radius, southward and eastward, all times r
        double southward = 0.0;
        double eastward = 0.0;
        double cosM = 1.0; // of m times the longitude
        double sinM = 0.0;
        double diagonal = 1.0; // P(m, m)
        double diagonalSlope = 0.0;
        for (int m = 0; m <= m_degree; ++m) {
            double p = diagonal;
            double slope = diagonalSlope;
            double before = 0.0; // P(n - 1, m)
            double slopeBefore = 0.0;
            double ratio = std::pow(m_radius / r, m + 1);
            for (int n = m; n <= m_degree; ++n) {
                const double c = Of(*m_c, *m_cChange, Place(n, m), years);
                const double s =
                    m == 0 ? 0.0
                           : Of(*m_s, *m_sChange, Place(n, m) - Place(m_degree, 0) - 1, years);
                const double wave = c * cosM + s * sinM;
                value += ratio * wave * p;
                outward -= (n + 1) * ratio * wave * p;
                southward += ratio * wave * slope;
                eastward += m * ratio * (s * cosM - c * sinM) * p / sinT;
                Next(n, m, cosT, sinT, p, before, slope, slopeBefore);
                ratio *= m_radius / r;
            }
            const double factor = m == 0 ? 1.0 : std::sqrt((2.0 * m + 1.0) / (2.0 * m + 2.0));
            diagonalSlope = factor * (sinT * diagonalSlope + cosT * diagonal);
            diagonal *= factor * sinT;
            const double cosNext = cosM * cosL - sinM * sinL;
            sinM = sinM * cosL + cosM * sinL;
            cosM = cosNext;
        }
        const double level = outward * sinT + southward * cosT; // away from the axis
        slopeX = (level * cosL - eastward * sinL) / r;
        slopeY = (level * sinL + eastward * cosL) / r;
        slopeZ = (outward * cosT - southward * sinT) / r;
        return value;
    }

private:
    std::size_t Place(int n, int m) const
    {
        return static_cast<std::size_t>(m * m_degree - m * (m - 1) / 2 + n);
    }

    static double Of(const std::vector<double>& now, const std::vector<double>& change,
                     std::size_t place, double years)
    {
        return now[place] + years * change[place];
    }

    // P(n, m) and its slope become those of n + 1.
    static void Next(int n, int m, double cosT, double sinT, double& p, double& before,
                     double& slope, double& slopeBefore)
    {
        const double twice = 2.0 * n + 1.0;
        const double last = std::sqrt(static_cast<double>(n * n - m * m));
        const double next = std::sqrt(static_cast<double>((n + 1) * (n + 1) - m * m));
        const double pNext = (twice * cosT * p - last * before) / next;
        const double slopeNext = (twice * (cosT * slope - sinT * p) - last * slopeBefore) / next;
        before = p;
        slopeBefore = slope;
        p = pNext;
        slope = slopeNext;
    }

    const std::vector<double>* m_c = nullptr;
    const std::vector<double>* m_s = nullptr;
    const std::vector<double>* m_cChange = nullptr;
    const std::vector<double>* m_sChange = nullptr;
    int m_degree = 0;
    double m_radius = 0.0;
};

} // namespace GeographicLib
