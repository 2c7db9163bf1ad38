// SPDX-License-Identifier: MIT
//
// Simulated turns through the calibration itself.
#include "calibration/InclineSensor_Filter_XY.h"
#include "calibration/InclineSensor_Filter_XZ.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "positioning/InclineSensor_Position.h"
#include "simulation/Turn.h"
#include "tests/simulation/TestSensors.h"
#include <cmath>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace simulation;
using test::DistortedSensor;

const EarthField kField;

// The adjustment wants y to vary over the vertical turn, so the turn's plane lies off north.
TurnPlan PlanOf(TurnAxis axis, double axisError)
{
    return {.axis = axis, .startHeading = 20.0, .axisError = axisError};
}

int Calibrate(const PoseSensor& sensor, double axisError, CInclineSensor_MagneticAdjust& adjust)
{
    for (const TurnAxis axis : {TurnAxis::Horizontal, TurnAxis::Vertical}) {
        Recording turn = SimulateTurn(sensor, kField, PlanOf(axis, axisError), 1);
        for (PoseSensorData& sample : turn.samples) {
            if (axis == TurnAxis::Horizontal) adjust.Horizontal_Add(&sample);
            if (axis == TurnAxis::Vertical) adjust.Vertical_Add(&sample);
        }
    }
    return adjust.Adjust();
}

void ExpectNear(const Incline_MagneticCorrectParameter& found,
                const Incline_MagneticCorrectParameter& truth)
{
    constexpr double kWeight = 2e-3; // twice the slope at which the solver stops
    constexpr double kOffset = 1.0;  // counts: that slope over a field of 534
    EXPECT_NEAR(found.a, truth.a, kWeight);
    EXPECT_NEAR(found.b, truth.b, kWeight);
    EXPECT_NEAR(found.c, truth.c, kWeight);
    EXPECT_NEAR(found.d, truth.d, kWeight);
    EXPECT_NEAR(found.e, truth.e, kWeight);
    EXPECT_NEAR(found.x0, truth.x0, kOffset);
    EXPECT_NEAR(found.y0, truth.y0, kOffset);
    EXPECT_NEAR(found.z0, truth.z0, kOffset);
}

TEST(CalibrationRoundTrip, UndisturbedTurnsGiveTheTrueParameters)
{
    for (const int type : {1, 2}) {
        const PoseSensor sensor = DistortedSensor(type);
        CInclineSensor_MagneticAdjust adjust;
        ASSERT_EQ(Calibrate(sensor, 0.0, adjust), 1) << "type " << type;
        ExpectNear(adjust.GetCorrectPar_A(), *CorrectionOf(sensor.a));
        ExpectNear(adjust.GetCorrectPar_B(), *CorrectionOf(sensor.b));
        EXPECT_NEAR(adjust.GetCoorTrans().dX, 0.0, 2.0);
        EXPECT_NEAR(adjust.GetCoorTrans().dY, 0.0, 2.0);
        EXPECT_NEAR(adjust.GetCoorTrans().dZ, 0.0, 2.0);
    }
}

// The root mean square heading error over all headings, at a lean.
double HeadingError(const PoseSensor& sensor, const CInclineSensor_MagneticAdjust& adjust,
                    double lean)
{
    CInclineSensor_Position position;
    position.SetSensorType(sensor.type);
    position.SetMagneticCorrectPar_A(adjust.GetCorrectPar_A());
    double squares = 0.0;
    int count = 0;
    for (int heading = 0; heading < 360; heading += 10) {
        for (int azimuth = 0; azimuth < 360; azimuth += 30) {
            const Motion motion{AttitudeOf(AnglesOfLean(heading, lean, azimuth)), {}};
            PoseTruth truth;
            PoseSensorData sample = SensorReadings(sensor, kField, {}, 1, 0)
                                        .Read(motion, motion, motion, 0.1, 0.0, 0.0, truth);
            position.CalculateYaw_A(sample);
            const double error = std::remainder(sample.dYaw - heading, 360.0);
            squares += error * error;
            ++count;
        }
    }
    return std::sqrt(squares / count);
}

TEST(CalibrationRoundTrip, HeadingsAreTrueAfterUndisturbedTurns)
{
    const PoseSensor sensor = DistortedSensor(1);
    CInclineSensor_MagneticAdjust adjust;
    EXPECT_GT(HeadingError(sensor, adjust, 0.0), 5.0); // nothing corrected yet
    ASSERT_EQ(Calibrate(sensor, 0.0, adjust), 1);
    for (const double lean : {0.0, 15.0, 30.0})
        EXPECT_LT(HeadingError(sensor, adjust, lean), 0.3);
}

// Turned about axes off the sensor's own the adjustment answers 1, and the heading is wrong.
TEST(CalibrationRoundTrip, TurnsAboutWrongAxesLeaveTheHeadingWrong)
{
    const PoseSensor sensor = DistortedSensor(1);
    CInclineSensor_MagneticAdjust adjust;
    EXPECT_EQ(Calibrate(sensor, 5.0, adjust), 1);
    EXPECT_GT(HeadingError(sensor, adjust, 15.0), 2.0);
}

// The sample filters take the turns as whole and well made.
TEST(CalibrationRoundTrip, SampleFiltersAcceptTheTurns)
{
    CInclineSensor_Filter_XY horizontal;
    CInclineSensor_Filter_XZ vertical;
    const PoseSensor sensor = DistortedSensor(1);
    for (const PoseSensorData& s :
         SimulateTurn(sensor, kField, PlanOf(TurnAxis::Horizontal, 0.0), 1).samples)
        horizontal.Add(new PoseSensorData(s));
    for (const PoseSensorData& s :
         SimulateTurn(sensor, kField, PlanOf(TurnAxis::Vertical, 0.0), 1).samples)
        vertical.Add(new PoseSensorData(s));
    EXPECT_EQ(horizontal.IsRecordOK(), 1);
    EXPECT_EQ(vertical.IsRecordOK(), 1);
    EXPECT_EQ(horizontal.GetRecordRate(), 100);
    EXPECT_EQ(vertical.GetRecordRate(), 100);
    const std::unique_ptr<CArray<PoseSensorData*, PoseSensorData*>> kept(horizontal.Filter());
    ASSERT_NE(kept, nullptr);
    EXPECT_GT(kept->GetSize(), 40); // one in 30 counts of a circle of 1360
}

} // namespace
