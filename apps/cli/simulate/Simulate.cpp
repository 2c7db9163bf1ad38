// SPDX-License-Identifier: MIT
#include "apps/cli/simulate/Simulate.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/simulate/OccupationsCommand.h"
#include "apps/cli/simulate/SimulateOptions.h"
#include "apps/cli/simulate/SimulateOutput.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Output.h"
#include "simulation/LogText.h"
#include "simulation/TruthText.h"
#include <fmt/format.h>
#include <memory>

namespace cli {

namespace {

using nlohmann::ordered_json;
using simulation::TurnAxis;
using simulation::TurnPlan;
namespace in = tables::simulated;

// One option for both turns: one number for both, or two with that of the horizontal turn first.
struct Pair
{
    double horizontal;
    double vertical;

    explicit Pair(double both) : horizontal(both), vertical(both) {}
    double Of(TurnAxis axis) const { return axis == TurnAxis::Horizontal ? horizontal : vertical; }
};

CLI::Option* AddPair(CLI::App& command, const char* option, Pair& pair, const tables::Range& range,
                     const char* description)
{
    return AddNumbers(
        command, option, {"BOTH|H,V", 1, 2}, {range},
        [&pair](const std::vector<double>& n) {
            pair.horizontal = n.front();
            pair.vertical = n.back();
        },
        fmt::format("{} [{}]", description, pair.horizontal));
}

class Turns
{
public:
    void AddTo(CLI::App& command);
    int Run();

private:
    void AddOperator(CLI::App& command);
    TurnPlan PlanOf(TurnAxis axis) const;
    void Write(tables::OutputFiles& files, TurnAxis axis, const std::string& path);
    void TellWritten() const;

    SceneOptions m_options;
    MagnetOptions m_magnets;
    simulation::Scene m_scene;
    std::vector<simulation::TurnResult> m_results;
    std::string m_horizontal;
    std::string m_vertical;
    std::string m_truth;
    ordered_json m_logs = ordered_json::array();
    bool m_json = false;
    TurnPlan m_plan;
    Pair m_extent{TurnPlan{}.extent};
    Pair m_heading{0.0};
    Pair m_level{0.0};
    Pair m_levelDirection{0.0};
    Pair m_axis{0.0};
    Pair m_axisDirection{0.0};
};

void Turns::AddTo(CLI::App& command)
{
    UnderHeading(command, "Output");
    AddFile(command, "--horizontal", m_horizontal, "Log of the turn about the sensor's z axis");
    AddFile(command, "--vertical", m_vertical, "Log of the turn about the sensor's y axis");
    AddFile(command, "--truth", m_truth, "JSON file with the true values");
    AddJson(command, m_json);
    UnderHeading(command, "Turns");
    AddCount(command, "--samples", m_plan.samples, 2, 10000000,
             "Samples of each turn, before losses");
    AddNumber(command, "--rate", m_plan.rate, in::kRate, "Samples per second");
    AddPair(command, "--extent", m_extent, in::kTurn,
            "Total turn, degrees; negative: in the opposite direction");
    AddPair(command, "--start-heading", m_heading, tables::kAngle, "Heading at the start, degrees");
    AddStartTime(command, m_plan.startOfDay);
    AddOperator(command);
    AddLosses(command, m_plan.losses);
    m_magnets.AddTo(command);
    m_options.AddTo(command);
    command.footer(
        "Example: tiltpole simulate turns --horizontal h.csv --vertical v.csv "
        "--truth t.json --seed 7\n"
        "Numbers in brackets are defaults. H,V: one number for the horizontal and one for "
        "the vertical turn. Times count from the start of each turn.");
}

void Turns::AddOperator(CLI::App& command)
{
    UnderHeading(command, "Operator");
    AddPair(command, "--level-error", m_level, in::kSlant,
            "Angle between the turn's axis and the plumb line (or the horizon), degrees");
    AddPair(command, "--level-direction", m_levelDirection, tables::kAngle,
            "Direction of that error from the start heading, degrees");
    AddPair(command, "--axis-error", m_axis, in::kSlant,
            "Angle between the axis of the turn and that of the sensor, degrees");
    AddPair(command, "--axis-direction", m_axisDirection, tables::kAngle,
            "Direction of that error about the axis, degrees");
    AddNumber(command, "--wobble", m_plan.wobble, in::kAngleNoise,
              "Tremor about the other axes, degrees");
    AddNumber(command, "--uneven", m_plan.unevenness, in::kShare,
              "Unevenness of the speed, 0 to below 1");
    AddRepeated(
        command, "--stop", {"DEGREES:SECONDS", 2, 2}, {in::kTurnedBy, in::kTime},
        [this](const std::vector<double>& n) {
            m_plan.stops.push_back({n[0], n[1]});
        },
        "Pause after so many degrees; repeatable");
    AddRepeated(
        command, "--turn-back", {"DEGREES:BY", 2, 2}, {in::kTurnedBy},
        [this](const std::vector<double>& n) {
            m_plan.turningsBack.push_back({n[0], n[1]});
        },
        "Turn back after so many degrees, by so many; repeatable");
}

TurnPlan Turns::PlanOf(TurnAxis axis) const
{
    TurnPlan plan = m_plan;
    plan.axis = axis;
    plan.extent = m_extent.Of(axis);
    plan.startHeading = m_heading.Of(axis);
    plan.levelError = m_level.Of(axis);
    plan.levelDirection = m_levelDirection.Of(axis);
    plan.axisError = m_axis.Of(axis);
    plan.axisDirection = m_axisDirection.Of(axis);
    plan.magnets = m_magnets.Magnets();
    return plan;
}

void Turns::Write(tables::OutputFiles& files, TurnAxis axis, const std::string& path)
{
    if (path.empty()) return;
    const TurnPlan plan = PlanOf(axis);
    const simulation::Recording turn =
        SimulateTurn(m_scene.sensor, m_scene.field, plan, m_scene.seed);
    files.Write(path, TextOf(turn));
    m_results.push_back({plan, turn.samples.size()});
    const char* name = axis == TurnAxis::Horizontal ? "horizontal" : "vertical";
    m_logs.push_back({
        {"log",             path               },
        {"axis",            name               },
        {"samples_taken",   plan.samples       },
        {"samples_written", turn.samples.size()}
    });
}

void Turns::TellWritten() const
{
    for (const ordered_json& log : m_logs)
        Say(fmt::format("{}: {} turn, {} of {} samples written", log["log"].get<std::string>(),
                        log["axis"].get<std::string>(), log["samples_written"].get<std::size_t>(),
                        log["samples_taken"].get<int>()));
}

int Turns::Run()
{
    if (m_horizontal.empty() && m_vertical.empty())
        throw tables::InputError("give a log to write with --horizontal or --vertical");
    RefuseLogOnJson(m_json, m_horizontal);
    RefuseLogOnJson(m_json, m_vertical);
    m_scene = m_options.Result();
    RefuseProblem(ProblemOf(PlanOf(TurnAxis::Horizontal)));
    RefuseProblem(ProblemOf(PlanOf(TurnAxis::Vertical)));
    tables::KeepApart({m_horizontal, m_vertical, m_truth, m_options.ParameterFile()}, {});
    tables::OutputFiles files;
    m_options.WriteParameters(files);
    Write(files, TurnAxis::Horizontal, m_horizontal);
    Write(files, TurnAxis::Vertical, m_vertical);
    if (!m_truth.empty()) files.Write(m_truth, TruthOfTurns(m_scene, m_results));
    files.Finish();
    if (m_json) {
        ordered_json json = JsonHeader("simulate turns");
        json["seed"] = m_scene.seed;
        json["turns"] = m_logs;
        json["truth"] = NameOrNull(m_truth);
        PrintJson(json);
    } else {
        TellWritten();
    }
    return kDone;
}

class WalkCommand
{
public:
    void AddTo(CLI::App& command);
    int Run();

private:
    void AddAntenna(CLI::App& command);

    SceneOptions m_options;
    MagnetOptions m_magnets;
    std::string m_out = "-";
    std::string m_truth;
    simulation::WalkPlan m_plan;
    bool m_rigid = false; // the default; accepted so that a command line may say it
    bool m_byFormula = false;
    bool m_silent = false;
    bool m_json = false;
};

void WalkCommand::AddTo(CLI::App& command)
{
    UnderHeading(command, "Output");
    AddFile(command, "--out", m_out, "The log; - is standard output [-]");
    AddFile(command, "--truth", m_truth, "JSON file with the true values");
    AddJson(command, m_json);
    UnderHeading(command, "Walk");
    AddCount(command, "--points", m_plan.points, 1, 1000000, "Points to measure");
    AddNumber(command, "--rate", m_plan.rate, in::kRate, "Samples per second");
    AddNumber(command, "--dwell", m_plan.dwell, in::kTime, "Time on each point, s");
    AddNumber(command, "--travel", m_plan.travel, in::kTime, "Time between two points, s");
    AddPointsAndPole(command, m_plan);
    AddNumber(command, "--least-lean", m_plan.leastLean, in::kLean,
              "Smallest lean on a point, degrees");
    AddNumber(command, "--most-lean", m_plan.mostLean, in::kLean,
              "Largest lean on a point, degrees");
    AddNumber(command, "--tremor", m_plan.tremor, in::kAngleNoise, "Tremor of the hand, degrees");
    AddStartTime(command, m_plan.startOfDay);
    AddAntenna(command);
    AddLosses(command, m_plan.losses);
    m_magnets.AddTo(command);
    m_options.AddTo(command);
    command.footer("Example: tiltpole simulate walk --seed 7 --out walk.csv --truth walk.json\n"
                   "tiltpole measure walk.csv --pole 2.0 reads it; columns that end in "
                   "_true contain the true values; point_true is 0 between two points.");
}

void WalkCommand::AddAntenna(CLI::App& command)
{
    UnderHeading(command, "Antenna");
    AddAntennaNoise(command, m_plan.noise);
    command.add_flag("--silent-antenna", m_silent, "An antenna without noise");
    CLI::Option* rigid = command.add_flag("--rigid", m_rigid, "A straight pole, the default");
    command
        .add_flag(
            "--by-formula", m_byFormula,
            "Place the antenna where measure's own formula for the sensor type finds the tip: "
            "a walk that shows nothing of that formula's errors")
        ->excludes(rigid);
}

int WalkCommand::Run()
{
    RefuseLogOnJson(m_json, m_out);
    const simulation::Scene scene = m_options.Result();
    m_plan.magnets = m_magnets.Magnets();
    if (m_byFormula) m_plan.geometry = simulation::PoleGeometry::ByFormula;
    if (m_silent) m_plan.noise = Silent(m_plan.noise);
    RefuseProblem(ProblemOf(m_plan));
    tables::KeepApart({m_out, m_truth, m_options.ParameterFile()}, {});
    tables::OutputFiles files;
    m_options.WriteParameters(files);
    const simulation::Walk walk = SimulateWalk(scene.sensor, scene.field, m_plan, scene.seed);
    if (!m_truth.empty()) files.Write(m_truth, TruthOfWalk(scene, m_plan, walk));
    files.Write(m_out, TextOf(walk));
    files.Finish();
    if (m_json) {
        ordered_json json = JsonHeader("simulate walk");
        json["seed"] = scene.seed;
        json["log"] = m_out;
        json["samples_written"] = walk.samples.size();
        json["points"] = walk.tips.size();
        json["truth"] = NameOrNull(m_truth);
        PrintJson(json);
        return kDone;
    }
    Say(fmt::format("{}: {} samples of {} points written", m_out, walk.samples.size(),
                    walk.tips.size()));
    return kDone;
}

class PointsCommand
{
public:
    void AddTo(CLI::App& command);
    int Run() const;

private:
    std::uint64_t m_seed = 1;
    bool m_json = false;
    std::string m_out = "-";
    std::string m_truth;
    simulation::PointsPlan m_plan;
};

void PointsCommand::AddTo(CLI::App& command)
{
    UnderHeading(command, "Output");
    AddFile(command, "--out", m_out, "The positions; - is standard output [-]");
    AddFile(command, "--truth", m_truth, "JSON file with the true values");
    AddSeed(command, m_seed);
    AddJson(command, m_json);
    UnderHeading(command, "Positions");
    m_plan.spacing = 0.3;
    AddCount(command, "--points", m_plan.points, 1, 1000000, "Antenna positions");
    AddPoint(command, "--tip", m_plan.tip, "Tip: N (x), E (y), h in meters");
    AddNumber(command, "--height", m_plan.poleLength, tables::kPoleLength,
              "Antenna height along the pole, m");
    AddNumber(command, "--least-lean", m_plan.leastLean, in::kLean, "Smallest lean, degrees");
    AddNumber(command, "--most-lean", m_plan.mostLean, in::kLean,
              "Largest lean, degrees; small: a narrow cone");
    AddNumber(command, "--azimuth", m_plan.azimuth, tables::kAngle,
              "Center of the range of lean directions, degrees");
    AddNumber(command, "--width", m_plan.width, in::kWidth, "Width of that range, degrees");
    AddNumber(command, "--spacing", m_plan.spacing, in::kDistance,
              "Smallest distance between two positions in plan, m");
    AddNumber(command, "--plan-noise", m_plan.planNoise, tables::kDeviationOrZero,
              "Noise of N and E, m");
    AddNumber(command, "--height-noise", m_plan.heightNoise, tables::kDeviationOrZero,
              "Noise of h, m");
    AddNumber(command, "--incline-noise", m_plan.inclineNoise, in::kAngleNoise,
              "Noise of the incline, degrees");
    AddCount(command, "--outliers", m_plan.outliers, 0, 1000000, "Number of outliers");
    AddNumber(command, "--outlier-size", m_plan.outlierSize, in::kDistance,
              "Size of the outliers, m");
    command.footer("Example: tiltpole simulate points --most-lean 15 --spacing 0.05 --out p.csv\n"
                   "tiltpole solve p.csv --height 2.0 reads it.");
}

int PointsCommand::Run() const
{
    RefuseLogOnJson(m_json, m_out);
    RefuseProblem(ProblemOf(m_plan));
    tables::KeepApart({m_out, m_truth}, {});
    const auto positions = SimulatePoints(m_plan, m_seed);
    const auto count = static_cast<int>(positions.size());
    if (count < m_plan.points)
        throw tables::InputError(
            fmt::format("there is only room for {} of {} positions: lean more, or "
                        "use a smaller --spacing",
                        count, m_plan.points));
    tables::OutputFiles files;
    if (!m_truth.empty()) files.Write(m_truth, TruthOfPoints(m_seed, m_plan, positions));
    files.Write(m_out, TextOf(positions));
    files.Finish();
    if (m_json) {
        ordered_json json = JsonHeader("simulate points");
        json["seed"] = m_seed;
        json["log"] = m_out;
        json["points"] = count;
        json["truth"] = NameOrNull(m_truth);
        PrintJson(json);
        return kDone;
    }
    Say(fmt::format("{}: {} positions written", m_out, count));
    return kDone;
}

template <class Kind>
void AddKind(CLI::App& simulate, const char* name, const char* description, int& exitCode)
{
    auto kind = std::make_shared<Kind>();
    CLI::App* command = simulate.add_subcommand(name, description);
    kind->AddTo(*command);
    command->callback([kind, &exitCode] { exitCode = kind->Run(); });
}

} // namespace

void AddSimulateCommand(CLI::App& program, int& exitCode)
{
    CLI::App* simulate = program.add_subcommand(
        "simulate", "Write reproducible logs of a pole with known true values.");
    simulate->require_subcommand(1);
    simulate->footer(
        "See tiltpole simulate KIND --help for the options of a kind. docs/simulation.md "
        "describes the model.");
    AddKind<Turns>(*simulate, "turns", "The two turns of a magnetometer calibration", exitCode);
    AddKind<WalkCommand>(*simulate, "walk", "A measuring walk with antenna coordinates", exitCode);
    AddKind<OccupationsCommand>(
        *simulate, "occupations",
        "Occupied points: inertial sensors and antenna while the pole moves", exitCode);
    AddKind<PointsCommand>(*simulate, "points", "Antenna positions around one tip", exitCode);
}

} // namespace cli
