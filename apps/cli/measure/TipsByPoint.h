// SPDX-License-Identifier: MIT
//
// Means of tips, never of different places: of each named point of a log, or of a log, whose tips
// lie together and do not step from one place to another. Rows that follow each other with the same
// name are one point; a name that comes again later is another one. Memory grows with the number of
// points.
#pragma once

#include "apps/tables/Statistics.h"
#include "positioning/PoseSensorData.h"
#include <array>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// Tips one after the other; of many only means of 2, 4, 8 ... are kept.
class TipPlace
{
public:
    /// Tips of one place lie within so much, in N, E and h each [m].
    static constexpr double kOnePlace = 0.5;

    void Add(const xyhCoordinate& tip);

    /// N, E, h [m].
    const std::array<tables::Extent, 3>& Tips() const { return m_tips; }

    /// Whether the tips are those of one place.
    bool LiesTogether() const { return IsNarrow() && !Step(); }

    /// Why there is no mean; requires that they do not lie together.
    std::string Apart() const;

private:
    bool IsNarrow() const;
    std::optional<double> Step() const;

    std::array<tables::Extent, 3> m_tips;
    std::vector<xyhCoordinate> m_means; // from the first tip [m]
    xyhCoordinate m_first{};
    xyhCoordinate m_sum{};
    std::size_t m_block = 1; // tips of a mean
    std::size_t m_filled = 0;
};

class TipsByPoint
{
public:
    /// @param point  the name of the row; nullopt where the log does not name points
    void Add(const xyhCoordinate& tip, std::optional<std::string_view> point);

    /// Whether the log does not name points and its tips lie together.
    bool IsOnePlace() const;

    /// N, E, h of all tips.
    const std::array<tables::Extent, 3>& All() const { return m_all.Tips(); }

    /// "tip, mean" where there is one, else why there is none; a table where points are named.
    std::string Text() const;

    /// An object for each named point.
    nlohmann::ordered_json Json() const;

private:
    struct Place
    {
        std::string name;
        TipPlace tips;
    };

    TipPlace m_all;
    bool m_named = false;
    bool m_between = true; // the last row had no name
    std::vector<Place> m_places;
};

} // namespace cli
