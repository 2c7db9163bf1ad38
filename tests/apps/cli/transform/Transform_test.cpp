// SPDX-License-Identifier: MIT
//
// tiltpole transform: its fit against refits and against PROJ, and the program as users run it.
#include "apps/cli/transform/TransformFit.h"

#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"

#include <cmath>
#include <filesystem>
#include <fmt/format.h>
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
using testing::ContainsRegex;
using testing::EndsWith;
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
        const Magnetic_FourParameter& found = fit.results[left].without->parameters;
        EXPECT_NEAR(found.dScale, expected.dScale, 1e-12);
        EXPECT_NEAR(found.dRotate, expected.dRotate, 1e-12);
        EXPECT_NEAR(found.dDx, expected.dDx, 1e-5); // 5e6 m from the origin
        EXPECT_NEAR(found.dDy, expected.dDy, 1e-5);
        const double x = rows[left].pair.xSource;
        const double y = rows[left].pair.ySource;
        const double c = expected.dScale * std::cos(expected.dRotate);
        const double s = expected.dScale * std::sin(expected.dRotate);
        EXPECT_NEAR(fit.results[left].without->missX,
                    rows[left].pair.xTarget - (c * x - s * y + expected.dDx), 1e-6);
        EXPECT_NEAR(fit.results[left].without->missY,
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
    EXPECT_NEAR(json["parameters"]["dx_m"], -129.549, 0.02);
    EXPECT_NEAR(json["parameters"]["dy_m"], -208.185, 0.02);
    EXPECT_LT(json["rms_m"], 0.0005);
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

// A table of measure contains antennas and tips: both are moved, and nothing else is.
TEST(TransformProgram, AppliesToEveryPairOfCoordinates)
{
    const ScratchFolder folder;
    const std::string parameters =
        folder.Write("p.json", R"({"scale": 1, "rotation": 0, "dx": 100, "dy": -1})");
    const std::string points = folder.Write(
        "tips.csv", "Time,antenna_N_m,antenna_E_m,antenna_h_m,tip_N_m,tip_E_m,tip_h_m,error_N_m,"
                    "error_E_m\n10:00:00,1,2,3,4,5,6,7,8\n");
    const LineOutcome outcome =
        RunLine("transform apply --parameters " + parameters + " " + points);
    EXPECT_THAT(outcome.output, HasSubstr("\n10:00:00,101.0000,1.0000,3,104.0000,4.0000,6,7,8\n"));
    const LineOutcome tips = RunLine("transform apply --columns tip_N_m,tip_E_m " + points
                                     + " --parameters " + parameters);
    EXPECT_THAT(tips.output, HasSubstr("\n10:00:00,1,2,3,104.0000,4.0000,6,7,8\n"));
}

TEST(TransformProgram, RefusesCoordinatesThatCouldBeReadTwoWays)
{
    const ScratchFolder folder;
    const std::string parameters =
        folder.Write("p.json", R"({"scale": 1, "rotation": 0, "dx": 100, "dy": -1})");
    const std::string points = folder.Write("points.csv", "x,y,N,E\n1,2,3,4\n");
    const LineOutcome outcome =
        RunLine("transform apply --parameters " + parameters + " " + points);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, points
                                  + ":1: x could be the column x or the column N: choose with "
                                    "--columns\n");
    const std::string pairs = folder.Write("pairs.csv", "x_source,y_source,N_target,E_target\n");
    EXPECT_THAT(RunLine("transform fit " + pairs).output,
                HasSubstr("it is unclear whether N_target or E_target goes with x_source"));
}

TEST(TransformProgram, FitsPairsUnderOtherNames)
{
    const ScratchFolder folder;
    const std::string rows = "0,0,5,7\n10,0,15,7\n0,10,5,17\n";
    const std::string usual =
        folder.Write("pairs.csv", "x_source,y_source,x_target,y_target\n" + rows);
    const std::string other =
        folder.Write("other.csv", "source N [m],source E [m],Northing_target,target_east\n" + rows);
    const auto body = [](const std::string& report) {
        return report.substr(report.find("pairs "));
    };
    EXPECT_EQ(body(RunLine("transform fit " + other).output),
              body(RunLine("transform fit " + usual).output));
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

TEST(TransformProgram, FitsPlacesThatDifferInOneCoordinate)
{
    const ScratchFolder folder;
    for (const char* rows : {"0,0,1,2\n0,9,1,11\n", "0,0,1,2\n9,0,10,2\n"}) {
        const std::string pairs =
            folder.Write("pairs.csv", std::string("x_source,y_source,x_target,y_target\n") + rows);
        EXPECT_THAT(RunLine("transform fit " + pairs).output,
                    HasSubstr("dx, dy              1.0000 2.0000 m"))
            << rows;
    }
}

TEST(TransformProgram, NamesTheColumnsThatAreMissing)
{
    const ScratchFolder folder;
    const auto fit = [&](const std::string& header, const std::string& options) {
        const std::string pairs = folder.Write("pairs.csv", header + "\n0,0,1,2\n0,9,1,11\n");
        return RunLine("transform fit " + pairs + options).output;
    };
    EXPECT_THAT(fit("a,b,x_target,y_target", ""),
                HasSubstr("pairs.csv:1: missing in the header: x_source, y_source; "));
    EXPECT_THAT(fit("x_source,y_source,c,d", ""),
                HasSubstr("pairs.csv:1: missing in the header: x_target, y_target; "));
    EXPECT_THAT(fit("a,b,c,d", ""), HasSubstr(": x_source, y_source, x_target, y_target; "));
    EXPECT_THAT(fit("a,b,x_target,y_target", " --columns x_source=a,y_source=b"),
                HasSubstr("dx, dy              1.0000 2.0000 m"));
    EXPECT_THAT(fit("a,b,x_target,y_target", " --columns y_source=b"),
                HasSubstr("--columns gives y_source without x_source"));
    EXPECT_THAT(fit("a,b,x_target,y_target", " --columns x_source=a"),
                HasSubstr("--columns gives x_source without y_source"));
    const std::string points = folder.Write("points.csv", "name,a,b\nP,1,2\n");
    const std::string parameters =
        folder.Write("p.json", R"({"scale": 1, "rotation": 0, "dx": 1, "dy": 2})");
    EXPECT_THAT(RunLine("transform apply " + points + " --parameters " + parameters).output,
                HasSubstr("points.csv:1: missing in the header: N (or x), E (or y); "));
}

TEST(TransformProgram, AppliesTheParametersInsideAReport)
{
    const ScratchFolder folder;
    const std::string points = folder.Write("points.csv", "x,y\n10,20\n");
    const std::string parameters =
        folder.Write("p.json", R"({"parameters": {"scale": 1, "rotation": 0, "dx": 1, "dy": 2}})");
    EXPECT_EQ(RunLine("transform apply " + points + " --parameters " + parameters).output,
              "x,y\n11.0000,22.0000\n");
}

TEST(TransformProgram, SaysThatItsInverseHasNoCenter)
{
    const ScratchFolder folder;
    const std::string points = folder.Write("points.csv", "x,y\n10,20\n");
    const auto inverse = [&](const std::string& center) {
        const std::string parameters = folder.Write(
            "p.json", R"({"scale": 1, "rotation": 0, "dx": 1, "dy": 2)" + center + "}");
        return RunLine("transform apply --inverse " + points + " --parameters " + parameters)
            .output;
    };
    constexpr const char* kSays = "The rotation center is not used by --inverse.\n";
    EXPECT_EQ(inverse(""), "x,y\n9.0000,18.0000\n");
    EXPECT_EQ(inverse(R"(, "x0": 0, "y0": 0)"), "x,y\n9.0000,18.0000\n");
    for (const char* const center : {R"(, "x0": 5)", R"(, "y0": 5)"})
        EXPECT_THAT(inverse(center), HasSubstr(kSays)) << center;
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
        {"{\n\"scale\": 1,,}",                                    ":2: not valid JSON"            },
        {"[]",                                                    ": contains no parameters"      },
        {R"({"scale": 1})",                                       ": \"rotation_rad\" is missing" },
        {R"({"scale": "1", "rotation": 0, "dx": 0, "dy": 0})",    ": \"scale\" is not a number"   },
        {R"({"scale": 0, "rotation": 0, "dx": 0, "dy": 0})",
         ": \"scale\" is 0, not between 1e-06 and 1000000"                                        },
        {R"({"scale": 1e999, "rotation": 0, "dx": 0, "dy": 0})",
         ": \"scale\" is too large a number"                                                      },
        {R"({"scale": 1, "rotation": 0, "dx": -1e999, "dy": 0})", ": \"dx\" is too large a number"},
        {R"({"scale": 1, "rotation": 0, "dx": 0, "dy": 1e308})",
         ": \"dy\" is 1e+308, not between -1000000000 and 1000000000 m"                           },
        {R"({"scale": 1, "rotation": 45, "dx": 0, "dy": 0})",
         ": \"rotation\" is 45, not between -6.2832 and 6.2832 radians"                           },
        {R"({"refused_parameters": {"scale": 1}})",               ": holds a fit that was refused"},
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
    for (const char* const only : {"direction", "=forward"}) {
        const LineOutcome outcome = RunLine("transform fit " + kExample + " --only " + only);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_THAT(outcome.output, HasSubstr(std::string(only) + " is not COLUMN=VALUE"));
    }
    const std::string bad =
        folder.Write("bad.csv", "x_source,y_source,x_target,y_target\n1,2,3,\n");
    EXPECT_THAT(RunLine("transform fit " + bad).output, StartsWith(bad + ":2: y_target"));
}

const std::string kHeader = "name,x_source,y_source,x_target,y_target\n";

struct Place
{
    double x, y;
};

// Control points of a town, some hundred meters apart.
constexpr Place kPlaces[] = {
    {4500120.0, 500310.0},
    {4500480.0, 500150.0},
    {4500350.0, 500720.0},
    {4500790.0, 500560.0},
    {4500610.0, 500930.0},
    {4500200.0, 500880.0},
};

// Pairs of the first `count` places: the target is what `map` makes of a place, rounded to 1 mm.
template <class Map>
std::string PairsBy(Map map, std::size_t count = std::size(kPlaces))
{
    std::string text = kHeader;
    for (std::size_t k = 0; k < count; ++k) {
        const Place target = map(kPlaces[k]);
        text += fmt::format("P{},{:.3f},{:.3f},{:.3f},{:.3f}\n", k + 1, kPlaces[k].x, kPlaces[k].y,
                            target.x, target.y);
    }
    return text;
}

Place Shifted(Place p)
{
    return {p.x - 129.5, p.y - 208.2};
}

class FitProgram : public testing::Test
{
protected:
    LineOutcome Fit(const std::string& pairs, const std::string& options = "")
    {
        std::filesystem::remove(m_folder.Path("p.json"));
        const std::string file = m_folder.Write("pairs.csv", pairs);
        return RunLine("transform fit " + file + " --out " + m_folder.Path("p.json") + " "
                       + options);
    }
    void ExpectRefused(const std::string& pairs, const std::string& reason,
                       const std::string& options = "")
    {
        const LineOutcome outcome = Fit(pairs, options);
        EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr("verdict             refused\n"));
        EXPECT_THAT(outcome.output, HasSubstr("  reason            " + reason));
        EXPECT_THAT(outcome.output, HasSubstr("p.json: not written, because the fit is refused"));
        EXPECT_EQ(m_folder.Read("p.json"), "") << "written";
    }
    void ExpectWritten(const std::string& pairs, const std::string& verdict,
                       const std::string& options = "")
    {
        const LineOutcome outcome = Fit(pairs, options);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr("verdict             " + verdict + "\n"));
        EXPECT_NE(m_folder.Read("p.json"), "");
    }
    // Not written, until the operator accepts that.
    void ExpectUnchecked(const std::string& pairs, const std::string& reason)
    {
        const LineOutcome outcome = Fit(pairs);
        EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr("verdict             unchecked\n"));
        EXPECT_THAT(outcome.output, HasSubstr(reason));
        EXPECT_THAT(outcome.output, EndsWith("p.json: not written, because the fit is unchecked "
                                             "(--accept-unchecked writes it)\n"));
        EXPECT_EQ(m_folder.Read("p.json"), "") << "written";
        ExpectWritten(pairs, "unchecked", "--accept-unchecked");
        std::filesystem::remove(m_folder.Path("p.json"));
    }

    ScratchFolder m_folder;
};

TEST_F(FitProgram, AcceptsAShift)
{
    ExpectWritten(PairsBy(Shifted), "accepted");
}

TEST_F(FitProgram, NamesExchangedAxes)
{
    const auto exchanged = [](Place p) { return Place{Shifted(p).y, Shifted(p).x}; };
    ExpectRefused(PairsBy(exchanged), "the axes look exchanged or mirrored: with x and y exchanged "
                                      "on one side the scale is ");
}

TEST_F(FitProgram, NamesReversedAxes)
{
    ExpectRefused(PairsBy([](Place p) {
                      return Place{p.x, -p.y};
                  }),
                  "the axes look exchanged or mirrored: with the sign of y reversed on one side");
    ExpectRefused(PairsBy([](Place p) {
                      return Place{-p.x, p.y};
                  }),
                  "the axes look exchanged or mirrored: with the sign of x reversed on one side");
}

// 45 degrees between a system and the mirrored one.
TEST_F(FitProgram, NamesAMirrorThatIsNoMistakeOfAxes)
{
    ExpectRefused(PairsBy([](Place p) {
                      const double half = std::sqrt(0.5);
                      return Place{half * (p.x + p.y), half * (p.x - p.y)};
                  }),
                  "the axes look exchanged or mirrored: with one side mirrored the scale is ");
}

TEST_F(FitProgram, SuspectsNoMirrorThatDoesNotFit)
{
    const LineOutcome outcome = Fit(PairsBy([](Place p) {
        const double far = p.x < 4500300.0 ? 90.0 : -90.0;
        return Place{p.x + (p.y < 500600.0 ? far : -far), -p.y + far};
    }));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("verdict             refused\n"));
    EXPECT_THAT(outcome.output, testing::Not(HasSubstr("the axes look exchanged")));
}

// The best scale for a mirrored square is 0, without residuals that would stand out.
TEST_F(FitProgram, RefusesAMirroredSquare)
{
    ExpectRefused(kHeader + "A,1,1,-1,1\nB,-1,1,1,1\nC,-1,-1,1,-1\nD,1,-1,-1,-1\n",
                  "the axes look exchanged or mirrored: with the sign of x reversed on one side "
                  "the scale is +0.0 ppm and the rms 0.0000 m instead of 1.4142 m");
}

TEST_F(FitProgram, NamesExchangedAxesBesideAWrongPair)
{
    const auto exchanged = [](Place p) {
        const double slip = p.x == kPlaces[2].x ? 1.0 : 0.0;
        return Place{p.y + slip, p.x};
    };
    ExpectRefused(PairsBy(exchanged),
                  "the axes look exchanged or mirrored: with x and y exchanged on one side");
}

TEST_F(FitProgram, LimitsTheScale)
{
    const auto inFeet = [](Place p) { return Place{p.x / 0.3048, p.y / 0.3048}; };
    ExpectRefused(PairsBy(inFeet), "the scale differs from 1 by +22808");
    ExpectWritten(PairsBy(inFeet), "accepted", "--scale-limit 3e6");
    const auto stretched = [](Place p) { return Place{p.x * 1.0009, p.y * 1.0009}; };
    ExpectRefused(PairsBy(stretched), "the scale differs from 1 by ", "--scale-limit 800");
}

// One target 30 mm off among pairs that agree to 1 mm: below the limit of residuals, but no chance.
TEST_F(FitProgram, NamesThePairThatDoesNotBelong)
{
    const auto slipped = [](Place p) {
        return Place{Shifted(p).x + (p.x == kPlaces[3].x ? 0.03 : 0.0), Shifted(p).y};
    };
    ExpectRefused(PairsBy(slipped), "P4 does not belong to the others, whose fit misses it by "
                                    "0.03");
    ExpectWritten(PairsBy(slipped), "accepted", "--drop P4");
    ExpectWritten(PairsBy(slipped), "accepted", "--drop 5");
    ExpectWritten(PairsBy(slipped), "accepted", "--drop P1 --drop P4");
}

TEST_F(FitProgram, LimitsTheResiduals)
{
    // Two pairs off by 0.4 m to different sides: none alone explains the residuals.
    const auto slipped = [](Place p) {
        const double slip = p.x == kPlaces[3].x ? 0.4 : p.x == kPlaces[0].x ? -0.4 : 0.0;
        return Place{Shifted(p).x + slip, Shifted(p).y};
    };
    ExpectRefused(PairsBy(slipped), "the largest residual is 0.");
    ExpectRefused(PairsBy(slipped), "no single pair explains it; P");
    ExpectWritten(PairsBy(slipped), "accepted", "--residual-limit 0.5");
}

TEST_F(FitProgram, CannotNameAWrongPairOfThree)
{
    const auto slipped = [](Place p) {
        return Place{Shifted(p).x + (p.x == kPlaces[1].x ? 0.4 : 0.0), Shifted(p).y};
    };
    ExpectRefused(PairsBy(slipped, 3), "three pairs cannot tell which of them is wrong");
}

TEST_F(FitProgram, SaysWhatTwoPairsCannotShow)
{
    ExpectUnchecked(PairsBy(Shifted, 2), "two pairs leave no redundancy");
    ExpectRefused(kHeader + "A,0,0,0,0\nB,100,0,101,0\n", "the scale differs from 1 by +10000.0");
}

TEST_F(FitProgram, SaysThatALineHidesAMirror)
{
    const std::string line = kHeader + "A,0,0,5,7\nB,100,0,105,7\nC,200,0,205,7\nD,350,0,355,7\n";
    ExpectUnchecked(line, "the points lie almost on one line");
}

// The others stand on one place: without the pair there is nothing but rounding to divide by.
TEST_F(FitProgram, HasNoFitWithoutThePairThatCarriesIt)
{
    const std::string pairs = kHeader
                              + "A,4500120.123,500310.456,4500120.124,500310.456\n"
                                "B,4500120.123,500310.456,4500120.122,500310.455\n"
                                "C,4500120.123,500310.456,4500120.123,500310.457\n"
                                "D,4500480.111,500150.222,4500480.111,500150.222\n";
    const LineOutcome outcome = Fit(pairs);
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("verdict             unchecked\n"));
    EXPECT_THAT(outcome.output, HasSubstr("nothing controls D"));
    EXPECT_THAT(outcome.output, ContainsRegex("  D +-  +- +- +- +-\n"));
    const auto json = nlohmann::json::parse(Fit(pairs, "--json --accept-unchecked").output);
    EXPECT_TRUE(json["points"][3]["fit_without"].is_null());
    EXPECT_LT(json["points"][3]["redundancy"], 0.001);
}

TEST_F(FitProgram, KeepsTheOldFileAndMarksTheJsonOfARefusedFit)
{
    const std::string mirrored = PairsBy([](Place p) { return Place{p.x, -p.y}; });
    m_folder.Write("p.json", "old");
    const std::string pairs = m_folder.Write("mirrored.csv", mirrored);
    EXPECT_EQ(RunLine("transform fit " + pairs + " --out " + m_folder.Path("p.json")).exitCode, 1);
    EXPECT_EQ(m_folder.Read("p.json"), "old");
    const LineOutcome outcome = RunLine("transform fit " + pairs + " --json");
    EXPECT_EQ(outcome.exitCode, 1);
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(json["verdict"], "refused");
    EXPECT_FALSE(json.contains("parameters"));
    EXPECT_EQ(json["reasons"].size(), 1U);
}

TEST_F(FitProgram, MarksTheJsonOfAnUncheckedFitUntilItIsAccepted)
{
    const std::string pairs = m_folder.Write("two.csv", PairsBy(Shifted, 2));
    const auto unchecked =
        nlohmann::json::parse(RunLine("transform fit " + pairs + " --json").output);
    EXPECT_TRUE(unchecked.contains("unchecked_parameters"));
    EXPECT_FALSE(unchecked.contains("parameters"));
    const LineOutcome apply = RunLine("transform apply " + pairs + " --parameters "
                                      + m_folder.Write("fit.json", unchecked.dump()));
    EXPECT_EQ(apply.exitCode, 2);
    EXPECT_THAT(apply.output, HasSubstr("fit.json: holds a fit that was unchecked"));
    const LineOutcome accepted = RunLine("transform fit " + pairs + " --json --accept-unchecked");
    EXPECT_EQ(accepted.exitCode, 0);
    EXPECT_TRUE(nlohmann::json::parse(accepted.output).contains("parameters"));
}

TEST_F(FitProgram, AcceptsNoRefusedFitForAnUncheckedOne)
{
    ExpectRefused(kHeader + "A,0,0,0,0\nB,100,0,101,0\n", "the scale differs from 1",
                  "--accept-unchecked");
}

TEST_F(FitProgram, DropsOnlyPairsThatAreThere)
{
    const LineOutcome unknown = Fit(PairsBy(Shifted), "--drop P9");
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_EQ(unknown.output, m_folder.Path("pairs.csv") + ": there is no pair P9 to drop\n");
    const LineOutcome twice = Fit(kHeader + "A,0,0,0,0\nA,9,0,9,0\nB,0,9,0,9\n", "--drop A");
    EXPECT_EQ(twice.exitCode, 2);
    EXPECT_THAT(twice.output, EndsWith("2 pairs are named A; give --drop a line number\n"));
}

TEST_F(FitProgram, DropsThePairOfALine)
{
    const std::string pairs = m_folder.Write("pairs.csv", PairsBy(Shifted));
    for (const char* const line : {"3", "line 3"}) {
        const apps::test::Outcome outcome =
            apps::test::RunProgram({"transform", "fit", pairs, "--drop", line, "--json"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        const nlohmann::json fit = nlohmann::json::parse(outcome.out);
        ASSERT_FALSE(fit["points"].empty());
        for (const auto& point : fit["points"])
            EXPECT_NE(point["name"], "P2") << line;
    }
}

TEST_F(FitProgram, RefusesCoordinatesThatCannotBe)
{
    const LineOutcome outcome = Fit(kHeader + "A,0,0,0,0\nB,1e308,0,0,0\n");
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output,
                EndsWith(":3: x_source is 1e+308, not between -100000000 and 100000000 m\n"));
}

TEST(TransformProgram, RefusesToLeadOffThePlanet)
{
    const ScratchFolder folder;
    const std::string parameters =
        folder.Write("p.json", R"({"scale": 1000, "rotation": 0, "dx": 0, "dy": 0})");
    const std::string points = folder.Write("points.csv", "x,y\n1,2\n300000,4500000\n");
    const LineOutcome outcome = RunLine("transform apply --parameters " + parameters + " " + points
                                        + " --out " + folder.Path("out.csv"));
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, points
                                  + ":3: transformed, x is 300000000, not between -100000000 "
                                    "and 100000000 m\n");
    EXPECT_EQ(folder.Read("out.csv"), "");
    const std::string far = folder.Write("far.csv", "x,y\n1e308,2\n");
    EXPECT_EQ(
        RunLine("transform apply --parameters " + parameters + " " + far).output.substr(far.size()),
        ":2: x is 1e+308, not between -100000000 and 100000000 m\n");
}

// F test of an omitted pair, computed the long way: refit, ratio of the squares, its distribution
// by numbers from a table (F(2, 4) exceeds 6.9443 in 5 % of cases).
TEST(TransformFit, TheChanceOfAPairIsThatOfAnOmittedOne)
{
    auto rows = NoisyPairs(5);
    const auto squaresWithout = [&](std::size_t left) {
        auto others = rows;
        others.erase(others.begin() + static_cast<std::ptrdiff_t>(left));
        return FitTransform(others).squares;
    };
    const auto fOf = [&] {
        const double without = squaresWithout(2);
        return (FitTransform(rows).squares - without) / 2.0 / (without / 4.0);
    };
    double low = 0.0; // shifts the target of a pair until F is that of the table
    double high = 10.0;
    for (int k = 0; k < 60; ++k) {
        const double middle = (low + high) / 2.0;
        rows[2].pair.xTarget += middle;
        (fOf() < 6.9443 ? low : high) = middle;
        rows[2].pair.xTarget -= middle;
    }
    rows[2].pair.xTarget += low;
    EXPECT_NEAR(FitTransform(rows).results[2].chance, 5 * 0.05, 1e-4);
}

TEST(TransformProgram, HasHelpPages)
{
    for (const char* arguments :
         {"transform --help", "transform fit --help", "transform apply --help"})
        EXPECT_EQ(RunLine(arguments).exitCode, 0);
    EXPECT_THAT(RunLine("transform apply --help").output, HasSubstr("rotation_rad"));
}

} // namespace
