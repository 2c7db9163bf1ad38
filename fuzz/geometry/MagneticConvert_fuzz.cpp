// SPDX-License-Identifier: MIT
//
// A plane similarity fitted to pairs of points: no parameter that is moved a little fits better, and
// converting there and back leads to the same point.
#include "fuzz/Input.h"
#include "geometry/MagneticConvert.h"

namespace {

using fuzz::Input;
using fuzz::Require;

double Squares(const CMagneticConvert& fit, const CArray<FourParameterPoint>& pairs)
{
    double sum = 0.0;
    for (INT_PTR i = 0; i < pairs.GetSize(); ++i) {
        const FourParameterPoint& p = pairs[i];
        double x = p.xSource;
        double y = p.ySource;
        fit.XYtoXY(x, y);
        sum += (x - p.xTarget) * (x - p.xTarget) + (y - p.yTarget) * (y - p.yTarget);
    }
    return sum;
}

void CheckMinimum(const CMagneticConvert& fit)
{
    const Magnetic_FourParameter found = fit.GetFourParameter();
    const double least = Squares(fit, fit.m_Points);
    for (double Magnetic_FourParameter::*const which :
         {&Magnetic_FourParameter::dDx, &Magnetic_FourParameter::dDy,
          &Magnetic_FourParameter::dRotate, &Magnetic_FourParameter::dScale})
        for (const double by : {-1e-3, 1e-3}) {
            Magnetic_FourParameter p = found;
            p.*which += by;
            CMagneticConvert moved;
            moved.SetFourParameter(p.dDx, p.dDy, p.dRotate, p.dScale, 0.0, 0.0);
            Require(least <= Squares(moved, fit.m_Points) + 1e-6 * (1.0 + least));
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    CMagneticConvert fit;
    const bool any = input.Below(4) == 0;
    const int count = input.Below(12);
    const auto number = [&] { return any ? input.Number() : input.Between(-1000.0, 1000.0); };
    bool coincide = true; // all source points
    for (int i = 0; i < count; ++i) {
        const FourParameterPoint pair{number(), number(), number(), number()};
        fit.m_Points.Add(pair);
        const FourParameterPoint& first = fit.m_Points[0];
        coincide = coincide && pair.xSource == first.xSource && pair.ySource == first.ySource;
    }
    Require(fit.CalFourParameter() == (count > 0 ? 1 : 0));
    if (any || coincide) return 0;
    CheckMinimum(fit);
    if (fit.GetFourParameter().dScale < 1e-3) return 0;
    const double x = number();
    const double y = number();
    double u = x;
    double v = y;
    fit.XYtoXY(u, v);
    fit.XYtoXY1(u, v);
    Require(std::fabs(u - x) < 1e-6 && std::fabs(v - y) < 1e-6);
    return 0;
}
