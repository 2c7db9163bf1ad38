// SPDX-License-Identifier: MIT
//
// Both sample filters, fed with readings on a coarse grid (many repeat, share an azimuth, lie on an axis),
// give the same samples, centers and azimuths as their rules with nothing remembered.
#include "fuzz/Input.h"
#include "tests/calibration/FilterTwin.h"

namespace {

using fuzz::Input;
using fuzz::Require;

double ReadingOf(Input& input, double step)
{
    const unsigned code = input.Byte();
    return code == 255 ? std::numeric_limits<double>::quiet_NaN()
                       : step * (static_cast<int>(code % 32) - 16);
}

template <class Filter>
void Check(Input& input)
{
    Twin<Filter> twin;
    int second = 0;
    while (!input.Ended() && twin.Count() < 150) {
        const double x = ReadingOf(input, 20.0);
        const double v = ReadingOf(input, 20.0);
        const unsigned code = input.Byte();
        PoseSensorData sample = turns::At(x, v, 30.0 * (code % 5));
        if (kTurnAxis<Filter> == turns::TurnAxis::Vertical) std::swap(sample.dMag_y, sample.dMag_z);
        second += static_cast<int>(code / 5 % 5);
        sample.nMinute = second / 60;
        sample.nSecond = second % 60;
        twin.Add(sample);
        if (code >= 250) Require(twin.IsSame(twin.fast.Filter(), twin.literal.Screen()));
        if (code >= 240) Require(twin.HasSameState() && twin.HasSameCoverage());
        if (code == 249) twin.Clear();
    }
    Require(twin.HasSameState() && twin.HasSameCoverage());
    for (int call = 0; call < 2; ++call) {
        Require(twin.IsSame(twin.fast.Filter(), twin.literal.Screen()));
        Require(twin.HasSameState());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    if (input.Byte() % 2 == 0)
        Check<CInclineSensor_Filter_XY>(input);
    else
        Check<CInclineSensor_Filter_XZ>(input);
    return 0;
}
