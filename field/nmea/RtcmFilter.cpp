// SPDX-License-Identifier: MIT
#include "field/nmea/RtcmFilter.h"

#include <algorithm>
#include <array>

namespace tiltpole::field {

namespace {

constexpr char kPreamble = '\xD3';
constexpr std::size_t kHeader = 3;
constexpr std::size_t kChecksum = 3;
constexpr std::uint32_t kPolynomial = 0x1864CFB;
constexpr std::uint32_t kTopBit = 0x1000000;

std::uint32_t ByteOf(std::string_view bytes, std::size_t at)
{
    return static_cast<std::uint8_t>(bytes[at]);
}

consteval std::array<std::uint32_t, 256> Table()
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t rest = i << 16U;
        for (int bit = 0; bit < 8; ++bit) {
            rest <<= 1U;
            if ((rest & kTopBit) != 0) rest ^= kPolynomial;
        }
        table[i] = rest;
    }
    return table;
}

bool HasRightChecksum(std::string_view frame)
{
    const std::size_t end = frame.size() - kChecksum;
    const std::uint32_t stated =
        ByteOf(frame, end) << 16U | ByteOf(frame, end + 1) << 8U | ByteOf(frame, end + 2);
    return Crc24q(frame.substr(0, end)) == stated;
}

} // namespace

std::uint32_t Crc24q(std::string_view bytes)
{
    static constexpr std::array<std::uint32_t, 256> kTable = Table();
    std::uint32_t crc = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        crc = (crc << 8U & 0xFFFFFFU) ^ kTable[(crc >> 16U ^ ByteOf(bytes, i)) & 0xFFU];
    return crc;
}

std::string RtcmFilter::Feed(std::string_view bytes)
{
    std::string passed;
    for (const char byte : bytes)
        Add(byte, passed);
    return passed;
}

void RtcmFilter::Add(char byte, std::string& passed)
{
    m_held += byte;
    OpenCandidate();
    const std::size_t size = m_held.size();
    const auto ends = [size](const Candidate& c) { return c.begin + c.size == size; };
    const std::string_view held = m_held;
    for (const Candidate& candidate : m_candidates) {
        const std::string_view frame = held.substr(candidate.begin);
        if (!ends(candidate) || !HasRightChecksum(frame)) continue;
        passed += frame;
        ++m_frames;
        m_dropped += candidate.begin;
        m_held.clear();
        m_candidates.clear();
        return;
    }
    std::erase_if(m_candidates, ends);
    Forget();
}

// The last three bytes as the header of a frame.
void RtcmFilter::OpenCandidate()
{
    if (m_held.size() < kHeader) return;
    const std::size_t begin = m_held.size() - kHeader;
    if (m_held[begin] != kPreamble || (ByteOf(m_held, begin + 1) & 0xFCU) != 0) return;
    const std::size_t length = (ByteOf(m_held, begin + 1) & 3U) << 8U | ByteOf(m_held, begin + 2);
    m_candidates.push_back({begin, kHeader + length + kChecksum});
}

// Drops what no frame can begin with any more: all before the first candidate, or before the last
// two bytes, which may begin a header.
void RtcmFilter::Forget()
{
    const std::size_t tail = m_held.size() - std::min(m_held.size(), kHeader - 1);
    const std::size_t keep = m_candidates.empty() ? tail : m_candidates.front().begin;
    if (keep == 0) return;
    m_held.erase(0, keep);
    m_dropped += keep;
    for (Candidate& candidate : m_candidates)
        candidate.begin -= keep;
}

} // namespace tiltpole::field
