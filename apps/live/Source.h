// SPDX-License-Identifier: MIT
//
// One source of bytes, opened again for as long as the program runs: after 0.5, 1, 2 and then every
// 5 s, a device that is not there every 0.5 s. A serial port that says nothing for 5 s, or a pose
// sensor on one or on TCP for 2 s, is opened again, too. A file or standard input ends.
#pragma once

#include "apps/live/Backoff.h"
#include "apps/live/Descriptor.h"
#include "apps/live/Endpoint.h"
#include "apps/live/Loop.h"
#include <cstddef>
#include <deque>
#include <optional>

namespace live {

class Source
{
public:
    /// All are called.
    struct Events
    {
        std::function<void(std::string_view)> onBytes;
        /// What happened, as a sentence without the source's name: "Connection refused".
        std::function<void(const std::string&)> onEvent;
        std::function<void()> onConnected; ///< what was half read does not go on
        std::function<void()> onEnd;       ///< of a file
    };

    static constexpr Instant kSilence = std::chrono::seconds(5);      // of a receiver
    static constexpr Instant kPoseSilence = std::chrono::seconds(2);  // it never pauses
    static constexpr Instant kConnecting = std::chrono::seconds(5);   // the longest
    static constexpr std::size_t kMostUnsent = std::size_t{16} << 10; // bytes

    /// @param greeting  sent whenever the source has been opened
    Source(Loop& loop, Endpoint endpoint, Events events, std::string greeting = {});

    /// After how much silence it is opened again; none: never. Without a call a serial port is,
    /// after kSilence.
    void SetPatience(std::optional<Instant> patience) { m_patience = patience; }

    void Start();

    /// Sends bytes to a serial port or a TCP connection, whole or not at all; elsewhere and while
    /// there is no connection they are dropped.
    /// @return false where they were dropped
    bool Write(std::string_view bytes);

    bool IsConnected() const { return m_isConnected; }
    std::uint64_t Connections() const { return m_connections; }

private:
    void Open();
    void Look();
    void Connect(const std::string& address);
    void Connected();
    void Read();
    void ReadFile();
    void Lost(const std::string& why);
    void TryAgain();
    void WatchSilence();
    void Flush();

    Loop& m_loop;
    Endpoint m_endpoint;
    Events m_events;
    std::string m_greeting;
    std::optional<Instant> m_patience;
    Descriptor m_descriptor;
    std::unique_ptr<Watch> m_watch;
    std::unique_ptr<Timer>
        m_timer; // the next attempt, the limit of one, silence, or the next lines
    std::unique_ptr<Timer> m_lookup; // of the host's name
    Backoff m_backoff;
    std::deque<std::string> m_addresses; // still to be tried
    std::string m_unsent;
    std::string m_read; // of a file that has a rate, from m_emitted on
    std::size_t m_emitted = 0;
    double m_linesGiven = 0.0;
    Instant m_since{}; // the last byte; of a file its first
    bool m_isConnected = false;
    bool m_isQuiet = false; // the present failure has been reported
    std::uint64_t m_connections = 0;
};

} // namespace live
