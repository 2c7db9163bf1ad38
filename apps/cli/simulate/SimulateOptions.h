// SPDX-License-Identifier: MIT
//
// Command line options shared by the kinds of `tiltpole simulate`: sensor, field, losses, magnets,
// and options with several numbers.
#pragma once

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

/// The numbers of `1,2,3` or `1:2:3`.
/// @throws CLI::ValidationError naming the option unless all are finite and as many as `form` allows
std::vector<double> NumbersIn(const std::string& text, char separator, const NumberForm& form,
                              const std::string& option);

using UseNumbers = std::function<void(const std::vector<double>&)>;

/// An option of numbers separated by commas, which are passed to `use`.
CLI::Option* AddNumbers(CLI::App& command, const std::string& option, const NumberForm& form,
                        UseNumbers use, const std::string& description);

/// A repeatable option of numbers separated by colons.
CLI::Option* AddRepeated(CLI::App& command, const std::string& option, const NumberForm& form,
                         UseNumbers use, const std::string& description);

/// An option with one finite number; the help page shows the initial value of `target`.
CLI::Option* AddNumber(CLI::App& command, const std::string& option, double& target,
                       const std::string& description);

/// The same for a number that is not negative.
CLI::Option* AddAmount(CLI::App& command, const std::string& option, double& target,
                       const std::string& description);

/// An option of three numbers: x, y, h of a point.
CLI::Option* AddPoint(CLI::App& command, const std::string& option, simulation::Point3& target,
                      const std::string& description);

/// --start-time hh:mm:ss
void AddStartTime(CLI::App& command, double& secondOfDay);

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
    void AddTo(CLI::App& command);
    simulation::Scene Result() const;

    /// Writes the parameter file that corrects the simulated iron, if --config was given.
    /// @throws InputError when it cannot be written, or when no eight values correct the iron
    void WriteParameters() const;

private:
    void AddSensor(CLI::App& command);
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
