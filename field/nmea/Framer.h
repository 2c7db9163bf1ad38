// SPDX-License-Identifier: MIT
//
// Lines of NMEA 0183 out of a stream that may hold anything else.
//
//   while (const auto line = framer.Next(bytes)) Use(*line, arrival);
//
// A line begins with '$' or '!' and two capital letters, ends with LF or CR LF, and is given
// without its end. A '$' or '!' inside of a line begins another one. However the stream is cut into
// pieces, the lines are the same; a line has arrived with the piece that ends it. At most 1 KiB is
// held.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tiltpole::field {

struct FramerCounters
{
    std::uint64_t lines = 0;    // whole ones, whatever their checksum
    std::uint64_t cut = 0;      // another one began before their end
    std::uint64_t overlong = 0; // longer than kLongestLine
};

class Framer
{
public:
    static constexpr std::size_t kLongestLine = 1024; // [bytes], without CR LF

    /// Takes bytes from the front of `bytes` up to the end of the next line.
    /// @param bytes  in: what came; out: what is left of it
    /// @return the line, valid until the next call; none: all of `bytes` is taken
    std::optional<std::string_view> Next(std::string_view& bytes);

    /// Forgets the line that is half read, which counts as nothing.
    void Restart();

    const FramerCounters& Count() const { return m_counters; }

private:
    bool Takes(char byte);
    std::size_t TakesRun(std::string_view bytes);

    std::string m_line;
    bool m_ended = false; // m_line was returned
    FramerCounters m_counters;
};

} // namespace tiltpole::field
