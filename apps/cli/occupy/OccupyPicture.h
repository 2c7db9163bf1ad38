// SPDX-License-Identifier: MIT
//
// The picture of a run of `tiltpole occupy`. Of several points: the tips of single samples, their
// means and the tips of the occupations about the true tips, or about those of the occupations
// where the truth is not known. Of a few points, a track and a close view of each.
#pragma once

#include "apps/cli/occupy/OccupiedPoint.h"
#include "apps/tables/Output.h"

namespace cli {

inline constexpr std::size_t kMostViews = 6; // points with views of their own

/// @throws InputError when the picture cannot be written
void SaveOccupyPicture(tables::OutputFiles& files, const std::string& path,
                       const OccupyResult& result);

} // namespace cli
