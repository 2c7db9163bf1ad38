// SPDX-License-Identifier: MIT
//
// How uncertain an antenna is, by what its receiver says.
#pragma once

#include "field/Epoch.h"
#include "field/nmea/ReceiverSentences.h"

#include <optional>

namespace tiltpole::field {

/// Each axis without a fix [m].
inline constexpr double kNoFixSigma = 100.0;

/// Covariance of the antenna:
///
///   with GST   its latitude, longitude and height; ne = (a² − b²)·sin o·cos o by its ellipse of axes a, b
///              and orientation o, held to the range that keeps the matrix positive
///   without    plan HDOP·0.012 m (quality 4), 0.4 (5), 0.8 (2), 3 (1), 10 (others), height 1.8 times that;
///              HDOP 5 where there is none
///   added      q²/12 for text of fewer than six decimals of a minute, three of a meter; q: one unit of the
///              last digit
::field::Covariance3 SigmaOf(const Gga& gga, const std::optional<Gst>& gst);

} // namespace tiltpole::field
