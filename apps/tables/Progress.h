// SPDX-License-Identifier: MIT
//
// A progress line for long operations, updated in place on the terminal and removed at the end.
// Nothing is shown where standard error is not a terminal, nor during the first second.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tables {

/// What is counted; None: fractions of the work, shown as a percentage only.
enum class Unit { Bytes, None };

/// The progress line: percentage, amount, rate and, where `total` is known, the time left.
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
        if (m_onTerminal) Draw(done);
    }

    /// Removes the line from the terminal before a message is printed; Update shows it again.
    void Wipe();

private:
    using Clock = std::chrono::steady_clock;

    void Draw(std::uint64_t done);

    std::uint64_t m_total;
    Unit m_unit;
    bool m_onTerminal;
    bool m_shown = false;
    Clock::time_point m_start;
    Clock::time_point m_next; // when to draw again
};

} // namespace tables
