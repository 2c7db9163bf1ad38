// SPDX-License-Identifier: MIT
//
// The record beside a parameter file: pole.cfg.json beside pole.cfg.
//
// A parameter file has one bias angle for each magnetometer. A part of it is given by the operator,
// who chooses which north is wanted; a part may be found by a fit, whose corrections need it. The
// next calibration finds its own: it must take over the first part without the second. The record
// keeps them apart, and repeats the values of the parameter file, so that a file that has changed
// since is noticed. Its format: docs/programs.md, "The record beside the parameter file".
#pragma once

#include "apps/tables/Output.h"
#include "quality/Calibration.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

/// Bias angles of magnetometers A and B [degrees].
struct BiasAngles
{
    double a = 0.0;
    double b = 0.0;
};

/// How a calibration was made, and what was said of it.
struct RecordedVerdict
{
    std::string method; // "adjust", "joint" or "spot"
    std::string verdict;
};

/// The name of the record of a parameter file, beside the file that a link leads to. Empty for an
/// empty path, "-", and a device or pipe, which have no record.
std::string RecordOf(const std::string& parameterFile);

/// The bias angles that the operator gave for a parameter file, without those that a fit found.
///
/// Where no record tells, all of a bias angle counts as given, and standard error says so; but not
/// for a calibration that finds an angle of its own, nor where what the record says was found may
/// still be in there.
///
/// @param findsItsOwn  the angles are for a calibration that finds bias angles, too
/// @throws InputError when the angles cannot be told apart, or a file cannot be used
BiasAngles GivenAnglesOf(const std::string& parameterFile, bool findsItsOwn);

/// Makes sure that writing the record of `parameterFile` does not replace another kind of file.
/// @throws InputError naming that file
void CheckRecordName(const std::string& parameterFile);

/// The same for any JSON file beside a parameter file.
/// @param name    of the file; empty: there is none
/// @param what    it is: "record"
/// @param format  member `format` of a file that may be replaced
void CheckNameBeside(const std::string& parameterFile, const std::string& name, const char* what,
                     const char* format);

/// Adds a parameter file with the sum of both bias angles and its record to the files of a command,
/// the parameter file last.
///
/// @param calibration  its bias angles are those that the fit found [degrees]
/// @param given        those of the operator [degrees]
/// @throws as ParametersOf and OutputFiles::Write
void SaveWithRecord(tables::OutputFiles& files, const std::string& parameterFile,
                    const quality::Calibration& calibration, const BiasAngles& given,
                    const RecordedVerdict& verdict);

} // namespace cli
