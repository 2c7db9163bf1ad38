// SPDX-License-Identifier: MIT
/// @file
/// What a receiver says about one moment, in the terms that everything of a live pole shares.
///
///     latitude, longitude   degrees, north and east positive, WGS 84 or what the receiver's base uses
///     heights               above the ellipsoid where nothing else is said [m]
///     plane components      true north, east, up [m]
///     Instant               the host's steady clock since any start of its own; never the time of day
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace field {

/// Time of the host's steady clock.
using Instant = std::chrono::nanoseconds;

/// A place on or near the ellipsoid.
struct Geodetic
{
    double latitude = 0.0;          ///< [degrees], -90 to 90
    double longitude = 0.0;         ///< [degrees], -180 to 180
    double ellipsoidalHeight = 0.0; ///< [m]
};

/// Covariance of a position: n true north, e east, h up [m²].
struct Covariance3
{
    double nn = 0.0;
    double ne = 0.0;
    double ee = 0.0;
    double nh = 0.0;
    double eh = 0.0;
    double hh = 0.0;
};

/// Quality of a position, numbered as in GGA.
enum class Fix {
    Invalid = 0,
    Single = 1,
    Differential = 2,
    Fixed = 4,
    Float = 5,
    Estimated = 6,
};

/// Fields of GGA that are passed on character by character.
struct EpochText
{
    std::string satellites;
    std::string hdop;
    std::string geoidSeparation;
    std::string correctionAge;
    std::string station;
};

/// One epoch: what sentences of one time say together.
struct Epoch
{
    std::string utc;                           ///< hhmmss.ss as received
    std::optional<std::chrono::sys_days> date; ///< UTC, by RMC or ZDA; none: neither came
    Geodetic antenna;                          ///< of the antenna's phase center; NaN without a fix
    double geoidSeparation = 0.0;              ///< geoid above the ellipsoid [m]; NaN without a fix
    Covariance3 sigma;                         ///< of the antenna; resolution of the text included
    bool sigmaAssumed = false;                 ///< no GST of this time: by HDOP and quality
    Fix fix = Fix::Invalid;
    int satellites = 0;
    double hdop = 0.0;
    std::optional<double> correctionAge; ///< [s]
    std::string station;                 ///< of the reference station
    std::optional<double> speed;         ///< over ground [m/s]
    std::optional<double> course;        ///< over ground, from true north [degrees]
    int minuteDecimals = 0;              ///< of the received latitude
    EpochText text;
    std::string lines; ///< the sentences it was made of, each with CR LF
    std::string gsa;   ///< GSA to be passed on, each with CR LF; once a second at most
    Instant arrival{}; ///< of its last byte
    Instant moment{};  ///< when it was true; set by the bridge
};

} // namespace field

#if __cplusplus < 202002L
#error "tiltpole needs C++20 or later: -std=c++20"
#endif
