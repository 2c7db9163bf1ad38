// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrationRecord.h"

#include "apps/cli/JsonOutput.h"
#include "apps/cli/ParameterCheck.h"
#include "apps/cli/calibrate/CalibrationOutput.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/ReadFile.h"

#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace cli {

namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

constexpr const char* kFormat = "tiltpole calibration record";
constexpr std::uint64_t kLargest = std::uint64_t{1} << 20; // bytes
constexpr double kRounding = 1e-9; // of a sum of angles with ten decimals [degrees]

// The file that a chain of links leads to, whether it exists or not.
fs::path FileBehind(fs::path path)
{
    std::error_code error;
    for (int links = 0; links < 40 && fs::is_symlink(fs::symlink_status(path, error)); ++links) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / next; // `next` alone where it is absolute
    }
    return path;
}

quality::Calibration ValuesOf(const CInclineSensor_Position& position)
{
    return {position.GetMagneticCorrectPar_A(), position.GetMagneticCorrectPar_B(),
            position.GetMagneticTranslationPar(), position.GetMagneticBiasAngle_A(),
            position.GetMagneticBiasAngle_B()};
}

// An object of a format as it is in its file, null where the file is another one. Throws InputError
// where it cannot be read.
ordered_json Parse(const std::string& name, const char* format)
{
    ordered_json json = ordered_json::parse(tables::ReadFile(name, kLargest), nullptr, false);
    const bool isOne = json.is_object() && json.contains("format") && json["format"] == format;
    return isOne ? json : ordered_json();
}

double AngleIn(const ordered_json& record, const std::string& key, const std::string& name)
{
    if (record.contains(key) && record[key].is_number()) return record[key].get<double>();
    throw tables::InputError(name, fmt::format("{} is not a number", key));
}

struct Angles
{
    BiasAngles given;
    BiasAngles found;
    bool isStale = false; // the parameter file has other values than the record

    bool HasFound() const { return found.a != 0.0 || found.b != 0.0; }
};

// What the record says about the bias angles of `values`; none without a record.
std::optional<Angles> ReadAngles(const std::string& name, const quality::Calibration& values)
{
    std::error_code error;
    if (name.empty() || !fs::exists(name, error)) return std::nullopt;
    const ordered_json record = Parse(name, kFormat);
    if (record.is_null()) {
        throw tables::InputError(name, "is not a record of tiltpole calibrate");
    }
    if (!record.contains("version") || record["version"] != kJsonVersion) {
        throw tables::InputError(
            name, fmt::format("is not of version {}, which this program reads", kJsonVersion));
    }
    Angles angles;
    angles.given = {AngleIn(record, "bias_given_a_deg", name),
                    AngleIn(record, "bias_given_b_deg", name)};
    angles.found = {AngleIn(record, "bias_found_a_deg", name),
                    AngleIn(record, "bias_found_b_deg", name)};
    const double off[] = {angles.given.a + angles.found.a - values.biasAngleA,
                          angles.given.b + angles.found.b - values.biasAngleB};
    angles.isStale = !record.contains("calibration")
                     || record["calibration"] != CalibrationJson(values)
                     || !(std::fabs(off[0]) <= kRounding) || !(std::fabs(off[1]) <= kRounding);
    return angles;
}

} // namespace

std::string RecordOf(const std::string& parameterFile)
{
    if (parameterFile.empty() || parameterFile == "-") return {};
    const fs::path file = FileBehind(parameterFile);
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) return {};
    return file.string() + ".json";
}

BiasAngles GivenAnglesOf(const std::string& parameterFile, bool findsItsOwn)
{
    CInclineSensor_Position position;
    LoadParameters(parameterFile, position);
    const quality::Calibration values = ValuesOf(position);
    const std::string name = RecordOf(parameterFile);
    const std::optional<Angles> angles = ReadAngles(name, values);
    if (angles && !angles->isStale) return angles->given;

    const std::string why = angles
                                ? fmt::format("has changed since its record {} was written", name)
                                : "has no record of tiltpole calibrate beside it";
    if (findsItsOwn || (angles && angles->HasFound())) {
        throw tables::InputError(
            parameterFile,
            fmt::format("{}, so its bias angles may include what a fit found, which must not be "
                        "added again; instead of --bias-from give the angles for the north that is "
                        "wanted with --bias and --bias-b",
                        why));
    }
    if (values.biasAngleA != 0.0 || values.biasAngleB != 0.0) {
        tables::Tell("{}: {}; its bias angles, {} and {} degrees, are taken as given\n",
                     parameterFile, why, values.biasAngleA, values.biasAngleB);
    }
    return {values.biasAngleA, values.biasAngleB};
}

void CheckRecordName(const std::string& parameterFile)
{
    CheckNameBeside(parameterFile, RecordOf(parameterFile), "record", kFormat);
}

void CheckNameBeside(const std::string& parameterFile, const std::string& name, const char* what,
                     const char* format)
{
    std::error_code error;
    if (name.empty() || !fs::exists(name, error)) return;
    if (fs::is_regular_file(name, error) && !Parse(name, format).is_null()) return;
    throw tables::InputError(name, fmt::format("is where the {} of {} belongs, but is another "
                                               "file; move it or choose another --out",
                                               what, parameterFile));
}

void SaveWithRecord(tables::OutputFiles& files, const std::string& parameterFile,
                    const quality::Calibration& calibration, const BiasAngles& given,
                    const RecordedVerdict& verdict)
{
    quality::Calibration sum = calibration;
    sum.biasAngleA += given.a;
    sum.biasAngleB += given.b;
    const std::string parameters = ParametersOf(parameterFile, sum);
    CInclineSensor_Position position;
    if (!quality::LoadParameterText(parameters, position).empty())
        throw tables::InputError(parameterFile, "cannot be read again");

    ordered_json record = JsonHeader("calibration record");
    record["method"] = verdict.method;
    record["verdict"] = verdict.verdict;
    record["bias_given_a_deg"] = given.a;
    record["bias_given_b_deg"] = given.b;
    record["bias_found_a_deg"] = calibration.biasAngleA;
    record["bias_found_b_deg"] = calibration.biasAngleB;
    record["calibration"] = CalibrationJson(ValuesOf(position));
    files.Write(RecordOf(parameterFile), JsonText(record));
    files.Write(parameterFile, parameters);
}

} // namespace cli
