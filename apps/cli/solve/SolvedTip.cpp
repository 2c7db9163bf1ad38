// SPDX-License-Identifier: MIT
#include "apps/cli/solve/SolvedTip.h"

#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace {

constexpr double kSpacingPerHeight =
    0.15; // of the antenna height, the limit of CTiltPosition_Geometry

TiltPoint_Sensor Observation(const AntennaRow& row)
{
    TiltPoint_Sensor point;
    point.nSet = 1;
    point.strLabel = CString(row.name.c_str());
    point.dX = row.antenna.x;
    point.dY = row.antenna.y;
    point.dH = row.antenna.h;
    point.dIncline = row.incline.value_or(0.0);
    return point;
}

double PlanDistance(const AntennaRow& a, const AntennaRow& b)
{
    return std::hypot(a.antenna.x - b.antenna.x, a.antenna.y - b.antenna.y);
}

// Why AddPoint rejected the row.
std::string WhyRefused(const SolvedTip& solved, const AntennaRow& row,
                       CTiltPosition_Geometry& geometry)
{
    const SolveSetup& setup = solved.setup;
    const bool near =
        geometry.IsConform(Observation(row), setup.antennaHeight * kSpacingPerHeight) == 0;
    if (!near || row.incline.value_or(0.0) > setup.cutoff) {
        return fmt::format("incline {:.4g} degrees is above the cut-off of {:.4g}",
                           row.incline.value_or(0.0), setup.cutoff);
    }
    const AntennaRow* nearest = &solved.rows[solved.taken.front()];
    for (const std::size_t k : solved.taken)
        if (PlanDistance(row, solved.rows[k]) < PlanDistance(row, *nearest))
            nearest = &solved.rows[k];
    return fmt::format("too close to {1}: {0:.3f} m in plan", PlanDistance(row, *nearest),
                       nearest->name);
}

} // namespace

SolvedTip SolveTip(const SolveSetup& setup, std::vector<AntennaRow> rows,
                   const std::function<void(double)>& progress)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(setup.antennaHeight);
    geometry.SetCutoffInclineAngle(setup.cutoff);
    SolvedTip solved;
    solved.setup = setup;
    solved.rows = std::move(rows);
    std::vector<xyhCoord> antennas;
    for (std::size_t k = 0; k < solved.rows.size(); ++k) {
        AntennaRow& row = solved.rows[k];
        if (geometry.AddPoint(Observation(row)) == 1) {
            solved.taken.push_back(k);
            antennas.push_back(row.antenna);
        } else {
            row.refusal = WhyRefused(solved, row, geometry);
        }
    }
    geometry.SetProgressObserver([&](double fraction) {
        progress(fraction);
        return true;
    });
    geometry.Calculate(solved.searched, solved.state);
    solved.estimate = quality::EstimateTip(antennas, setup.antennaHeight, setup.errors);
    return solved;
}

} // namespace cli
