// SPDX-License-Identifier: MIT
//
// What the picture of a calibration leaves out.
#include "apps/cli/calibrate/CalibrationOutput.h"
#include "apps/tables/Output.h"
#include "tests/apps/ScratchFile.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

// Both turns are all round; A and B read alike, but for the signs of B's x and y.
quality::CalibrationRun RoundTurns()
{
    quality::CalibrationRun run;
    for (int i = 0; i < 72; ++i) {
        const double angle = i * std::acos(-1.0) / 36.0;
        PoseSensorData sample;
        sample.dMag_x = 300.0 * std::sin(angle);
        sample.dMag_y = 300.0 * std::cos(angle);
        sample.dMag_z = 300.0 * std::cos(angle);
        sample.dMag_x_2 = -sample.dMag_x;
        sample.dMag_y_2 = -sample.dMag_y;
        sample.dMag_z_2 = sample.dMag_z;
        run.recorded.horizontal.push_back(sample);
    }
    run.recorded.vertical = run.recorded.horizontal;
    run.used = run.recorded;
    return run;
}

// Judged good, with a sector of each turn missing.
quality::CalibrationReport RoundReport()
{
    quality::CalibrationReport report;
    report.verdict = quality::Verdict::Good;
    for (quality::TurnFigures* turn : {&report.horizontal, &report.vertical}) {
        turn->circle.radius = 300.0;
        turn->missing = {
            {90, 120}
        };
    }
    return report;
}

// How often colors of the palette are used in the picture's SVG form, legends included.
struct Drawn
{
    int fills, strokes; // blue: readings and centers of A
    int red;            // missing sectors
};

constexpr const char* kBlueFill = "fill:rgb(0%,44.7%,69.8%)";
constexpr const char* kBlueStroke = "stroke:rgb(0%,44.7%,69.8%)";

Drawn DrawnOf(const quality::CalibrationReport& report, const quality::CalibrationRun& run)
{
    const apps::test::ScratchFolder folder;
    tables::OutputFiles files;
    cli::SaveCalibrationPicture(files, folder.Path("turns.svg"), report, run);
    files.Finish();
    const std::string svg = apps::test::ReadAll(folder.Path("turns.svg"));
    EXPECT_EQ(svg.find("nan"), svg.npos);
    const auto count = [&](const std::string& text) {
        int found = 0;
        for (auto at = svg.find(text); at != std::string::npos; at = svg.find(text, at + 1))
            ++found;
        return found;
    };
    return {count(kBlueFill), count(kBlueStroke), count("stroke:rgb(83.5%,36.9%,0%)")};
}

TEST(CalibrationPicture, DrawsReadingsCentersAndMissingSectors)
{
    const Drawn drawn = DrawnOf(RoundReport(), RoundTurns());
    EXPECT_EQ(drawn.fills, 4 * (72 + 1)) << "A in all charts and their legends";
    EXPECT_GT(drawn.strokes, 0) << "the centers";
    EXPECT_EQ(drawn.red, 2 * 3 + 4) << "of A and B, raw and corrected; four legends";
}

TEST(CalibrationPicture, LeavesOutCorrectedReadingsThatAreNotFinite)
{
    const int all = DrawnOf(RoundReport(), RoundTurns()).fills;
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    quality::CalibrationRun run = RoundTurns();
    run.calibration.correctionA.x0 = kNone;
    EXPECT_EQ(DrawnOf(RoundReport(), run).fills, all - 2 * 72);
    run = RoundTurns();
    run.calibration.correctionA.e = kNone;
    EXPECT_EQ(DrawnOf(RoundReport(), run).fills, all - 72) << "z, of the vertical turn";
}

TEST(CalibrationPicture, HasOnlyRawChartsWithoutACalibration)
{
    quality::CalibrationRun run = RoundTurns();
    run.solverAnswer = 0;
    const int all = DrawnOf(RoundReport(), RoundTurns()).fills;
    EXPECT_EQ(2 * DrawnOf(RoundReport(), run).fills, all);
    quality::CalibrationReport report = RoundReport();
    report.verdict = quality::Verdict::Refused;
    EXPECT_EQ(2 * DrawnOf(report, RoundTurns()).fills, all);
}

TEST(CalibrationPicture, HasNoCenterOfACircleThatIsNone)
{
    for (const double radius : {0.0, 1000.0}) {
        quality::CalibrationReport report = RoundReport();
        report.horizontal.circle.radius = radius;
        report.vertical.circle.radius = radius;
        const Drawn drawn = DrawnOf(report, RoundTurns());
        EXPECT_EQ(drawn.strokes, 0) << radius;
        EXPECT_EQ(drawn.red, 2 + 2) << radius << ": of the corrected readings, and legends";
    }
}

TEST(CalibrationPicture, MarksNoSectorWhereNoReadingIsUsed)
{
    quality::CalibrationRun run = RoundTurns();
    run.used = {};
    const Drawn drawn = DrawnOf(RoundReport(), run);
    EXPECT_EQ(drawn.fills, 4) << "the legends";
    EXPECT_EQ(drawn.red, 2 + 2) << "of all recorded readings of A, and legends";
}

} // namespace
