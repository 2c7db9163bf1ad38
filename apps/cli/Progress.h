// SPDX-License-Identifier: MIT
//
// A progress meter for long work: one line on the terminal, rewritten in place and wiped at the
// end. It shows nothing where standard error is not a terminal, and nothing in the first second.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace cli {

/// What the meter counts; None: shares of the work, which are no amount to show.
enum class Unit { Bytes, None };

/// The text of the meter: share done, amount, rate and, where `total` is known, the time left.
/// @param total    0 when unknown
/// @param seconds  since the start, above 0
std::string ProgressText(std::uint64_t done, std::uint64_t total, double seconds, Unit unit);

class Progress
{
public:
    Progress(std::uint64_t total, Unit unit);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Cheap enough to be called for every row.
    void Update(std::uint64_t done)
    {
        if (m_onTerminal) Look(done);
    }

    /// Wipes the meter, so that a message may follow on a clean line; Update brings it back.
    void Wipe();

private:
    using Clock = std::chrono::steady_clock;

    void Look(std::uint64_t done);

    std::uint64_t m_total;
    Unit m_unit;
    bool m_onTerminal;
    bool m_shown = false;
    Clock::time_point m_start;
    Clock::time_point m_next; // when to draw again
};

} // namespace cli
