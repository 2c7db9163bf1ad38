// SPDX-License-Identifier: MIT
#include "field/nmea/Framer.h"

namespace tiltpole::field {

namespace {

constexpr std::size_t kMarked = 3; // '$' and the two letters that make it a line

bool Begins(char byte)
{
    return byte == '$' || byte == '!';
}

bool IsCapital(char byte)
{
    return byte >= 'A' && byte <= 'Z';
}

} // namespace

// Whether `byte` completes the line; what only lengthens it, TakesRun took. Binary messages between
// the lines hold every byte: a '$' without letters behind it is one of theirs, and no line that was
// cut.
bool Framer::Takes(char byte)
{
    if (Begins(byte)) {
        if (m_line.size() >= kMarked) ++m_counters.cut;
        m_line.assign(1, byte);
        return false;
    }
    if (m_line.empty()) return false;
    if (m_line.size() < kMarked) {
        if (IsCapital(byte))
            m_line.push_back(byte);
        else
            m_line.clear();
        return false;
    }
    if (byte == '\n') {
        if (m_line.back() == '\r') m_line.pop_back();
        if (m_line.size() <= kLongestLine) return true;
    }
    ++m_counters.overlong;
    m_line.clear();
    return false;
}

// Takes the bytes that only lengthen the line, to one more than fits, for the CR.
// @return how many
std::size_t Framer::TakesRun(std::string_view bytes)
{
    if (m_line.size() < kMarked) return 0;
    bytes = bytes.substr(0, kLongestLine + 1 - m_line.size());
    for (const char end : {'\n', '$', '!'})
        bytes = bytes.substr(0, bytes.find(end));
    m_line.append(bytes);
    return bytes.size();
}

std::optional<std::string_view> Framer::Next(std::string_view& bytes)
{
    if (m_ended) Restart();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        i += TakesRun(bytes.substr(i));
        if (i == bytes.size() || !Takes(bytes[i])) continue;
        bytes.remove_prefix(i + 1);
        m_ended = true;
        ++m_counters.lines;
        return m_line;
    }
    bytes = {};
    return std::nullopt;
}

void Framer::Restart()
{
    m_line.clear();
    m_ended = false;
}

} // namespace tiltpole::field
