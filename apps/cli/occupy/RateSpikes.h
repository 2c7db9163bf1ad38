// SPDX-License-Identifier: MIT
//
// Leaves out rows whose rates no pole has: a damaged digit, a lost byte. A single one of them turns
// the pole by as much as an exchanged axis, and would pass for one.
//
//   beyond   more than 4000 degrees/s, which no gyro of a pole measures
//   a spike  one row far from the row before and from the row after, which are alike
#pragma once

#include "apps/cli/occupy/LogRow.h"
#include <cstdint>
#include <deque>
#include <functional>
#include <string>

namespace cli {

/// A row as it was read.
struct ReadRow
{
    std::string name; // of the point
    bool hasAntenna = false;
    std::uint64_t line = 0;
    std::optional<LogRow> row; // none: of no point
};

class RateSpikes
{
public:
    using Source = std::function<std::optional<ReadRow>()>;

    /// @param file    for messages
    /// @param source  gives the next row, none at the end
    RateSpikes(std::string file, Source source);

    /// The next row that is not left out; none at the end.
    std::optional<ReadRow> Next();

    /// Tells on standard error how many rows were left out, and the first one's line.
    /// @throws InputError where they are so many that the rates are of another unit
    void Conclude() const;

private:
    bool IsLeftOut(const ReadRow& row) const;

    std::string m_file;
    Source m_source;
    std::deque<ReadRow> m_ahead;                   // two at most
    std::optional<field::InertialSample> m_before; // of the row that was given last
    std::uint64_t m_rows = 0;
    std::uint64_t m_leftOut = 0;
    std::uint64_t m_firstLine = 0;
    double m_firstRate = 0.0; // [degrees/s]
};

} // namespace cli
