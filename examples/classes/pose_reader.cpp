// SPDX-License-Identifier: MIT
//
// field::PoseReader: samples from the bytes of a pose sensor, however they are cut into pieces.
#include "field/pose/PoseReader.h"

#include <chrono>
#include <cstdio>

int main()
{
    using namespace std::chrono_literals;

    const auto reader = field::MakePoseReader(field::PoseFormat::Ptps);
    reader->Feed("$PTPS,1,81250,12.3456,-7.5,,150.1,-20.5,-380,-149,", 10ms);
    reader->Feed("21,-381,0.12,-0.31,0.05,0.214,-0.131,0.968*37\r\n", 13ms);
    reader->Feed("$PTPS,1,81270,12.3456,-7.5,,150.1,-20.5,-380,-149,"
                 "21,-381,0.12,-0.31,0.05,0.214,-0.131,0.968*00\r\n",
                 30ms); // a wrong checksum
    for (const field::PoseSample& sample : reader->Take())
        std::printf("clock %.3f s, pitch %.4f, roll %.4f degrees, A x %.1f counts\n",
                    sample.deviceSeconds.value_or(0.0), sample.data.dPitch, sample.data.dRoll,
                    sample.data.dMag_x);
    std::printf("%d read, %d bad\n", static_cast<int>(reader->Count().samples),
                static_cast<int>(reader->Count().bad));

    // Rows under any header line with the names of PoseSensorData's text.
    const auto table = field::MakePoseReader(field::PoseFormat::Csv);
    table->Feed("seconds,dPitch,dRoll,dMag_x,dMag_y,dMag_z\n0.02,1.5,-2.5,150,-20,-380\n", 40ms);
    for (const field::PoseSample& sample : table->Take())
        std::printf("pitch %.1f, roll %.1f, B x %.0f counts\n", sample.data.dPitch,
                    sample.data.dRoll, sample.data.dMag_x_2);
    std::printf("magnetometer B %s\n",
                table->HasOneMagnetometer() ? "was made from A" : "was read");
}
