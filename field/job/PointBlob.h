// SPDX-License-Identifier: MIT
//
// A 3D point as a GeoPackage keeps it (OGC 12-128r17, 2.1.3): the header "GP", version, flags,
// srs_id, then ISO WKB.
#pragma once

#include "field/Epoch.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tiltpole::field {

using ::field::Geodetic;

inline constexpr std::int32_t kGeodetic3D = 4979; // EPSG: WGS 84, latitude, longitude, height

/// x is the longitude and y the latitude, whatever the axis order of the system is.
std::string PointBlob(const Geodetic& point);

/// The point of a blob in either byte order, with or without an envelope.
/// @return nothing for another geometry, an empty one, or one without a height
std::optional<Geodetic> PointOf(std::string_view blob);

} // namespace tiltpole::field
