// SPDX-License-Identifier: MIT
#include "quality/CalibrationReport.h"
#include "quality/ParameterFile.h"
#include "quality/SolverRun.h"
#include "quality/TipEstimate.h"
#include "simulation/Points.h"
#include "simulation/trials/Conditions.h"
#include "tests/portable/Corpus.h"
#include "tests/portable/LibraryResults.h"
#include "tests/portable/PointSets.h"
#include "tests/portable/Print.h"

#include <cstddef>
#include <string>
#include <vector>

namespace portable {

namespace {

constexpr double kCounts = 500.0; // of the simulated field
constexpr double kTurn = 360.0;   // [degrees]

void Print(const std::string& name, const Incline_MagneticCorrectParameter& par)
{
    for (const double offset : {par.x0, par.y0, par.z0})
        Number(name + ".offset", offset, kCounts);
    for (const double share : {par.a, par.b, par.c, par.d, par.e})
        Number(name + ".share", share, 1.0);
}

void Print(const std::string& name, const quality::Calibration& calibration)
{
    Print(name + ".a", calibration.correctionA);
    Print(name + ".b", calibration.correctionB);
    for (const double value :
         {calibration.translation.dX, calibration.translation.dY, calibration.translation.dZ})
        Number(name + ".translation", value, kCounts);
    Number(name + ".bias_a", calibration.biasAngleA, kTurn);
    Number(name + ".bias_b", calibration.biasAngleB, kTurn);
}

void Print(const std::string& name, const quality::TiltError& error)
{
    for (const double value :
         {error.pitch, error.roll, error.pitchDeviation, error.rollDeviation, error.Excess()})
        Number(name, value, 1.0);
}

void Print(const std::string& name, const quality::TurnFigures& turn)
{
    Decision(name + ".recorded", turn.recorded);
    Decision(name + ".used", turn.used);
    for (const double value : {turn.circle.x, turn.circle.second, turn.circle.radius})
        Number(name + ".circle", value, kCounts);
    Number(name + ".covered", turn.covered, kTurn);
    for (const quality::MissingSector& sector : turn.missing)
        Bytes(name + ".missing", sector.Name());
    for (const double share : {turn.turningBack, turn.circleA, turn.circleB})
        Number(name + ".share", share, 1.0);
    Number(name + ".axis_error", turn.axisError, 1.0);
    Number(name + ".wobble", turn.wobble, 1.0);
    if (turn.levelError) Number(name + ".level_error", *turn.levelError, 1.0);
    if (turn.acceleration) Number(name + ".acceleration", turn.acceleration->length, 1.0);
}

void Print(const std::string& name, const quality::MagnetometerFigures& figures)
{
    Number(name + ".before", figures.spreadBefore, 1.0);
    Number(name + ".after", figures.spreadAfter, 1.0);
    Number(name + ".hard_iron", figures.hardIron.size, kCounts);
    Number(name + ".soft_iron", figures.softIron.size, 1.0);
    Number(name + ".disturbed", figures.disturbed, 1.0);
    if (figures.change) Number(name + ".dip", figures.change->dip, 90.0);
    if (!figures.heading) return;
    const quality::HeadingError& heading = *figures.heading;
    for (const double value : {heading.rms, heading.rmsLevel, heading.rms15, heading.rms30,
                               heading.constant, heading.uncertainty, heading.uncertaintyConstant,
                               heading.hidden.tilt, heading.hidden.tiltInUse, heading.hidden.turns,
                               heading.hidden.gains, heading.hidden.noise})
        Number(name + ".heading", value, kTurn); // differences of headings
    Number(name + ".tip", heading.tip30, 1000.0);
}

void Print(const std::string& name, const quality::CalibrationReport& report)
{
    Decision(name + ".verdict", static_cast<int>(report.verdict));
    Decision(name + ".reason", static_cast<int>(report.reason));
    Decision(name + ".weak", report.weak);
    Decision(name + ".joint_fit", static_cast<int>(report.jointFit));
    Number(name + ".error", report.headingError, 1.0);
    Number(name + ".uncertainty", report.headingUncertainty, 1.0);
    Number(name + ".bound", report.headingBound, 1.0);
    Print(name + ".horizontal", report.horizontal);
    Print(name + ".vertical", report.vertical);
    Print(name + ".a", report.a);
    Print(name + ".b", report.b);
    Print(name + ".tilt", report.tilt.offset);
    if (report.tilt.gyros) Print(name + ".gyros", report.tilt.gyros->step);
    for (const std::string& suspect : report.suspects)
        Bytes(name + ".suspect", suspect);
    Bytes(name + ".text", quality::ToText(report));
}

// Every fourth kind of fault, by the solver and by the joint fit, which takes most of the time here.
void PrintCalibrations()
{
    const std::vector<study::Condition>& conditions = study::FieldFaults();
    for (std::size_t i = 0; i < conditions.size(); i += 4) {
        simulation::Generator random(i, simulation::Stream::Placement);
        study::Setting setting = study::Ordinary(random);
        conditions[i].apply(setting, random);
        const quality::CalibrationTurns turns = study::RecordTurns(setting, i);
        const std::string name = Name("calibration", static_cast<int>(i));
        const int type = setting.sensor.type;

        const quality::CalibrationRun solver = quality::RunSolver(turns, type);
        Decision(name + ".solver", solver.solverAnswer);
        if (solver.solverAnswer == 1) Print(name + ".solved", solver.calibration);
        Print(name + ".solver_report", quality::AssessCalibration(solver));

        const quality::CalibrationRun joint = quality::RunJointFit(turns, type);
        Decision(name + ".joint", joint.solverAnswer);
        if (joint.solverAnswer == 1) Print(name + ".fitted", joint.calibration);
        Print(name + ".joint_report", quality::AssessCalibration(joint));
    }
}

void PrintTipEstimates()
{
    for (int set = 0; set < 24; ++set) {
        const simulation::PointsPlan plan = PlanOfSet(set, 4 + 3 * set, 0.002 * (set % 5));
        std::vector<xyhCoord> antennas;
        for (const simulation::AntennaPosition& position :
             simulation::SimulatePoints(plan, static_cast<std::uint64_t>(set)))
            antennas.push_back({position.antenna.x, position.antenna.y, position.antenna.z});
        const quality::TipEstimate found = quality::EstimateTip(antennas, set % 8 == 7 ? 1.9 : 2.0);
        const std::string name = Name("estimate", set);
        Decision(name + ".verdict", static_cast<int>(found.verdict));
        if (found.verdict == quality::TipVerdict::NoSolution) continue;
        Decision(name + ".ambiguous", found.ambiguous);
        Decision(name + ".narrow", found.narrowCone);
        Decision(name + ".used", static_cast<long long>(found.used));
        Decision(name + ".suspect", static_cast<long long>(found.suspectIndex));
        for (const double value :
             {found.tip.x - plan.tip.x, found.tip.y - plan.tip.y, found.tip.h - plan.tip.z})
            Number(name + ".tip", value, 2.0);
        for (const double value :
             {found.ellipseMajor, found.ellipseMinor, found.heightHalfInterval})
            Number(name + ".region", value);
        for (const double value : {found.residualRms, found.largestResidual, found.suspectResidual,
                                   found.radiusExcess, found.radiusExcessLimit})
            Number(name + ".residual", value, 2.0);
        Number(name + ".factor", found.errorFactor, 1.0);
        Number(name + ".ratio", found.suspectRatio, 1.0);
        Number(name + ".spread", found.directionSpread, 1.0);
    }
}

void PrintParameterChecks()
{
    for (const auto& path : CorpusOf("parameters_fuzzer")) {
        const std::string name = "parameters." + path.filename().string();
        CInclineSensor_Position position;
        const auto problems = quality::LoadParameterText(ContentOf(path), position);
        Decision(name + ".problems", static_cast<long long>(problems.size()));
        for (const quality::ParameterProblem& problem : problems)
            Bytes(name, ToText(problem));
        Print(name, position.GetMagneticCorrectPar_A());
    }
}

} // namespace

void PrintQuality()
{
    PrintCalibrations();
    PrintTipEstimates();
    PrintParameterChecks();
}

} // namespace portable
