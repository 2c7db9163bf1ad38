// SPDX-License-Identifier: MIT
//
// The receiver's side of a bridge: bytes become epochs with a moment on the host's clock, and
// silence, bad lines and steps of the receiver's time are noticed.
//
//   moment = UTC on the host's clock by the least delay − setup.delay
#pragma once

#include "field/Bridge.h"
#include "field/nmea/EpochReader.h"
#include "field/time/EpochClock.h"
#include "field/time/LeastDelay.h"

#include <array>
#include <optional>
#include <string_view>
#include <vector>

namespace tiltpole::field {

/// An epoch and what is known of its time.
struct TimedEpoch
{
    ::field::Epoch epoch;
    double seconds = 0.0;                       ///< UTC without a wrap at midnight
    double decimalYear;                         ///< NaN: no date
    std::optional<std::chrono::sys_days> today; ///< by the receiver, or by the start of the job
    double age = 0.0;                           ///< at its arrival, beyond the least delay [s]
    double period = 0.0;                        ///< [s]; 0: not known
    bool timeStep = false;                  ///< within 2 s of a step of the time, or as late as one
    std::optional<::field::Reason> silence; ///< that it ended, unless NewSilence said so already
    bool restarted = false;                 ///< first one after a step, or at all
};

class ReceiverInput
{
public:
    explicit ReceiverInput(const ::field::Setup& setup);

    /// Bytes with one line end at most, which is their last.
    void Feed(std::string_view bytes, ::field::Instant arrival);
    void Tick(::field::Instant now);
    void Restart();
    /// Restart; that there are no epochs is said once more, since it may not have been heard.
    void Forget();

    /// Epochs since the last call, in order; those with the time of the last one are left out.
    std::vector<TimedEpoch> Take();

    /// Part of the lines of the last 10 s that are bad; 0 for fewer than two.
    double BadLines(::field::Instant now) const;

    /// Says once that no epoch came for 2.5 periods (at least 0.3 s; 3 s before the period is
    /// known), as soon as none that came within can still be open, or that 2 s of bytes held no
    /// good line.
    std::optional<::field::Reason> NewSilence(::field::Instant now);

    void Count(::field::Counters& counters) const;

private:
    struct Bucket
    {
        std::int64_t second = -1;
        std::uint64_t lines = 0;
        std::uint64_t bad = 0;
    };

    void CountLines(::field::Instant arrival);
    void NoticeGarbled(::field::Instant arrival);
    void FollowGoodLines(::field::Instant arrival);
    std::optional<TimedEpoch> Timed(::field::Epoch&& epoch);
    void SetDate(TimedEpoch& timed) const;
    std::optional<::field::Reason> SilenceUntil(::field::Instant instant);
    ::field::Instant Patience() const;

    double m_delay;
    std::optional<double> m_started;
    EpochReader m_reader;
    EpochClock m_clock;
    LeastDelay m_least;
    std::optional<::field::Instant> m_stepped; // last step of the time
    std::uint64_t m_repeated = 0;
    std::uint64_t m_epochs = 0;

    std::array<Bucket, 10> m_buckets{}; // by second
    LineCounters m_counted;
    std::uint64_t m_good = 0; // lines, when last looked at

    std::optional<::field::Instant> m_begun;      // first call with an instant
    std::optional<::field::Instant> m_lastEpoch;  // arrival
    std::optional<::field::Instant> m_unreadable; // first byte since the last good line
    std::optional<::field::Instant> m_lastByte;
    ::field::Instant m_patience; // without an epoch, as the epochs so far have it
    bool m_silent = false;
    bool m_garbled = false;    // and was said to be
    bool m_newGarbled = false; // and is still to be said
};

} // namespace tiltpole::field
