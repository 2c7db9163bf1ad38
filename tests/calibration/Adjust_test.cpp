// SPDX-License-Identifier: MIT
//
// The calibration from turns to parameters: results, order of messages, state after a failure.
#include "tests/calibration/AdjustTools.h"
#include "tests/reference/LiteralAdjust.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

constexpr unsigned kStop = 0x10, kExclamation = 0x30, kInformation = 0x40;
const Box kFailedA{L"A calculation of the magnetometer calibration fails, please recalibrate!",
                   L"Warning", kExclamation};
const Box kFailedB{L"B calculation of the magnetometer calibration fails, please recalibrate!",
                   L"Warning", kExclamation};
const Box kNoEllipseZ{L"椭圆拟合失败,绕Z轴旋转数据有误!", L"Warning", kStop};
const Box kNoLineZ{L"直线拟合失败,绕Z轴旋转数据有误!", L"Warning", kStop};
const Box kNoEllipseY{L"椭圆拟合失败,绕Y轴旋转数据有误!", L"Warning", kStop};
const Box kNoLineY{L"直线拟合失败,绕Y轴旋转数据有误!", L"Warning", kStop};
const Box kPassLimit{L"循环次数超限，磁力计校准参数精度不可靠!", L"Warning", kInformation};

using Turn = std::vector<PoseSensorData>;

literal::Readings ReadingsOf(const Turn& samples, Magnetometer which)
{
    literal::Readings readings;
    for (const PoseSensorData& s : samples) {
        const auto [x, y, z] = tiltpole::survey::ReadingOf(s, which);
        readings.push_back({x, y, z});
    }
    return readings;
}

void ExpectNear(double value, literal::Real expected, double tolerance, const char* name)
{
    EXPECT_NEAR(value, static_cast<double>(expected),
                tolerance * (1 + std::fabs(static_cast<double>(expected))))
        << name;
}

void ExpectCorrection(const Incline_MagneticCorrectParameter& P,
                      const literal::Correction& expected, double tolerance)
{
    ExpectNear(P.x0, expected.x0, tolerance, "x0");
    ExpectNear(P.y0, expected.y0, tolerance, "y0");
    ExpectNear(P.z0, expected.z0, tolerance, "z0");
    ExpectNear(P.a, expected.a, tolerance, "a");
    ExpectNear(P.b, expected.b, tolerance, "b");
    ExpectNear(P.c, expected.c, tolerance, "c");
    ExpectNear(P.d, expected.d, tolerance, "d");
    ExpectNear(P.e, expected.e, tolerance, "e");
}

// Readings of a sensor whose correction is known: the true field, rotated and then distorted.
struct KnownSensor
{
    literal::Correction truth{60, -40, 25, 0.05, -0.03, 0.04, 1.1, 0.95};
    double horizontal = 420; // field in the turn's plane [counts]
    double lift = -380;      // field along the axis [counts]
    double wobble = 0;       // of the axis [counts]
    double arc = 2 * std::numbers::pi;

    // The reading in the field (x, y, z).
    PoseSensorData Read(double x, double y, double z) const
    {
        const auto& P = truth;
        PoseSensorData s;
        s.dMag_x = static_cast<double>(x + P.x0);
        s.dMag_y = static_cast<double>((y + P.y0 - P.a * s.dMag_x) / P.b);
        s.dMag_z = static_cast<double>((z + P.z0 - P.c * s.dMag_x - P.d * s.dMag_y) / P.e);
        s.dMag_x_2 = -s.dMag_x + 9;
        s.dMag_y_2 = -s.dMag_y - 5;
        s.dMag_z_2 = s.dMag_z + 3;
        return s;
    }

    Turn Horizontal(int n) const
    {
        Turn turn;
        for (int i = 0; i < n; ++i) {
            const double t = arc * i / n;
            turn.push_back(Read(horizontal * std::cos(t), horizontal * std::sin(t),
                                lift + wobble * std::sin(3 * t)));
        }
        return turn;
    }

    Turn Vertical(int n) const
    {
        Turn turn;
        const double field = std::hypot(horizontal, lift);
        for (int i = 0; i < n; ++i) {
            const double t = arc * i / n;
            turn.push_back(
                Read(field * std::cos(t), wobble * std::cos(5 * t), field * std::sin(t)));
        }
        return turn;
    }
};

TEST(Adjust, EqualsTheStepsInExtendedPrecision)
{
    for (const turns::Shape& shape : turns::Shapes()) {
        if (shape.radius < 300 || shape.noise > 10 || shape.noise == 0) continue;
        if (shape.samples < 50) continue;
        const Turn horizontal = turns::Make(shape, turns::TurnAxis::Horizontal),
                   vertical = turns::Make(shape, turns::TurnAxis::Vertical);
        RecordedBoxes boxes;
        CInclineSensor_MagneticAdjust adjust;
        Load(adjust, horizontal, vertical);
        ASSERT_EQ(adjust.Adjust(), 1) << shape.seed;
        EXPECT_TRUE(boxes.shown.empty());
        for (const Magnetometer which : {Magnetometer::A, Magnetometer::B}) {
            SCOPED_TRACE(shape.seed);
            const auto expected =
                literal::Calibrate(ReadingsOf(horizontal, which), ReadingsOf(vertical, which));
            ExpectCorrection(which == Magnetometer::A ? adjust.GetCorrectPar_A()
                                                      : adjust.GetCorrectPar_B(),
                             expected, 1e-7);
        }
    }
}

TEST(Adjust, TranslationIsTheMeanDifferenceOfTheCorrectedReadings)
{
    const turns::Shape shape{.samples = 400, .skew = 0.2, .seed = 12};
    const Turn horizontal = turns::Make(shape, turns::TurnAxis::Horizontal),
               vertical = turns::Make(shape, turns::TurnAxis::Vertical);
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, horizontal, vertical);
    ASSERT_EQ(adjust.Adjust(), 1);
    const auto A = literal::Calibrate(ReadingsOf(horizontal, Magnetometer::A),
                                      ReadingsOf(vertical, Magnetometer::A))
                       .Apply(ReadingsOf(horizontal, Magnetometer::A));
    const auto B = literal::Calibrate(ReadingsOf(horizontal, Magnetometer::B),
                                      ReadingsOf(vertical, Magnetometer::B))
                       .Apply(ReadingsOf(horizontal, Magnetometer::B));
    literal::Reading sum{};
    for (std::size_t i = 0; i < A.size(); ++i) {
        sum[0] += -B[i][0] - A[i][0];
        sum[1] += -B[i][1] - A[i][1];
        sum[2] += B[i][2] - A[i][2];
    }
    ExpectNear(adjust.GetCoorTrans().dX, sum[0] / 400, 1e-7, "dX");
    ExpectNear(adjust.GetCoorTrans().dY, sum[1] / 400, 1e-7, "dY");
    ExpectNear(adjust.GetCoorTrans().dZ, sum[2] / 400, 1e-7, "dZ");
}

// Both turns are exactly about the axes and have the same scale: the correction restores the
// circles.
TEST(Adjust, CorrectedTurnsAreCirclesAboutTheOrigin)
{
    const KnownSensor sensor{.wobble = 0.5};
    CInclineSensor_MagneticAdjust adjust;
    const Turn horizontal = sensor.Horizontal(360);
    Load(adjust, horizontal, sensor.Vertical(360));
    RecordedBoxes boxes;
    ASSERT_EQ(adjust.Adjust(), 1);
    const auto P = adjust.GetCorrectPar_A();
    double least = 1e9, greatest = 0;
    for (const PoseSensorData& s : horizontal) {
        const double radius = std::hypot(s.dMag_x - P.x0, P.a * s.dMag_x + P.b * s.dMag_y - P.y0);
        least = std::min(least, radius);
        greatest = std::max(greatest, radius);
    }
    EXPECT_LT(greatest - least, 1) << "counts, of a radius of " << greatest;
}

TEST(Adjust, FreshResultsAreTheIdentity)
{
    const CInclineSensor_MagneticAdjust adjust;
    ExpectCorrection(adjust.GetCorrectPar_A(), {}, 0);
    ExpectCorrection(adjust.GetCorrectPar_B(), {}, 0);
    EXPECT_EQ(adjust.GetCoorTrans().dX, 0);
}

TEST(Adjust, StopsAfterOnePassWhereThePlaneIsLevel)
{
    turns::Shape shape{.samples = 360, .revolutions = 1, .noise = 0.3};
    const Turn horizontal = turns::Make(shape, turns::TurnAxis::Horizontal),
               vertical = turns::Make(shape, turns::TurnAxis::Vertical);
    int passes = 0;
    const auto expected = literal::Calibrate(ReadingsOf(horizontal, Magnetometer::A),
                                             ReadingsOf(vertical, Magnetometer::A), &passes);
    ASSERT_EQ(passes, 1) << "the turn is meant to be level from the start";
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, horizontal, vertical);
    ASSERT_EQ(adjust.Adjust(), 1);
    ExpectCorrection(adjust.GetCorrectPar_A(), expected, 1e-7);
}

// On a short arc x and y move together, and removing the lean from each in turn hardly helps.
void LoadTurnsThatReachThePassLimit(CInclineSensor_MagneticAdjust& adjust)
{
    KnownSensor sensor{.wobble = 0.5};
    sensor.truth.c = 0.3;
    sensor.truth.d = -0.3;
    const Turn vertical = sensor.Vertical(200);
    sensor.arc = 0.9;
    Load(adjust, sensor.Horizontal(200), vertical);
}

TEST(Adjust, ReportsThePassLimitAndStillSucceeds)
{
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    LoadTurnsThatReachThePassLimit(adjust);
    EXPECT_EQ(adjust.Adjust(), 1);
    EXPECT_EQ(boxes.shown, (std::vector<Box>{kPassLimit, kPassLimit})) << "one per magnetometer";
}

TEST(Adjust, RefinesInFourteenPassesAtMost)
{
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    LoadTurnsThatReachThePassLimit(adjust);
    ASSERT_EQ(adjust.Adjust(), 1);
    Turn horizontal, vertical;
    PoseSensorData sample;
    for (int i = 0; adjust.Horizontal_Get(i, sample); ++i)
        horizontal.push_back(sample);
    for (int i = 0; adjust.Vertical_Get(i, sample); ++i)
        vertical.push_back(sample);
    const auto expected = literal::Calibrate(ReadingsOf(horizontal, Magnetometer::A),
                                             ReadingsOf(vertical, Magnetometer::A));
    ExpectNear(adjust.GetCorrectPar_A().c, expected.c, 1e-5, "c");
    ExpectNear(adjust.GetCorrectPar_A().d, expected.d, 1e-5, "d");
}

TEST(Adjust, ReadsAllSamplesBeforeTheFirstBox)
{
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust undisturbed, adjust;
    LoadTurnsThatReachThePassLimit(undisturbed);
    ASSERT_EQ(undisturbed.Adjust(), 1);
    LoadTurnsThatReachThePassLimit(adjust);
    boxes.whileShown = [&] {
        adjust.Horizontal_Clear();
        adjust.Vertical_Clear();
    };
    EXPECT_EQ(adjust.Adjust(), 1);
    EXPECT_EQ(boxes.shown, std::vector<Box>(4, kPassLimit));
    EXPECT_EQ(adjust.GetCorrectPar_B().c, undisturbed.GetCorrectPar_B().c);
    EXPECT_EQ(adjust.GetCorrectPar_B().z0, undisturbed.GetCorrectPar_B().z0);
    EXPECT_EQ(adjust.GetCoorTrans().dX, undisturbed.GetCoorTrans().dX);
    EXPECT_EQ(adjust.GetCoorTrans().dZ, undisturbed.GetCoorTrans().dZ);
}

// The horizontal arc is short and noisy: once corrected, the conic through it is a hyperbola.
TEST(Adjust, TakesTheCenterOfAConicThatIsNotAnEllipse)
{
    const Turn horizontal =
        turns::Make({.samples = 120, .revolutions = 0.3, .skew = 0.3, .noise = 30, .seed = 8},
                    turns::TurnAxis::Horizontal);
    const Turn vertical =
        turns::Make({.samples = 120, .skew = 0.2, .seed = 8}, turns::TurnAxis::Vertical);
    const auto expected = literal::Calibrate(ReadingsOf(horizontal, Magnetometer::A),
                                             ReadingsOf(vertical, Magnetometer::A));
    literal::Correction level = expected;
    level.x0 = level.y0 = level.z0 = 0;
    const auto p = literal::Ellipse(level.Apply(ReadingsOf(horizontal, Magnetometer::A)), 0, 1);
    ASSERT_GE(p[1] * p[1], 4 * p[0] * (1 - p[0])) << "the corrected conic is meant to be none";

    RecordedBoxes boxes;
    Incline_MagneticCorrectParameter P;
    EXPECT_EQ(ReachAdjust().MagCorrPara(MatrixOf(horizontal), MatrixOf(vertical), P), 1);
    EXPECT_TRUE(boxes.shown.empty());
    ExpectCorrection(P, expected, 1e-6);
}

struct Failure
{
    const char* why;
    Turn horizontal;
    Turn vertical;
    std::vector<Box> boxes;
};

Turn Changed(Turn turn, double PoseSensorData::*field, double value)
{
    for (PoseSensorData& s : turn)
        s.*field = value;
    return turn;
}

// x and v of a hyperbola that least squares recover: 2x² − v² = −1.
Turn Hyperbola(Turn turn, double PoseSensorData::*x, double PoseSensorData::*v)
{
    for (std::size_t i = 0; i < turn.size(); ++i) {
        const double at = static_cast<double>(i % 9) - 4;
        turn[i].*x = at;
        turn[i].*v = (i % 2 ? 1 : -1) * std::sqrt(2 * at * at + 1);
    }
    return turn;
}

std::vector<Failure> Failures()
{
    using P = PoseSensorData;
    const KnownSensor sensor{.wobble = 2};
    const Turn h = sensor.Horizontal(90), v = sensor.Vertical(90);
    const Turn four(h.begin(), h.begin() + 4), vFour(v.begin(), v.begin() + 4);
    std::vector<Failure> failures;
    const auto expect = [&](const char* why, const Turn& horizontal, const Turn& vertical,
                            const Box& fit, const Box& magnetometer) {
        failures.push_back({
            why, horizontal, vertical, {fit, magnetometer}
        });
    };
    const Turn level = Changed(h, &P::dMag_z, -400), levelB = Changed(h, &P::dMag_z_2, -400);
    const Turn flat = Changed(v, &P::dMag_y, 7), flatB = Changed(v, &P::dMag_y_2, 7);
    const Turn openH = Hyperbola(h, &P::dMag_x, &P::dMag_y);
    const Turn openV = Hyperbola(v, &P::dMag_x, &P::dMag_z);
    expect("no samples", {}, {}, kNoEllipseZ, kFailedA);
    expect("four horizontal samples", four, v, kNoEllipseZ, kFailedA);
    expect("four vertical samples", h, vFour, kNoEllipseY, kFailedA);
    expect("a horizontal hyperbola", openH, v, kNoEllipseZ, kFailedA);
    expect("a level horizontal turn", level, v, kNoLineZ, kFailedA);
    expect("a vertical hyperbola", h, openV, kNoEllipseY, kFailedA);
    expect("vertical samples of one y", h, flat, kNoLineY, kFailedA);
    expect("B level in the horizontal turn", levelB, v, kNoLineZ, kFailedB);
    expect("B of one y in the vertical turn", h, flatB, kNoLineY, kFailedB);
    return failures;
}

TEST(Adjust, ReportsTheFailedFitAndThenTheMagnetometer)
{
    for (const Failure& failure : Failures()) {
        const OwnDataFolder folder;
        RecordedBoxes boxes;
        CInclineSensor_MagneticAdjust adjust;
        Load(adjust, failure.horizontal, failure.vertical);
        EXPECT_EQ(adjust.Adjust(), 0) << failure.why;
        EXPECT_EQ(boxes.shown, failure.boxes) << failure.why;
        const bool ofA = failure.boxes.back() == kFailedA;
        EXPECT_EQ(folder.Has("Debug_MagneticAdjust_ErrorData_A.csv"), ofA) << failure.why;
        EXPECT_EQ(folder.Has("Debug_MagneticAdjust_ErrorData_B.csv"), !ofA) << failure.why;
    }
}

TEST(Adjust, ShowsTheBoxesBeforeItWritesTheDump)
{
    for (const Failure& failure : Failures()) {
        const OwnDataFolder folder;
        RecordedBoxes boxes;
        CInclineSensor_MagneticAdjust adjust;
        Load(adjust, failure.horizontal, failure.vertical);
        boxes.whileShown = [&] {
            EXPECT_FALSE(std::filesystem::exists(folder.Root())) << failure.why;
        };
        EXPECT_EQ(adjust.Adjust(), 0) << failure.why;
        EXPECT_TRUE(std::filesystem::exists(folder.Root())) << failure.why;
    }
}

TEST(Adjust, KeepsWhatWasReachedBeforeAFailure)
{
    const KnownSensor sensor{.wobble = 2};
    const Turn horizontal = sensor.Horizontal(90), vertical = sensor.Vertical(90);
    const OwnDataFolder folder;
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, horizontal, vertical);
    ASSERT_EQ(adjust.Adjust(), 1);
    const auto before = adjust.GetCorrectPar_B();
    const auto translation = adjust.GetCoorTrans();
    ASSERT_NE(before.a, 0);

    adjust.Horizontal_Clear();
    Load(adjust, Changed(horizontal, &PoseSensorData::dMag_z_2, -400), {});
    ASSERT_EQ(adjust.Adjust(), 0);
    EXPECT_NE(adjust.GetCorrectPar_A().a, 0) << "A was finished";
    ExpectCorrection(adjust.GetCorrectPar_B(), {}, 0);
    EXPECT_EQ(adjust.GetCoorTrans().dX, translation.dX) << "not reached";
}

TEST(Adjust, SamplesStayAndIndicesAreChecked)
{
    CInclineSensor_MagneticAdjust adjust;
    PoseSensorData first, second, out;
    first.dPitch = 1;
    second.dPitch = 2;
    adjust.Horizontal_Add(&first);
    adjust.Horizontal_Add(nullptr);
    adjust.Vertical_Add(&second);
    adjust.Vertical_Add(nullptr);
    first.dPitch = 9; // the set has its own copy
    const OwnDataFolder folder;
    RecordedBoxes boxes;
    adjust.Adjust();
    EXPECT_EQ(adjust.Horizontal_Get(0, out), 1);
    EXPECT_EQ(out.dPitch, 1);
    EXPECT_EQ(adjust.Vertical_Get(0, out), 1);
    EXPECT_EQ(out.dPitch, 2);
    out.dPitch = 5;
    for (const int index : {-1, 1}) {
        EXPECT_EQ(adjust.Horizontal_Get(index, out), 0);
        EXPECT_EQ(adjust.Vertical_Get(index, out), 0);
    }
    EXPECT_EQ(out.dPitch, 5) << "left alone";
    adjust.Horizontal_Clear();
    EXPECT_EQ(adjust.Horizontal_Get(0, out), 0);
    EXPECT_EQ(adjust.Vertical_Get(0, out), 1);
    adjust.Vertical_Clear();
    EXPECT_EQ(adjust.Vertical_Get(0, out), 0);
}

TEST(Adjust, OffsetOfMatricesOfDifferentLengthIsRefused)
{
    RecordedBoxes boxes;
    ReachAdjust adjust;
    Incline_MagneticTranslationParameter T{1, 2, 3};
    EXPECT_EQ(adjust.MagneticCoordinateOffset(CSZMatrix(3, 3), CSZMatrix(2, 3), T), 0);
    EXPECT_EQ(T.dX, 1);
    EXPECT_EQ(boxes.shown, (std::vector<Box>{
                               {L"Two input matrix must be rotated to the same data collected "
                                L"around the Z axis!", L"Warning", kExclamation}
    }));
}

TEST(Adjust, OffsetNegatesXAndYOfB)
{
    ReachAdjust adjust;
    Incline_MagneticTranslationParameter T;
    const CSZMatrix HA(2, 3, 6, 1.0, 2.0, 3.0, 3.0, 4.0, 5.0);
    const CSZMatrix HB(2, 3, 6, -2.0, 1.0, 7.0, -4.0, 3.0, 9.0);
    EXPECT_EQ(adjust.MagneticCoordinateOffset(HA, HB, T), 1);
    EXPECT_EQ(T.dX, 1);
    EXPECT_EQ(T.dY, -5);
    EXPECT_EQ(T.dZ, 4);
}

} // namespace
