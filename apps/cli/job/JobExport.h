// SPDX-License-Identifier: MIT
//
// The points of a job as a table or as GeoJSON.
#pragma once

#include "apps/cli/job/JobPoints.h"
#include "apps/cli/job/Projection.h"
#include <string>
#include <vector>

namespace cli {

enum class ExportFormat {
    Pnezd,   // name, northing, easting, height, code; no header
    Penzd,   // easting before northing
    Csv,     // with a header and everything that is known of a point
    GeoJson, // RFC 7946: WGS 84, height above the ellipsoid
};

enum class ExportHeight { Ellipsoidal, Received };

struct ExportChoice
{
    ExportFormat format = ExportFormat::Csv;
    ExportHeight height = ExportHeight::Ellipsoidal;
};

/// @param projection  none: latitude and longitude; the formats pnezd and penzd need one
/// @throws InputError where a point has no place in the projection
std::string ExportText(const std::vector<NamedPoint>& points, const ExportChoice& choice,
                       Projection* projection);

} // namespace cli
