// SPDX-License-Identifier: MIT
//
// Places all over the Earth, and where the tip of a pole lies there by another library's local frame.
#pragma once

#include "tests/field/tip/LeaningPole.h"

#include <GeographicLib/LocalCartesian.hpp>

#include <cmath>
#include <random>
#include <vector>

namespace tip_tests {

using field::Geodetic;

/// Distance between two points in the local frame of the first [m].
inline double Distance(const Geodetic& a, const Geodetic& b)
{
    const GeographicLib::LocalCartesian local(a.latitude, a.longitude, a.ellipsoidalHeight);
    double x = 0.0, y = 0.0, z = 0.0;
    local.Forward(b.latitude, b.longitude, b.ellipsoidalHeight, x, y, z);
    return std::hypot(x, y, z);
}

/// The tip by the local frame of the antenna.
inline Geodetic TrueTip(const Geodetic& antenna, const LeaningPole& pole)
{
    const GeographicLib::LocalCartesian local(antenna.latitude, antenna.longitude,
                                              antenna.ellipsoidalHeight);
    const Point3 up = pole.Up();
    Geodetic tip;
    local.Reverse(-kLength * up.y, -kLength * up.x, -kLength * up.z, tip.latitude, tip.longitude,
                  tip.ellipsoidalHeight);
    return tip;
}

/// Two hundred places below latitude 85: across the antimeridian, where minutes are just below a whole
/// degree, at the corners of well-known map systems, and anywhere.
inline std::vector<Geodetic> Places()
{
    std::vector<Geodetic> places;
    constexpr double kNearlySixty = 59.9999999 / 60.0;
    for (const double latitude : {-84.0, -33.0, 0.0, 12.0, 47.0, 69.0, 84.0}) {
        for (const double longitude : {179.99, -179.99, 179.9999999999, -180.0, 180.0}) {
            places.push_back({latitude + std::copysign(kNearlySixty, latitude), longitude, 30.0});
        }
        for (const double longitude : {-77.0, 0.0, 7.0, 19.0, 151.0})
            places.push_back({latitude, longitude + std::copysign(kNearlySixty, longitude), 800.0});
    }
    std::mt19937 random(20261122);
    std::uniform_real_distribution<double> latitude(-84.99, 84.99);
    std::uniform_real_distribution<double> longitude(-180.0, 180.0);
    std::uniform_real_distribution<double> height(-400.0, 6000.0);
    while (places.size() < 200) {
        Geodetic place;
        place.latitude = latitude(random);
        place.longitude = longitude(random);
        place.ellipsoidalHeight = height(random);
        places.push_back(place);
    }
    return places;
}

} // namespace tip_tests
