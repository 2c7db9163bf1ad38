// SPDX-License-Identifier: MIT
#include "apps/cli/simulate/OccupationsCommand.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/simulate/AntennaRecord.h"
#include "apps/cli/simulate/SimulateOutput.h"
#include "apps/tables/Output.h"
#include "simulation/LogText.h"
#include "simulation/TruthText.h"
#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace cli {

namespace {

using simulation::OccupationMotion;
using simulation::OccupationPlan;
using simulation::PlantedMotion;
namespace in = tables::simulated;

constexpr std::array kMotions{OccupationMotion::LeanIn, OccupationMotion::OppositeLeans,
                              OccupationMotion::Rock, OccupationMotion::Hold,
                              OccupationMotion::Free};

std::vector<std::string> MotionNames()
{
    std::vector<std::string> names;
    names.reserve(kMotions.size());
    for (const OccupationMotion motion : kMotions)
        names.emplace_back(NameOf(motion));
    return names;
}

// The last one where no other has the name: the option takes these names only.
OccupationMotion MotionNamed(const std::string& name)
{
    return *std::find_if(kMotions.begin(), kMotions.end() - 1,
                         [&](OccupationMotion motion) { return name == NameOf(motion); });
}

} // namespace

OccupationsCommand::OccupationsCommand()
    : m_options(simulation::CalibratedSensor()), m_motion(NameOf(OccupationMotion::LeanIn))
{}

void OccupationsCommand::AddTo(CLI::App& command)
{
    UnderHeading(command, "Output");
    AddFile(command, "--out", m_out, "The log; - is standard output [-]");
    AddFile(command, "--truth", m_truth, "Table of the true tips: point,N,E,h");
    AddFile(command, "--scene", m_scene, "JSON file with all true values");
    AddJson(command, m_json);
    AddMotion(command);
    AddPole(command);
    AddAntenna(command);
    AddErrors(command);
    AddFaults(command);
    m_magnets.AddTo(command);
    AddDipoles(command);
    AddLosses(command, m_plan.losses);
    m_options.AddTo(command);
    command.footer(
        "Example: tiltpole simulate occupations --seed 7 --motion lean-in --out log.csv "
        "--truth tips.csv\n"
        "The antenna's fields are blank on rows without an epoch. Times count from the start of "
        "each point, where the tip is planted. Logs of one seed have the same pole and sensor, "
        "whatever the motion: --motion free gives a log to calibrate them on the spot.");
}

void OccupationsCommand::AddMotionAmount(CLI::App& command, const char* option,
                                         double PlantedMotion::*value, const tables::Range& range,
                                         const char* description)
{
    AddNumbers(
        command, option, {"NUMBER", 1, 1}, {range},
        [this, value](const std::vector<double>& n) {
            m_motionChanges.emplace_back(
                [value, number = n[0]](PlantedMotion& motion) { motion.*value = number; });
        },
        description);
}

void OccupationsCommand::AddMotion(CLI::App& command)
{
    UnderHeading(command, "Motion");
    command
        .add_option("--motion", m_motion,
                    "What is done with the pole: 'lean-in' from one lean to another, then hold; "
                    "'opposite' leans; 'rock'; 'hold'; 'free' turning and rocking [lean-in]")
        ->check(CLI::IsMember(MotionNames()))
        ->type_name("WORD");
    AddMotionAmount(command, "--duration", &PlantedMotion::duration, in::kTime,
                    "Time on each point, s [5; free: 20]");
    AddMotionAmount(command, "--lean-from", &PlantedMotion::leanFrom, in::kLean,
                    "Lean at the start, the mean one of rock and free, degrees [5; rock, free: "
                    "10; hold: 20]");
    AddMotionAmount(command, "--lean-to", &PlantedMotion::leanTo, in::kLean,
                    "Lean at the end of lean-in, on either side of opposite, degrees [20; "
                    "opposite: 15]");
    AddMotionAmount(command, "--move-time", &PlantedMotion::moveTime, in::kTime,
                    "Duration of the move of lean-in and opposite, s [2]");
    AddMotionAmount(command, "--amplitude", &PlantedMotion::amplitude, in::kLean,
                    "Of rock and free, degrees [5; free: 15]");
    AddMotionAmount(command, "--frequency", &PlantedMotion::frequency, in::kFrequency,
                    "Of rock and free, Hz [0.8; free: 0.4]");
    AddMotionAmount(command, "--turn", &PlantedMotion::turn, in::kTurn,
                    "Turn about the pole's axis during the point, degrees [0; free: 360]");
    AddMotionAmount(command, "--tremor", &PlantedMotion::tremor, in::kAngleNoise,
                    "Tremor of the hand, degrees [0.05]");
    AddRepeated(
        command, "--slip", {"AT:N:E:h[:SECONDS]", 4, 5},
        {in::kTime, in::kShift, in::kShift, in::kShift, in::kTime},
        [this](const std::vector<double>& n) {
            simulation::Slip slip{
                .at = n[0], .by = {n[1], n[2], n[3]}
            };
            if (n.size() > 4) slip.duration = n[4];
            m_motionChanges.emplace_back(
                [slip](PlantedMotion& motion) { motion.slips.push_back(slip); });
        },
        "The tip moves by so many meters, within 0.2 s unless given; repeatable");
}

void OccupationsCommand::AddPole(CLI::App& command)
{
    UnderHeading(command, "Points and pole");
    AddCount(command, "--points", m_plan.points, 1, 1000000, "Points to occupy");
    AddNumber(command, "--rate", m_plan.rate, in::kRate, "Samples of the sensor per second");
    AddPointsAndPole(command, m_plan);
    AddMotionAmount(command, "--sensor-height", &PlantedMotion::sensorHeight, in::kDistance,
                    "Of the sensor above the tip, along the pole, m [1.8]");
    AddStartTime(command, m_plan.startOfDay);
}

void OccupationsCommand::AddAntenna(CLI::App& command)
{
    UnderHeading(command, "Antenna");
    AddNumber(command, "--antenna-rate", m_plan.antennaRate, in::kRate, "Epochs per second");
    AddNumber(command, "--delay", m_plan.delay, in::kOffTime,
              "Delay of the antenna behind the sensor, s");
    AddAntennaNoise(command, m_plan.noise);
    command.add_flag("--silent-antenna", m_silent, "An antenna without noise");
    AddFile(command, "--antenna-noise", m_antennaFile,
            "Instead of that noise, a recorded fixed antenna: easting, northing, height, one line "
            "a second");
}

void OccupationsCommand::AddErrors(CLI::App& command)
{
    UnderHeading(command, "Errors drawn at random (standard deviations; --clean: 0)");
    simulation::ErrorSpread& spread = m_plan.spread;
    m_options.AddNoise(command, "--axis-sd", spread.axis, in::kAngleNoise,
                       "Of the pole's axis in the sensor, degrees");
    m_options.AddNoise(command, "--acc-bias-sd", spread.accelerationBias, in::kAccelerationNoise,
                       "Of the accelerometers' errors, g");
    m_options.AddNoise(command, "--gyro-bias-sd", spread.gyroBias, in::kGyroNoise,
                       "Of the gyros' readings at rest, degrees/s");
    m_options.AddNoise(command, "--gyro-scale-sd", spread.gyroScale, in::kShare,
                       "Of the gyros' scale errors");
    m_options.AddNoise(command, "--hard-iron-sd", spread.hardIron, in::kField,
                       "Of the hard iron that a calibration left, counts");
    m_options.AddNoise(command, "--soft-iron-sd", spread.softIron, in::kShare,
                       "Of the elements of the soft iron that a calibration left");
    command.add_flag("--anew", m_plan.anew,
                     "Draw for each point: the sensor is mounted anew; by default once");
}

void OccupationsCommand::AddFaults(CLI::App& command)
{
    UnderHeading(command, "Faults");
    AddNumbers(
        command, "--axis", {"FORWARD,RIGHT", 2, 2}, {in::kSlant},
        [this](const std::vector<double>& n) {
            m_plan.axisForward = n[0];
            m_plan.axisRight = n[1];
        },
        "Lean of the pole's upper end in the sensor, degrees, added to the one drawn [0,0]");
    AddNumber(command, "--pole-error", m_plan.poleError, in::kPoleShift,
              "True length minus --pole, m");
    AddNumber(command, "--epoch-drop", m_plan.epochLosses.share, in::kShare,
              "Share of the epochs lost at random, 0 to below 1");
    AddRepeated(
        command, "--epoch-gap", {"FROM:TO", 2, 2}, {in::kTime},
        [this](const std::vector<double>& t) {
            m_plan.epochLosses.gaps.push_back({t[0], t[1]});
        },
        "Seconds without epochs; repeatable");
    AddRepeated(
        command, "--float", {"FROM:TO:N:E:h", 5, 5}, {in::kTime, in::kTime, in::kShift},
        [this](const std::vector<double>& n) {
            m_plan.jumps.push_back({
                n[0], n[1], {n[2], n[3], n[4]}
            });
        },
        "Seconds in which the antenna is off by so many meters, as without a fix; repeatable");
}

void OccupationsCommand::AddDipoles(CLI::App& command)
{
    AddRepeated(
        command, "--dipole", {"FROM:TO:STRENGTH:N:E:h[:AZIMUTH[:ELEVATION]]", 6, 8},
        {in::kTime, in::kTime, in::kOffset, in::kShift, in::kShift, in::kShift, tables::kAngle,
         in::kSlant},
        [this](const std::vector<double>& n) {
            if (!(n[0] < n[1])) throw CLI::ValidationError("--dipole", "FROM must be before TO");
            simulation::Dipole dipole{.from = n[0], .to = n[1], .strength = n[2]};
            dipole.place = {n[3], n[4], -n[5]};
            if (n.size() > 6) dipole.azimuth = n[6];
            if (n.size() > 7) dipole.elevation = n[7];
            m_plan.dipoles.push_back(dipole);
        },
        "A magnet beside the pole from FROM to TO [s]: its field 1 m beside it [counts], its place "
        "from the tip [m], the direction of its axis, degrees; repeatable");
}

OccupationPlan OccupationsCommand::Plan() const
{
    OccupationPlan plan = m_plan;
    plan.motion = simulation::UsualMotion(MotionNamed(m_motion));
    for (const auto& change : m_motionChanges)
        change(plan.motion);
    plan.magnets = m_magnets.Magnets();
    if (m_silent) plan.noise = Silent(plan.noise);
    if (!m_antennaFile.empty()) plan.recorded = ReadAntennaRecord(m_antennaFile);
    return plan;
}

int OccupationsCommand::Run()
{
    RefuseLogOnJson(m_json, m_out);
    const simulation::Scene scene = m_options.Result();
    const OccupationPlan plan = Plan();
    RefuseProblem(ProblemOf(plan));
    tables::KeepApart({m_out, m_truth, m_scene, m_options.ParameterFile()}, {m_antennaFile});
    tables::OutputFiles files;
    m_options.WriteParameters(files);
    const simulation::Occupations log =
        SimulateOccupations(scene.sensor, scene.field, plan, scene.seed);
    files.Write(m_truth, TipsOf(log));
    if (!m_scene.empty()) files.Write(m_scene, TruthOfOccupations(scene, plan, log));
    files.Write(m_out, TextOf(log));
    files.Finish();
    PrintResult(scene, log);
    return kDone;
}

void OccupationsCommand::PrintResult(const simulation::Scene& scene,
                                     const simulation::Occupations& log) const
{
    if (m_json) {
        nlohmann::ordered_json json = JsonHeader("simulate occupations");
        json["seed"] = scene.seed;
        json["log"] = m_out;
        json["samples_written"] = log.rows.size();
        json["points"] = log.points.size();
        json["truth"] = NameOrNull(m_truth);
        PrintJson(json);
        return;
    }
    Say(fmt::format("{}: {} samples of {} points written", m_out, log.rows.size(),
                    log.points.size()));
}

} // namespace cli
