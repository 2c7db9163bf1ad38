// SPDX-License-Identifier: MIT
//
// tiltpole transform: its fit against refits and against PROJ, and the program as users run it.
#include "apps/cli/transform/TransformFit.h"

#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#if defined(TILTPOLE_TEST_PROJ)
#include <proj.h>
#endif

namespace {

using apps::test::LineOutcome;
using apps::test::ReadAll;
using apps::test::RunLine;
using apps::test::ScratchFolder;
using cli::FitTransform;
using cli::PairRow;
using cli::TransformFit;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kExample = TILTPOLE_SOURCE_DIR "/examples/icgc_similarity.csv";

std::vector<PairRow> NoisyPairs(int count)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> place(0.0, 1000.0);
    std::normal_distribution<double> noise(0.0, 0.02);
    std::vector<PairRow> rows(static_cast<std::size_t>(count));
    for (PairRow& row : rows) {
        const double x = 4500000 + place(random);
        const double y = 500000 + place(random);
        row.pair = {
            x, y, 0.9 * x - 0.4 * y + noise(random), 0.4 * x + 0.9 * y + noise(random), 0, 0, 0, 0};
    }
    return rows;
}

TEST(TransformFit, MatchesARefitWithoutEachPair)
{
    const auto rows = NoisyPairs(7);
    const TransformFit fit = FitTransform(rows);
    for (std::size_t left = 0; left < rows.size(); ++left) {
        auto others = rows;
        others.erase(others.begin() + static_cast<std::ptrdiff_t>(left));
        const Magnetic_FourParameter expected = FitTransform(others).parameters;
        const Magnetic_FourParameter& found = fit.results[left].without;
        EXPECT_NEAR(found.dScale, expected.dScale, 1e-12);
        EXPECT_NEAR(found.dRotate, expected.dRotate, 1e-12);
        EXPECT_NEAR(found.dDx, expected.dDx, 1e-5); // 5e6 m from the origin
        EXPECT_NEAR(found.dDy, expected.dDy, 1e-5);
        const double x = rows[left].pair.xSource;
        const double y = rows[left].pair.ySource;
        const double c = expected.dScale * std::cos(expected.dRotate);
        const double s = expected.dScale * std::sin(expected.dRotate);
        EXPECT_NEAR(fit.results[left].predictionX,
                    rows[left].pair.xTarget - (c * x - s * y + expected.dDx), 1e-6);
        EXPECT_NEAR(fit.results[left].predictionY,
                    rows[left].pair.yTarget - (s * x + c * y + expected.dDy), 1e-6);
    }
}

// Four corners of a square, one target off by 4 along x: by symmetry the means absorb 1 of it, scale
// and rotation 1 each over the diagonal.
TEST(TransformFit, MatchesResidualsComputedByHand)
{
    std::vector<PairRow> rows(4);
    rows[0].pair = {1, 1, 1.004, 1, 0, 0, 0, 0};
    rows[1].pair = {-1, 1, -1, 1, 0, 0, 0, 0};
    rows[2].pair = {-1, -1, -1, -1, 0, 0, 0, 0};
    rows[3].pair = {1, -1, 1, -1, 0, 0, 0, 0};
    const TransformFit fit = FitTransform(rows);
    // d = 8, a = Σ uV − vU = −0.004, b = 8 + 0.004; squares = Σ|target|² − (a² + b²)/d
    const double targets = 8 + 2 * 0.004 + 0.004 * 0.004 * 0.75;
    const double squares = targets - (0.004 * 0.004 + 8.004 * 8.004) / 8.0;
    EXPECT_NEAR(fit.squares, squares, 1e-14);
    EXPECT_NEAR(fit.Rms(), std::sqrt(squares / 4), 1e-12);
    EXPECT_NEAR(fit.UnitError(), std::sqrt(squares / 4), 1e-12) << "2n - 4 is 4 as well";
    EXPECT_NEAR(fit.parameters.dRotate, std::atan2(-0.004, 8.004), 1e-15);
}

TEST(TransformFit, HasNoFitWithoutAPairOfTwo)
{
    const TransformFit fit = FitTransform(NoisyPairs(2));
    EXPECT_FALSE(fit.HasWithout());
    EXPECT_EQ(fit.UnitError(), 0.0);
    EXPECT_NEAR(fit.Rms(), 0.0, 1e-8);
}

#if defined(TILTPOLE_TEST_PROJ)
TEST(HelmertString, DescribesTheSameTransformInProj)
{
    const Magnetic_FourParameter cases[] = {
        {1.0000015504, -7.5874e-06, -129.549, -208.185, 0.0,   0.0  },
        {0.5,          2.5,         10.0,     -20.0,    0.0,   0.0  },
        {1.5,          -1.0,        10.0,     -20.0,    300.0, 400.0},
    };
    for (const Magnetic_FourParameter& p : cases) {
        PJ* const operation = proj_create(PJ_DEFAULT_CTX, cli::HelmertString(p).c_str());
        ASSERT_NE(operation, nullptr) << cli::HelmertString(p);
        const PJ_COORD found = proj_trans(operation, PJ_FWD, proj_coord(300000, 4500000, 0, 0));
        proj_destroy(operation);
        CMagneticConvert convert;
        convert.SetFourParameter(p.dDx, p.dDy, p.dRotate, p.dScale, p.dX0, p.dY0);
        double x = 300000;
        double y = 4500000;
        convert.XYtoXY(x, y);
        EXPECT_NEAR(found.xy.x, x, 1e-6);
        EXPECT_NEAR(found.xy.y, y, 1e-6);
    }
}
#endif

TEST(TransformProgram, FitsThePublishedExample)
{
    const LineOutcome outcome =
        RunLine("transform fit " + kExample + " --only direction=forward --json");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    const nlohmann::json json = nlohmann::json::parse(outcome.output);
    EXPECT_NEAR(json["parameters"]["scale"], 1 + 1.5504e-6, 3e-9);
    EXPECT_NEAR(json["parameters"]["dx"], -129.549, 0.02);
    EXPECT_NEAR(json["parameters"]["dy"], -208.185, 0.02);
    EXPECT_LT(json["rms"], 0.0005);
    EXPECT_EQ(json["rms_divisor"], 4);
    EXPECT_EQ(json["unit_error_divisor"], 4);
    EXPECT_EQ(json["points"].size(), 4U);
    EXPECT_THAT(json["proj"].get<std::string>(), StartsWith("+proj=helmert +x=-129."));
}

TEST(TransformProgram, ReportsTheFit)
{
    const LineOutcome outcome = RunLine("transform fit " + kExample + " --only direction=forward");
    for (const char* text :
         {"divided by n = 4", "divided by 2n - 4 = 4", "+proj=helmert", "fit without", "line 5"})
        EXPECT_THAT(outcome.output, HasSubstr(text));
}

TEST(TransformProgram, AppliesWhatItFittedBothWays)
{
    const ScratchFolder folder;
    const std::string parameters = folder.Path("p.json");
    ASSERT_EQ(RunLine("transform fit " + kExample + " --only direction=forward --out " + parameters)
                  .exitCode,
              0);
    const std::string points = folder.Write("points.csv", "id,N,E\n\"a,b\",300000,4500000\n");
    const std::string there = folder.Path("there.csv");
    ASSERT_EQ(
        RunLine("transform apply --parameters " + parameters + " " + points + " --out " + there)
            .exitCode,
        0);
    EXPECT_THAT(ReadAll(there), StartsWith("id,N,E\n\"a,b\",299905.0"));
    const LineOutcome back =
        RunLine("transform apply --inverse --parameters " + parameters + " " + there);
    EXPECT_EQ(back.output, "id,N,E\n\"a,b\",300000.0000,4500000.0000\n");
}

TEST(TransformProgram, AppliesToNamedColumns)
{
    const ScratchFolder folder;
    const std::string parameters =
        folder.Write("p.json", R"({"scale": 2, "rotation": 0, "dx": 1, "dy": -1})");
    const std::string points = folder.Write("points.csv", "E;N\n10;20\n");
    const LineOutcome outcome =
        RunLine("transform apply --columns E,N --parameters " + parameters + " " + points);
    EXPECT_EQ(outcome.output, "E,N\n21.0000,39.0000\n");
}

TEST(TransformProgram, CannotFitOnePlace)
{
    const ScratchFolder folder;
    const std::string header = "x_source,y_source,x_target,y_target\n";
    for (const char* rows : {"", "1,2,3,4\n", "1,2,3,4\n1,2,5,6\n"}) {
        const std::string pairs = folder.Write("pairs.csv", header + rows);
        const LineOutcome outcome = RunLine("transform fit " + pairs);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, pairs + ": a fit needs two pairs with different source points\n");
    }
}

TEST(TransformProgram, NamesWhatItCannotRead)
{
    const ScratchFolder folder;
    const std::string points = folder.Write("points.csv", "x,y\n1,2\n");
    struct Case
    {
        const char* parameters;
        const char* says;
    };
    constexpr Case cases[] = {
        {"{\n\"scale\": 1,,}",                                 ":2: not valid JSON"         },
        {"[]",                                                 ": contains no parameters"   },
        {R"({"scale": 1})",                                    ": \"rotation\" is missing"  },
        {R"({"scale": "1", "rotation": 0, "dx": 0, "dy": 0})", ": \"scale\" is not a number"},
        {R"({"scale": 0, "rotation": 0, "dx": 0, "dy": 0})",   ": \"scale\" is not positive"},
    };
    for (const Case& c : cases) {
        const std::string parameters = folder.Write("p.json", c.parameters);
        const LineOutcome outcome =
            RunLine("transform apply --parameters " + parameters + " " + points);
        EXPECT_EQ(outcome.exitCode, 2) << c.parameters;
        EXPECT_EQ(outcome.output, parameters + c.says + "\n");
    }
    const LineOutcome aFolder =
        RunLine("transform apply --parameters " + folder.Path("") + " " + points);
    EXPECT_EQ(aFolder.exitCode, 2);
    EXPECT_EQ(aFolder.output, folder.Path("") + ": Is a directory\n");
    const std::string good =
        folder.Write("p.json", R"({"scale": 1, "rotation": 0, "dx": 0, "dy": 0})");
    EXPECT_EQ(RunLine("transform apply --columns x,x --parameters " + good + " " + points).exitCode,
              2);
    EXPECT_EQ(RunLine("transform").exitCode, 2);
    EXPECT_EQ(RunLine("transform fit " + kExample + " --only direction").exitCode, 2);
    const std::string bad =
        folder.Write("bad.csv", "x_source,y_source,x_target,y_target\n1,2,3,\n");
    EXPECT_THAT(RunLine("transform fit " + bad).output, StartsWith(bad + ":2: y_target"));
}

TEST(TransformProgram, HasHelpPages)
{
    for (const char* arguments :
         {"transform --help", "transform fit --help", "transform apply --help"})
        EXPECT_EQ(RunLine(arguments).exitCode, 0);
    EXPECT_THAT(RunLine("transform apply --help").output, HasSubstr("rotation in radians"));
}

} // namespace
