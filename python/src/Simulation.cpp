// SPDX-License-Identifier: MIT
#include "python/src/Arrays.h"
#include "python/src/Bindings.h"
#include "simulation/Occupation.h"
#include "simulation/Turn.h"

#include <pybind11/stl.h>

#include <array>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace tiltpole::python {

namespace {

using simulation::OccupationMotion;
using simulation::OccupationPlan;
using simulation::OccupationRow;
using simulation::Occupations;
using simulation::TurnAxis;
using simulation::TurnPlan;
using Triple = std::tuple<double, double, double>;

constexpr const char* kOccupationsDoc =
    R"(Simulated occupations: on each point the tip stands and the pole moves.

seed      the same seed gives the same numbers on every platform
points    how many
motion    "lean-in", "opposite", "rock", "hold" or "free"
seconds   on each point; None: what is usual for the motion
lean_to   largest lean [degrees]; None: what is usual
pole_length  [m]
exact     without errors of sensors and antenna

Returns a list of OccupiedPoint, whose first six fields are those that `occupy` takes; tip is true.
Raises ValueError for a plan that cannot be carried out.)";

constexpr const char* kTurnsDoc =
    R"(Simulated turns of a pole for a calibration, horizontal and vertical.

seed         the same seed gives the same numbers on every platform
hard_iron_a, hard_iron_b  what the magnetometers read without a field [counts]
noise        standard deviation of a reading [counts]
level_error  of the turns' axes in space [degrees]
axis_error   of the turns' axes on the pole [degrees]
wobble       standard deviation [degrees]

Returns (horizontal, vertical), each (n, 14) as `calibrate` takes them.
Raises ValueError for a plan that cannot be carried out.)";

OccupationMotion MotionNamed(const std::string& name)
{
    constexpr std::array kMotions{OccupationMotion::LeanIn, OccupationMotion::OppositeLeans,
                                  OccupationMotion::Rock, OccupationMotion::Hold,
                                  OccupationMotion::Free};
    for (const OccupationMotion motion : kMotions)
        if (name == NameOf(motion)) return motion;
    throw py::value_error("there is no motion '" + name + "'");
}

void Append(std::vector<double>& to, double x, double y, double z)
{
    to.insert(to.end(), {x, y, z});
}

Doubles ColumnOf(const std::vector<double>& values)
{
    return Doubles(static_cast<py::ssize_t>(values.size()), values.data());
}

Doubles TableOf(const std::vector<double>& values, std::size_t columns)
{
    const auto width = static_cast<py::ssize_t>(columns);
    return Doubles({static_cast<py::ssize_t>(values.size()) / width, width}, values.data());
}

// What one point shows, column by column.
struct Columns
{
    std::vector<double> seconds, rates, accelerations, magnetic, epochSeconds, antennas;

    void Add(const OccupationRow& row)
    {
        const PoseSensorData& sample = row.sample;
        seconds.push_back(row.truth.pose.seconds);
        Append(rates, sample.dGyro_x, sample.dGyro_y, sample.dGyro_z);
        Append(accelerations, sample.dAcc_x, sample.dAcc_y, sample.dAcc_z);
        Append(magnetic, sample.dMag_x, sample.dMag_y, sample.dMag_z);
        if (!row.antenna) return;
        epochSeconds.push_back(row.truth.pose.seconds);
        Append(antennas, row.antenna->x, row.antenna->y, row.antenna->z);
    }
};

py::list SimulateOccupied(std::uint64_t seed, int points, const std::string& motion,
                          const std::optional<double>& seconds, const std::optional<double>& leanTo,
                          double poleLength, bool exact)
{
    OccupationPlan plan;
    plan.points = points;
    plan.poleLength = poleLength;
    plan.motion = UsualMotion(MotionNamed(motion));
    if (seconds) plan.motion.duration = *seconds;
    if (leanTo) plan.motion.leanTo = *leanTo;
    simulation::PoseSensor sensor = simulation::CalibratedSensor();
    if (exact) {
        sensor = {};
        plan.spread = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
        plan.noise = {0.0, 0.0};
    }
    const std::string problem = ProblemOf(plan);
    if (!problem.empty()) throw py::value_error(problem);

    std::vector<Columns> columns;
    Occupations log;
    {
        const py::gil_scoped_release release;
        log = SimulateOccupations(sensor, {}, plan, seed);
        columns.resize(log.points.size());
        for (const OccupationRow& row : log.rows)
            columns[static_cast<std::size_t>(row.point - 1)].Add(row);
    }
    const py::object type = py::module_::import("tiltpole._tiltpole").attr("OccupiedPoint");
    py::list result;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Columns& c = columns[i];
        const auto& tip = log.points[i].tip;
        result.append(type(ColumnOf(c.seconds), TableOf(c.rates, 3), TableOf(c.accelerations, 3),
                           TableOf(c.magnetic, 3), ColumnOf(c.epochSeconds), TableOf(c.antennas, 3),
                           ColumnOf({tip.x, tip.y, tip.z})));
    }
    return result;
}

Doubles TurnOf(const simulation::PoseSensor& sensor, const TurnPlan& plan, std::uint64_t seed)
{
    const std::string problem = ProblemOf(plan);
    if (!problem.empty()) throw py::value_error(problem);
    std::vector<double> table;
    for (const PoseSensorData& s : SimulateTurn(sensor, {}, plan, seed).samples) {
        table.insert(table.end(), {s.dPitch, s.dRoll});
        Append(table, s.dMag_x, s.dMag_y, s.dMag_z);
        Append(table, s.dMag_x_2, s.dMag_y_2, s.dMag_z_2);
        Append(table, s.dGyro_x, s.dGyro_y, s.dGyro_z);
        Append(table, s.dAcc_x, s.dAcc_y, s.dAcc_z);
    }
    return TableOf(table, kInertialColumns);
}

py::tuple SimulateBothTurns(std::uint64_t seed, const Triple& hardA, const Triple& hardB,
                            double noise, double levelError, double axisError, double wobble)
{
    simulation::PoseSensor sensor;
    sensor.a.hardIron = {std::get<0>(hardA), std::get<1>(hardA), std::get<2>(hardA)};
    sensor.b.hardIron = {std::get<0>(hardB), std::get<1>(hardB), std::get<2>(hardB)};
    sensor.a.noise = noise;
    sensor.b.noise = noise;
    TurnPlan plan;
    plan.levelError = levelError;
    plan.axisError = axisError;
    plan.wobble = wobble;
    const Doubles horizontal = TurnOf(sensor, plan, seed);
    plan.axis = TurnAxis::Vertical;
    return py::make_tuple(horizontal, TurnOf(sensor, plan, seed));
}

} // namespace

void AddSimulation(py::module_& module)
{
    NewNamedTuple(module, "OccupiedPoint",
                  "A simulated occupation: what `occupy` takes, and the true tip.",
                  {
                      {"seconds",       "Times of the samples, (n,) [s]."                },
                      {"rates",         "About the sensor's x, y, z, (n, 3) [degrees/s]."},
                      {"accelerations", "Specific force, (n, 3) [g]."                    },
                      {"magnetic",      "Readings of magnetometer A, (n, 3) [counts]."   },
                      {"epoch_seconds", "Times of the antenna positions, (m,) [s]."      },
                      {"antennas",      "N, E, h, (m, 3) [m]."                           },
                      {"tip",           "The true N, E, h, (3,) [m]."                    },
    });
    module.def("simulate_occupations", &SimulateOccupied, py::arg("seed"), py::kw_only(),
               py::arg("points") = 8, py::arg("motion") = "lean-in",
               py::arg("seconds") = py::none(), py::arg("lean_to") = py::none(),
               py::arg("pole_length") = 2.0, py::arg("exact") = false, kOccupationsDoc);
    module.def("simulate_turns", &SimulateBothTurns, py::arg("seed"), py::kw_only(),
               py::arg("hard_iron_a") = Triple{45.0, -30.0, 20.0},
               py::arg("hard_iron_b") = Triple{-20.0, 40.0, 15.0}, py::arg("noise") = 1.0,
               py::arg("level_error") = 0.0, py::arg("axis_error") = 0.0, py::arg("wobble") = 0.0,
               kTurnsDoc);
}

} // namespace tiltpole::python
