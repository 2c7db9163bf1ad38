// SPDX-License-Identifier: MIT
//
// What can go wrong with a calibration: conditions under which turns are simulated.
#pragma once

#include "simulation/Random.h"
#include "simulation/Turn.h"
#include "simulation/trials/FieldFaults.h"
#include <string_view>
#include <vector>

namespace study {

/// One pole, its surroundings and the two turns its operator makes.
struct Setting
{
    simulation::PoseSensor sensor;
    simulation::EarthField field;
    simulation::TurnPlan horizontal;
    simulation::TurnPlan vertical;
    bool screened = true; // by the sample filters, before the solver
    RecordingFaults faults{};
};

/// A fault of the operator, the field or the sensor, of random size.
struct Condition
{
    std::string_view name;
    void (*apply)(Setting&, simulation::Generator&);
};

/// Draws the operator's errors of both turns, in multiples of an ordinary operator's.
void Handle(Setting& setting, double clumsiness, simulation::Generator& random);

/// An ordinary calibration: iron of a screw's size, small errors of the operator.
Setting Ordinary(simulation::Generator& random);

/// All conditions; the first one adds nothing to an ordinary calibration.
const std::vector<Condition>& Conditions();

/// Poles and recordings unlike those of Conditions(): other fields and units, few samples, exact
/// turns, several revolutions. They check thresholds that were found elsewhere.
const std::vector<Condition>& Variations();

/// Faults of sensors, surroundings and logs, for an ordinary and for a careful operator; the first
/// two add none.
const std::vector<Condition>& FieldFaults();

} // namespace study
