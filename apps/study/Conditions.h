// What can go wrong with a calibration: conditions under which turns are simulated.
#pragma once

#include "apps/simulation/Random.h"
#include "apps/simulation/Turn.h"
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
};

/// A fault of the operator, the field or the sensor, of random size.
struct Condition
{
    std::string_view name;
    void (*apply)(Setting&, simulation::Generator&);
};

/// An ordinary calibration: iron of a screw's size, small errors of the operator.
Setting Ordinary(simulation::Generator& random);

/// All conditions; the first one adds nothing to an ordinary calibration.
const std::vector<Condition>& Conditions();

} // namespace study
