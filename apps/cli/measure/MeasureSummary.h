// SPDX-License-Identifier: MIT
//
// The summary of a run of `tiltpole measure`, as text and as JSON. Its memory use does not grow
// with the log.
#pragma once

#include "apps/cli/measure/Measurement.h"
#include "apps/cli/measure/TipsByPoint.h"
#include "apps/tables/Statistics.h"
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace cli {

class MeasureSummary
{
public:
    static constexpr std::size_t kMostNamed = 100; // skipped rows that are listed

    explicit MeasureSummary(MeasureSetup setup) : m_setup(std::move(setup)) {}

    /// Which columns were read under other names, as DescribeColumns() says it.
    void SetColumns(std::string columns) { m_columns = std::move(columns); }

    /// @param point  the name of the row; nullopt where the log does not name points
    void Add(const Measurement& measurement, std::optional<std::string_view> point);

    /// Counts a row without an antenna position.
    void PassWithoutAntenna() { ++m_withoutAntenna; }
    std::uint64_t WithoutAntenna() const { return m_withoutAntenna; }

    /// Counts a skipped row.
    /// @return whether it is among those that are listed
    bool Skip(const std::string& message);

    std::uint64_t Samples() const { return m_tilt.Count(); }
    std::uint64_t Skipped() const { return m_skipped; }
    const MeasureSetup& Setup() const { return m_setup; }
    const tables::Percentiles& Tilts() const { return m_tilt; }
    tables::Percentiles& PlanErrors() { return m_planError; }

    /// Several lines of text. Requires at least one sample.
    std::string Text();

    /// The same as JSON.
    nlohmann::ordered_json Json();

private:
    /// Why the heights of the tips are wrong, where the antenna's are no heights.
    std::optional<std::string> HeightProblem() const;

    MeasureSetup m_setup;
    std::string m_columns;
    tables::Percentiles m_tilt;  // degrees
    tables::Percentiles m_reach; // antenna to tip in the plane [m]
    TipsByPoint m_tips;
    tables::Extent m_antennaHeight;    // m
    tables::Percentiles m_planError;   // m
    tables::Percentiles m_heightError; // absolute [m]
    std::uint64_t m_still = 0;
    std::uint64_t m_interference = 0;
    std::uint64_t m_withoutAntenna = 0;
    std::uint64_t m_skipped = 0;
    std::vector<std::string> m_named;
};

} // namespace cli
