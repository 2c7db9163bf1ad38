// SPDX-License-Identifier: MIT
//
// The summary of a run of `tiltpole measure`, as text and as JSON. Its memory use does not grow with
// the log.
#pragma once

#include "apps/cli/measure/Measurement.h"
#include "apps/tables/Statistics.h"
#include <array>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace cli {

class MeasureSummary
{
public:
    static constexpr std::size_t kMostNamed = 100; // skipped rows that are listed

    explicit MeasureSummary(MeasureSetup setup) : m_setup(std::move(setup)) {}

    void Add(const Measurement& measurement);

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
    MeasureSetup m_setup;
    tables::Percentiles m_tilt;          // degrees
    tables::Percentiles m_reach;         // antenna to tip in the plane [m]
    std::array<tables::Extent, 3> m_tip; // N, E, h [m]
    tables::Percentiles m_planError;     // m
    tables::Percentiles m_heightError;   // absolute [m]
    std::uint64_t m_still = 0;
    std::uint64_t m_interference = 0;
    std::uint64_t m_skipped = 0;
    std::vector<std::string> m_named;
};

} // namespace cli
