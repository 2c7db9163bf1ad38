// SPDX-License-Identifier: MIT
#include "field/nmea/Sentence.h"

#include <algorithm>

namespace tiltpole::field {

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::size_t kStandardAddress = 5; // talker of two characters, type of three
constexpr std::size_t kLongestAddress = 16; // of proprietary sentences
constexpr std::size_t kTrailer = 3;         // '*' and the checksum

// 16: not a digit.
unsigned HexDigit(char byte)
{
    if (byte >= 'a' && byte <= 'f') return static_cast<unsigned>(byte - 'a') + 10;
    return static_cast<unsigned>(std::min(kDigits.find(byte), kDigits.size()));
}

bool IsAddressCharacter(char byte)
{
    return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

// What may stand between '$' and '*'.
bool IsBodyCharacter(char byte)
{
    return byte >= ' ' && byte <= '~' && byte != '$' && byte != '!' && byte != '*';
}

} // namespace

bool Sentence::SplitAddress(std::string_view address)
{
    if (!std::all_of(address.begin(), address.end(), IsAddressCharacter)) return false;
    const bool proprietary = !address.empty() && address.front() == 'P';
    if (proprietary ? address.size() < 3 || address.size() > kLongestAddress
                    : address.size() != kStandardAddress)
        return false;
    const std::size_t talker = proprietary ? 1 : 2;
    m_talker = address.substr(0, talker);
    m_type = address.substr(talker);
    return true;
}

std::optional<Sentence> ReadSentence(std::string_view line)
{
    if (line.size() < 1 + kTrailer || line.front() != '$') return std::nullopt;
    const std::string_view body = line.substr(1, line.size() - 1 - kTrailer);
    const std::string_view trailer = line.substr(line.size() - kTrailer);
    const unsigned high = HexDigit(trailer[1]);
    const unsigned low = HexDigit(trailer[2]);
    if (trailer[0] != '*' || high > 15 || low > 15) return std::nullopt;
    if (!std::all_of(body.begin(), body.end(), IsBodyCharacter)) return std::nullopt;
    if (Checksum(body) != high * 16 + low) return std::nullopt;

    Sentence sentence;
    sentence.m_line = line;
    std::size_t comma = std::min(body.find(','), body.size());
    if (!sentence.SplitAddress(body.substr(0, comma))) return std::nullopt;
    while (comma < body.size()) {
        if (sentence.m_count == Sentence::kMostFields) return std::nullopt;
        const std::size_t begin = comma + 1;
        comma = std::min(body.find(',', begin), body.size());
        sentence.m_fields[sentence.m_count++] = body.substr(begin, comma - begin);
    }
    return sentence;
}

std::string Framed(std::string_view body)
{
    const std::uint8_t sum = Checksum(body);
    std::string line;
    line.reserve(body.size() + 6);
    line += '$';
    line += body;
    line += '*';
    line += kDigits[sum / 16U];
    line += kDigits[sum % 16U];
    line += "\r\n";
    return line;
}

} // namespace tiltpole::field
