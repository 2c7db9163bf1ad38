// SPDX-License-Identifier: MIT
/// @file
/// The direction of grid north in a projected coordinate reference system, for showing and
/// exporting bearings. Tips do not need it. In the target tiltpole::grid, where PROJ is installed.
///
///     const auto grid = field::GridNorth::Of("EPSG:23700");
///     if (grid) bearing = trueAzimuth - grid->Convergence(47.5, 19.05);
///
///     convergence   azimuth of grid north from true north [degrees], positive where it lies east of true;
///                   grid bearing = true azimuth − convergence
///
/// By differencing two transformed points on the meridian, 22 m apart: agrees with closed forms to
/// 1e-7 degrees (GridNorth.AgreesWithTheSeriesOfUtm). Not by PROJ's factors, which PROJ 9.1 gives
/// wrongly for systems whose first axis is the northing. Derivation: docs/live-formulas.md, "Grid
/// north".
#pragma once

#include "framework/core/Export.h"

#include <memory>
#include <optional>
#include <string>

namespace field {

/// One coordinate reference system. One thread at a time.
class TILTPOLE_API GridNorth
{
public:
    /// @param name  as PROJ reads it: "EPSG:23700", PROJ strings with +type=crs, WKT. Some 50 ms
    /// @return nothing where PROJ knows no such system, or it is not projected with one axis to north or
    ///         south and one to east or west
    static std::optional<GridNorth> Of(const std::string& name);

    GridNorth(GridNorth&&) noexcept;
    GridNorth& operator=(GridNorth&&) noexcept;
    ~GridNorth();

    /// @param latitude, longitude  WGS 84 [degrees]
    /// @return in [-180, 180] [degrees]; NaN beyond latitude ±89.9 and where the system has no coordinates
    double Convergence(double latitude, double longitude) const;

private:
    struct Projection;
    explicit GridNorth(std::unique_ptr<Projection> projection);

    std::unique_ptr<Projection> m_projection;
};

} // namespace field
