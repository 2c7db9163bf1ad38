// SPDX-License-Identifier: MIT
//
// What a run of `tiltpole measure` found, in words and as JSON. Memory does not grow with the log.
#pragma once

#include "apps/cli/Measurement.h"
#include "apps/cli/Statistics.h"
#include <array>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace cli {

class MeasureSummary
{
public:
    static constexpr std::size_t kMostNamed = 100; // skipped rows that are named one by one

    explicit MeasureSummary(MeasureSetup setup) : m_setup(std::move(setup)) {}

    void Add(const Measurement& measurement);

    /// A row left out.
    /// @return whether it is among those that are named
    bool Skip(const std::string& message);

    std::uint64_t Samples() const { return m_tilt.Count(); }
    std::uint64_t Skipped() const { return m_skipped; }
    const MeasureSetup& Setup() const { return m_setup; }
    const Percentiles& Tilts() const { return m_tilt; }
    Percentiles& PlanErrors() { return m_planError; }

    /// Several lines for people. At least one sample was added.
    std::string Text();

    /// The same for programs.
    nlohmann::ordered_json Json();

private:
    MeasureSetup m_setup;
    Percentiles m_tilt;          // degrees
    Percentiles m_reach;         // antenna to tip in the plane [m]
    std::array<Extent, 3> m_tip; // N, E, h [m]
    Percentiles m_planError;     // m
    Percentiles m_heightError;   // without sign [m]
    std::uint64_t m_still = 0;
    std::uint64_t m_interference = 0;
    std::uint64_t m_skipped = 0;
    std::vector<std::string> m_named;
};

} // namespace cli
