// SPDX-License-Identifier: MIT
#include "calibration/solver/MomentSolver.h"

#include "survey/Correction.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::calibration {
namespace {

constexpr double kFarthestMean = 8.0;       // from 0, in standard deviations of a coordinate
constexpr double kLeastSpread = 1e-7;       // of a coordinate, beside its mean
constexpr double kLeastDiscriminant = 0.05; // of a conic, 1 for a circle
constexpr double kLeastRadicand = 1e-4;     // below the roots of the first correction
constexpr double kNextToBound = 1e-7;       // of kLevelSlope

// Whether a coordinate varies enough for the fits on it to keep their accuracy.
bool Spans(double spread, double mean, double n)
{
    const double deviation = std::sqrt(spread / n);
    return std::fabs(mean) < kFarthestMean * deviation && deviation > 1e-6;
}

// Whether a coordinate is safely not constant.
bool Varies(double spread, double mean, double n)
{
    return std::sqrt(spread / n) > kLeastSpread * (1 + std::fabs(mean));
}

std::optional<Conic> FitEllipseSafely(const TurnMoments& m)
{
    const std::optional<Conic> conic = FitConic(m);
    if (!conic || !(conic->Discriminant() > kLeastDiscriminant)) return std::nullopt;
    return conic;
}

bool HasSafeRoots(const Conic& horizontal, double k)
{
    const double Q = (horizontal.p0 - k * k) + horizontal.p0 * (k * k);
    return std::fabs(Q) > kLeastRadicand && -Q * (horizontal.p0 - 1) > kLeastRadicand;
}

// The passes that level the horizontal plane: slopes of z' on x and on y' from second moments.
// `h` are the moments of (x, y, z). False where their end is in doubt.
bool LevelByMoments(const TurnMoments& h, double meanZ, Incline_MagneticCorrectParameter& P)
{
    const double xx = h.SpreadU(), yy = h.SpreadV(), zz = h.SpreadW();
    const double xy = h.JointUV(), xz = h.JointUW(), yz = h.JointVW();
    const double spreadY = P.a * P.a * xx + 2 * P.a * P.b * xy + P.b * P.b * yy;
    for (int pass = 1; pass < kPasses; ++pass) {
        const double withX = P.c * xx + P.d * xy + P.e * xz;
        const double withY = P.c * xy + P.d * yy + P.e * yz;
        const double withZ = P.c * xz + P.d * yz + P.e * zz;
        if (!Varies(P.c * withX + P.d * withY + P.e * withZ, P.e * meanZ, h.n)) return false;
        const double leanX = withX / xx;
        const double leanY = (P.a * withX + P.b * withY) / spreadY;
        P.c -= leanX;
        P.d -= leanY;
        for (const double lean : {leanX, leanY})
            if (std::fabs(std::fabs(lean) - kLevelSlope) < kNextToBound) return false;
        if (std::fabs(leanX) < kLevelSlope && std::fabs(leanY) < kLevelSlope) return true;
    }
    return false;
}

std::optional<Incline_MagneticCorrectParameter> CorrectRoughly(const TurnMoments& h,
                                                               const TurnMoments& v)
{
    const auto horizontal = FitEllipseSafely(h);
    const auto vertical = FitEllipseSafely(v);
    if (!horizontal || !vertical) return std::nullopt;
    const double twist = v.JointUW() / v.SpreadU();
    const double leanY = h.JointVW() / h.SpreadV();
    if (!HasSafeRoots(*horizontal, twist)) return std::nullopt;
    Incline_MagneticCorrectParameter P;
    SetFirstCorrection(*horizontal, *vertical, twist, leanY, P);
    return P;
}

bool AreWellSpread(const TurnMoments& h, const TurnReadings& horizontal, const TurnMoments& v,
                   const TurnReadings& vertical)
{
    return Spans(h.SpreadU(), horizontal.meanX, h.n) && Spans(h.SpreadV(), horizontal.meanY, h.n)
           && Varies(h.SpreadW(), horizontal.meanZ, h.n) && Spans(v.SpreadU(), vertical.meanX, v.n)
           && Spans(v.SpreadV(), vertical.meanZ, v.n) && Varies(v.SpreadW(), vertical.meanY, v.n);
}

survey::Reading CorrectedMean(const TurnReadings& r, const Incline_MagneticCorrectParameter& P)
{
    return survey::Corrected(P, {r.meanX, r.meanY, r.meanZ});
}

} // namespace

std::optional<Incline_MagneticCorrectParameter> SolveByMoments(const TurnReadings& horizontal,
                                                               const TurnReadings& vertical)
{
    const TurnMoments h = MomentsXYZ(horizontal);
    const TurnMoments v = MomentsXZY(vertical);
    if (!AreWellSpread(h, horizontal, v, vertical)) return std::nullopt;

    auto P = CorrectRoughly(h, v);
    if (!P || !LevelByMoments(h, horizontal.meanZ, *P)) return std::nullopt;

    // The offsets are still 0, so the results are the centers of the corrected turns.
    const survey::Reading meanH = CorrectedMean(horizontal, *P);
    const survey::Reading meanV = CorrectedMean(vertical, *P);
    const TurnMoments correctedH = Sheared(h, P->a, P->b);
    const TurnMoments correctedV = MomentsOfCorrectedZ(vertical, *P);
    if (!Spans(correctedH.SpreadV(), meanH.y, h.n)) return std::nullopt;
    if (!Spans(correctedV.SpreadV(), meanV.z, v.n)) return std::nullopt;
    const auto circleH = FitEllipseSafely(correctedH);
    const auto circleV = FitEllipseSafely(correctedV);
    if (!circleH || !circleV) return std::nullopt;
    P->x0 = meanH.x + circleH->CenterU();
    P->y0 = meanH.y + circleH->CenterV();
    P->z0 = meanV.z + circleV->CenterV();
    return P;
}

Incline_MagneticTranslationParameter MeanOffset(const TurnReadings& a,
                                                const Incline_MagneticCorrectParameter& correctA,
                                                const TurnReadings& b,
                                                const Incline_MagneticCorrectParameter& correctB)
{
    const survey::Reading meanA = CorrectedMean(a, correctA);
    const survey::Reading meanB = CorrectedMean(b, correctB);
    return {-meanB.x - meanA.x, -meanB.y - meanA.y, meanB.z - meanA.z};
}

} // namespace tiltpole::calibration
