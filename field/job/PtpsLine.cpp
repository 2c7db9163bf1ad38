// SPDX-License-Identifier: MIT
#include "field/job/PtpsLine.h"

#include "field/nmea/Numbers.h"
#include "field/nmea/Sentence.h"

#include <limits>

namespace tiltpole::field {

std::string PtpsLine(const ::field::PoseSample& pose, double seconds)
{
    constexpr int kDecimals = 7;
    const PoseSensorData& data = pose.data;
    const double heading = pose.heading.value_or(std::numeric_limits<double>::quiet_NaN());
    std::string body = "PTPS,1,";
    AppendFixed(body, seconds * 1000.0, 3);
    for (const double value :
         {data.dPitch, data.dRoll, heading, data.dMag_x, data.dMag_y, data.dMag_z, data.dMag_x_2,
          data.dMag_y_2, data.dMag_z_2, data.dGyro_x, data.dGyro_y, data.dGyro_z, data.dAcc_x,
          data.dAcc_y, data.dAcc_z}) {
        body += ',';
        AppendFixed(body, value, kDecimals);
    }
    return Framed(body);
}

} // namespace tiltpole::field
