// SPDX-License-Identifier: MIT
//
// The gallery as a program with a window: its example log, its views, its keys.
#pragma once

#include "apps/gallery/Frame.h"

#include <string>
#include <vector>

namespace gallery {

/// The recording that comes with the program, at its place relative to the program's own.
std::string ExampleLog();

/// Lets plots keep their views in the folder for the state of programs between runs. False where
/// that folder cannot be made: views are then not kept.
bool KeepViews();

/// How much larger than usual the window is on this screen: as many times as a unit of the toolkit
/// has pixels, and no larger than the screen.
double ScaleOfScreen();

/// Passes the keys of the window on to the frame as long as it exists.
void ListenToKeys(Frame& frame);

/// Shows the window until it is closed; returns the exit code.
/// @throws tables::InputError without a windowing system
int RunWindow(framework::Application& application, std::vector<ReplaySample> replay);

} // namespace gallery
