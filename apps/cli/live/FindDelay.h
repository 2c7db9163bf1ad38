// SPDX-License-Identifier: MIT
//
// tiltpole live --find-delay: how much later the receiver tells of a moment than the pose sensor.
#pragma once

#include "apps/cli/live/LiveOptions.h"
#include "apps/live/Session.h"
#include "field/Delay.h"

namespace cli {

/// "delay 124 ms, sd 6 (rms 14 mm; 114 mm without); pole 1.998 m as set; heading offset -0.9 deg,
/// not applied", with a line end.
std::string DelayText(const field::DelayResult& found, const field::Setup& setup);

int FindDelayInRecording(const LiveOptions& options);

/// Looks for as long as the options say.
int FindDelayLive(live::SessionSetup& setup, const LiveOptions& options);

} // namespace cli
