// SPDX-License-Identifier: MIT
//
// field::DisturbanceMonitor: when the magnetometer cannot be believed, by length and dip of its field.
#include "field/DisturbanceMonitor.h"

#include <cstdio>

int main()
{
    // The field of the calibration, from a reading of the upright pole: 300 ahead, 400 downward.
    const field::Tilt upright;
    const field::FieldShape expected = field::ShapeOf(upright, {300.0, 0.0, -400.0});
    std::printf("field of %.0f counts, dip %.1f degrees\n", expected.strength, expected.dip);

    field::DisturbanceMonitor monitor(expected);
    for (int i = 0; i < 500; ++i) { // 10 s at 50 Hz; from 4 to 6 s a car stands beside it
        field::MonitorSample sample;
        sample.seconds = 0.02 * i;
        sample.tilt = upright;
        const bool car = i >= 200 && i < 300;
        sample.a = {car ? 480.0 : 300.0, 0.0, car ? -520.0 : -400.0};
        const field::MonitorVerdict verdict = monitor.Add(sample);
        if (i == 100 || i == 250 || i == 320 || i == 450)
            std::printf("%4.1f s: %s\n", sample.seconds,
                        verdict.suspect     ? "suspect"
                        : verdict.disturbed ? "not suspect, but disturbed a moment ago"
                                            : "believed");
    }
    for (const field::DisturbedSpan& span : monitor.Spans())
        std::printf("%.1f to %.1f s: %s\n", span.from, span.to, field::TextOf(span).c_str());
}
