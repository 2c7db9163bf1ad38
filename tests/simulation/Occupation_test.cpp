// SPDX-License-Identifier: MIT
#include "simulation/Occupation.h"

#include "simulation/LogText.h"
#include "survey/Angle.h"
#include <cmath>
#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace simulation;
using testing::StartsWith;
using tiltpole::survey::Deg2Rad;

constexpr double kGravity = 9.80665;
constexpr ErrorSpread kNoErrors{0.0, 0.0, 0.0, 0.0, 0.0, 0.0};

// A pole at the origin without any error; coordinates are small, so that nothing is rounded off.
OccupationPlan CleanPlan(OccupationMotion motion = OccupationMotion::LeanIn)
{
    OccupationPlan plan;
    plan.points = 2;
    plan.motion = UsualMotion(motion);
    plan.start = {};
    plan.noise = {0.0, 0.0, 0.0, 0.0, 30.0};
    plan.spread = kNoErrors;
    return plan;
}

Occupations LogOf(const OccupationPlan& plan, const PoseSensor& sensor = {})
{
    return SimulateOccupations(sensor, {}, plan, 7);
}

double Distance(const Point3& p, const Point3& q)
{
    return Length(p - q);
}

// The rotation from body to level after roll about the forward axis, pitch and heading.
struct Axes
{
    Point3 forward, right, down; // north, east, down
};

Axes AxesOf(const PoseAngles& angles)
{
    const double h = Deg2Rad(angles.heading), p = Deg2Rad(angles.pitch), r = Deg2Rad(angles.roll);
    const double ch = std::cos(h), sh = std::sin(h), cp = std::cos(p), sp = std::sin(p);
    const double cr = std::cos(r), sr = std::sin(r);
    return {
        {ch * cp,                sh * cp,                -sp    },
        {ch * sp * sr - sh * cr, sh * sp * sr + ch * cr, cp * sr},
        {ch * sp * cr + sh * sr, sh * sp * cr - ch * sr, cp * cr}
    };
}

TEST(Occupation, AntennaMinusLengthTimesAxisIsTheTip)
{
    for (const auto kind : {OccupationMotion::LeanIn, OccupationMotion::Free}) {
        OccupationPlan plan = CleanPlan(kind);
        plan.poleLength = 1.9;
        plan.poleError = 0.05;
        int epochs = 0;
        for (const OccupationRow& row : LogOf(plan).rows) {
            if (!row.antenna) continue;
            const Point3 down = AxesOf(row.truth.pose.angles).down;
            const Point3 up{-down.x, -down.y, down.z}; // plane frame, z up
            const Point3 tip = *row.antenna - 1.95 * up;
            EXPECT_LT(Distance(tip, row.truth.tip), 1e-9);
            ++epochs;
        }
        EXPECT_GT(epochs, 40);
    }
}

// Accelerometers read the second difference of their own place, free fall taken off, along x
// forward, y left, z up the pole.
TEST(Occupation, SpecificForceIsThatOfThePlaceOfTheSensor)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Free);
    plan.points = 1;
    plan.rate = 1000.0;
    const Occupations log = LogOf(plan);
    const auto place = [&](std::size_t i) {
        return -1.8 * AxesOf(log.rows[i].truth.pose.angles).down;
    };
    double largest = 0.0;
    for (std::size_t i = 1001; i + 1 < log.rows.size(); i += 57) {
        const Point3 bend = place(i - 1) + place(i + 1) - 2.0 * place(i);
        const Point3 force = 1e6 / kGravity * bend - Point3{0.0, 0.0, 1.0};
        const Axes axes = AxesOf(log.rows[i].truth.pose.angles);
        const PoseSensorData& s = log.rows[i].sample;
        EXPECT_NEAR(s.dAcc_x, Dot(axes.forward, force), 1e-5);
        EXPECT_NEAR(s.dAcc_y, -Dot(axes.right, force), 1e-5);
        EXPECT_NEAR(s.dAcc_z, -Dot(axes.down, force), 1e-5);
        largest = std::max(largest, Length(bend) * 1e6 / kGravity);
    }
    EXPECT_GT(largest, 0.1);
}

// Through a mounting that is off: the rates turn the true attitude of one row into the next.
TEST(Occupation, RatesTurnTheAttitudeFromRowToRow)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Free);
    plan.points = 1;
    plan.rate = 1000.0;
    plan.axisForward = 3.0;
    plan.axisRight = -2.0;
    const Occupations log = LogOf(plan);
    Matrix attitude = AttitudeOf(log.rows[0].truth.pose.angles);
    for (std::size_t i = 1; i + 1 < log.rows.size(); i += 2) { // midpoint rule over two rows
        const PoseSensorData& s = log.rows[i].sample;
        const Point3 rate{s.dGyro_x, -s.dGyro_y, -s.dGyro_z};
        const double speed = Length(rate);
        if (speed > 0.0) attitude = attitude * RotationAbout(1.0 / speed * rate, speed * 0.002);
    }
    const std::size_t last = (log.rows.size() - 1) / 2 * 2;
    const Matrix expected = AttitudeOf(log.rows[last].truth.pose.angles);
    for (int column = 0; column < 3; ++column)
        EXPECT_LT(Distance(attitude.Column(column), expected.Column(column)), 1e-6);
}

TEST(Occupation, PoleLeansInTheSensorAsItIsMounted)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Hold);
    plan.motion.leanFrom = 0.0;
    plan.motion.tremor = 0.0;
    plan.axisForward = 2.0;
    for (const OccupationRow& row : LogOf(plan).rows) {
        EXPECT_NEAR(row.sample.dPitch, 2.0, 1e-9); // nose up when the pole is plumb
        EXPECT_NEAR(row.sample.dRoll, 0.0, 1e-9);
    }
    plan.axisForward = 0.0;
    plan.axisRight = 2.0;
    for (const OccupationRow& row : LogOf(plan).rows)
        EXPECT_NEAR(row.sample.dRoll, -2.0, 1e-9); // right side up
}

TEST(Occupation, EveryPointIsPlantedOnceAndTheSensorStaysTheSame)
{
    OccupationPlan plan = CleanPlan();
    plan.points = 3;
    plan.spread = {};
    const Occupations log = LogOf(plan);
    ASSERT_EQ(log.points.size(), 3U);
    ASSERT_EQ(log.rows.size(), 750U);
    for (const OccupationRow& row : log.rows)
        EXPECT_EQ(Distance(row.truth.tip, log.points[static_cast<std::size_t>(row.point - 1)].tip),
                  0.0);
    EXPECT_NE(log.points[0].azimuth, log.points[1].azimuth);
    EXPECT_EQ(log.points[0].errors.axisForward, log.points[2].errors.axisForward);

    plan.anew = true;
    const Occupations anew = LogOf(plan);
    EXPECT_NE(anew.points[0].errors.axisForward, anew.points[2].errors.axisForward);
}

TEST(Occupation, MotionDoesNotChangeTheSensorOfASeed)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Free);
    plan.spread = {};
    const PoleErrors free = LogOf(plan).points[0].errors;
    plan.motion = UsualMotion(OccupationMotion::LeanIn);
    const PoleErrors leanIn = LogOf(plan).points[0].errors;
    EXPECT_EQ(free.axisRight, leanIn.axisRight);
    EXPECT_EQ(Distance(free.hardIronA, leanIn.hardIronA), 0.0);
    EXPECT_GT(Length(free.hardIronA), 0.1);
}

// 4000 draws: the deviation of a standard deviation is 1/sqrt(8000) of it.
TEST(Occupation, ErrorsAreDrawnWithTheirStandardDeviations)
{
    const ErrorSpread spread;
    double axis = 0.0, bias = 0.0, rate = 0.0, iron = 0.0, soft = 0.0;
    for (std::uint64_t i = 0; i < 4000; ++i) {
        const PoleErrors e = DrawErrors(spread, 3, i);
        axis += e.axisForward * e.axisForward / 4000.0;
        bias += e.accelerationBias.x * e.accelerationBias.x / 4000.0;
        rate += e.gyroBias.y * e.gyroBias.y / 4000.0;
        iron += e.hardIronB.z * e.hardIronB.z / 4000.0;
        const double stretch = e.softIronA.rows[1].y - 1.0;
        soft += stretch * stretch / 4000.0;
    }
    const double allowed = 4.0 / std::sqrt(8000.0);
    EXPECT_NEAR(std::sqrt(axis) / spread.axis, 1.0, allowed);
    EXPECT_NEAR(std::sqrt(bias) / spread.accelerationBias, 1.0, allowed);
    EXPECT_NEAR(std::sqrt(rate) / spread.gyroBias, 1.0, allowed);
    EXPECT_NEAR(std::sqrt(iron) / spread.hardIron, 1.0, allowed);
    EXPECT_NEAR(std::sqrt(soft) / spread.softIron, 1.0, allowed);
}

TEST(Occupation, EpochsComeAtTheRateOfTheAntenna)
{
    struct Case
    {
        double rate, antennaRate;
        int every;
    };
    for (const Case& c : {
             Case{50.0, 5.0,        10},
             {50.0, 50.0,       1 },
             {47.6, 47.6 / 9.0, 9 }
    }) {
        OccupationPlan plan = CleanPlan();
        plan.points = 1;
        plan.rate = c.rate;
        plan.antennaRate = c.antennaRate;
        const Occupations log = LogOf(plan);
        for (std::size_t i = 0; i < log.rows.size(); ++i)
            EXPECT_EQ(log.rows[i].antenna.has_value(), i % static_cast<std::size_t>(c.every) == 0)
                << i;
    }
}

TEST(Occupation, ADelayedAntennaShowsWhereItWas)
{
    OccupationPlan plan = CleanPlan();
    plan.points = 1;
    plan.delay = 0.1; // 5 rows
    const Occupations log = LogOf(plan);
    for (std::size_t i = 10; i < log.rows.size(); i += 10)
        EXPECT_LT(Distance(*log.rows[i].antenna, log.rows[i - 5].truth.antenna), 1e-12);
}

TEST(Occupation, LostEpochsLeaveTheOthersAsTheyWere)
{
    OccupationPlan plan = CleanPlan();
    plan.noise = {};
    const Occupations whole = LogOf(plan);
    plan.epochLosses.share = 0.3;
    plan.epochLosses.gaps = {
        {1.0, 2.0}
    };
    plan.jumps = {
        {3.0, 4.0, {0.3, -0.2, 0.5}}
    };
    const Occupations some = LogOf(plan);
    ASSERT_EQ(some.rows.size(), whole.rows.size());
    int kept = 0;
    for (std::size_t i = 0; i < some.rows.size(); ++i) {
        if (!some.rows[i].antenna) continue;
        const double seconds = some.rows[i].truth.pose.seconds;
        EXPECT_FALSE(seconds >= 1.0 && seconds < 2.0);
        const bool off = seconds >= 3.0 && seconds < 4.0;
        const Point3 by = off ? Point3{0.3, -0.2, 0.5} : Point3{};
        EXPECT_LT(Distance(*some.rows[i].antenna, *whole.rows[i].antenna + by), 1e-12);
        ++kept;
    }
    EXPECT_GT(kept, 15);
    EXPECT_LT(kept, 40);
}

TEST(Occupation, SlippedTipIsToldFromThePlantedOne)
{
    OccupationPlan plan = CleanPlan();
    plan.motion.slips = {
        {2.5, 0.2, {0.03, 0.0, -0.01}}
    };
    const Occupations log = LogOf(plan);
    const OccupiedPoint& point = log.points[1];
    EXPECT_LT(Distance(point.tipAtEnd - point.tip, {0.03, 0.0, -0.01}), 1e-12);
    EXPECT_LT(Distance(log.rows.back().truth.tip, point.tipAtEnd), 1e-12);
}

TEST(Occupation, RecordedNoiseIsReplayedAndInterpolated)
{
    OccupationPlan plan = CleanPlan();
    plan.points = 1;
    for (int i = 0; i < 100; ++i) // 1 mm a second to the north
        plan.recorded.errors.push_back({0.001 * i, 0.0, 0.0});
    const Occupations log = LogOf(plan);
    const auto errorOf = [&](std::size_t row) {
        return *log.rows[row].antenna - log.rows[row].truth.antenna;
    };
    for (std::size_t row = 10; row < log.rows.size(); row += 10)
        EXPECT_LT(Distance(errorOf(row) - errorOf(0), {0.02e-3 * static_cast<double>(row), 0, 0}),
                  1e-12);
}

TEST(Occupation, GyrosHaveScaleBiasAndRange)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Free);
    plan.motion.frequency = 1.0;
    const Occupations exact = LogOf(plan);
    PoseSensor sensor;
    sensor.gyroScale = {0.01, 0.0, -0.02};
    sensor.gyroBias = {0.0, 0.5, 0.0};
    sensor.gyroRange = 30.0;
    const Occupations read = LogOf(plan, sensor);
    int limited = 0;
    for (std::size_t i = 0; i < exact.rows.size(); ++i) {
        const PoseSensorData& e = exact.rows[i].sample;
        const PoseSensorData& r = read.rows[i].sample;
        EXPECT_NEAR(r.dGyro_x, std::clamp(1.01 * e.dGyro_x, -30.0, 30.0), 1e-12);
        EXPECT_NEAR(r.dGyro_y, std::clamp(e.dGyro_y + 0.5, -30.0, 30.0), 1e-12);
        EXPECT_NEAR(r.dGyro_z, std::clamp(0.98 * e.dGyro_z, -30.0, 30.0), 1e-12);
        if (std::fabs(r.dGyro_x) == 30.0) ++limited;
    }
    EXPECT_GT(limited, 10);
}

// On the axis of a dipole the field is twice that beside it, and falls with the cube.
TEST(Occupation, DipoleBesideThePoleFallsWithTheCube)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Hold);
    plan.motion.leanFrom = 0.0;
    plan.motion.tremor = 0.0;
    const auto readAt = [&](const Point3& place) {
        plan.dipoles = {
            {-10.0, 20.0, 100.0, place, 0.0, 0.0}
        };
        const Occupations log = SimulateOccupations({}, {0.0, 0.0, 0.0}, plan, 7);
        const OccupationRow& row = log.rows[10];
        const Axes axes = AxesOf(row.truth.pose.angles);
        const PoseSensorData& s = row.sample;
        EXPECT_TRUE(row.truth.pose.disturbed);
        return s.dMag_x * axes.forward + -s.dMag_y * axes.right + -s.dMag_z * axes.down;
    };
    EXPECT_LT(Distance(readAt({-1.0, 0.0, -1.8}), {200.0, 0.0, 0.0}), 1e-9);
    EXPECT_LT(Distance(readAt({0.0, 1.0, -1.8}), {-100.0, 0.0, 0.0}), 1e-9);
    EXPECT_LT(Distance(readAt({-2.0, 0.0, -1.8}), {25.0, 0.0, 0.0}), 1e-9);
    // 20 times as close, and no stronger closer still: 8000 times 200 on the axis.
    EXPECT_LT(Distance(readAt({-0.05, 0.0, -1.8}), {1.6e6, 0.0, 0.0}), 1e-4);
    EXPECT_LT(Distance(readAt({0.0, 0.0, -1.8}), {1.6e6, 0.0, 0.0}), 1e-4);
}

TEST(Occupation, FilterMakesPitchAndRollLagWhileThePoleMoves)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Rock);
    PoseSensor sensor;
    const Occupations exact = LogOf(plan, sensor);
    sensor.filterTime = 2.0;
    const Occupations filtered = LogOf(plan, sensor);
    double most = 0.0;
    for (std::size_t i = 0; i < exact.rows.size(); ++i)
        most =
            std::max(most, std::fabs(filtered.rows[i].sample.dPitch - exact.rows[i].sample.dPitch));
    EXPECT_GT(most, 0.3);
    EXPECT_LT(most, 5.0);
    EXPECT_NEAR(filtered.rows[0].sample.dPitch, exact.rows[0].sample.dPitch, 0.1);
}

TEST(Occupation, SameSeedRepeatsEveryByteAndAnotherDoesNot)
{
    OccupationPlan plan = CleanPlan();
    plan.spread = {};
    plan.noise = {};
    PoseSensor sensor;
    sensor.gyroNoise = 0.1;
    sensor.a.noise = 1.0;
    const auto text = [&](std::uint64_t seed) {
        return TextOf(SimulateOccupations(sensor, {}, plan, seed));
    };
    const std::string once = text(7);
    EXPECT_EQ(once, text(7));
    EXPECT_NE(once, text(8));
    EXPECT_THAT(once, StartsWith("point,seconds,dPitch,dRoll,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,"
                                 "dAcc_z,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h,"));
}

// Standard deviations of 1591 s of a fixed antenna against the defaults of the model.
TEST(AntennaErrors, HaveTheSpreadOfTheRecordedAntenna)
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/tests/data/gnss_static_rtk.txt");
    std::vector<Point3> recorded;
    std::string time;
    for (Point3 p; file >> p.y >> p.x >> p.z >> time;)
        recorded.push_back(p);
    ASSERT_EQ(recorded.size(), 1591U);
    AntennaErrors errors({}, 1.0, 3);
    std::vector<Point3> modeled(100'000);
    for (Point3& error : modeled)
        error = errors.Next();
    const auto spread = [](const std::vector<Point3>& points, double Point3::*axis) {
        double sum = 0.0, squares = 0.0;
        for (const Point3& p : points) {
            const double from = p.*axis - points[0].*axis;
            sum += from;
            squares += from * from;
        }
        const double n = static_cast<double>(points.size());
        return std::sqrt(squares / n - sum / n * (sum / n));
    };
    EXPECT_NEAR(spread(modeled, &Point3::x) / spread(recorded, &Point3::x), 1.0, 0.1);
    EXPECT_NEAR(spread(modeled, &Point3::y) / spread(recorded, &Point3::y), 1.0, 0.1);
    EXPECT_NEAR(spread(modeled, &Point3::z) / spread(recorded, &Point3::z), 1.0, 0.1);
}

TEST(Occupation, ImpossiblePlansAreNamedAndGiveNothing)
{
    const OccupationPlan plans[] = {
        {.points = 0},
        {.rate = 0.0},
        {.antennaRate = 51.0},
        {.antennaRate = 0.0},
        {.motion = {.duration = 0.0}},
        {.poleLength = 0.0},
        {.poleError = -2.0},
        {.losses = {.share = 1.0}},
        {.epochLosses = {.share = -1.0}},
        {.jumps = {{.from = 1.0, .to = 1.0}}},
        {.points = 100'000'000},
    };
    for (const OccupationPlan& plan : plans) {
        EXPECT_FALSE(ProblemOf(plan).empty());
        EXPECT_TRUE(LogOf(plan).rows.empty()) << ProblemOf(plan);
    }
    EXPECT_EQ(ProblemOf(OccupationPlan{}), "");
}

TEST(Occupation, HoldsThatAreShorterThanAMoveCanBeCarriedOut)
{
    for (const auto kind :
         {OccupationMotion::Hold, OccupationMotion::Rock, OccupationMotion::Free}) {
        OccupationPlan plan = CleanPlan(kind);
        plan.motion.duration = 1.0;
        EXPECT_EQ(ProblemOf(plan), "") << NameOf(kind);
        EXPECT_EQ(LogOf(plan).rows.size(), 100U) << NameOf(kind);
    }
    OccupationPlan plan = CleanPlan(OccupationMotion::LeanIn);
    plan.motion.duration = 1.0;
    EXPECT_THAT(ProblemOf(plan), StartsWith("the move must take"));
}

// Rocked by 60 degrees in two planes at once a pole leans by 75.
TEST(Occupation, FreeLeansOfBothPlanesTogetherAreLimited)
{
    OccupationPlan plan = CleanPlan(OccupationMotion::Free);
    plan.motion.leanFrom = 0.0;
    plan.motion.amplitude = 60.0;
    EXPECT_THAT(ProblemOf(plan), StartsWith("the lean, its amplitude included"));
    plan.motion.amplitude = 44.0; // cos 44 * cos 44 = 0.517
    EXPECT_EQ(ProblemOf(plan), "");
}

TEST(Occupation, RecordedErrorsNeedAnIntervalAboveZero)
{
    OccupationPlan plan = CleanPlan();
    for (const double interval : {0.0, -1.0, std::nan("")}) {
        plan.recorded.interval = interval;
        plan.recorded.errors.clear();
        EXPECT_EQ(ProblemOf(plan), "") << "nothing is recorded";
        plan.recorded.errors = {{}, {}};
        EXPECT_THAT(ProblemOf(plan), StartsWith("recorded antenna errors")) << interval;
    }
}

TEST(Occupation, ASlowFilterHasAMinuteToSettle)
{
    PoseSensor sensor;
    sensor.filterTime = 1e12;
    EXPECT_EQ(LogOf(CleanPlan(), sensor).rows.size(), 500U);
}

} // namespace
