// SPDX-License-Identifier: MIT
#include "calibration/solver/TurnMoments.h"

#include "calibration/solver/TurnSums.h"
#include "vector/Dispatch.h"

#include <algorithm>
#include <array>

namespace tiltpole::calibration {
namespace {

constexpr int kGroup = 4; // readings that are summed side by side

const TurnSums& Sums()
{
    static const TurnSums& best = vector::KernelsFor<TurnSums, 4>(vector::LanesOfProcessor());
    return best;
}

// The column is 0 behind its `count` readings.
double FillUpWithMean(std::vector<double>& column, std::size_t count)
{
    double first = 0, second = 0, third = 0, fourth = 0; // one sum alone would be waited for
    for (std::size_t i = 0; i < column.size(); i += kGroup) {
        first += column[i];
        second += column[i + 1];
        third += column[i + 2];
        fourth += column[i + 3];
    }
    const double mean = ((first + second) + (third + fourth)) / static_cast<double>(count);
    std::fill(column.begin() + static_cast<std::ptrdiff_t>(count), column.end(), mean);
    return mean;
}

constexpr std::size_t kUnknowns = 5;
constexpr double kLeastPivot = 0.01; // of a diagonal element, at which the conic is well determined

// The normal equations of the conic, right side in the last column, upper triangle filled.
using NormalEquations = std::array<std::array<double, kUnknowns + 1>, kUnknowns>;

NormalEquations NormalEquationsOf(const TurnMoments& m)
{
    NormalEquations N{};
    N[0] = {m.uuuu - 2 * m.uuvv + m.vvvv,
            m.uuuv - m.uvvv,
            m.uuu - m.uvv,
            m.uuv - m.vvv,
            m.uu - m.vv,
            m.vvvv - m.uuvv};
    N[1] = {0, m.uuvv, m.uuv, m.uvv, m.uv, -m.uvvv};
    N[2] = {0, 0, m.uu, m.uv, m.u, -m.uvv};
    N[3] = {0, 0, 0, m.vv, m.v, -m.vvv};
    N[4] = {0, 0, 0, 0, m.n, -m.vv};
    return N;
}

} // namespace

TurnReadings::TurnReadings(int readingCount) : count(readingCount)
{
    const auto blocks = static_cast<std::size_t>((count + kGroup - 1) / kGroup);
    const std::size_t padded = blocks * kGroup;
    x.resize(padded);
    y.resize(padded);
    z.resize(padded);
}

void TurnReadings::Close()
{
    const auto filled = static_cast<std::size_t>(count);
    meanX = FillUpWithMean(x, filled);
    meanY = FillUpWithMean(y, filled);
    meanZ = FillUpWithMean(z, filled);
}

TurnMoments MomentsXYZ(const TurnReadings& r)
{
    const Column x{r.x.data(), r.meanX}, y{r.y.data(), r.meanY}, z{r.z.data(), r.meanZ};
    return Sums().ofThree({x, y, z, r.x.size(), r.count});
}

TurnMoments MomentsXZY(const TurnReadings& r)
{
    const Column x{r.x.data(), r.meanX}, y{r.y.data(), r.meanY}, z{r.z.data(), r.meanZ};
    return Sums().ofThree({x, z, y, r.x.size(), r.count});
}

TurnMoments MomentsOfCorrectedZ(const TurnReadings& r, const Incline_MagneticCorrectParameter& P)
{
    const Column x{r.x.data(), r.meanX}, y{r.y.data(), r.meanY}, z{r.z.data(), r.meanZ};
    return Sums().ofCorrectedZ({x, y, z, r.x.size(), r.count}, P);
}

TurnMoments Sheared(const TurnMoments& m, double a, double b)
{
    TurnMoments s;
    s.n = m.n;
    s.u = m.u;
    s.v = a * m.u + b * m.v;
    s.uu = m.uu;
    s.uv = a * m.uu + b * m.uv;
    s.vv = a * a * m.uu + 2 * a * b * m.uv + b * b * m.vv;
    s.uuu = m.uuu;
    s.uuv = a * m.uuu + b * m.uuv;
    s.uvv = a * a * m.uuu + 2 * a * b * m.uuv + b * b * m.uvv;
    s.vvv = a * a * a * m.uuu + 3 * a * a * b * m.uuv + 3 * a * b * b * m.uvv + b * b * b * m.vvv;
    s.uuuu = m.uuuu;
    s.uuuv = a * m.uuuu + b * m.uuuv;
    s.uuvv = a * a * m.uuuu + 2 * a * b * m.uuuv + b * b * m.uuvv;
    s.uvvv =
        a * a * a * m.uuuu + 3 * a * a * b * m.uuuv + 3 * a * b * b * m.uuvv + b * b * b * m.uvvv;
    s.vvvv = a * a * a * a * m.uuuu + 4 * a * a * a * b * m.uuuv + 6 * a * a * b * b * m.uuvv
             + 4 * a * b * b * b * m.uvvv + b * b * b * b * m.vvvv;
    return s;
}

std::optional<Conic> FitConic(const TurnMoments& m)
{
    const NormalEquations full = NormalEquationsOf(m);
    NormalEquations N = full;
    for (std::size_t k = 0; k < kUnknowns; ++k) {
        if (!(N[k][k] > kLeastPivot * full[k][k])) return std::nullopt;
        for (std::size_t r = k + 1; r < kUnknowns; ++r) {
            const double factor = N[k][r] / N[k][k];
            for (std::size_t c = r; c <= kUnknowns; ++c)
                N[r][c] -= factor * N[k][c];
        }
    }
    std::array<double, kUnknowns> p{};
    for (std::size_t k = kUnknowns; k-- > 0;) {
        double right = N[k][kUnknowns];
        for (std::size_t c = k + 1; c < kUnknowns; ++c)
            right -= N[k][c] * p[c];
        p[k] = right / N[k][k];
    }
    return Conic{p[0], p[1], p[2], p[3]};
}

} // namespace tiltpole::calibration
