// SPDX-License-Identifier: MIT
#include "apps/cli/transform/TransformFit.h"

#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace {

void SetParameters(CMagneticConvert& convert, const Magnetic_FourParameter& p)
{
    convert.SetFourParameter(p.dDx, p.dDy, p.dRotate, p.dScale, p.dX0, p.dY0);
}

// The sums of the fit over pairs minus their means.
struct Sums
{
    double across = 0.0; // Σ uV − vU
    double along = 0.0;  // Σ uU + vV
    double size = 0.0;   // Σ u² + v²

    void Add(const FourParameterPoint& p, double weight)
    {
        across += weight * (p.uSource * p.vTarget - p.vSource * p.uTarget);
        along += weight * (p.uSource * p.uTarget + p.vSource * p.vTarget);
        size += weight * (p.uSource * p.uSource + p.vSource * p.vSource);
    }
};

// The fit without one pair, from the sums over all pairs. Leaving a pair out shifts the means by
// its coordinates over n − 1, which removes n/(n − 1) times its products from the sums.
Magnetic_FourParameter FitWithout(const FourParameterPoint& p, Sums sums, double count)
{
    sums.Add(p, -count / (count - 1.0));
    Magnetic_FourParameter fit;
    if (!(sums.size > 0.0)) return fit;
    fit.dRotate = std::atan2(sums.across, sums.along);
    fit.dScale = std::hypot(sums.across, sums.along) / sums.size;
    const double c = fit.dScale * std::cos(fit.dRotate);
    const double s = fit.dScale * std::sin(fit.dRotate);
    const double sourceX = p.xSource - p.uSource * count / (count - 1.0);
    const double sourceY = p.ySource - p.vSource * count / (count - 1.0);
    const double targetX = p.xTarget - p.uTarget * count / (count - 1.0);
    const double targetY = p.yTarget - p.vTarget * count / (count - 1.0);
    fit.dDx = targetX - c * sourceX + s * sourceY;
    fit.dDy = targetY - s * sourceX - c * sourceY;
    return fit;
}

} // namespace

double TransformFit::Rms() const
{
    return std::sqrt(squares / Count());
}

double TransformFit::UnitError() const
{
    return rows.size() > 2 ? std::sqrt(squares / (2.0 * Count() - 4.0)) : 0.0;
}

TransformFit FitTransform(std::vector<PairRow> rows)
{
    CMagneticConvert convert;
    for (const PairRow& row : rows)
        convert.m_Points.Add(row.pair);
    convert.CalFourParameter();

    TransformFit fit;
    fit.parameters = convert.GetFourParameter();
    fit.rows = std::move(rows);
    Sums sums;
    for (INT_PTR k = 0; k < convert.m_Points.GetSize(); ++k)
        sums.Add(convert.m_Points[k], 1.0);
    for (INT_PTR k = 0; k < convert.m_Points.GetSize(); ++k) {
        const FourParameterPoint& p = convert.m_Points[k];
        PairResult result;
        double x = p.xSource;
        double y = p.ySource;
        convert.XYtoXY(x, y);
        result.residualX = p.xTarget - x;
        result.residualY = p.yTarget - y;
        fit.squares += result.residualX * result.residualX + result.residualY * result.residualY;
        if (fit.HasWithout()) {
            result.without = FitWithout(p, sums, fit.Count());
            CMagneticConvert without;
            SetParameters(without, result.without);
            x = p.xSource;
            y = p.ySource;
            without.XYtoXY(x, y);
            result.predictionX = p.xTarget - x;
            result.predictionY = p.yTarget - y;
        }
        fit.results.push_back(result);
    }
    return fit;
}

std::string HelmertString(const Magnetic_FourParameter& parameters)
{
    CMagneticConvert convert;
    SetParameters(convert, parameters);
    double x = 0.0;
    double y = 0.0;
    convert.XYtoXY(x, y);
    return fmt::format("+proj=helmert +x={} +y={} +s={} +theta={}", x, y, parameters.dScale,
                       0.0 - parameters.dRotate * kArcSecondsPerRadian);
}

} // namespace cli
