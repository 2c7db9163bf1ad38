// SPDX-License-Identifier: MIT
/// @file
/// Checks the parameter file of a calibration before it is used.
/// CInclineSensor_Position::ConfigRead takes the keys that it finds and reads garbled numbers as 0,
/// so a damaged file moves tips by decimeters without a word. LoadParameters reads the same file,
/// checks every key and loads only a complete and plausible calibration.
///
///     CInclineSensor_Position pole;
///     for (const auto& problem : quality::LoadParameters("pole.cfg", pole))
///         Warn(ToText(problem)); // "line 2: MagneticA.b is 'garbage', not a number"
///
/// A file is complete with all twenty-one keys, each with a number and CR LF behind it, and
/// plausible with
///
///     MagneticX.b, e             0.1 to 10                    scales
///     MagneticX.a, c, d          -5 to 5                      shares of one axis in another
///     MagneticX.x0, y0, z0       -1e6 to 1e6 [counts]         offsets; X is A or B
///     CoorTrans.dX, dY, dZ       -1e6 to 1e6 [counts]         translation
///     MagneticBiasAngle_A, _B    -360 to 360 [degrees]        bias angles
///
/// As for ConfigRead, the first place that reads "[key]" counts and its value ends at the next CR.
/// Unlike there, nothing but blanks may stand around the number. Content is read in one pass.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "positioning/InclineSensor_Position.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quality {

/// Largest parameter file that is read [bytes].
inline constexpr std::uint64_t kLargestParameterFile = std::uint64_t{64} << 20;

/// One reason not to use a parameter file.
struct ParameterProblem
{
    std::string key;        // empty where the file itself is at fault
    std::uint64_t line = 0; // of the key, from 1; 0 where the key is missing
    std::string reason; // "is missing", "is 'abc', not a number", "is 40, not between 0.1 and 10"
};

/// Whether keys may be missing from a file.
enum class ParameterKeys {
    All, // a missing key is a problem
    Some // it is none: the value that was there before stays
};

/// The problem as a sentence: "line 2: MagneticA.b is 40, not between 0.1 and 10", "MagneticA.b is
/// missing", "the file cannot be read".
TILTPOLE_API std::string ToText(const ParameterProblem& problem);

/// Reads and checks a parameter file without loading it anywhere. A file that cannot be read or is
/// larger than kLargestParameterFile is one problem without a key.
///
/// @param path  UTF-8 on disk, in every locale
/// @return the problems in the order of the keys; empty for a complete and plausible calibration
TILTPOLE_API std::vector<ParameterProblem> CheckParameters(const CString& path,
                                                           ParameterKeys keys = ParameterKeys::All);

/// Loads both corrections, the translation and both bias angles into `position`, in one reading of
/// the file. With any problem `position` is unchanged, so a host that ignores the answer goes on
/// with the calibration it had: look at it before measuring.
///
/// @param path  UTF-8 on disk, in every locale
/// @return as CheckParameters; empty where the calibration was loaded
TILTPOLE_API std::vector<ParameterProblem> LoadParameters(const CString& path,
                                                          CInclineSensor_Position& position,
                                                          ParameterKeys keys = ParameterKeys::All);

/// CheckParameters and LoadParameters for a file that the host has read: `content` is all its
/// bytes.
TILTPOLE_API std::vector<ParameterProblem>
CheckParameterText(std::string_view content, ParameterKeys keys = ParameterKeys::All);
TILTPOLE_API std::vector<ParameterProblem>
LoadParameterText(std::string_view content, CInclineSensor_Position& position,
                  ParameterKeys keys = ParameterKeys::All);

} // namespace quality
