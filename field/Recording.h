// SPDX-License-Identifier: MIT
/// @file
/// A recording of a live pole as text: what arrived, on which channel, when. Fed to a Bridge of the
/// same setup, it gives the same reports.
///
///     # tiltpole recording 1, started 2026-11-22T13:07:58.123456Z
///     +0.000000 R $GNGGA,130758.00,4733.9633191,N,...*6F\x0D\x0A
///     +0.004210 P $PTPS,1,1200,3.1,-8.2,...*4F\x0D\x0A
///     +12.345678 K acknowledge base
///
///     +seconds   since the start, host's steady clock, six decimals; never back
///     channel    R receiver, P pose, C corrections, K keys and events
///     bytes      printable ASCII as it is; every other byte, and the backslash, as \xHH
///
///     field::RecordingReader reader;
///     while (std::getline(file, line)) {
///         if (!reader.Read(line)) return Fail(reader.Error());   // "line 12: the time runs back"
///         if (reader.Last()) Play(bridge, *reader.Last());
///     }
///     setup.started = reader.Started();                          // known after the first line
///
/// Keys of channel K that Play understands: "acknowledge base", "acknowledge datum", "restart
/// receiver", "restart pose". Others are passed over.
#pragma once

#include "field/Bridge.h"
#include "framework/core/Export.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace field {

enum class Channel : char { Receiver = 'R', Pose = 'P', Corrections = 'C', Keys = 'K' };

/// What arrived at one instant.
struct Record
{
    Instant at{}; ///< since the start of the recording, whole microseconds
    Channel channel = Channel::Receiver;
    std::string bytes;
};

inline constexpr std::string_view kAcknowledgeBase = "acknowledge base";
inline constexpr std::string_view kAcknowledgeDatum = "acknowledge datum";
inline constexpr std::string_view kRestartReceiver = "restart receiver";
inline constexpr std::string_view kRestartPose = "restart pose";

/// The line that a recording opens with, LF included.
/// @param started  UTC of the start [s since 1970], from 0 to the end of 9999; else taken as 0
TILTPOLE_API std::string RecordingHeader(double started);

/// The lines of what arrived, each with LF: one, or several where there are more bytes than a line
/// holds; none for no bytes.
/// @param at  taken to whole microseconds, as Bridge takes it; below 0: 0
TILTPOLE_API std::string RecordingLines(Instant at, Channel channel, std::string_view bytes);

/// Reads a recording, a line at a time.
class TILTPOLE_API RecordingReader
{
public:
    /// Bytes of a record, at most; a longer line is an error.
    static constexpr std::size_t kMostBytes = 16384;

    /// @param line  without its LF; a CR before it is passed over. The first one is the header; empty
    ///              lines and further ones that begin with # are comments
    /// @return false: the line is bad, see Error; the next one may be read all the same. Where memory is
    ///         short (std::bad_alloc) the line has not been read: Last is none, and it may be given again
    bool Read(std::string_view line);

    /// The record of the last line; none after a header, a comment or a bad line.
    const std::optional<Record>& Last() const { return m_last; }
    /// UTC of the start [s since 1970]; none before the header was read.
    std::optional<double> Started() const { return m_started; }
    /// Of the last bad line, with its number.
    const std::string& Error() const { return m_error; }

private:
    bool Fail(std::string_view what);
    bool ReadHeader(std::string_view line);
    bool ReadRecord(std::string_view line);

    std::size_t m_line = 0;
    Instant m_time{};
    std::optional<double> m_started;
    std::optional<Record> m_last;
    std::string m_error;
};

/// Feeds a record to a bridge.
TILTPOLE_API void Play(Bridge& bridge, const Record& record);

} // namespace field
