// SPDX-License-Identifier: MIT
//
// How often the regions of stored tips hold the true tip.
#pragma once

#include <cstdint>
#include <string>

namespace study {

/// A table in Markdown: a row for each cone of antenna positions and kind of error.
/// @param sets       simulated for each row
/// @param recording  errors of a fixed antenna, lines "E N h time"; empty: no recorded errors
std::string TipStudy(int sets, std::uint64_t seed, const std::string& recording);

} // namespace study
