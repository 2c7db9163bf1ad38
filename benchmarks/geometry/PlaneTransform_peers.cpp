// SPDX-License-Identifier: MIT
//
// The fit of a plane similarity by Eigen's umeyama.
#include "benchmarks/PeerName.h"
#include "benchmarks/geometry/PlanePlaces.h"

#include <Eigen/Geometry>

namespace {

using namespace plane;

void FitUmeyama(benchmark::State& state)
{
    const double c = kScale * std::cos(kRotation);
    const double s = kScale * std::sin(kRotation);
    Eigen::Matrix2Xd source(2, state.range(0));
    Eigen::Matrix2Xd target(2, state.range(0));
    Eigen::Index k = 0;
    for (const Place& p : Places(state)) {
        source.col(k) << p.x, p.y;
        target.col(k++) << -129.5 + c * p.x - s * p.y, -208.2 + s * p.x + c * p.y;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(Eigen::umeyama(source, target).eval());
    CountPoints(state);
}

BENCHMARK(FitUmeyama)->Name(TILTPOLE_PEER("FitUmeyama"))->Apply(Sizes);

} // namespace
