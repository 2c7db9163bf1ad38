// SPDX-License-Identifier: MIT
//
// One sentence of NMEA 0183: checksum, address and fields.
//
//     const auto sentence = ReadSentence("$GNZDA,130758.00,22,11,2026,00,00*7B");
//     sentence->Type();   // "ZDA"
//     sentence->Field(4); // "2026"
//
// Fields are numbered as in the standard: 1 is the first one after the address.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tiltpole::field {

/// A view of a line, which must outlive it.
class Sentence
{
public:
    static constexpr std::size_t kMostFields = 40;

    /// The whole line, from '$' to the second digit of the checksum.
    std::string_view Line() const { return m_line; }
    /// Two characters, "GN"; of a proprietary sentence "P".
    std::string_view Talker() const { return m_talker; }
    /// What follows the talker in the address: "GGA", of $PTPS "TPS".
    std::string_view Type() const { return m_type; }
    /// How many there are, empty ones included.
    std::size_t Fields() const { return m_count; }
    /// Empty where there is none of this number.
    std::string_view Field(std::size_t number) const
    {
        return number == 0 || number > m_count ? std::string_view() : m_fields[number - 1];
    }

private:
    friend std::optional<Sentence> ReadSentence(std::string_view line);
    bool SplitAddress(std::string_view address);

    std::string_view m_line;
    std::string_view m_talker;
    std::string_view m_type;
    std::array<std::string_view, kMostFields> m_fields;
    std::size_t m_count = 0;
};

/// @param line  without CR LF
/// @return none unless it begins with '$', has an address of five characters (or 'P' and 2 to 15) and at
///         most kMostFields fields, holds printable ASCII alone, and ends with '*' and the two digits of
///         the right checksum
std::optional<Sentence> ReadSentence(std::string_view line);

/// Exclusive or of all bytes: of what stands between '$' and '*'.
constexpr std::uint8_t Checksum(std::string_view body)
{
    unsigned sum = 0;
    for (const char c : body)
        sum ^= static_cast<unsigned char>(c);
    return static_cast<std::uint8_t>(sum);
}

/// "$" body "*hh" CR LF.
std::string Framed(std::string_view body);

} // namespace tiltpole::field
