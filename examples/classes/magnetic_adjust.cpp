// SPDX-License-Identifier: MIT
//
// CInclineSensor_MagneticAdjust: the calibration of both magnetometers from two turns.
#include "calibration/InclineSensor_MagneticAdjust.h"

#include "Turn.h"
#include "framework/core/MessageBox.h"

#include <cstdio>

int main()
{
    // A failure shows a message box; here it goes to standard output.
    framework::SetMessageBoxHandler([](const wchar_t* text, const wchar_t*, unsigned) {
        std::printf("%ls\n", text);
        return IDOK;
    });

    CInclineSensor_MagneticAdjust adjust;
    for (const PoseSensorData& sample : turn::Record(turn::Axis::Z))
        adjust.Horizontal_Add(&sample);
    for (const PoseSensorData& sample : turn::Record(turn::Axis::Y))
        adjust.Vertical_Add(&sample);
    if (adjust.Adjust() != 1) return 1;

    // The offsets hold for readings from which the shares of x are taken off.
    const Incline_MagneticCorrectParameter a = adjust.GetCorrectPar_A();
    const Incline_MagneticCorrectParameter b = adjust.GetCorrectPar_B();
    std::printf("A: offset %.0f %.0f %.0f counts, share of x in y %.2f\n", a.x0, a.y0, a.z0, a.a);
    std::printf("B: offset %.0f %.0f %.0f counts, share of x in y %.2f\n", b.x0, b.y0, b.z0, b.a);
}
