// SPDX-License-Identifier: MIT
//
// Adjust uses moments where they are accurate; its results must equal those of the fits for any
// data.
#include "calibration/solver/MomentSolver.h"
#include "tests/calibration/AdjustTools.h"
#include "tests/reference/LiteralAdjust.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

using Turn = std::vector<PoseSensorData>;

bool Agree(double a, double b, double tolerance)
{
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return a == b || std::fabs(a - b) <= tolerance * (1 + std::fabs(b));
}

::testing::AssertionResult Agree(const Incline_MagneticCorrectParameter& a,
                                 const Incline_MagneticCorrectParameter& b, double tolerance)
{
    for (const auto field :
         {&Incline_MagneticCorrectParameter::x0, &Incline_MagneticCorrectParameter::y0,
          &Incline_MagneticCorrectParameter::z0, &Incline_MagneticCorrectParameter::a,
          &Incline_MagneticCorrectParameter::b, &Incline_MagneticCorrectParameter::c,
          &Incline_MagneticCorrectParameter::d, &Incline_MagneticCorrectParameter::e})
        if (!Agree(a.*field, b.*field, tolerance))
            return ::testing::AssertionFailure()
                   << a.*field << " and " << b.*field << " differ by " << a.*field - b.*field;
    return ::testing::AssertionSuccess();
}

// Runs both ways over the same turns: result, boxes, parameters and translation.
void ExpectSameAsTheFits(const Turn& horizontal, const Turn& vertical, double tolerance)
{
    const OwnDataFolder folder;
    RecordedBoxes boxes;
    ReachAdjust adjust;
    Load(adjust, horizontal, vertical);
    const int result = adjust.Adjust();
    const std::vector<Box> shown = std::exchange(boxes.shown, {});

    Incline_MagneticCorrectParameter A, B;
    const int solvedA = adjust.MagCorrPara(MatrixOf(horizontal), MatrixOf(vertical), A);
    if (!solvedA) boxes.shown.push_back(shown.empty() ? Box{} : shown.back());
    int solvedB = 0;
    if (solvedA) {
        solvedB = adjust.MagCorrPara(MatrixOf(horizontal, Magnetometer::B),
                                     MatrixOf(vertical, Magnetometer::B), B);
        if (!solvedB) boxes.shown.push_back(shown.empty() ? Box{} : shown.back());
    }
    EXPECT_EQ(result, solvedA && solvedB ? 1 : 0);
    EXPECT_EQ(shown, boxes.shown);
    EXPECT_TRUE(Agree(adjust.GetCorrectPar_A(), A, tolerance));
    EXPECT_TRUE(Agree(adjust.GetCorrectPar_B(), B, tolerance));
    if (!result) return;
    Incline_MagneticTranslationParameter T;
    adjust.MagneticCoordinateOffset(MatrixOf(horizontal), MatrixOf(horizontal, Magnetometer::B), T);
    EXPECT_TRUE(Agree(adjust.GetCoorTrans().dX, T.dX, tolerance));
    EXPECT_TRUE(Agree(adjust.GetCoorTrans().dY, T.dY, tolerance));
    EXPECT_TRUE(Agree(adjust.GetCoorTrans().dZ, T.dZ, tolerance));
}

tiltpole::calibration::TurnReadings Columns(const Turn& turn)
{
    tiltpole::calibration::TurnReadings readings(static_cast<int>(turn.size()));
    int i = 0;
    for (const PoseSensorData& s : turn)
        readings.Set(i++, s.dMag_x, s.dMag_y, s.dMag_z);
    readings.Close();
    return readings;
}

// Hundreds to thousands of counts of offset, skewed or not, whole or fractional.
TEST(AdjustByMoments, FieldLikeTurnsAgreeToNineDigits)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        turns::Shape shape;
        shape.samples = 50 + static_cast<int>(random() % 700);
        shape.revolutions = 1 + unit(random) * 1.5;
        shape.radius = 300 + 600 * unit(random);
        shape.skew = 0.4 * (unit(random) - 0.5);
        shape.scale = 0.7 + 0.6 * unit(random);
        shape.offset = 1500 * unit(random);
        shape.noise = 1 + 6 * unit(random);
        shape.wholeCounts = seed % 3 == 0;
        shape.seed = seed;
        SCOPED_TRACE(seed);
        const Turn horizontal = turns::Make(shape, turns::TurnAxis::Horizontal),
                   vertical = turns::Make(shape, turns::TurnAxis::Vertical);
        EXPECT_TRUE(tiltpole::calibration::SolveByMoments(Columns(horizontal), Columns(vertical))
                        .has_value());
        ExpectSameAsTheFits(horizontal, vertical, 1e-9);
    }
}

struct Odd
{
    const char* why;
    Turn horizontal, vertical;
};

std::vector<Odd> OddTurns()
{
    const turns::Shape shape{.samples = 120, .seed = 3};
    const Turn h = turns::Make(shape, turns::TurnAxis::Horizontal),
               v = turns::Make(shape, turns::TurnAxis::Vertical);
    std::vector<Odd> odd;
    const auto change = [&](const char* why, bool horizontal, auto&& edit) {
        odd.push_back({why, h, v});
        int i = 0;
        for (PoseSensorData& s : horizontal ? odd.back().horizontal : odd.back().vertical)
            edit(s, i++);
    };
    change("z constant at a fraction that has no exact mean", true,
           [](PoseSensorData& s, int) { s.dMag_z = -317.1; });
    change("z varies in its last digits only", true,
           [](PoseSensorData& s, int i) { s.dMag_z = -317 + i % 3 * 1e-13; });
    change("y varies by less than the fit can see", false,
           [](PoseSensorData& s, int i) { s.dMag_y = i % 2 * 1e-17; });
    change("all on one line", true, [](PoseSensorData& s, int i) {
        s.dMag_x = i;
        s.dMag_y = 2 * i;
    });
    change("one point over and over", true, [](PoseSensorData& s, int) { s = PoseSensorData(); });
    change("two points in turn", false, [](PoseSensorData& s, int i) {
        s.dMag_x = s.dMag_z = i % 2 * 100;
        s.dMag_y = i % 2;
    });
    change("far off", true, [](PoseSensorData& s, int) { s.dMag_x += 1e6; });
    change("far off in the axis", false, [](PoseSensorData& s, int) { s.dMag_y += 1e7; });
    change("flat ellipse", true, [](PoseSensorData& s, int) { s.dMag_y *= 1e-3; });
    change("tiny numbers", true, [](PoseSensorData& s, int) {
        s.dMag_x *= 1e-9;
        s.dMag_y *= 1e-9;
        s.dMag_z *= 1e-9;
    });
    change("huge numbers", false, [](PoseSensorData& s, int) {
        s.dMag_x *= 1e90;
        s.dMag_z *= 1e90;
    });
    change("turned about an axis 60 degrees off", false,
           [](PoseSensorData& s, int) { s.dMag_y += 1.7 * s.dMag_x; });
    change("a short arc", true, [](PoseSensorData& s, int i) {
        s.dMag_x = 500 * std::cos(i * 0.004);
        s.dMag_y = 500 * std::sin(i * 0.004);
    });
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
        for (const bool horizontal : {true, false})
            change("a reading that is not finite", horizontal, [value](PoseSensorData& s, int i) {
                if (i == 60) s.dMag_z = value;
            });
    for (const int few : {4, 5, 6, 7, 8}) {
        odd.push_back({"few samples", h, v});
        odd.back().horizontal.resize(static_cast<std::size_t>(few));
        odd.push_back({"few samples", h, v});
        odd.back().vertical.resize(static_cast<std::size_t>(few));
    }
    return odd;
}

TEST(AdjustByMoments, OddTurnsAnswerAsTheFits)
{
    for (const Odd& odd : OddTurns()) {
        SCOPED_TRACE(odd.why);
        ExpectSameAsTheFits(odd.horizontal, odd.vertical, 1e-10);
    }
}

// Iron beside one magnetometer: only the other one is solved by its sums.
TEST(AdjustByMoments, OneMagnetometerFarOffLeavesTheOffsetOfTheFits)
{
    constexpr double kFarOff = 10000; // counts
    const turns::Shape shape{.samples = 120, .seed = 3};
    for (const auto field : {&PoseSensorData::dMag_x_2, &PoseSensorData::dMag_x}) {
        Turn horizontal = turns::Make(shape, turns::TurnAxis::Horizontal),
             vertical = turns::Make(shape, turns::TurnAxis::Vertical);
        for (Turn* turn : {&horizontal, &vertical})
            for (PoseSensorData& s : *turn)
                s.*field += kFarOff;
        const bool isB = field == &PoseSensorData::dMag_x_2;
        EXPECT_EQ(tiltpole::calibration::SolveByMoments(Columns(horizontal), Columns(vertical))
                      .has_value(),
                  isB);
        ExpectSameAsTheFits(horizontal, vertical, 1e-9);

        const OwnDataFolder folder;
        ReachAdjust adjust;
        Load(adjust, horizontal, vertical);
        ASSERT_EQ(adjust.Adjust(), 1);
        const auto& farOff = isB ? adjust.GetCorrectPar_B() : adjust.GetCorrectPar_A();
        EXPECT_GT(std::fabs(farOff.x0), kFarOff / 2) << "and is solved nevertheless";
    }
}

TEST(AdjustByMoments, RecordedReadingsAnswerAsTheFits)
{
    const Turn recorded = turns::Recorded();
    for (std::size_t start = 0; start + 400 <= recorded.size(); start += 150) {
        SCOPED_TRACE(start);
        const auto from = recorded.begin() + static_cast<std::ptrdiff_t>(start);
        ExpectSameAsTheFits(Turn(from, from + 200), Turn(from + 200, from + 400), 1e-8);
    }
}

// Arcs of 29 to 54 degrees give flat conics, which cost the fits digits that the sums keep.
TEST(AdjustByMoments, ShortArcsAgreeToNineDigits)
{
    for (unsigned seed = 1; seed <= 11; ++seed) {
        const Turn horizontal = turns::Make({.samples = 200, .revolutions = 1.2, .seed = seed},
                                            turns::TurnAxis::Horizontal);
        for (const double revolutions : {0.08, 0.12, 0.15})
            for (const double scale : {0.6, 1.0}) {
                SCOPED_TRACE(seed);
                SCOPED_TRACE(revolutions);
                ExpectSameAsTheFits(horizontal,
                                    turns::Make({.samples = 120,
                                                 .revolutions = revolutions,
                                                 .scale = scale,
                                                 .noise = 1,
                                                 .seed = seed},
                                                turns::TurnAxis::Vertical),
                                    1e-9);
            }
    }
}

// Four fifths of a turn leave x and y correlated: a second pass still moves the correction.
const turns::Shape kPartOfATurn{.samples = 360, .revolutions = 0.8, .noise = 0.2, .seed = 9};

Turn LeaningTurn(double lean)
{
    Turn turn = turns::Make(kPartOfATurn, turns::TurnAxis::Horizontal);
    for (PoseSensorData& s : turn) {
        s.dMag_z += lean * s.dMag_x;
        s.dMag_z_2 = s.dMag_z;
    }
    return turn;
}

literal::Readings ReadingsOf(const Turn& turn)
{
    literal::Readings readings;
    for (const PoseSensorData& s : turn)
        readings.push_back({s.dMag_x, s.dMag_y, s.dMag_z});
    return readings;
}

// The lean of z on x above which extended precision takes a second pass.
double LeanThatNeedsASecondPass(const Turn& vertical)
{
    double one = 0.0005, two = 0.002;
    for (int i = 0; i < 50; ++i) {
        const double middle = (one + two) / 2;
        int passes = 0;
        literal::Calibrate(ReadingsOf(LeaningTurn(middle)), ReadingsOf(vertical), &passes);
        (passes == 1 ? one : two) = middle;
    }
    return one;
}

TEST(AdjustByMoments, BoundOfThePassesIsTheSame)
{
    const Turn vertical = turns::Make(kPartOfATurn, turns::TurnAxis::Vertical);
    const double bound = LeanThatNeedsASecondPass(vertical);
    for (int step = -40; step <= 40; ++step) {
        SCOPED_TRACE(step);
        ExpectSameAsTheFits(LeaningTurn(bound + step * 5e-9), vertical, 1e-9);
    }
}

// There the rounding of the sums could end the passes elsewhere than that of the fits.
TEST(AdjustByMoments, LeavesALeanNextToTheBoundToTheFits)
{
    const Turn vertical = turns::Make(kPartOfATurn, turns::TurnAxis::Vertical);
    const double bound = LeanThatNeedsASecondPass(vertical);
    const auto isSolved = [&](double lean) {
        return tiltpole::calibration::SolveByMoments(Columns(LeaningTurn(lean)), Columns(vertical))
            .has_value();
    };
    for (const double away : {-9e-8, -1e-9, 1e-9, 9e-8})
        EXPECT_FALSE(isSolved(bound + away)) << away;
    for (const double away : {-1.2e-7, 1.2e-7})
        EXPECT_TRUE(isSolved(bound + away)) << away;
}

// Both ways, a twentieth below and above the lean that asks for another pass.
TEST(AdjustByMoments, EndsThePassesAtALeanOfAThousandth)
{
    const Turn vertical = turns::Make(kPartOfATurn, turns::TurnAxis::Vertical);
    const double bound = LeanThatNeedsASecondPass(vertical);
    for (const double lean : {bound - 5e-5, bound + 5e-5}) {
        SCOPED_TRACE(lean);
        const Turn horizontal = LeaningTurn(lean);
        const auto expected = literal::Calibrate(ReadingsOf(horizontal), ReadingsOf(vertical));
        Incline_MagneticCorrectParameter byFits;
        ASSERT_EQ(ReachAdjust().MagCorrPara(MatrixOf(horizontal), MatrixOf(vertical), byFits), 1);
        EXPECT_NEAR(byFits.d, static_cast<double>(expected.d), 1e-8);
        const auto byMoments =
            tiltpole::calibration::SolveByMoments(Columns(horizontal), Columns(vertical));
        ASSERT_TRUE(byMoments.has_value());
        EXPECT_NEAR(byMoments->d, static_cast<double>(expected.d), 1e-8);
    }
}

} // namespace
