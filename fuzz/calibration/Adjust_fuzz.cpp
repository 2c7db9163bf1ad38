// SPDX-License-Identifier: MIT
//
// The solver on turns of a sensor with a known distortion, some readings of which may be damaged: without
// damage it finds what the steps in extended precision find.
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "framework/core/MessageBox.h"
#include "fuzz/Input.h"
#include "tests/reference/LiteralAdjust.h"

#include <cstdlib>
#include <numbers>
#include <vector>

namespace {

using fuzz::Input;
using fuzz::Require;

using Turn = std::vector<PoseSensorData>;

struct Sensor
{
    double scaleY, scaleZ, skew, offsetX, offsetY, offsetZ;

    PoseSensorData Read(double x, double y, double z) const
    {
        PoseSensorData s;
        s.dMag_x = x + offsetX;
        s.dMag_y = scaleY * y + skew * x + offsetY;
        s.dMag_z = scaleZ * z - skew * x + 0.5 * skew * y + offsetZ;
        s.dMag_x_2 = -s.dMag_x + 9.0;
        s.dMag_y_2 = -s.dMag_y - 5.0;
        s.dMag_z_2 = s.dMag_z + 3.0;
        return s;
    }
};

Turn Make(const Sensor& sensor, int count, double arc, bool vertical)
{
    Turn turn;
    for (int i = 0; i < count; ++i) {
        const double t = arc * i / count;
        turn.push_back(vertical ? sensor.Read(560 * std::cos(t), 0.0, 560 * std::sin(t))
                                : sensor.Read(420 * std::cos(t), 420 * std::sin(t), -380.0));
    }
    return turn;
}

literal::Readings ReadingsOf(const Turn& turn)
{
    literal::Readings readings;
    for (const PoseSensorData& s : turn)
        readings.push_back({s.dMag_x, s.dMag_y, s.dMag_z});
    return readings;
}

void RequireClose(double value, literal::Real expected)
{
    const auto wanted = static_cast<double>(expected);
    Require(std::fabs(value - wanted) <= 1e-6 * (1.0 + std::fabs(wanted)));
}

bool Damage(Input& input, Turn& turn)
{
    const int count = input.Below(4);
    for (int i = 0; i < count; ++i)
        turn[static_cast<std::size_t>(input.Below(256)) % turn.size()].dMag_y = input.Number();
    return count > 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool prepared = [] {
        framework::SetMessageBoxHandler(
            [](const wchar_t*, const wchar_t*, unsigned) { return IDOK; });
        return ::setenv("XDG_DATA_HOME", "/dev/null/none", 1) == 0; // dumps go nowhere
    }();
    Require(prepared);
    Input input(data, size);
    const int count = 8 + input.Below(60);
    const double arc = input.Below(4) == 0 ? input.Between(0.1, 12.0) : 2.0 * std::numbers::pi;
    const Sensor sensor{input.Between(0.8, 1.25), input.Between(0.8, 1.25),
                        input.Between(-0.1, 0.1), input.Between(-90, 90),
                        input.Between(-90, 90),   input.Between(-90, 90)};
    Turn horizontal = Make(sensor, count, arc, false);
    Turn vertical = Make(sensor, count, arc, true);
    const bool first = Damage(input, horizontal);
    const bool second = Damage(input, vertical);

    CInclineSensor_MagneticAdjust adjust;
    for (const PoseSensorData& sample : horizontal)
        adjust.Horizontal_Add(&sample);
    for (const PoseSensorData& sample : vertical)
        adjust.Vertical_Add(&sample);
    const int answer = adjust.Adjust();
    Require(answer == 0 || answer == 1);
    if (first || second || arc < 3.2) return 0;

    Require(answer == 1);
    const literal::Correction expected =
        literal::Calibrate(ReadingsOf(horizontal), ReadingsOf(vertical));
    const Incline_MagneticCorrectParameter found = adjust.GetCorrectPar_A();
    RequireClose(found.a, expected.a);
    RequireClose(found.b, expected.b);
    RequireClose(found.c, expected.c);
    RequireClose(found.d, expected.d);
    RequireClose(found.e, expected.e);
    RequireClose(found.x0, expected.x0);
    RequireClose(found.y0, expected.y0);
    RequireClose(found.z0, expected.z0);
    return 0;
}
