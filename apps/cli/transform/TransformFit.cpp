// SPDX-License-Identifier: MIT
#include "apps/cli/transform/TransformFit.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <tuple>
#include <utility>

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
    double uU = 0.0, vV = 0.0, uV = 0.0, vU = 0.0;

    void Add(const FourParameterPoint& p, double weight)
    {
        across += weight * (p.uSource * p.vTarget - p.vSource * p.uTarget);
        along += weight * (p.uSource * p.uTarget + p.vSource * p.vTarget);
        size += weight * (p.uSource * p.uSource + p.vSource * p.vSource);
        uU += weight * p.uSource * p.uTarget;
        vV += weight * p.vSource * p.vTarget;
        uV += weight * p.uSource * p.vTarget;
        vU += weight * p.vSource * p.uTarget;
    }

    double Determinant() const { return uU * vV - uV * vU; }
};

// The fit without one pair, from the sums over all pairs. Leaving a pair out shifts the means by
// its coordinates over n − 1, which removes n/(n − 1) times its products from the sums. What
// remains of the size is (1 − leverage)·n/(n − 1) of it: near 0 it is rounding, and there is no
// fit.
Magnetic_FourParameter ParametersWithout(const FourParameterPoint& p, Sums sums, double count)
{
    sums.Add(p, -count / (count - 1.0));
    Magnetic_FourParameter fit;
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

// Target minus transformed source.
std::pair<double, double> MissOf(const FourParameterPoint& p, const CMagneticConvert& convert)
{
    double x = p.xSource;
    double y = p.ySource;
    convert.XYtoXY(x, y);
    return {p.xTarget - x, p.yTarget - y};
}

PairResult ResultOf(const FourParameterPoint& p, const CMagneticConvert& convert, const Sums& sums,
                    double count)
{
    PairResult result;
    std::tie(result.residualX, result.residualY) = MissOf(p, convert);
    const double leverage =
        1.0 / count + (p.uSource * p.uSource + p.vSource * p.vSource) / sums.size;
    result.redundancy = std::clamp(1.0 - leverage, 0.0, 1.0);
    if (count < 3.0 || result.redundancy < kLeastRedundancy) return result;

    FitWithoutPair& without = result.without.emplace();
    without.parameters = ParametersWithout(p, sums, count);
    CMagneticConvert others;
    SetParameters(others, without.parameters);
    std::tie(without.missX, without.missY) = MissOf(p, others);
    return result;
}

// Without a pair the squares fall by its own over its redundancy; what they fall to, as a share of
// all, is beta distributed with n − 3 and 1.
double ChanceOf(const PairResult& result, double squares, double count)
{
    if (count < 4.0 || !result.without || !(squares > 0.0)) return 1.0;
    const double length = result.ResidualLength();
    const double share = 1.0 - length * length / result.redundancy / squares;
    return std::min(1.0, count * std::pow(std::max(share, 0.0), count - 3.0));
}

} // namespace

double PairResult::ResidualLength() const
{
    return std::hypot(residualX, residualY);
}

double TransformFit::Rms() const
{
    return std::sqrt(squares / Count());
}

double TransformFit::UnitError() const
{
    return rows.size() > 2 ? std::sqrt(squares / (2.0 * Count() - 4.0)) : 0.0;
}

std::optional<std::size_t> TransformFit::Worst() const
{
    if (rows.size() < 3) return std::nullopt;
    const auto isLikelier = [](const PairResult& p, const PairResult& q) {
        if (p.chance != q.chance) return p.chance < q.chance;
        return p.ResidualLength() > q.ResidualLength();
    };
    const auto worst = std::min_element(results.begin(), results.end(), isLikelier);
    return static_cast<std::size_t>(worst - results.begin());
}

double TransformFit::LargestResidual() const
{
    double largest = 0.0;
    for (const PairResult& result : results)
        largest = std::max(largest, result.ResidualLength());
    return largest;
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
    fit.determinant = sums.Determinant();
    for (INT_PTR k = 0; k < convert.m_Points.GetSize(); ++k) {
        PairResult result = ResultOf(convert.m_Points[k], convert, sums, fit.Count());
        const double length = result.ResidualLength();
        fit.squares += length * length;
        fit.results.push_back(result);
    }
    for (PairResult& result : fit.results)
        result.chance = ChanceOf(result, fit.squares, fit.Count());
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
