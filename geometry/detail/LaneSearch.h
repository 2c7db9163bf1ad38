// SPDX-License-Identifier: MIT
//
// The search kernels over vectors of Width doubles. Each width is instantiated in a source file of
// its own. Symbols: docs/formulas.md, "Tip from many antenna positions".
#pragma once

#include "geometry/detail/SearchKernels.h"
#include "vector/Lanes.h"

namespace tiltpole::geometry {

using vector::GroupSum;
using vector::Lanes;
using vector::Mask;

// A vector of space, x, y and height h, in every lane.
template <int Width>
struct Triple
{
    Lanes<Width> x, y, h;

    Triple() = default;
    Triple(Lanes<Width> ofX, Lanes<Width> ofY, Lanes<Width> ofH) : x(ofX), y(ofY), h(ofH) {}

    // The same vector in every lane.
    explicit Triple(const double* v) : x(v[0]), y(v[1]), h(v[2]) {}

    friend Lanes<Width> Dot(const Triple& a, const Triple& b)
    {
        return a.x * b.x + a.y * b.y + a.h * b.h;
    }

    // a + scale·b
    friend Triple Sum(const Triple& a, Lanes<Width> scale, const Triple& b)
    {
        return {a.x + scale * b.x, a.y + scale * b.y, a.h + scale * b.h};
    }
};

// A symmetric matrix: xx, xy, xh, yy, yh, hh.
template <int Width>
struct Symmetric
{
    Lanes<Width> element[6];

    Triple<Width> operator*(const Triple<Width>& v) const
    {
        return {element[0] * v.x + element[1] * v.y + element[2] * v.h,
                element[1] * v.x + element[3] * v.y + element[4] * v.h,
                element[2] * v.x + element[4] * v.y + element[5] * v.h};
    }

    Lanes<Width> Trace() const { return element[0] + element[3] + element[5]; }

    // Inverse times determinant.
    Symmetric Adjugate() const
    {
        const auto& [xx, xy, xh, yy, yh, hh] = element;
        return {
            {yy * hh - yh * yh, xh * yh - xy * hh, xy * yh - xh * yy, xx * hh - xh * xh,
             xy * xh - xx * yh, xx * yy - xy * xy}
        };
    }
};

template <int Width>
void ScanRow(const Row& row, std::size_t first, std::size_t last, const RowStarts& out)
{
    for (std::size_t k = first; k < last; k += Width) {
        const Lanes<Width> x = Lanes<Width>::Load(row.e.x + k);
        const Lanes<Width> y = Lanes<Width>::Load(row.e.y + k);
        const Lanes<Width> h = Lanes<Width>::Load(row.e.h + k);
        const Lanes<Width> q = Lanes<Width>::Load(row.halfSquare + k);

        const Lanes<Width> centerX = row.w[1] * h - row.w[2] * y + q * row.c[0];
        const Lanes<Width> centerY = row.w[2] * x - row.w[0] * h + q * row.c[1];
        const Lanes<Width> centerH = row.w[0] * y - row.w[1] * x + q * row.c[2];
        const Lanes<Width> volume = row.c[0] * x + row.c[1] * y + row.c[2] * h;

        const Lanes<Width> length = centerX * centerX + centerY * centerY + centerH * centerH;
        const Lanes<Width> square = volume * volume;
        const Mask<Width> usable = (length >= row.lowSquare * square)
                                   & (length <= row.highSquare * square) & (square > row.flat * q);
        centerX.Store(out.x + k);
        centerY.Store(out.y + k);
        centerH.Store(out.h + k);
        volume.Store(out.denominator + k);
        usable.Store(out.usable + k);
    }
}

// A start: its sphere, and how its squared distances d² to the positions are distributed.
template <int Width>
struct Start
{
    Triple<Width> center; // about the mean of the positions
    Lanes<Width> square;  // r²
    Lanes<Width> radius;  // r
    Lanes<Width> mean;    // of d²
    Lanes<Width> rootMean;
    Lanes<Width> offset;   // mean of d² − r²
    Triple<Width> product; // spread matrix times center
    Lanes<Width> variance; // of d²
    Lanes<Width> guard;    // what rounding can do to such a variance
};

template <int Width>
Start<Width> ReadStart(const Cloud& cloud, const Symmetric<Width>& spread, const Batch& batch,
                       std::size_t k)
{
    constexpr double kRounding = 1e-13; // of the sum of the terms' sizes
    const Lanes<Width> scale = 1.0 / Lanes<Width>::Load(batch.denominator + k);
    const Triple<Width> fromOrigin = {Lanes<Width>::Load(batch.x + k) * scale,
                                      Lanes<Width>::Load(batch.y + k) * scale,
                                      Lanes<Width>::Load(batch.h + k) * scale};
    Start<Width> start;
    start.center = Sum(Triple<Width>(batch.origin), Lanes<Width>(1.0), fromOrigin);
    start.square = Dot(fromOrigin, fromOrigin);
    start.radius = Root(start.square);
    const Lanes<Width> lengthSquare = Dot(start.center, start.center);
    start.mean = lengthSquare + cloud.trace;
    start.rootMean = Root(start.mean);
    start.offset = start.mean - start.square;
    start.product = spread * start.center;
    const Lanes<Width> skew = Dot(start.center, Triple<Width>(cloud.skew));
    start.variance = 4.0 * (Dot(start.center, start.product) - skew) + cloud.squareVariance;
    start.guard =
        kRounding * (4.0 * (lengthSquare * cloud.trace + Magnitude(skew)) + cloud.squareVariance);
    return start;
}

// Largest possible misclosure l = d − r, and the sum d + r at least.
template <int Width>
struct DistanceBounds
{
    Lanes<Width> misclosure;
    Lanes<Width> sum;
};

template <int Width>
DistanceBounds<Width> BoundDistances(const Cloud& cloud, const Start<Width>& start)
{
    const Triple<Width> away = Sum(start.center, Lanes<Width>(-1.0), Triple<Width>(cloud.center));
    const Lanes<Width> distance = Root(Dot(away, away));
    return {distance
                + Larger(Magnitude(start.radius - cloud.nearest),
                         Magnitude(start.radius - cloud.farthest)),
            start.radius + Larger(cloud.nearest - distance, 0.0)};
}

// The refinement of a start from the moments alone, each figure with the error it may have.
template <int Width>
struct Step
{
    Triple<Width> step;  // δ
    Lanes<Width> error;  // of δ, length
    Lanes<Width> radius; // r'
    Lanes<Width> radiusError;
    Lanes<Width> residual; // root mean square of the residuals that would just meet the limit
};

template <int Width>
Step<Width> StepFromMoments(const Cloud& cloud, const Symmetric<Width>& spread,
                            const Start<Width>& start, double limit)
{
    constexpr double kRootOf3 = 1.7320508075688772;
    const DistanceBounds<Width> bounds = BoundDistances(cloud, start);
    // one division for 1/r, 1/sum and 1/rootMean
    const Lanes<Width> pair = start.radius * bounds.sum;
    const Lanes<Width> all = 1.0 / (pair * start.rootMean);
    const Lanes<Width> perPair = all * start.rootMean;
    const Lanes<Width> perRadius = perPair * bounds.sum;
    const Lanes<Width> spreadOfSquares =
        Root(Larger(start.variance, 0.0) + start.guard + start.offset * start.offset);
    // root mean square of l²/(2r), the part of the misclosures that is not linear in d²
    const Lanes<Width> second = 0.5 * bounds.misclosure * spreadOfSquares * perPair;

    const Triple<Width>& t = start.center;
    const Symmetric<Width> normal = {
        {spread.element[0] + t.x * t.x, spread.element[1] + t.x * t.y,
         spread.element[2] + t.x * t.h, spread.element[3] + t.y * t.y,
         spread.element[4] + t.y * t.h, spread.element[5] + t.h * t.h}
    };
    const Symmetric<Width> adjugate = normal.Adjugate();
    const Lanes<Width> inverse =
        1.0
        / (normal.element[0] * adjugate.element[0] + normal.element[1] * adjugate.element[1]
           + normal.element[2] * adjugate.element[2]);
    const Triple<Width> slope = Sum(start.product, Lanes<Width>(-0.5), Triple<Width>(cloud.skew));
    const Triple<Width> right = Sum(
        Triple<Width>{slope.x + slope.x, slope.y + slope.y, slope.h + slope.h}, start.offset, t);
    const Triple<Width> product = adjugate * right;
    const Lanes<Width> half = 0.5 * inverse;

    Step<Width> step;
    step.step = {half * product.x, half * product.y, half * product.h};
    step.error = start.radius * Root(adjugate.Trace() * inverse) * second;
    step.radius = start.radius + 0.5 * perRadius * perRadius * (right.x + right.y + right.h);
    step.radiusError = kRootOf3 * start.rootMean * second * perRadius;
    step.residual = __builtin_sqrt(limit) / cloud.count * start.radius * (all * pair);
    return step;
}

// True where a start is certain to miss the limit: with the residuals v that would just meet it,
// 2·mean(d')·Cv = C(ỹ²) − C(d² about a moved center), and the variance of the latter is too large
// for the bounds of the other two terms. C takes the mean off.
template <int Width>
Mask<Width> IsHopeless(const Cloud& cloud, const Symmetric<Width>& spread,
                       const Start<Width>& start, double limit)
{
    constexpr double kRounding = 1e-9; // of the bounds, relative
    const double size = __builtin_sqrt(cloud.trace);
    const Step<Width> s = StepFromMoments(cloud, spread, start, limit);
    const Lanes<Width> least = s.radius - s.radiusError;
    const Lanes<Width> both = 1.0 / (s.radius * least);
    const Lanes<Width> perRadius = both * least;
    const Lanes<Width> perLeast = both * s.radius;

    const Lanes<Width> stepSquare = Dot(s.step, s.step);
    const Lanes<Width> stepLength = Root(stepSquare);
    const Lanes<Width> shift =
        (Dot(start.center, s.step) + stepSquare) * perRadius; // mean of d' − r'
    const Lanes<Width> ratio = shift * perRadius;
    const Lanes<Width> shiftError = s.residual
                                    + ((start.rootMean + 2.0 * stepLength + s.error) * s.error
                                       + Magnitude(shift) * s.radiusError)
                                          * perLeast;
    const Lanes<Width> ratioError = (shiftError + Magnitude(ratio) * s.radiusError) * perLeast;

    const Triple<Width> product = spread * s.step;
    const Lanes<Width> stepSpread = Dot(s.step, product);
    const Lanes<Width> along = Root(Larger(stepSpread, 0.0)) + size * s.error;
    const Lanes<Width> tilt = along * perLeast + s.residual; // rms of ỹ
    const Lanes<Width> peak =
        cloud.reach * (stepLength + s.error) * perLeast + __builtin_sqrt(cloud.count) * s.residual;
    const Lanes<Width> distance = s.radius + s.radiusError + Magnitude(shift) + shiftError;
    const Lanes<Width> allowed = 2.0 * distance * s.residual + tilt * peak
                                 + 2.0 * (ratioError * along + Magnitude(ratio) * size * s.error);

    // variance of d² about center − ratio·δ
    const Lanes<Width> turn =
        Dot(start.center, product) - 0.5 * Dot(s.step, Triple<Width>(cloud.skew));
    const Lanes<Width> variance = start.variance + 4.0 * ratio * (ratio * stepSpread - 2.0 * turn);
    return (least > 0.0) & (variance - start.guard > allowed * allowed * (1.0 + kRounding));
}

template <int Width>
void JudgeStarts(const Cloud& cloud, const Batch& batch)
{
    Symmetric<Width> spread;
    for (int e = 0; e < 6; ++e)
        spread.element[e] = cloud.spread[e];
    for (std::size_t k = 0; k < batch.size; k += Width) {
        const Start<Width> start = ReadStart(cloud, spread, batch, k);
        const Mask<Width> hopeless = IsHopeless(cloud, spread, start, batch.limit);
        start.center.x.Store(batch.x + k);
        start.center.y.Store(batch.y + k);
        start.center.h.Store(batch.h + k);
        start.radius.Store(batch.radius + k);
        hopeless.Store(batch.hopeless + k);
    }
}

template <int Width>
Triple<Width> TowardsTip(const Coordinates& p, std::size_t k, const double* tip)
{
    return {tip[0] - Lanes<Width>::Load(p.x + k), tip[1] - Lanes<Width>::Load(p.y + k),
            tip[2] - Lanes<Width>::Load(p.h + k)};
}

template <int Width>
DistanceSums SumDistances(const Coordinates& p, std::size_t count, const double* tip)
{
    GroupSum<Width> x;
    GroupSum<Width> y;
    GroupSum<Width> h;
    for (std::size_t group = 0; group < count; group += kGroup) {
        for (std::size_t part = 0; part < kGroup / Width; ++part) {
            const std::size_t k = group + part * Width;
            const Triple<Width> w = TowardsTip<Width>(p, k, tip);
            const Lanes<Width> d = Root(Dot(w, w)) * Lanes<Width>::Load(p.held + k);
            x.part[part] += d * w.x;
            y.part[part] += d * w.y;
            h.part[part] += d * w.h;
        }
    }
    return {
        {x.Total(), y.Total(), h.Total()}
    };
}

template <int Width>
double SumResiduals(const Coordinates& p, std::size_t count, const double* tip, const double* step,
                    double radius, double limit)
{
    const double perRadius = 1.0 / radius;
    const Triple<Width> correction = Triple<Width>(step);
    GroupSum<Width> squares;
    for (std::size_t group = 0; group < count; group += kGroup) {
        for (std::size_t part = 0; part < kGroup / Width; ++part) {
            const std::size_t k = group + part * Width;
            const Triple<Width> w = TowardsTip<Width>(p, k, tip);
            const Lanes<Width> residual = Dot(correction, w) * perRadius + radius - Root(Dot(w, w));
            squares.part[part] += residual * residual * Lanes<Width>::Load(p.held + k);
        }
        if (squares.Total() > limit) break;
    }
    return squares.Total();
}

template <int Width>
const SearchKernels& SearchKernels::Of()
{
    static constexpr SearchKernels kernels = {ScanRow<Width>, JudgeStarts<Width>,
                                              SumDistances<Width>, SumResiduals<Width>};
    return kernels;
}

} // namespace tiltpole::geometry
