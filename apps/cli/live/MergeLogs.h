// SPDX-License-Identifier: MIT
//
// The two logs of `tiltpole merge`, and how their days lie to one another.
#pragma once

#include "apps/cli/live/UtcText.h"
#include "apps/tables/Errors.h"
#include "apps/tables/SampleLog.h"
#include "field/Bridge.h"
#include <chrono>
#include <deque>
#include <fstream>
#include <optional>
#include <string>

namespace cli {

/// Where a log begins. Days count from 1970, or from any day where it has no dates.
struct LogStart
{
    double timeOfDay = 0.0; // [s]
    std::optional<std::chrono::sys_days> day;
};

/// Lines of the receiver with the time at which they were true.
class ReceiverLog
{
public:
    /// @throws InputError where it cannot be read, here and in Next
    explicit ReceiverLog(const std::string& path);

    /// By the first sentences with a time and with a date; none where no line has a time.
    std::optional<LogStart> Start() const;
    bool IsAtEnd() const { return m_isAtEnd; }
    double Seconds() const { return m_seconds; } // since the midnight before its start
    const std::string& Line() const { return m_line; }
    void Next();

private:
    bool Read(std::string& line);
    void LookAhead();

    std::string m_path;
    std::ifstream m_file;
    std::deque<std::string> m_ahead; // lines read for the start
    std::string m_line;
    std::optional<double> m_first; // time of day [s]
    std::optional<std::chrono::sys_days> m_day;
    double m_seconds = 0.0;
    DayCounter m_days;
    bool m_isAtEnd = false;
};

/// Samples of the pose sensor with their time.
class PoseLog
{
public:
    /// @param ahead  of the log's clock before UTC [s]
    /// @throws InputError where it cannot be read or has no time, here and in Next
    PoseLog(const std::string& path, double ahead);

    LogStart Start() const { return m_start; }
    bool IsAtEnd() const { return m_isAtEnd; }
    double Seconds() const { return m_seconds - m_midnight; } // since the midnight before its start
    field::PoseSample Sample(field::Instant arrival) const;
    void Next();

private:
    static constexpr int kMostEqual = 3; // rows

    tables::SampleLog m_log;
    double m_ahead;
    std::optional<std::size_t> m_column;
    DayCounter m_days;
    LogStart m_start;
    double m_midnight = 0.0;
    double m_seconds = 0.0; // since 1970, or since the first midnight of its clock
    bool m_hasDate = false;
    bool m_isAtEnd = false;
    bool m_isBegun = false;
    int m_equal = 0;
};

/// How many days after the pose log the receiver's log begins: -1 where that one begins before a
/// midnight and the pose log after it. By the dates where both have them. Otherwise logs are of one
/// day, unless their times of day are so far apart that a midnight between them is far likelier.
/// @return none where the dates are those of logs that were not recorded together
std::optional<int> DaysBetween(const LogStart& receiver, const LogStart& pose);

} // namespace cli
