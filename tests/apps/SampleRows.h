// SPDX-License-Identifier: MIT
//
// Sample logs for tests: rows with the required columns.
#pragma once

#include <string>

namespace apps::test {

inline const std::string kLogHeader =
    "Time,dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h\n";

/// A pole that leans about one axis only, in a field that points along the sensor's x axis.
inline std::string LogRow(const std::string& pitch, const std::string& roll)
{
    return "10:57:07," + pitch + ',' + roll + ",400,0,0,-400,0,0,4500000.25,500000.5,100\n";
}

} // namespace apps::test
