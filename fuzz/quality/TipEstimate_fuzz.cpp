// SPDX-License-Identifier: MIT
//
// The estimate of the tip, from positions about a tip and from any numbers: what may be stored is finite
// and within its own limits, its covariance is one, and moving all positions moves the tip alone.
#include "fuzz/Input.h"
#include "quality/TipEstimate.h"

namespace {

using fuzz::Input;
using fuzz::Require;

std::vector<xyhCoord> AntennasOf(Input& input, bool any)
{
    std::vector<xyhCoord> antennas;
    const int count = input.Below(30);
    const double length = 2.0 + input.Between(-0.02, 0.02);
    for (int i = 0; i < count; ++i) {
        if (any) {
            const double x = input.Number();
            const double y = input.Number();
            antennas.push_back({x, y, input.Number()});
            continue;
        }
        const double lean = input.Between(0.0, 0.9);
        const double azimuth = input.Between(0.0, 6.283);
        const double off = input.Between(-0.02, 0.02);
        antennas.push_back({length * std::sin(lean) * std::cos(azimuth) + off,
                            length * std::sin(lean) * std::sin(azimuth) - off,
                            length * std::cos(lean) + off});
    }
    return antennas;
}

void CheckStored(const quality::TipEstimate& e)
{
    Require(std::isfinite(e.tip.x) && std::isfinite(e.tip.y) && std::isfinite(e.tip.h));
    Require(e.ellipseMajor > 0.0 && e.ellipseMajor <= quality::kTipTolerance);
    Require(e.ellipseMinor > 0.0 && e.ellipseMinor <= e.ellipseMajor);
    Require(e.heightHalfInterval > 0.0 && e.heightHalfInterval <= quality::kTipTolerance);
    Require(e.ellipseAzimuth >= 0.0 && e.ellipseAzimuth < 180.0);
    Require(!e.ambiguous && e.used >= 4);
    const auto& q = e.covariance;
    for (int i = 0; i < 3; ++i) {
        Require(q[i][i] > 0.0);
        for (int k = 0; k < i; ++k)
            Require(q[i][k] * q[i][k] <= q[i][i] * q[k][k] * (1.0 + 1e-9)
                    && std::fabs(q[i][k] - q[k][i]) <= 1e-9);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const bool any = input.Below(4) == 0;
    std::vector<xyhCoord> antennas = AntennasOf(input, any);
    const quality::TipEstimate estimate = quality::EstimateTip(antennas, 2.0);
    if (estimate.verdict == quality::TipVerdict::Store) CheckStored(estimate);
    if (any || !fuzz::IsOneIn(8, data, size)) return 0;

    for (xyhCoord& p : antennas) {
        p.x += 1024.0;
        p.y -= 512.0;
        p.h += 256.0;
    }
    const quality::TipEstimate moved = quality::EstimateTip(antennas, 2.0);
    if (estimate.verdict == quality::TipVerdict::Store
        && moved.verdict == quality::TipVerdict::Store) {
        Require(std::fabs(moved.tip.x - estimate.tip.x - 1024.0) < 1e-6);
        Require(std::fabs(moved.tip.y - estimate.tip.y + 512.0) < 1e-6);
        Require(std::fabs(moved.tip.h - estimate.tip.h - 256.0) < 1e-6);
    }
    return 0;
}
