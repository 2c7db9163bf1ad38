// SPDX-License-Identifier: MIT
#pragma once

#include "field/Bridge.h"

#include <string>

namespace tiltpole::field {

/// A pose as a line `$PTPS,1,...*hh` with CR LF, as field/pose/PoseReader.h describes it. Values
/// have seven decimals; those that are not finite are left empty.
/// @param seconds  becomes the sensor's time, with a thousandth of a millisecond [s]
std::string PtpsLine(const ::field::PoseSample& pose, double seconds);

} // namespace tiltpole::field
