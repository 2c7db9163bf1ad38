// SPDX-License-Identifier: MIT
#include "calibration/solver/MagneticFits.h"

#include "calibration/ShortMemory.h"

#include <cmath>

namespace tiltpole::calibration {
namespace {

bool AreColumnPair(const CSZMatrix& u, const CSZMatrix& v, int leastRows)
{
    return u.getRowSize() == v.getRowSize() && u.getColSize() == v.getColSize()
           && v.getColSize() == 1 && v.getRowSize() >= leastRows;
}

double ResidualOf(const CSZMatrix& u, const CSZMatrix& v, double slope, double intercept)
{
    const int n = u.getRowSize();
    double sum = 0;
    for (int i = 0; i < n; ++i) {
        const double error = slope * u.GetData(i, 0) + intercept - v.GetData(i, 0);
        sum += error * error / n;
    }
    return std::sqrt(sum);
}

// ±sqrt(square), negative unless `sign` is above 0.
double SignedRoot(double square, double sign)
{
    const double root = std::sqrt(square);
    return sign > 0 ? root : -root;
}

} // namespace

Conic ConicOf(const CSZMatrix& p)
{
    return {p.GetData(0, 0), p.GetData(1, 0), p.GetData(2, 0), p.GetData(3, 0)};
}

int SolveLeastSquares(const CSZMatrix& A, const CSZMatrix& b, const CSZMatrix* W, CSZMatrix& x,
                      CSZMatrix* N)
{
    if (A.getRowSize() < A.getColSize()) return 0;
    if (A.getRowSize() != b.getRowSize() || b.getColSize() != 1) return 0;

    const CSZMatrix transpose = A.matTran();
    CheckAllocated(transpose, A.getColSize());
    const CSZMatrix inverse = (W != nullptr ? transpose * *W * A : transpose * A).matInv();
    if (!inverse.isMatrixHealthy()) return 0;

    x = inverse * (transpose * b);
    if (N != nullptr) *N = inverse;
    return 1;
}

int FitEllipse(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& p)
{
    if (!AreColumnPair(u, v, 5)) return 0;

    // The normal equations, each sum over rising i: those of SolveLeastSquares, without its
    // matrices.
    double sums[5][6] = {};
    for (int i = 0; i < u.getRowSize(); ++i) {
        const double ui = u.GetData(i, 0);
        const double vi = v.GetData(i, 0);
        const double row[6] = {ui * ui - vi * vi, ui * vi, ui, vi, 1.0, -vi * vi};
        for (int j = 0; j < 5; ++j)
            for (int k = 0; k < 6; ++k)
                sums[j][k] += row[j] * row[k];
    }
    CSZMatrix normal(5, 5);
    CSZMatrix right(5, 1);
    for (int j = 0; j < 5; ++j) {
        for (int k = 0; k < 5; ++k)
            normal.SetData(j, k, sums[j][k]);
        right.SetData(j, sums[j][5]);
    }
    p = normal.matInv() * right;
    const Conic conic = ConicOf(p);
    return conic.p1 * conic.p1 - 4 * conic.p0 * (1 - conic.p0) >= 0 ? 0 : 1;
}

std::optional<Line> FitLine(const CSZMatrix& u, const CSZMatrix& v)
{
    if (!AreColumnPair(u, v, 2)) return std::nullopt;

    const int n = u.getRowSize();
    double sumU = 0, sumV = 0, sumUU = 0, sumUV = 0;
    for (int i = 0; i < n; ++i) {
        const double ui = u.GetData(i, 0);
        const double vi = v.GetData(i, 0);
        sumUU += ui * ui;
        sumU += ui;
        sumUV += ui * vi;
        sumV += vi;
    }
    const double meanU = sumU / n;
    const double meanV = sumV / n;
    double spreadU = 0, spreadV = 0;
    for (int i = 0; i < n; ++i) {
        const double du = u.GetData(i, 0) - meanU;
        const double dv = v.GetData(i, 0) - meanV;
        spreadU += du * du;
        spreadV += dv * dv;
    }
    if (spreadU < kVanishing || spreadV < kVanishing) return std::nullopt;

    const double determinant = n * sumUU - sumU * sumU;
    if (std::fabs(determinant) < kVanishing) return std::nullopt;

    const double intercept = (sumUU * sumV - sumU * sumUV) / determinant;
    const double slope = (n * sumUV - sumU * sumV) / determinant;
    return Line{slope, intercept, ResidualOf(u, v, slope, intercept)};
}

void SetFirstCorrection(const Conic& horizontal, const Conic& vertical, double k, double m,
                        Incline_MagneticCorrectParameter& P)
{
    const double E0 = horizontal.p0;
    const double F0 = vertical.p0;
    const double F1 = vertical.p1;
    const double Q = (E0 - k * k) + E0 * (k * k);
    const double S = std::sqrt(-Q * (E0 - 1));
    P.a = (-1 / Q) * S * k;
    P.b = (1 / Q) * S;
    const double T = std::sqrt(-F1 * F1 + 4 * F0 - 4 * F0 * F0);
    P.c = (1 / T) * ((P.b * F1 - 2 * P.a * m) + 2 * F0 * P.a * m) / P.b;
    P.d = (2 / T) * (F0 - 1) * m;
    P.e = (-2 / T) * (F0 - 1);
}

bool SetClosedForm(const Conic& horizontal, const Conic& vertical, double slope, double intercept,
                   Incline_MagneticCorrectParameter& P)
{
    const auto [p0, p1, p2, p3] = horizontal;
    const auto [q0, q1, q2, q3] = vertical;
    const double D1 = horizontal.Discriminant();
    if (D1 < 0) return false;

    const double t = SignedRoot(p1 * p1 / D1, (1 - p0) / p1);
    const double s = 2 * t * (1 - p0) / p1;
    const CSZMatrix M(2, 2, 4, 2 + 2 * t * t, 2 * t * s, 2 * t * s, 2 * s * s);
    const CSZMatrix r(2, 1, 2, -p2 * (1 + t * t) / p0, -p3 * (1 + t * t) / p0);
    const CSZMatrix center = M.matInv() * r;
    const double y0 = center.GetData(1, 0);

    const double D2 = vertical.Discriminant();
    if (D2 < 0) return false;

    const double w = SignedRoot(q1 * q1 * (s * s) / D2, (1 - q0) / q1);
    const double g = 2 * w * (1 - q0) / q1;
    const double h = (g * g * intercept / (1 - slope) + t * w / s) / (2 * g);
    const double scale = s * s + w * w;
    P.z0 = (h * scale * (q2 / q0 + 2 * y0)
            - 2 * (t * s + h * w) * (w * y0 + q3 * scale / (2 * g * q0)))
           / (2 * t * s * g);
    P.a = s;
    P.c = h;
    P.d = w;
    P.e = g;
    P.x0 = center.GetData(0, 0);
    P.y0 = y0;
    return true;
}

} // namespace tiltpole::calibration
