// SPDX-License-Identifier: MIT
#include "calibration/solver/TurnMoments.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tiltpole::calibration {
namespace {

// Four samples side by side, whatever the processor: the sums of each lane are the same on all.
constexpr int kLanes = 4;
typedef double Lanes __attribute__((vector_size(kLanes * sizeof(double))));

// Bodies that are compiled once per instruction set must become part of their caller.
#define TILTPOLE_IN_CALLER inline __attribute__((always_inline))

// A column less its origin, as the three coordinates of the sums are read.
struct Column
{
    const double* values;
    double origin;
};

TILTPOLE_IN_CALLER void Read(Lanes& lanes, const Column& column, std::size_t i)
{
    std::memcpy(&lanes, column.values + i, sizeof lanes);
    lanes -= column.origin;
}

TILTPOLE_IN_CALLER double Total(const Lanes& lanes)
{
    return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}

// The sums of u and v alone, four samples side by side.
struct PlaneSums
{
    Lanes u{}, v{}, uu{}, uv{}, vv{}, uuu{}, uuv{}, uvv{}, vvv{};
    Lanes uuuu{}, uuuv{}, uuvv{}, uvvv{}, vvvv{};

    TILTPOLE_IN_CALLER void Add(const Lanes& pu, const Lanes& pv)
    {
        const Lanes squareU = pu * pu, product = pu * pv, squareV = pv * pv;
        u += pu;
        v += pv;
        uu += squareU;
        uv += product;
        vv += squareV;
        uuu += squareU * pu;
        uuv += squareU * pv;
        uvv += squareV * pu;
        vvv += squareV * pv;
        uuuu += squareU * squareU;
        uuuv += squareU * product;
        uuvv += squareU * squareV;
        uvvv += product * squareV;
        vvvv += squareV * squareV;
    }

    TILTPOLE_IN_CALLER TurnMoments Totals(int count) const
    {
        TurnMoments m;
        m.n = count;
        m.u = Total(u);
        m.v = Total(v);
        m.uu = Total(uu);
        m.uv = Total(uv);
        m.vv = Total(vv);
        m.uuu = Total(uuu);
        m.uuv = Total(uuv);
        m.uvv = Total(uvv);
        m.vvv = Total(vvv);
        m.uuuu = Total(uuuu);
        m.uuuv = Total(uuuv);
        m.uuvv = Total(uuvv);
        m.uvvv = Total(uvvv);
        m.vvvv = Total(vvvv);
        return m;
    }
};

// What the sums are taken over.
struct Passage
{
    Column x, y, z;
    std::size_t padded;
    int count;
};

// Moments of (x, y, z) as (u, v, w).
struct OfThree
{
    static TILTPOLE_IN_CALLER TurnMoments Sum(const Passage& p)
    {
        PlaneSums plane;
        Lanes sumW{}, uw{}, vw{}, ww{};
        for (std::size_t i = 0; i < p.padded; i += kLanes) {
            Lanes pu, pv, pw;
            Read(pu, p.x, i);
            Read(pv, p.y, i);
            Read(pw, p.z, i);
            plane.Add(pu, pv);
            sumW += pw;
            uw += pu * pw;
            vw += pv * pw;
            ww += pw * pw;
        }
        TurnMoments m = plane.Totals(p.count);
        m.w = Total(sumW);
        m.uw = Total(uw);
        m.vw = Total(vw);
        m.ww = Total(ww);
        return m;
    }
};

// Moments of (x, c·x + d·y + e·z).
struct OfCorrectedZ
{
    static TILTPOLE_IN_CALLER TurnMoments Sum(const Passage& p,
                                              const Incline_MagneticCorrectParameter& P)
    {
        PlaneSums plane;
        for (std::size_t i = 0; i < p.padded; i += kLanes) {
            Lanes px, py, pz;
            Read(px, p.x, i);
            Read(py, p.y, i);
            Read(pz, p.z, i);
            plane.Add(px, P.c * px + P.d * py + P.e * pz);
        }
        return plane.Totals(p.count);
    }
};

#if defined(__x86_64__)
template <class Sums, class... Arguments>
__attribute__((target("avx2"))) TurnMoments SumWithAvx2(const Arguments&... arguments)
{
    return Sums::Sum(arguments...);
}
#endif

// The same sums with the widest of the vectors that the processor has for four doubles.
template <class Sums, class... Arguments>
TurnMoments SumOver(const Arguments&... arguments)
{
#if defined(__x86_64__)
    static const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;
    if (hasAvx2) return SumWithAvx2<Sums>(arguments...);
#endif
    return Sums::Sum(arguments...);
}

// The column is 0 behind its `count` readings.
double FillUpWithMean(std::vector<double>& column, std::size_t count)
{
    double first = 0, second = 0, third = 0, fourth = 0; // one sum alone would be waited for
    for (std::size_t i = 0; i < column.size(); i += kLanes) {
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
    const auto blocks = static_cast<std::size_t>((count + kLanes - 1) / kLanes);
    const std::size_t padded = blocks * kLanes;
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
    return SumOver<OfThree>(Passage{x, y, z, r.x.size(), r.count});
}

TurnMoments MomentsXZY(const TurnReadings& r)
{
    const Column x{r.x.data(), r.meanX}, y{r.y.data(), r.meanY}, z{r.z.data(), r.meanZ};
    return SumOver<OfThree>(Passage{x, z, y, r.x.size(), r.count});
}

TurnMoments MomentsOfCorrectedZ(const TurnReadings& r, const Incline_MagneticCorrectParameter& P)
{
    const Column x{r.x.data(), r.meanX}, y{r.y.data(), r.meanY}, z{r.z.data(), r.meanZ};
    return SumOver<OfCorrectedZ>(Passage{x, y, z, r.x.size(), r.count}, P);
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
