// SPDX-License-Identifier: MIT
//
// Prints the processor time, in nanoseconds, that a new value with the repaint of Qwt's compass
// takes: 240 x 240 pixels, in memory, the best of several rounds.
#include <QApplication>

#include <qwt_compass.h>
#include <qwt_dial_needle.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <limits>

int main(int argc, char** argv)
{
    constexpr int kSide = 240; // pixels
    constexpr int kRounds = 10;
    constexpr int kRepaints = 500; // each
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);

    QwtCompass compass;
    compass.setNeedle(new QwtCompassMagnetNeedle(QwtCompassMagnetNeedle::ThinStyle));
    compass.resize(kSide, kSide);
    compass.show();
    QApplication::processEvents();

    double best = std::numeric_limits<double>::max();
    int heading = 0;
    for (int round = 0; round < kRounds; ++round) {
        const std::clock_t begin = std::clock();
        for (int i = 0; i < kRepaints; ++i) {
            compass.setValue(heading++ % 360);
            compass.repaint();
        }
        const double taken = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        best = std::min(best, taken * 1e9 / kRepaints);
    }
    std::printf("%.0f\n", best);
    return 0;
}
