// SPDX-License-Identifier: MIT
//
// Command line options shared by the kinds of `tiltpole simulate`: sensor, field, losses, magnets,
// and options with several numbers.
#pragma once

#include "apps/tables/Output.h"
#include "apps/tables/Ranges.h"
#include "simulation/TruthText.h"
#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// The form of an option with several numbers, and how many it takes.
struct NumberForm
{
    const char* text; // as the help page shows it
    std::size_t least;
    std::size_t most;
};

/// One for each number of an option; the last is also that of all further numbers.
using Ranges = std::vector<tables::Range>;

using UseNumbers = std::function<void(const std::vector<double>&)>;

/// An option of numbers within their ranges, separated by commas, which are passed to `use`.
CLI::Option* AddNumbers(CLI::App& command, const std::string& option, const NumberForm& form,
                        const Ranges& ranges, UseNumbers use, const std::string& description);

/// The same for a repeatable option of numbers separated by colons.
CLI::Option* AddRepeated(CLI::App& command, const std::string& option, const NumberForm& form,
                         const Ranges& ranges, UseNumbers use, const std::string& description);

/// An option with one number in the range; the help page shows the initial value of `target`.
CLI::Option* AddNumber(CLI::App& command, const std::string& option, double& target,
                       const tables::Range& range, const std::string& description);

/// An option with an integer from `low`, at least 0, to `high`.
CLI::Option* AddCount(CLI::App& command, const std::string& option, int& target, int low, int high,
                      const std::string& description);

/// An option of three numbers: x, y, h of a point, within their ranges.
CLI::Option* AddPoint(CLI::App& command, const std::string& option, simulation::Point3& target,
                      const std::string& description);

/// --start, --spacing, --relief, --pole of a walk or of occupations
template <class Plan>
void AddPointsAndPole(CLI::App& command, Plan& plan)
{
    using tables::simulated::kDistance;
    AddPoint(command, "--start", plan.start, "First tip: N (x), E (y), h in meters");
    AddNumber(command, "--spacing", plan.spacing, kDistance,
              "Distance between neighboring points, m");
    AddNumber(command, "--relief", plan.relief, kDistance, "Spread of the points' heights, m");
    AddNumber(command, "--pole", plan.poleLength, tables::kPoleLength,
              "Pole length, antenna to tip, m");
}

/// --start-time hh:mm:ss
void AddStartTime(CLI::App& command, double& secondOfDay);

/// --white-plan, --white-height, --slow-plan, --slow-height, --correlation
void AddAntennaNoise(CLI::App& command, simulation::AntennaNoise& noise);

/// The same noise without any amplitude.
simulation::AntennaNoise Silent(const simulation::AntennaNoise& noise);

/// --drop, --gap
void AddLosses(CLI::App& command, simulation::Losses& losses);

/// --magnet and the options that go with it
class MagnetOptions
{
public:
    void AddTo(CLI::App& command);
    std::vector<simulation::Magnet> Magnets() const;

private:
    std::vector<simulation::Magnet> m_magnets;
    double m_shareAtB = simulation::Magnet{}.shareAtB;
    bool m_onPole = false;
};

/// Seed, sensor and field. The default is a usual sensor: some iron nearby, some noise.
class SceneOptions
{
public:
    SceneOptions();
    /// Another sensor by default.
    explicit SceneOptions(const simulation::PoseSensor& sensor);
    void AddTo(CLI::App& command);
    simulation::Scene Result() const;

    /// Adds the parameter file that corrects the simulated iron, if --config was given.
    /// @throws InputError when it cannot be written, or when no eight values correct the iron
    void WriteParameters(tables::OutputFiles& files) const;
    /// The name given by --config; empty without it.
    const std::string& ParameterFile() const { return m_config; }

    /// An option with one number, which --clean sets to 0 unless the option is given.
    void AddNoise(CLI::App& command, const std::string& option, double& target,
                  const tables::Range& range, const std::string& description);

private:
    void AddSensor(CLI::App& command);
    void AddInertial(CLI::App& command);
    void AddMagnetometer(CLI::App& command, char name, simulation::MagnetometerModel& magnetometer);
    void AddField(CLI::App& command);

    simulation::Scene m_scene;
    std::string m_config;
    bool m_clean = false;
    std::vector<std::function<void()>> m_zeroUnlessGiven; // what --clean removes
};

/// Options added from here on appear under this heading of the help page.
void UnderHeading(CLI::App& command, const char* heading);

/// --seed
void AddSeed(CLI::App& command, std::uint64_t& seed);

/// @throws InputError with `problem` as its text unless that is empty
void RefuseProblem(const std::string& problem);

} // namespace cli
