// SPDX-License-Identifier: MIT
#include "apps/cli/simulate/SimulateOptions.h"

#include "apps/tables/Errors.h"
#include "apps/tables/Numbers.h"
#include "positioning/InclineSensor_Position.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

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

constexpr double kMost = 1e9; // upper limit of all simulated quantities

constexpr NumberForm kOne{"NUMBER", 1, 1};

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

} // namespace

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
        if (std::fabs(*number) > kMost)
            throw CLI::ValidationError(option, fmt::format("'{}' is too large", part));
        numbers.push_back(*number);
        begin = end + 1;
    }
    if (numbers.size() < form.least || numbers.size() > form.most)
        throw CLI::ValidationError(option, fmt::format("takes {}, not '{}'", form.text, text));
    return numbers;
}

CLI::Option* AddNumbers(CLI::App& command, const std::string& option, const NumberForm& form,
                        UseNumbers use, const std::string& description)
{
    const auto take = [=, use = std::move(use)](const std::string& text) {
        use(NumbersIn(text, ',', form, option));
    };
    return command.add_option_function<std::string>(option, take, description)
        ->type_name(form.text);
}

CLI::Option* AddRepeated(CLI::App& command, const std::string& option, const NumberForm& form,
                         UseNumbers use, const std::string& description)
{
    const auto take = [=, use = std::move(use)](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            use(NumbersIn(text, ':', form, option));
    };
    return command.add_option_function<std::vector<std::string>>(option, take, description)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name(form.text);
}

CLI::Option* AddNumber(CLI::App& command, const std::string& option, double& target,
                       const std::string& description)
{
    return AddNumbers(
        command, option, kOne,
        [&target](const std::vector<double>& numbers) { target = numbers[0]; },
        fmt::format("{} [{}]", description, target));
}

CLI::Option* AddAmount(CLI::App& command, const std::string& option, double& target,
                       const std::string& description)
{
    return AddNumbers(
        command, option, kOne,
        [option, &target](const std::vector<double>& numbers) {
            if (numbers[0] < 0.0)
                throw CLI::ValidationError(option, fmt::format("'{}' is negative", numbers[0]));
            target = numbers[0];
        },
        fmt::format("{} [{}]", description, target));
}

CLI::Option* AddPoint(CLI::App& command, const std::string& option, simulation::Point3& target,
                      const std::string& description)
{
    return AddNumbers(
        command, option, {"N,E,h", 3, 3},
        [&target](const std::vector<double>& n) {
            target = {n[0], n[1], n[2]};
        },
        fmt::format("{} [{},{},{}]", description, target.x, target.y, target.z));
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
        ->check([](const std::string& text) {
            const bool whole = text.find_first_not_of("0123456789") == std::string::npos;
            return whole ? std::string{} : "'" + text + "' is not an integer from 0 up";
        })
        ->type_name("WHOLE");
}

void AddStartTime(CLI::App& command, double& secondOfDay)
{
    AddRepeated(
        command, "--start-time", {"hh:mm:ss", 3, 3},
        [&secondOfDay](const std::vector<double>& t) {
            const bool onTheClock = t[0] >= 0.0 && t[0] < 24.0 && t[1] >= 0.0 && t[1] < 60.0
                                    && t[2] >= 0.0 && t[2] < 60.0;
            if (!onTheClock) throw CLI::ValidationError("--start-time", "is not a time of day");
            secondOfDay = t[0] * 3600.0 + t[1] * 60.0 + t[2];
        },
        "Time of day of the first sample; a log may cross midnight [10:00:00]");
}

void AddLosses(CLI::App& command, simulation::Losses& losses)
{
    UnderHeading(command, "Losses");
    AddAmount(command, "--drop", losses.share, "Share of the samples lost at random, 0 to below 1");
    AddRepeated(
        command, "--gap", {"FROM:TO", 2, 2},
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
    AddNumber(command, "--magnet-at-b", m_shareAtB, "Share of the magnets' fields that reaches B");
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

void SceneOptions::AddTo(CLI::App& command)
{
    m_scene.sensor = UsualSensor();
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
    AddAmount(command, "--strength", field.strength, "Strength of the Earth's field, counts");
    AddNumber(command, "--dip", field.dip, "Its dip below the horizon, degrees");
    AddNumber(command, "--declination", field.declination,
              "Magnetic north, east of the plane's x axis, degrees");
}

void SceneOptions::AddMagnetometer(CLI::App& command, char name, MagnetometerModel& magnetometer)
{
    CLI::Option* hard = AddNumbers(
        command, fmt::format("--hard-iron-{}", name), {"X,Y,Z", 3, 3},
        [&magnetometer](const std::vector<double>& n) { magnetometer.hardIron = VectorFrom(n); },
        fmt::format("Reading of magnetometer {} without a field, counts [{},{},{}]", Upper(name),
                    magnetometer.hardIron.x, magnetometer.hardIron.y, magnetometer.hardIron.z));
    CLI::Option* soft = AddNumbers(
        command, fmt::format("--soft-iron-{}", name), {"XX,XY,...,ZZ", 9, 9},
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

    const auto addNoise = [&](const char* option, double& target, const char* description) {
        CLI::Option* given = AddAmount(command, option, target, description);
        m_zeroUnlessGiven.emplace_back([given, &target] {
            if (given->count() == 0) target = 0.0;
        });
    };
    addNoise("--noise-a", sensor.a.noise, "Noise of magnetometer A, counts");
    addNoise("--noise-b", sensor.b.noise, "Noise of magnetometer B, counts");
    addNoise("--tilt-noise", sensor.tiltNoise, "Noise of pitch and roll, degrees");
    addNoise("--gyro-noise", sensor.gyroNoise, "Noise of the gyros, degrees/s");
    addNoise("--acc-noise", sensor.accelerationNoise, "Noise of the accelerometers, g");
    AddAmount(command, "--step", sensor.magneticStep,
              "Resolution of the magnetometers, counts; 0: not rounded");
    AddNumber(command, "--pitch-offset", sensor.pitchOffset, "Error of every pitch, degrees");
    AddNumber(command, "--roll-offset", sensor.rollOffset, "Error of every roll, degrees");
    command
        .add_option_function<std::string>(
            "--roll",
            [&sensor](const std::string& report) {
                sensor.rollReport = report == "inclination" ? simulation::RollReport::Inclination
                                                            : simulation::RollReport::Levelling;
            },
            "Roll as the sensor defines it: 'levelling' about the forward axis, or 'inclination' "
            "of the right axis [levelling]")
        ->check(CLI::IsMember({"levelling", "inclination"}))
        ->type_name("WORD");
}

simulation::Scene SceneOptions::Result() const
{
    if (m_clean)
        for (const auto& zero : m_zeroUnlessGiven)
            zero();
    return m_scene;
}

void SceneOptions::WriteParameters() const
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
    if (position.ConfigSave(CString(m_config.c_str())) == 0)
        throw tables::InputError(m_config, "cannot be written");
}

void RefuseProblem(const std::string& problem)
{
    if (!problem.empty()) throw tables::InputError(problem);
}

} // namespace cli
