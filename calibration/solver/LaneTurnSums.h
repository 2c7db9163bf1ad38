// SPDX-License-Identifier: MIT
//
// The sums of a turn over vectors of Width doubles. Each width is instantiated in a source file of
// its own.
#pragma once

#include "calibration/solver/TurnSums.h"
#include "vector/Lanes.h"

namespace tiltpole::calibration {

using vector::GroupSum;
using vector::kGroup;
using vector::Lanes;

template <int Width>
Lanes<Width> Read(const Column& column, std::size_t i)
{
    return Lanes<Width>::Load(column.values + i) - column.origin;
}

// The sums of u and v alone.
template <int Width>
struct PlaneSums
{
    using Sum = GroupSum<Width>;

    Sum u, v, uu, uv, vv, uuu, uuv, uvv, vvv;
    Sum uuuu, uuuv, uuvv, uvvv, vvvv;

    // `p` is the part of the group that the lanes belong to.
    void Add(int p, Lanes<Width> pu, Lanes<Width> pv)
    {
        const Lanes<Width> squareU = pu * pu, product = pu * pv, squareV = pv * pv;
        u.part[p] += pu;
        v.part[p] += pv;
        uu.part[p] += squareU;
        uv.part[p] += product;
        vv.part[p] += squareV;
        uuu.part[p] += squareU * pu;
        uuv.part[p] += squareU * pv;
        uvv.part[p] += squareV * pu;
        vvv.part[p] += squareV * pv;
        uuuu.part[p] += squareU * squareU;
        uuuv.part[p] += squareU * product;
        uuvv.part[p] += squareU * squareV;
        uvvv.part[p] += product * squareV;
        vvvv.part[p] += squareV * squareV;
    }

    TurnMoments Totals(int count) const
    {
        return {.n = static_cast<double>(count),
                .u = u.Total(),
                .v = v.Total(),
                .w = 0,
                .uu = uu.Total(),
                .uv = uv.Total(),
                .vv = vv.Total(),
                .uw = 0,
                .vw = 0,
                .ww = 0,
                .uuu = uuu.Total(),
                .uuv = uuv.Total(),
                .uvv = uvv.Total(),
                .vvv = vvv.Total(),
                .uuuu = uuuu.Total(),
                .uuuv = uuuv.Total(),
                .uuvv = uuvv.Total(),
                .uvvv = uvvv.Total(),
                .vvvv = vvvv.Total()};
    }
};

template <int Width>
TurnMoments SumOfThree(const Passage& passage)
{
    PlaneSums<Width> plane;
    GroupSum<Width> w, uw, vw, ww;
    for (std::size_t group = 0; group < passage.padded; group += kGroup)
        for (int p = 0; p < kGroup / Width; ++p) {
            const std::size_t i = group + static_cast<std::size_t>(p * Width);
            const Lanes<Width> pu = Read<Width>(passage.x, i);
            const Lanes<Width> pv = Read<Width>(passage.y, i);
            const Lanes<Width> pw = Read<Width>(passage.z, i);
            plane.Add(p, pu, pv);
            w.part[p] += pw;
            uw.part[p] += pu * pw;
            vw.part[p] += pv * pw;
            ww.part[p] += pw * pw;
        }
    TurnMoments m = plane.Totals(passage.count);
    m.w = w.Total();
    m.uw = uw.Total();
    m.vw = vw.Total();
    m.ww = ww.Total();
    return m;
}

template <int Width>
TurnMoments SumOfCorrectedZ(const Passage& passage, const Incline_MagneticCorrectParameter& P)
{
    PlaneSums<Width> plane;
    for (std::size_t group = 0; group < passage.padded; group += kGroup)
        for (int p = 0; p < kGroup / Width; ++p) {
            const std::size_t i = group + static_cast<std::size_t>(p * Width);
            const Lanes<Width> px = Read<Width>(passage.x, i);
            const Lanes<Width> py = Read<Width>(passage.y, i);
            const Lanes<Width> pz = Read<Width>(passage.z, i);
            plane.Add(p, px, P.c * px + P.d * py + P.e * pz);
        }
    return plane.Totals(passage.count);
}

template <int Width>
const TurnSums& TurnSums::Of()
{
    static constexpr TurnSums sums = {SumOfThree<Width>, SumOfCorrectedZ<Width>};
    return sums;
}

} // namespace tiltpole::calibration
