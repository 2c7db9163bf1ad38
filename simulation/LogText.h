// SPDX-License-Identifier: MIT
//
// Simulated recordings as the text of a log file: one header line, one line for each sample, LF at
// the ends. Same recording, same bytes, in every locale. Columns that end in `_true` are the truth:
// a host ignores them, a check reads them.
#pragma once

#include "simulation/Occupation.h"
#include "simulation/Points.h"
#include "simulation/Turn.h"
#include "simulation/Walk.h"
#include <string>

namespace simulation {

/// Index, time, the sensor's columns under the names of the sample's text form, `seconds` since the
/// start, the true angles and whether a magnet disturbed the sample (0 or 1).
std::string TextOf(const Recording& recording);

/// The columns of a turn, antenna `x`, `y`, `h` after the sensor's; at the end the number of the
/// point (0 on the way), its tip and the antenna without noise.
std::string TextOf(const Walk& walk);

/// The columns of an occupation log: `point`, `seconds` since the start of the point, the sensor's
/// and antenna `x`, `y`, `h`, which are blank on rows without an epoch; at the end the true angles
/// of the sensor, whether a magnet disturbed the sample (0 or 1) and the tip.
std::string TextOf(const Occupations& log);

/// The true tips of an occupation log: `point`, `N`, `E`, `h` of where the tip was planted, and the
/// same of where it ended (`N_end`, `E_end`, `h_end`).
std::string TipsOf(const Occupations& log);

/// Name, antenna `x`, `y`, `h` and `incline` of each position; then the truth: antenna without
/// noise, lean and its azimuth, whether it is an outlier (0 or 1).
std::string TextOf(const std::vector<AntennaPosition>& positions);

} // namespace simulation
