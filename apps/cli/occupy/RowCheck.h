// SPDX-License-Identifier: MIT
//
// What the rows of an occupation, or of a whole log, show to be wrong with units and columns,
// before anything is estimated from them. Each problem is one sentence; nullopt where there is
// none.
#pragma once

#include "apps/cli/occupy/LogRow.h"
#include "apps/tables/Statistics.h"
#include <array>
#include <string>
#include <vector>

namespace cli {

class RowCheck
{
public:
    void Clear() { *this = {}; }
    void Add(const LogRow& row);

    /// Whether more than one in a hundred rows is not later than the one before.
    bool RunsBack() const { return m_late > 0.01 * m_samples; }

    /// Rows that are not 2 ms to 0.25 s apart: by the median of the first thousand.
    std::optional<std::string> TimeProblem() const;

    /// Accelerations that are all 0, on the average far from 1 g, or point down along z.
    std::optional<std::string> AccelerationProblem() const;

    /// Heights that are all alike though the antenna moves, or all 0.
    std::optional<std::string> HeightProblem() const;

    /// Positions that lie further apart than one pole can bring the antenna.
    /// @param poleLength  [m]
    std::optional<std::string> ExtentProblem(double poleLength) const;

    /// Gyros that hardly turn though the antenna moves.
    std::optional<std::string> RateProblem() const;

    bool HasEpochs() const { return m_antenna[0].Count() > 0; }

    /// How far the antenna moves in N or E, whichever is more [m].
    double Moves() const;

private:
    std::vector<double> m_intervals; // of the first rows [s]
    std::optional<double> m_last;    // [s]
    double m_samples = 0.0;
    double m_late = 0.0;   // rows
    double m_length = 0.0; // sum of the lengths of the accelerations [g]
    std::array<double, 3> m_force{};
    double m_fastest = 0.0;                  // [degrees/s]
    std::array<tables::Extent, 3> m_antenna; // N, E, h [m]
};

} // namespace cli
