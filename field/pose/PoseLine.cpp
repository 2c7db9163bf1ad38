// SPDX-License-Identifier: MIT
#include "field/pose/PoseLine.h"

#include "field/pose/Readings.h"
#include "framework/core/ParseNumber.h"

namespace tiltpole::field {

namespace {

constexpr std::size_t kMilliseconds = 2;
constexpr std::size_t kPitch = 3;
constexpr std::size_t kRoll = 4;
constexpr std::size_t kHeading = 5;
constexpr std::size_t kFirstReading = 6;
constexpr std::size_t kFields = 17;

bool ReadInto(std::string_view text, double& value)
{
    const std::optional<double> number = WholeNumber(text);
    if (number) value = *number;
    return number.has_value();
}

// Nothing where the text is empty; false where it is neither empty nor a number.
bool ReadOptional(std::string_view text, std::optional<double>& value)
{
    value = WholeNumber(text);
    return value.has_value() || text.empty();
}

} // namespace

std::optional<double> WholeNumber(std::string_view text)
{
    const auto number = framework::ParseDouble(text, framework::NumberForms::DecimalAndSpecial);
    if (number.used == 0 || number.used != text.size()) return std::nullopt;
    return number.value;
}

std::optional<PoseSample> ReadPoseLine(const Sentence& sentence)
{
    if (sentence.Talker() != "P" || sentence.Type() != "TPS") return std::nullopt;
    if (sentence.Field(1) != "1" || sentence.Fields() != kFields) return std::nullopt;
    PoseSample sample;
    std::optional<double> milliseconds;
    if (!ReadOptional(sentence.Field(kMilliseconds), milliseconds)) return std::nullopt;
    if (!ReadOptional(sentence.Field(kHeading), sample.heading)) return std::nullopt;
    if (!ReadInto(sentence.Field(kPitch), sample.data.dPitch)) return std::nullopt;
    if (!ReadInto(sentence.Field(kRoll), sample.data.dRoll)) return std::nullopt;
    std::size_t field = kFirstReading;
    for (const auto reading : kReadings) {
        if (!ReadInto(sentence.Field(field++), sample.data.*reading)) return std::nullopt;
    }
    if (milliseconds) sample.deviceSeconds = *milliseconds / 1000.0;
    return sample;
}

void PoseLines::Feed(std::string_view bytes, Instant arrival)
{
    try {
        Read(bytes, arrival);
    } catch (...) {
        Restart();
        throw;
    }
}

void PoseLines::Read(std::string_view bytes, Instant arrival)
{
    while (const auto line = m_framer.Next(bytes)) {
        const std::optional<Sentence> sentence = ReadSentence(*line);
        if (!sentence) {
            ++m_counters.bad;
            continue;
        }
        std::optional<PoseSample> sample = ReadPoseLine(*sentence);
        const bool pose = sentence->Talker() == "P" && sentence->Type() == "TPS";
        if (!sample) {
            ++(pose ? m_counters.bad : m_counters.other);
            continue;
        }
        ++m_counters.lines;
        sample->arrival = arrival;
        Emit(*sample);
    }
}

} // namespace tiltpole::field
