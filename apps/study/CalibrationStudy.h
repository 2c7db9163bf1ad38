// How well calibrations come out under every condition, and how well their report knows it.
#pragma once

#include <cstdint>
#include <string>

namespace study {

/// Simulates `runs` calibrations under each condition and tells, as text:
///   - per condition: true heading error of solver and joint fit, shares of the verdicts
///   - over all: rank correlation of each figure with the true error, and how often the verdicts
///     accept wrongly
/// True errors are RMS over all headings at tilts of 0, 15 and 30 degrees.
std::string CalibrationStudy(int runs, std::uint64_t seed);

} // namespace study
