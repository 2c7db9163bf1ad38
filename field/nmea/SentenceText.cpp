// SPDX-License-Identifier: MIT
#include "field/nmea/SentenceText.h"

#include "field/nmea/Numbers.h"
#include "field/nmea/Sentence.h"

#include <cmath>
#include <cstdint>

namespace tiltpole::field {

namespace {

constexpr double kMinuteUnits = 1e7; // of the last digit of a minute

// dd or ddd degrees and seven decimals of a minute, in one count so that 60 minutes carry over.
std::string AngleText(double angle, std::size_t degreeDigits)
{
    constexpr auto kDegree = static_cast<std::uint64_t>(60.0 * kMinuteUnits);
    constexpr auto kMinute = static_cast<std::uint64_t>(kMinuteUnits);
    const auto units =
        static_cast<std::uint64_t>(std::llround(std::fabs(angle) * 60.0 * kMinuteUnits));
    const auto padded = [](std::uint64_t value, std::size_t digits) {
        std::string text(digits, '0');
        for (std::size_t i = digits; i-- > 0; value /= 10)
            text[i] = static_cast<char>('0' + value % 10);
        return text;
    };
    return padded(units / kDegree, degreeDigits) + padded(units % kDegree / kMinute, 2) + '.'
           + padded(units % kMinute, 7);
}

bool RoundsBelowZero(double angle)
{
    return std::llround(angle * 60.0 * kMinuteUnits) < 0;
}

} // namespace

SentenceText& SentenceText::Text(std::string_view field)
{
    m_text += ',';
    m_text += field;
    return *this;
}

SentenceText& SentenceText::Number(double value, int decimals)
{
    m_text += ',';
    AppendFixed(m_text, value, decimals);
    return *this;
}

SentenceText& SentenceText::Number(std::optional<double> value, int decimals)
{
    return value ? Number(*value, decimals) : Text({});
}

std::string SentenceText::Framed() const
{
    return field::Framed(m_text);
}

std::string PositionText(double latitude, double longitude)
{
    if (!(std::fabs(latitude) <= 90.0) || !(std::fabs(longitude) <= 180.0)) return ",,,";
    return AngleText(latitude, 2) + (RoundsBelowZero(latitude) ? ",S," : ",N,")
           + AngleText(longitude, 3) + (RoundsBelowZero(longitude) ? ",W" : ",E");
}

} // namespace tiltpole::field
