// SPDX-License-Identifier: MIT
#include "apps/cli/simulate/SimulateOptions.h"

#include "apps/cli/OptionChecks.h"
#include "apps/cli/ParameterOutput.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Numbers.h"
#include "positioning/InclineSensor_Position.h"
#include <algorithm>
#include <fmt/format.h>
#include <limits>

namespace cli {

namespace {

using simulation::Magnet;
using simulation::MagnetometerModel;
using simulation::Matrix;
using simulation::Point3;

// Iron the size of a screw: some tens of counts, a few percent, and slightly skewed axes. Lower
// triangular, so that a calibration can correct it completely.
simulation::PoseSensor UsualSensor()
{
    simulation::PoseSensor sensor;
    sensor.a = {
        {{Point3{1.0, 0.0, 0.0}, {0.03, 0.96, 0.0}, {-0.02, 0.04, 1.05}}},
        { 45.0, -30.0, 20.0},
        1.0
    };
    sensor.b = {
        {{Point3{1.0, 0.0, 0.0}, {-0.02, 1.03, 0.0}, {0.03, -0.01, 0.97}}},
        { -25.0, 35.0, -15.0},
        1.0
    };
    sensor.tiltNoise = 0.05;
    sensor.gyroNoise = 0.1;
    sensor.accelerationNoise = 0.002;
    return sensor;
}

namespace in = tables::simulated;

constexpr tables::Range kClock{0.0, 60.0, ""};

char Upper(char letter)
{
    return letter == 'a' ? 'A' : 'B';
}

std::string RowsOf(const Matrix& m)
{
    const auto& [p, q, r] = m.rows;
    return fmt::format("{},{},{},{},{},{},{},{},{}", p.x, p.y, p.z, q.x, q.y, q.z, r.x, r.y, r.z);
}

Point3 VectorFrom(const std::vector<double>& numbers)
{
    return {numbers[0], numbers[1], numbers[2]};
}

// Three numbers, one for each of the sensor's axes.
void AddVector(CLI::App& command, const char* option, Point3& target, const tables::Range& range,
               const char* description)
{
    AddNumbers(
        command, option, {"X,Y,Z", 3, 3}, {range},
        [&target](const std::vector<double>& n) { target = VectorFrom(n); },
        fmt::format("{} [{},{},{}]", description, target.x, target.y, target.z));
}

// The numbers of `1,2,3` or `1:2:3`.
std::vector<double> NumbersIn(const std::string& text, char separator, const NumberForm& form,
                              const std::string& option)
{
    std::vector<double> numbers;
    const std::string_view view = text;
    for (std::size_t begin = 0; begin <= view.size();) {
        const std::size_t end = std::min(view.find(separator, begin), view.size());
        const std::string_view part = view.substr(begin, end - begin);
        const auto number = tables::ParseNumber(part);
        if (!number)
            throw CLI::ValidationError(option, fmt::format("'{}' is not a finite number", part));
        numbers.push_back(*number);
        begin = end + 1;
    }
    if (numbers.size() < form.least || numbers.size() > form.most)
        throw CLI::ValidationError(option, fmt::format("takes {}, not '{}'", form.text, text));
    return numbers;
}

// The same, within their ranges.
std::vector<double> NumbersWithin(const Ranges& ranges, const std::string& text, char separator,
                                  const NumberForm& form, const std::string& option)
{
    std::vector<double> numbers = NumbersIn(text, separator, form, option);
    for (std::size_t k = 0; k < numbers.size(); ++k) {
        const tables::Range& range = ranges[std::min(k, ranges.size() - 1)];
        const std::string problem = tables::OutsideOf(range, numbers[k]);
        if (problem.empty()) continue;
        throw CLI::ValidationError(
            option, form.most == 1 ? problem : fmt::format("number {} {}", k + 1, problem));
    }
    return numbers;
}

} // namespace

CLI::Option* AddNumbers(CLI::App& command, const std::string& option, const NumberForm& form,
                        const Ranges& ranges, UseNumbers use, const std::string& description)
{
    const auto take = [=, use = std::move(use)](const std::string& text) {
        use(NumbersWithin(ranges, text, ',', form, option));
    };
    return command.add_option_function<std::string>(option, take, description)
        ->type_name(form.text);
}

CLI::Option* AddRepeated(CLI::App& command, const std::string& option, const NumberForm& form,
                         const Ranges& ranges, UseNumbers use, const std::string& description)
{
    const auto take = [=, use = std::move(use)](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            use(NumbersWithin(ranges, text, ':', form, option));
    };
    return command.add_option_function<std::vector<std::string>>(option, take, description)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name(form.text);
}

CLI::Option* AddNumber(CLI::App& command, const std::string& option, double& target,
                       const tables::Range& range, const std::string& description)
{
    return AddNumbers(
        command, option, {"NUMBER", 1, 1}, {range},
        [&target](const std::vector<double>& numbers) { target = numbers[0]; },
        fmt::format("{} [{}]", description, target));
}

CLI::Option* AddCount(CLI::App& command, const std::string& option, int& target, int low, int high,
                      const std::string& description)
{
    return command.add_option(option, target, fmt::format("{} [{}]", description, target))
        ->check(IntegerIn(static_cast<std::uint64_t>(low), static_cast<std::uint64_t>(high)))
        ->type_name("WHOLE");
}

CLI::Option* AddPoint(CLI::App& command, const std::string& option, simulation::Point3& target,
                      const std::string& description)
{
    return AddNumbers(
               command, option, {"N,E,h", 3, 3}, {tables::kCoordinate},
               [&target](const std::vector<double>& n) {
                   target = {n[0], n[1], n[2]};
               },
               fmt::format("{} [{},{},{}]", description, target.x, target.y, target.z))
        ->check(PointInSpace());
}

void UnderHeading(CLI::App& command, const char* heading)
{
    command.option_defaults()->group(heading);
}

void AddSeed(CLI::App& command, std::uint64_t& seed)
{
    command
        .add_option("--seed", seed,
                    "Integer; the same seed and options give the same bytes on every "
                    "platform [1]")
        ->check(IntegerIn(0, std::numeric_limits<std::uint64_t>::max()))
        ->type_name("WHOLE");
}

void AddStartTime(CLI::App& command, double& secondOfDay)
{
    AddRepeated(
        command, "--start-time", {"hh:mm:ss", 3, 3}, {kClock},
        [&secondOfDay](const std::vector<double>& t) {
            const bool onTheClock = t[0] < 24.0 && t[1] < 60.0 && t[2] < 60.0; // none below 0
            if (!onTheClock) throw CLI::ValidationError("--start-time", "is not a time of day");
            secondOfDay = t[0] * 3600.0 + t[1] * 60.0 + t[2];
        },
        "Time of day of the first sample; a log may cross midnight [10:00:00]");
}

void AddAntennaNoise(CLI::App& command, simulation::AntennaNoise& noise)
{
    AddNumber(command, "--white-plan", noise.whitePlan, tables::kDeviationOrZero,
              "White noise of N and E, m");
    AddNumber(command, "--white-height", noise.whiteHeight, tables::kDeviationOrZero,
              "White noise of h, m");
    AddNumber(command, "--slow-plan", noise.slowPlan, tables::kDeviationOrZero,
              "Slow noise of N and E, m");
    AddNumber(command, "--slow-height", noise.slowHeight, tables::kDeviationOrZero,
              "Slow noise of h, m");
    AddNumber(command, "--correlation", noise.correlation, in::kTime,
              "Correlation time of the slow noise, s");
}

simulation::AntennaNoise Silent(const simulation::AntennaNoise& noise)
{
    return {0.0, 0.0, 0.0, 0.0, noise.correlation};
}

void AddLosses(CLI::App& command, simulation::Losses& losses)
{
    UnderHeading(command, "Losses");
    AddNumber(command, "--drop", losses.share, in::kShare,
              "Share of the samples lost at random, 0 to below 1");
    AddRepeated(
        command, "--gap", {"FROM:TO", 2, 2}, {in::kTime},
        [&losses](const std::vector<double>& t) {
            losses.gaps.push_back({t[0], t[1]});
        },
        "Seconds without samples; repeatable");
}

void MagnetOptions::AddTo(CLI::App& command)
{
    UnderHeading(command, "Magnets");
    AddRepeated(
        command, "--magnet", {"FROM:TO:STRENGTH[:AZIMUTH[:ELEVATION]]", 3, 5},
        {in::kTime, in::kTime, in::kOffset, tables::kAngle, in::kSlant},
        [this](const std::vector<double>& n) {
            if (!(n[0] < n[1])) throw CLI::ValidationError("--magnet", "FROM must be before TO");
            Magnet magnet;
            magnet.from = n[0];
            magnet.to = n[1];
            magnet.strength = n[2];
            if (n.size() > 3) magnet.azimuth = n[3];
            if (n.size() > 4) magnet.elevation = n[4];
            m_magnets.push_back(magnet);
        },
        "A magnet nearby from FROM to TO [s]: its field at magnetometer A [counts] and the "
        "direction "
        "of the field, degrees; repeatable");
    AddNumber(command, "--magnet-at-b", m_shareAtB, in::kReach,
              "Share of the magnets' fields that reaches B");
    command.add_flag("--magnet-on-pole", m_onPole,
                     "The magnets turn with the pole; by default they are fixed in space");
}

std::vector<Magnet> MagnetOptions::Magnets() const
{
    std::vector<Magnet> magnets = m_magnets;
    for (Magnet& magnet : magnets) {
        magnet.shareAtB = m_shareAtB;
        magnet.onPole = m_onPole;
    }
    return magnets;
}

SceneOptions::SceneOptions() : SceneOptions(UsualSensor()) {}

SceneOptions::SceneOptions(const simulation::PoseSensor& sensor)
{
    m_scene.sensor = sensor;
}

void SceneOptions::AddTo(CLI::App& command)
{
    UnderHeading(command, "Field");
    AddField(command);
    UnderHeading(command, "Sensor");
    AddSensor(command);
    command.add_flag("--clean", m_clean,
                     "No iron and no sensor noise except those given by other options");
    UnderHeading(command, "Output");
    AddSeed(command, m_scene.seed);
    command
        .add_option("--config", m_config,
                    "Write a parameter file that corrects the simulated iron, for measure --config")
        ->type_name("FILE");
}

void SceneOptions::AddField(CLI::App& command)
{
    simulation::EarthField& field = m_scene.field;
    AddNumber(command, "--strength", field.strength, in::kField,
              "Strength of the Earth's field, counts");
    AddNumber(command, "--dip", field.dip, in::kSlant, "Its dip below the horizon, degrees");
    AddNumber(command, "--declination", field.declination, tables::kAngle,
              "Magnetic north, east of the plane's x axis, degrees");
}

void SceneOptions::AddMagnetometer(CLI::App& command, char name, MagnetometerModel& magnetometer)
{
    CLI::Option* hard = AddNumbers(
        command, fmt::format("--hard-iron-{}", name), {"X,Y,Z", 3, 3}, {in::kOffset},
        [&magnetometer](const std::vector<double>& n) { magnetometer.hardIron = VectorFrom(n); },
        fmt::format("Reading of magnetometer {} without a field, counts [{},{},{}]", Upper(name),
                    magnetometer.hardIron.x, magnetometer.hardIron.y, magnetometer.hardIron.z));
    CLI::Option* soft = AddNumbers(
        command, fmt::format("--soft-iron-{}", name), {"XX,XY,...,ZZ", 9, 9}, {in::kSoftIron},
        [&magnetometer](const std::vector<double>& n) {
            magnetometer.softIron.rows = {
                {{n[0], n[1], n[2]}, {n[3], n[4], n[5]}, {n[6], n[7], n[8]}}
            };
        },
        fmt::format(
            "Nine numbers by rows: matrix from the field to the reading of magnetometer {} [{}]",
            Upper(name), RowsOf(magnetometer.softIron)));
    m_zeroUnlessGiven.emplace_back([&magnetometer, hard, soft] {
        if (hard->count() == 0) magnetometer.hardIron = {};
        if (soft->count() == 0) magnetometer.softIron = {};
    });
}

void SceneOptions::AddSensor(CLI::App& command)
{
    simulation::PoseSensor& sensor = m_scene.sensor;
    command
        .add_option("--sensor-type", sensor.type,
                    "Type of the sensor: its axis convention, as for measure [1]")
        ->type_name("WHOLE");
    AddMagnetometer(command, 'a', sensor.a);
    AddMagnetometer(command, 'b', sensor.b);

    AddNoise(command, "--noise-a", sensor.a.noise, in::kField, "Noise of magnetometer A, counts");
    AddNoise(command, "--noise-b", sensor.b.noise, in::kField, "Noise of magnetometer B, counts");
    AddNoise(command, "--tilt-noise", sensor.tiltNoise, in::kAngleNoise,
             "Noise of pitch and roll, degrees");
    AddInertial(command);
    AddNumber(command, "--step", sensor.magneticStep, in::kField,
              "Resolution of the magnetometers, counts; 0: not rounded");
    AddNumber(command, "--pitch-offset", sensor.pitchOffset, in::kSlant,
              "Error of every pitch, degrees");
    AddNumber(command, "--roll-offset", sensor.rollOffset, in::kSlant,
              "Error of every roll, degrees");
    command
        .add_option_function<std::string>(
            "--roll",
            [&sensor](const std::string& report) {
                sensor.rollReport = report == "inclination" ? simulation::RollReport::Inclination
                                                            : simulation::RollReport::Leveling;
            },
            fmt::format("Roll as the sensor defines it: 'leveling' about the forward axis, or "
                        "'inclination' of the right axis [{}]",
                        sensor.rollReport == simulation::RollReport::Inclination ? "inclination"
                                                                                 : "leveling"))
        ->check(CLI::IsMember({"leveling", "inclination"}))
        ->type_name("WORD");
}

void SceneOptions::AddInertial(CLI::App& command)
{
    simulation::PoseSensor& sensor = m_scene.sensor;
    AddNumber(command, "--tilt-filter", sensor.filterTime, in::kFilterTime,
              "Time constant of a filter that forms pitch and roll from gyros and accelerometers, "
              "s; 0: true pitch and roll");
    AddNoise(command, "--gyro-noise", sensor.gyroNoise, in::kGyroNoise,
             "Noise of the gyros, degrees/s");
    AddVector(command, "--gyro-bias", sensor.gyroBias, in::kGyroBias,
              "Reading of the gyros at rest, degrees/s");
    AddVector(command, "--gyro-scale", sensor.gyroScale, in::kScaleError,
              "Scale errors of the gyros; 0.01: 1 % too much");
    AddNumber(command, "--gyro-range", sensor.gyroRange, in::kGyroNoise,
              "Largest rate that the gyros read, degrees/s; 0: no limit");
    AddNoise(command, "--acc-noise", sensor.accelerationNoise, in::kAccelerationNoise,
             "Noise of the accelerometers, g");
    AddVector(command, "--acc-bias", sensor.accelerationBias, in::kAccelerationBias,
              "Errors of the accelerometers, g");
}

void SceneOptions::AddNoise(CLI::App& command, const std::string& option, double& target,
                            const tables::Range& range, const std::string& description)
{
    CLI::Option* given = AddNumber(command, option, target, range, description);
    m_zeroUnlessGiven.emplace_back([given, &target] {
        if (given->count() == 0) target = 0.0;
    });
}

simulation::Scene SceneOptions::Result() const
{
    if (m_clean)
        for (const auto& zero : m_zeroUnlessGiven)
            zero();
    return m_scene;
}

void SceneOptions::WriteParameters(tables::OutputFiles& files) const
{
    if (m_config.empty()) return;
    const simulation::Scene scene = Result();
    const auto a = CorrectionOf(scene.sensor.a);
    const auto b = CorrectionOf(scene.sensor.b);
    if (!a || !b)
        throw tables::InputError(
            "no parameter file corrects this soft iron: it is not lower triangular");
    CInclineSensor_Position position;
    position.SetMagneticCorrectPar_A(*a);
    position.SetMagneticCorrectPar_B(*b);
    position.SetMagneticBiasAngle_A(BiasAngleOf(scene.field));
    position.SetMagneticBiasAngle_B(BiasAngleOf(scene.field));
    files.Write(m_config, ParameterText(m_config, position));
}

void RefuseProblem(const std::string& problem)
{
    if (!problem.empty()) throw tables::InputError(problem);
}

} // namespace cli
