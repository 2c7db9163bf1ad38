// SPDX-License-Identifier: MIT
//
// Every control in its documented states, as PNG files.
#pragma once

#include "apps/gallery/Replay.h"

#include <string>
#include <vector>

namespace gallery {

/// Draws the states into `folder`, creating it if necessary, and returns the file names.
/// @throws tables::InputError when a file cannot be written
std::vector<std::string> RenderScenes(const std::string& folder,
                                      const std::vector<ReplaySample>& replay);

} // namespace gallery
