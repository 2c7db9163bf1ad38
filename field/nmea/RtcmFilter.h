// SPDX-License-Identifier: MIT
//
// RTCM 3 frames out of what clients send, which may be anything else as well: requests in text,
// probes for other receivers, noise.
//
//   frame   0xD3, 6 bits 0, 10 bits length n, n bytes, CRC-24Q (RTCM 10403.3, section 4)
//
// A frame goes on whole and unchanged, or not at all. At most one frame of 1029 bytes is held.
#pragma once

#include <cstddef>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tiltpole::field {

class RtcmFilter
{
public:
    /// Bytes cut anywhere.
    /// @return the frames that are complete now, one after the other
    std::string Feed(std::string_view bytes);

    std::uint64_t Frames() const { return m_frames; }
    /// Bytes that were not part of a frame.
    std::uint64_t Dropped() const { return m_dropped; }

private:
    struct Candidate
    {
        std::size_t begin; // in m_held
        std::size_t size;  // of the whole frame
    };
    void Add(char byte, std::string& passed);
    void OpenCandidate();
    void Forget();

    std::string m_held;
    std::vector<Candidate> m_candidates; // by begin; a false one delays no frame within it
    std::uint64_t m_frames = 0;
    std::uint64_t m_dropped = 0;
};

/// CRC-24Q: polynomial 0x1864CFB, from 0.
std::uint32_t Crc24q(std::string_view bytes);

} // namespace tiltpole::field
