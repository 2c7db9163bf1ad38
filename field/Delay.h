// SPDX-License-Identifier: MIT
/// @file
/// How much later a receiver tells of a moment than the pose sensor does, found by rocking the pole
/// about its tip on a fixed mark for 20 s.
///
///     field::PoseRing poses(std::chrono::seconds(60));   // with moments
///     std::vector<field::Epoch> epochs;                  // with moments, no delay taken off
///     const field::DelayResult found = field::FindDelay(epochs, poses, setup);
///     if (found.outcome == field::DelayOutcome::Found) Use(found.delay, found.sigma);
///
/// At each delay d the tip t, the heading offset o and the length L come from least squares,
///
///     antenna(i) = t + L·R(o)·u(moment(i) − d)
///
/// with u the unit vector up the pole by the interpolated pose and R(o) a turn about the vertical;
/// the delay is the one with the least sum of squares. A length or an offset that is off shows
/// here, too.
#pragma once

#include "field/Bridge.h"
#include "field/pose/PoseRing.h"

#include <span>
#include <string_view>

namespace field {

/// Delays that are searched [s].
struct DelayRange
{
    double earliest = -0.2;
    double latest = 0.6;
};

enum class DelayOutcome {
    Found,
    TooFewEpochs,    ///< fewer than 15 fixed epochs that have poses around the delay
    TooShort,        ///< they span less than 5 s
    TooLittleMotion, ///< the antenna moved too little or too slowly: the delay's sd is above 50 ms
    NotOneTip, ///< the residuals exceed 100 mm (rms): the tip slipped, or the pose is not its own
    AtTheEnd,  ///< the least sum lies at the end of the range
};

/// The outcome in words for the surveyor.
TILTPOLE_API std::string_view TextOf(DelayOutcome outcome);

/// All values but the outcome and the number of epochs are 0 where there are too few epochs.
struct DelayResult
{
    DelayOutcome outcome = DelayOutcome::TooFewEpochs;
    double delay = 0.0;         ///< receiver later than pose [s]
    double sigma = 0.0;         ///< of the delay, correlation of the residuals allowed for [s]
    double headingOffset = 0.0; ///< true minus formed heading [degrees]
    double length = 0.0;        ///< tip to phase center [m]
    double rms = 0.0;           ///< of the residuals in space [m]
    double rmsWithout = 0.0;    ///< the same at no delay [m]
    int epochs = 0;             ///< used
};

/// @param epochs       in order, with moments from which no delay was taken off; only fixed ones are used
/// @param poses        that reach over all of them
/// @param setup        its sensor type, calibration and NorthSource form the heading, its pole is where
///                     the search for the length begins; the delay is not used
/// @param declination  at the place [degrees]; what is left of it is found as heading offset
TILTPOLE_API DelayResult FindDelay(std::span<const Epoch> epochs, const PoseRing& poses,
                                   const Setup& setup, double declination = 0.0,
                                   const DelayRange& range = {});

} // namespace field
