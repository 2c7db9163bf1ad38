// SPDX-License-Identifier: MIT
//
// A turn of the pole for the calibration of its magnetometers, as an operator makes it.
//
//   attitude(t) = Rz(start heading) * lean * spin(t) * slip * wobble(t)
//
//   spin    about the sensor's z axis (horizontal turn) or y axis (vertical turn)
//   lean    tips the axis of the turn in space: the operator's level error
//   slip    tips the sensor against the axis of the turn: the operator's axis error
//   wobble  a smooth random tremor about the two other axes
//
//     const Recording turn = SimulateTurn(sensor, field, {.axis = TurnAxis::Horizontal}, seed);
#pragma once

#include "simulation/Timeline.h"
#include "survey/TurnAxis.h"

#include <string>

namespace simulation {

using tiltpole::survey::TurnAxis;

/// The operator holds still for a while.
struct Stop
{
    double at = 0.0;      // turned so far [degrees]
    double seconds = 0.0; // [s]
};

/// The operator goes back a little, then on.
struct TurningBack
{
    double at = 0.0; // turned so far [degrees]
    double by = 0.0; // [degrees]
};

struct TurnPlan
{
    TurnAxis axis = TurnAxis::Horizontal;
    int samples = 500;           // taken, before losses
    double rate = 20.0;          // samples per second [Hz]
    double extent = 380.0;       // turned in all [degrees]; negative: the other way round
    double startHeading = 0.0;   // of the forward axis [degrees]
    double startSpin = 0.0;      // turned already when the recording starts [degrees]
    double levelError = 0.0;     // of the turn's axis in space [degrees]
    double levelDirection = 0.0; // of the leaning upper end, from the start heading [degrees];
                                 // a vertical turn's axis tips about the horizontal across it
    double axisError = 0.0;      // of the turn's axis on the pole [degrees]
    double axisDirection = 0.0;  // of that error, about the axis [degrees]
    double wobble = 0.0;         // standard deviation about each of the two other axes [degrees]
    double unevenness = 0.0;     // of the speed, as a share of it, in [0, 1)
    std::vector<Stop> stops{};
    std::vector<TurningBack> turningsBack{};
    Losses losses{};
    std::vector<Magnet> magnets{};
    double startOfDay = 36000.0; // time of day of the first sample [s]
};

/// One sentence on what makes a plan impossible; empty for a plan that can be carried out.
std::string ProblemOf(const TurnPlan& plan);

/// The samples of a turn. Horizontal and vertical turns of one seed have noise of their own.
/// @return an empty recording for a plan that cannot be carried out
Recording SimulateTurn(const PoseSensor& sensor, const EarthField& field, const TurnPlan& plan,
                       std::uint64_t seed);

} // namespace simulation
