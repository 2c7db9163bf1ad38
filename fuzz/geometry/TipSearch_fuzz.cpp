// SPDX-License-Identifier: MIT
//
// The search of the tip on up to eight antenna positions against the literal one, and, with positions of
// any numbers, an outcome that belongs to them.
#include "fuzz/Input.h"
#include "tests/geometry/PoleSets.h"

namespace {

using fuzz::Input;
using fuzz::Require;

constexpr double kSame = 1e-6; // [m] and figures

void CheckOrdinary(Input& input)
{
    const poles::PoleSet setup = {.count = 5 + input.Below(4),
                                  .poleLength = input.Between(0.5, 5.0),
                                  .tilt = input.Between(15.0, 80.0),
                                  .planNoise = input.Between(0.0001, 0.1),
                                  .heightNoise = input.Between(0.0001, 0.1)};
    const unsigned seed = input.Byte() << 8U | input.Byte();
    const auto antennas = poles::Antennas(setup, seed);
    const double height = setup.poleLength + input.Between(-0.06, 0.06);
    const poles::Solution found = poles::Solve(antennas, height);
    const poles::Solution expected = poles::SolveLiterally(antennas, height);
    // Positions that nearly lie in a plane amplify the rounding of either search.
    if (expected.state.dGeometryFigure > 20.0) return;
    Require(found.state.nStatus == expected.state.nStatus);
    for (std::size_t c = 0; c < 3; ++c)
        Require(std::fabs(found.tip[c] - expected.tip[c]) < kSame);
    Require(std::fabs(found.state.dPointError - expected.state.dPointError) < kSame);
    Require(std::fabs(found.state.dRadius - expected.state.dRadius) < kSame);
}

void CheckAny(Input& input)
{
    std::vector<literal::Point> antennas(static_cast<std::size_t>(input.Below(8)));
    std::size_t finite = 0;
    for (literal::Point& p : antennas) {
        for (double& c : p)
            c = input.Number();
        finite += std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]) ? 1 : 0;
    }
    const poles::Solution found = poles::Solve(antennas, input.Number());
    const int status = found.state.nStatus;
    Require((status == kTiltPointTooFew) == (finite < 4));
    Require(status == 1 || (status <= -1 && status >= -5) || status == kTiltPointImplausible
            || status == kTiltPointTooFew || status == kTiltPointNoSphere);
    if (status == 1)
        for (const double c : found.tip)
            Require(std::isfinite(c));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    if (input.Byte() % 2 == 0)
        CheckOrdinary(input);
    else
        CheckAny(input);
    return 0;
}
