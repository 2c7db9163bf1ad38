// SPDX-License-Identifier: MIT
//
// The sentences of one epoch, for apps that read NMEA 0183: GGA, RMC, GST, $PTLTS, $PTLTA, and GSA
// as it came. Nothing that is not written here goes out.
//
//   GGA 2-5, RMC     the tip, seven decimals of a minute
//   GGA 9            orthometric height of the tip + appHeight; GGA 11 as received, digit by digit
//   GST              the tip's ellipse from true north and its sigmas, with every epoch
//   $PTLTS,1,time,state,reason,lean,azimuth true,heading true,declination,antenna speed,clients
//   $PTLTA,1,time,latitude,N,longitude,E,height,L      the antenna; height above the geoid as received
//
// Blocked, while the tip is not known (or with `enforce` at every Block), depends on the profile:
//
//   Strict   GGA with quality 0 and without coordinates and heights, RMC V; no GSA
//   QField   the point under the antenna by the known lean, quality 6. Plan sigma of an axis
//            L·sin(lean)/sqrt(2) together with the antenna's, and at least 0.3 m, so that an app's limit on
//            accuracy refuses it; without a pose a lean of 30 degrees, and the height of a level pole
//
// GST has the sigma of the QField form in both. The antenna's coordinates stand in GGA and RMC in
// that form alone, never with another quality. Without a fix, or while the antenna's own position
// is doubted (Jump), both profiles are as Strict, with a sigma of 100 m.
#pragma once

#include "field/Bridge.h"

#include <limits>
#include <optional>
#include <string>

namespace tiltpole::field {

/// What is known of the pole without a tip.
struct PoleState
{
    double lean = std::numeric_limits<double>::quiet_NaN();        // [degrees]
    double declination = std::numeric_limits<double>::quiet_NaN(); // [degrees]
};

inline constexpr double kLeastBlockedSigma = 0.3; // in the plan, each axis [m]
inline constexpr double kStandsBelow = 0.2;       // speed without a course [m/s]
inline constexpr double kAssumedLean = 30.0;      // without a pose [degrees]

/// Whether the tip's coordinates go out: there is one, finite and with a fix, and no Block under
/// `enforce`.
bool IsSent(const std::optional<::field::Tip>& tip, const ::field::Verdict& verdict, bool enforce);

/// All sentences of an epoch, each with CR LF.
/// @param tip      none, too, while a reason hides it
/// @param pole     what is known without the tip
/// @param clients  that are connected
std::string WriteEpoch(const ::field::Epoch& epoch, const std::optional<::field::Tip>& tip,
                       const ::field::Verdict& verdict, const ::field::Setup& setup,
                       const PoleState& pole, int clients);

} // namespace tiltpole::field
