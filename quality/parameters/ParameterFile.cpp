// SPDX-License-Identifier: MIT
#include "quality/ParameterFile.h"

#include "framework/core/File.h"
#include "framework/core/ParseNumber.h"
#include "positioning/detail/ParameterLines.h"
#include "quality/Calibration.h"
#include "quality/calibration/Text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <tuple>
#include <utility>

namespace positioning = tiltpole::positioning;
using tiltpole::quality::Shortest;

namespace quality {

namespace {

// Limits of a plausible calibration. A scale is the ratio of two axes of one magnetometer, a share
// the part of one axis in another; offsets are limited by the range of raw counts.
struct Limits
{
    double low, high;
};

constexpr Limits kScale{0.1, 10.0};
constexpr Limits kShare{-5.0, 5.0};
constexpr Limits kOffset{-1e6, 1e6};   // counts
constexpr Limits kBias{-360.0, 360.0}; // degrees

Limits LimitsOf(std::string_view key)
{
    if (key.starts_with("MagneticBiasAngle")) return kBias;
    if (key.starts_with("CoorTrans") || key.ends_with('0')) return kOffset;
    return key.ends_with('b') || key.ends_with('e') ? kScale : kShare;
}

positioning::ParameterEntries EntriesOf(Calibration& c)
{
    return positioning::ParameterLines(c.correctionA, c.correctionB, c.translation, c.biasAngleA,
                                       c.biasAngleB);
}

Calibration CalibrationOf(const CInclineSensor_Position& position)
{
    return {position.GetMagneticCorrectPar_A(), position.GetMagneticCorrectPar_B(),
            position.GetMagneticTranslationPar(), position.GetMagneticBiasAngle_A(),
            position.GetMagneticBiasAngle_B()};
}

void SetCalibration(CInclineSensor_Position& position, const Calibration& c)
{
    position.SetMagneticCorrectPar_A(c.correctionA);
    position.SetMagneticCorrectPar_B(c.correctionB);
    position.SetMagneticTranslationPar(c.translation);
    position.SetMagneticBiasAngle_A(c.biasAngleA);
    position.SetMagneticBiasAngle_B(c.biasAngleB);
}

// Where the text "[key]" stands for the first time, and what follows it.
struct Place
{
    std::uint64_t line = 0;                // from 1; 0: nowhere
    std::optional<std::string_view> value; // up to the next CR, if there is one
};

using Places = std::array<Place, std::tuple_size_v<positioning::ParameterEntries>>;

// The first places of all keys, in one pass. A key can begin only at the last '[' before a ']'.
Places PlacesOf(std::string_view content, const positioning::ParameterEntries& keys)
{
    Places places;
    std::size_t missing = places.size();
    std::size_t open = 0; // behind the last '[' that no ']' follows yet; 0: there is none
    std::size_t end = 0;  // of the value looked at last
    std::uint64_t line = 1;
    for (std::size_t at = 0; at < content.size() && missing > 0; ++at) {
        if (content[at] == '\n') ++line;
        if (content[at] == '[') open = at + 1;
        if (content[at] != ']' || open == 0) continue;
        const std::string_view name = content.substr(open, at - open);
        open = 0;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (keys[i].key != name || places[i].line != 0) continue;
            if (end <= at) end = std::min(content.find('\r', at + 1), content.size());
            places[i].line = line;
            if (end < content.size()) places[i].value = content.substr(at + 1, end - at - 1);
            --missing;
        }
    }
    return places;
}

// The number that the text consists of, apart from blanks around it.
std::optional<double> NumberOf(std::string_view text)
{
    const auto last = text.find_last_not_of(" \t");
    if (last == std::string_view::npos) return std::nullopt;
    text = text.substr(0, last + 1);
    const auto [value, used, inRange] = framework::ParseDouble(text);
    if (used != text.size() || !inRange) return std::nullopt;
    return value;
}

// The beginning of a text from a file, fit for a terminal.
std::string Quoted(std::string_view text)
{
    constexpr std::size_t kLongest = 40;
    std::string quoted = "'";
    for (const char c : text.substr(0, kLongest))
        quoted += static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? '?' : c;
    return quoted + '\'';
}

// Reads the value of a key; what is wrong with it, or nothing.
std::string ReasonAgainst(const Place& place, const positioning::KeyedDouble& entry)
{
    if (place.line == 0) return "is missing";
    if (!place.value) return "is not read, because no line from there on ends with CR LF";
    const auto number = NumberOf(*place.value);
    if (!number) return "is " + Quoted(*place.value) + ", not a number";
    const Limits limits = LimitsOf(entry.key);
    if (*number < limits.low || *number > limits.high) {
        return "is " + Shortest(*number) + ", not between " + Shortest(limits.low) + " and "
               + Shortest(limits.high);
    }
    *entry.value = *number;
    return {};
}

// Appends the content of the file; why it cannot be used, or nothing. A device has no length and
// may never end, so everything is read in pieces.
std::string Read(const CString& path, std::string& content)
{
    constexpr UINT kPiece = 65536;
    CFile file;
    if (!file.Open(path, CFile::modeRead | CFile::shareDenyNone)) return "cannot be read";
    UINT count = kPiece;
    while (count == kPiece) {
        const std::size_t before = content.size();
        content.resize(before + kPiece);
        count = file.Read(content.data() + before, kPiece);
        content.resize(before + count);
        if (content.size() > kLargestParameterFile) {
            return "is larger than " + std::to_string(kLargestParameterFile >> 20) + " MiB";
        }
    }
    return file.Close() ? "" : "cannot be read";
}

} // namespace

std::string ToText(const ParameterProblem& problem)
{
    std::string text = problem.key.empty() ? "the file" : problem.key;
    text += ' ' + problem.reason;
    return problem.line == 0 ? text : "line " + std::to_string(problem.line) + ": " + text;
}

std::vector<ParameterProblem>
LoadParameterText(std::string_view content, CInclineSensor_Position& position, ParameterKeys keys)
{
    Calibration calibration = CalibrationOf(position);
    const positioning::ParameterEntries entries = EntriesOf(calibration);
    const Places places = PlacesOf(content, entries);
    std::vector<ParameterProblem> problems;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (places[i].line == 0 && keys == ParameterKeys::Some) continue;
        std::string reason = ReasonAgainst(places[i], entries[i]);
        if (reason.empty()) continue;
        problems.push_back({std::string(entries[i].key), places[i].line, std::move(reason)});
    }
    if (problems.empty()) SetCalibration(position, calibration);
    return problems;
}

std::vector<ParameterProblem> LoadParameters(const CString& path, CInclineSensor_Position& position,
                                             ParameterKeys keys)
{
    std::string content;
    const std::string reason = Read(path, content);
    if (!reason.empty())
        return {
            {"", 0, reason}
        };
    return LoadParameterText(content, position, keys);
}

std::vector<ParameterProblem> CheckParameterText(std::string_view content, ParameterKeys keys)
{
    CInclineSensor_Position position;
    return LoadParameterText(content, position, keys);
}

std::vector<ParameterProblem> CheckParameters(const CString& path, ParameterKeys keys)
{
    CInclineSensor_Position position;
    return LoadParameters(path, position, keys);
}

} // namespace quality
