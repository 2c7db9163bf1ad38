// SPDX-License-Identifier: MIT
//
// An occupation of any setup, with samples of a rocked pole and, in between, of any numbers: what may be
// stored is finite and within the tolerance, advice and reason belong together, and the same input
// after Clear gives the same estimate.
#include "field/Occupation.h"
#include "fuzz/Input.h"

namespace {

using field::OccupationAdvice;
using field::OccupationReason;
using fuzz::Input;
using fuzz::Require;

// A pole of 2 m that rocks in the plane of x and h about its tip at the origin.
struct Motion
{
    double reach, speed, slope; // [rad], [rad/s], of a steady turn

    double Lean(double t) const { return reach * std::sin(speed * t) + slope * t; }
    double Rate(double t) const { return reach * speed * std::cos(speed * t) + slope; }
};

field::InertialSample SampleAt(const Motion& motion, double t)
{
    constexpr double kDegrees = 57.29577951308232;
    const double lean = motion.Lean(t);
    field::InertialSample s;
    s.seconds = t;
    s.rate = {0.0, kDegrees * motion.Rate(t), 0.0};
    s.acceleration = {-std::sin(lean), 0.0, std::cos(lean)};
    s.magnetic = {20.0 * std::cos(lean) + 45.0 * std::sin(lean), 0.0,
                  20.0 * std::sin(lean) - 45.0 * std::cos(lean)};
    s.tilt.pitch = -kDegrees * lean;
    return s;
}

field::AntennaEpoch EpochAt(const Motion& motion, double t, double off)
{
    const double lean = motion.Lean(t);
    return {
        t, {2.0 * std::sin(lean) + off, off, 2.0 * std::cos(lean)},
         0.0, 0.0
    };
}

void Feed(field::Occupation& occupation, Input input)
{
    const Motion motion{input.Between(0.0, 0.5), input.Between(0.0, 6.0), input.Between(-0.1, 0.1)};
    const int count = 30 + input.Below(100);
    const double step = input.Between(0.01, 0.12);
    const int every = 1 + input.Below(8);
    for (int i = 0; i < count; ++i) {
        const double t = step * i;
        field::InertialSample sample = SampleAt(motion, t);
        const int damage = input.Ended() ? 0 : input.Below(64);
        if (damage == 1) sample.rate.y = input.Number();
        if (damage == 2) sample.acceleration.x = input.Number();
        if (damage == 3) sample.magnetic.z = input.Number();
        if (damage == 4) sample.seconds = input.Number();
        if (damage == 5) sample.disturbed = true;
        occupation.Add(sample);
        if (i % every == 0) {
            field::AntennaEpoch epoch = EpochAt(motion, t, damage == 6 ? 0.01 : 0.0);
            if (damage == 7) epoch.position.h = input.Number();
            if (damage == 8) epoch.planSigma = input.Number();
            occupation.Add(epoch);
        }
    }
}

void Check(const field::OccupationEstimate& e, double tolerance)
{
    Require((e.advice == OccupationAdvice::Store) == (e.reason == OccupationReason::Sure));
    Require(!OccupationText(e).empty());
    if (e.advice != OccupationAdvice::Store) return;
    Require(e.hasTip);
    Require(std::isfinite(e.tip.x) && std::isfinite(e.tip.y) && std::isfinite(e.tip.h));
    Require(e.ellipseMajor > 0.0 && e.ellipseMajor <= tolerance);
    Require(e.ellipseMinor > 0.0 && e.ellipseMinor <= e.ellipseMajor);
    Require(e.heightHalfInterval > 0.0 && e.heightHalfInterval <= tolerance);
    Require(e.heading >= 0.0 && e.heading < 360.0);
    for (int i = 0; i < 3; ++i)
        Require(e.covariance[i][i] > 0.0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    field::OccupationSetup setup;
    setup.sensorType = 1 + input.Below(2);
    setup.poleLength = input.Below(4) == 0 ? input.Between(0.5, 4.0) : 2.0;
    setup.useMagnetometer = input.Below(2) == 0;
    const bool gyros = input.Below(4) != 0;
    field::Occupation occupation(setup);
    const auto estimate = [&] {
        Feed(occupation, input);
        return gyros ? occupation.Estimate() : occupation.EstimateWithoutGyros();
    };
    const field::OccupationEstimate first = estimate();
    Check(first, setup.tolerance);
    if (!fuzz::IsOneIn(16, data, size)) return 0;
    occupation.Clear();
    const field::OccupationEstimate second = estimate();
    Require(first.advice == second.advice && first.reason == second.reason);
    Require(first.hasTip == second.hasTip && fuzz::AreSame(first.tip.x, second.tip.x)
            && fuzz::AreSame(first.tip.h, second.tip.h));
    return 0;
}
