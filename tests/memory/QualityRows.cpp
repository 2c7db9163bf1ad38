// SPDX-License-Identifier: MIT
//
// Of the library of quality everything throws std::bad_alloc; the solver that it runs reports a failure,
// which the run then has.
#include "framework/core/MessageBox.h"
#include "quality/CalibrationReport.h"
#include "quality/JointFit.h"
#include "quality/ParameterFile.h"
#include "quality/SolverRun.h"
#include "quality/TipEstimate.h"
#include "tests/ScratchFolder.h"
#include "tests/memory/Rows.h"
#include "tests/quality/TurnMaker.h"

namespace sweep {

namespace {

using namespace quality;

CalibrationTurns SmallTurns()
{
    turnmaker::Plan horizontal = turnmaker::HorizontalPlan();
    turnmaker::Plan vertical = turnmaker::VerticalPlan();
    horizontal.samples = vertical.samples = 30;
    return turnmaker::MakeTurns(turnmaker::TriangularWorld(), horizontal, vertical);
}

std::size_t SizeOf(const CalibrationTurns& turns)
{
    return turns.horizontal.size() + turns.vertical.size();
}

struct Judged
{
    Judged()
        : before(framework::SetMessageBoxHandler(
            [](const wchar_t*, const wchar_t*, unsigned) { return IDOK; }))
    {
        report.verdict = Verdict::Poor;
        report.headingError = 3.75;
        run.calibration.correctionA.a = 0.04;
        run.calibration.correctionA.x0 = 120.0;
    }
    ~Judged() { framework::SetMessageBoxHandler(before); }
    Judged(const Judged&) = delete;
    Judged& operator=(const Judged&) = delete;

    framework::MessageBoxHandler before;
    CalibrationTurns turns = SmallTurns();
    CalibrationRun run{turns, turns, {}, 1, 1, false};
    CalibrationRun result{{}, {}, {}, -1, 1, false};
    CalibrationTurns screened;
    JointFit fit;
    CalibrationReport report;
    std::string text;
};

std::string DescribeJudged(const Judged& j)
{
    return j.text + '|' + std::to_string(j.result.solverAnswer) + ' '
           + std::to_string(j.result.used.horizontal.size()) + ' '
           + Text(j.result.calibration.correctionA.x0) + Text(j.result.calibration.biasAngleB)
           + std::to_string(j.screened.horizontal.size() + j.screened.vertical.size()) + ' '
           + std::to_string(static_cast<int>(j.fit.outcome)) + ' '
           + Text(j.fit.calibration.correctionB.e) + Text(j.fit.lossA)
           + std::to_string(static_cast<int>(j.report.verdict)) + ' ' + Text(j.report.headingError)
           + Text(j.report.a.spreadAfter);
}

void AddCalibrationRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* covers, std::function<void(Judged&)> run,
                         AfterFailure<Judged> after = {}, reference::Pace pace = {}) {
        rows.push_back(Operation<Judged>(covers, Shortage::Throws, std::move(run), DescribeJudged,
                                         std::move(after), pace));
    };
    constexpr reference::Pace kSlow{100, 499}; // thousands of allocations, milliseconds a call
    static const std::size_t kKept = SizeOf(ScreenTurns(SmallTurns()));
    const AfterFailure<Judged> lacksSamples = {
        [](const Judged& j) { return SizeOf(j.screened) < kKept; }, {}};
    const AfterFailure<Judged> hasNoAnswer = {
        [](const Judged& j) { return j.result.solverAnswer == 0 || SizeOf(j.result.used) < kKept; },
        {}};
    add(
        "quality::ScreenTurns", [](Judged& j) { j.screened = ScreenTurns(j.turns); }, lacksSamples);
    add(
        "quality::RunSolver", [](Judged& j) { j.result = RunSolver(j.turns); }, hasNoAnswer);
    add(
        "quality::RunSolverUnscreened", [](Judged& j) { j.result = RunSolverUnscreened(j.turns); },
        hasNoAnswer);
    add(
        "quality::FitJointly", [](Judged& j) { j.fit = FitJointly(j.turns); }, {}, kSlow);
    add(
        "quality::RunJointFit", [](Judged& j) { j.result = RunJointFit(j.turns); }, {}, kSlow);
    add(
        "quality::AssessCalibration", [](Judged& j) { j.report = AssessCalibration(j.run); }, {},
        kSlow);
    add("quality::ToText", [](Judged& j) { j.text = ToText(j.report); });
    add("quality::Headline", [](Judged& j) { j.text = Headline(j.report); });
    add("quality::MissingSector::Name", [](Judged& j) {
        for (int i = 0; i < 3; ++i)
            j.text = "sectors: " + MissingSector{40, 55}.Name() + ' ' + MissingSector{}.Name();
    });
    rows.push_back(WithoutMemory("quality::Advice quality::Explain quality::Name quality::Describe "
                                 "quality::HeadingError::With quality::TiltError::Excess",
                                 [] {
                                     EXPECT_FALSE(Advice(Finding::NotFinite).empty());
                                     EXPECT_FALSE(Explain(Finding::NotFinite).empty());
                                     EXPECT_FALSE(Name(Finding::NotFinite).empty()
                                                  || Name(Verdict::Good).empty());
                                     EXPECT_FALSE(Describe(JointFitOutcome::Swung).empty());
                                     EXPECT_EQ(HeadingError{}.With(2.0), 0.0);
                                     EXPECT_GE(TiltError{}.Excess(), 0.0);
                                 }));
}

constexpr const char* kParameters =
    "[MagneticA.x0]12.5\r\n[MagneticA.y0]1\r\n[MagneticA.z0]1\r\n[MagneticA.a]0\r\n"
    "[MagneticA.b]1\r\n[MagneticA.c]0\r\n[MagneticA.d]garbage\r\n";

struct Checked
{
    Checked() { path = folder.Write("a parameter file with a long name", kParameters).c_str(); }

    std::string Text() const
    {
        std::string text = std::to_string(problems.size()) + ' ' + sentence;
        for (const ParameterProblem& problem : problems)
            text += problem.key + problem.reason;
        return text + sweep::Text(position.GetMagneticCorrectPar_A().x0);
    }

    // A problem of the file itself, and nothing is loaded.
    bool CouldNotRead() const
    {
        return problems.size() == 1 && problems[0].key.empty()
               && position.GetMagneticCorrectPar_A().x0 == 0.0;
    }

    ScratchFolder folder;
    CString path;
    std::vector<ParameterProblem> problems;
    CInclineSensor_Position position;
    std::string sentence;
};

void AddParameterRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* covers, std::function<void(Checked&)> run) {
        rows.push_back(Operation<Checked>(covers, Shortage::Throws, std::move(run),
                                          [](const Checked& c) { return c.Text(); },
                                          {[](const Checked& c) { return c.CouldNotRead(); }, {}}));
    };
    add("quality::CheckParameters", [](Checked& c) { c.problems = CheckParameters(c.path); });
    add("quality::CheckParameterText",
        [](Checked& c) { c.problems = CheckParameterText(kParameters); });
    add("quality::LoadParameters",
        [](Checked& c) { c.problems = LoadParameters(c.path, c.position); });
    add("quality::LoadParameterText", [](Checked& c) {
        auto problems = LoadParameterText("[MagneticA.x0]12.5\r\n[MagneticA.d]1e9\r\n", c.position,
                                          ParameterKeys::Some);
        LoadParameterText("[MagneticA.x0]12.5\r\n", c.position, ParameterKeys::Some);
        c.problems = std::move(problems);
    });
    add("quality::ToText", [](Checked& c) {
        c.sentence = ToText(ParameterProblem{"MagneticA.b", 2, "is 40, not between 0.1 and 10"});
    });
}

struct Estimated
{
    Estimated()
    {
        for (int k = 0; k < 20; ++k) {
            const double lean = 0.2 + 0.02 * k;
            antennas.push_back({2.0 * std::sin(lean) * std::cos(1.4 * k),
                                2.0 * std::sin(lean) * std::sin(1.4 * k), 2.0 * std::cos(lean)});
        }
    }
    std::vector<xyhCoord> antennas;
    TipEstimate estimate;
};

} // namespace

std::vector<Row> QualityRows()
{
    std::vector<Row> rows;
    AddCalibrationRows(rows);
    AddParameterRows(rows);
    rows.push_back(Operation<Estimated>(
        "quality::EstimateTip", Shortage::Throws,
        [](Estimated& e) { e.estimate = EstimateTip(e.antennas, 2.0); },
        [](const Estimated& e) {
            return std::to_string(static_cast<int>(e.estimate.verdict)) + ' '
                   + Text(e.estimate.tip.h) + Text(e.estimate.ellipseMajor)
                   + Text(e.estimate.suspectRatio);
        }));
    return rows;
}

} // namespace sweep
