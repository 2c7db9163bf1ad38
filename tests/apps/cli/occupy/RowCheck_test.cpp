// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/RowCheck.h"

#include "apps/cli/occupy/OccupationLog.h"
#include "apps/cli/occupy/OccupiedPoint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using cli::LogRow;
using cli::RowCheck;
using testing::HasSubstr;
using testing::Optional;

// So many rows of a plumb pole at rest, `apart` seconds apart.
RowCheck RowsAtRest(int count, double apart, double force = 1.0)
{
    RowCheck check;
    for (int i = 0; i < count; ++i) {
        LogRow row;
        row.sample.seconds = apart * i;
        row.sample.acceleration = {0.0, 0.0, force};
        check.Add(row);
    }
    return check;
}

RowCheck Epochs(int count, double height)
{
    RowCheck check;
    for (int i = 0; i < count; ++i) {
        LogRow row;
        row.sample.seconds = 0.02 * i;
        row.epoch = field::AntennaEpoch{
            row.sample.seconds, {1.0, 2.0, height},
             0.0, 0.0
        };
        check.Add(row);
    }
    return check;
}

TEST(RowCheck, TellsNoProblemFromFewerThanEightFigures)
{
    EXPECT_EQ(RowsAtRest(8, 20.0).TimeProblem(), std::nullopt);
    EXPECT_THAT(RowsAtRest(9, 20.0).TimeProblem(), Optional(HasSubstr("the rows are 20 s apart")));
    EXPECT_EQ(RowsAtRest(7, 0.02, 0.0).AccelerationProblem(), std::nullopt);
    EXPECT_THAT(RowsAtRest(8, 0.02, 0.0).AccelerationProblem(),
                Optional(HasSubstr("the accelerations are 0 throughout")));
    EXPECT_EQ(Epochs(7, 0.0).HeightProblem(), std::nullopt);
    EXPECT_THAT(Epochs(8, 0.0).HeightProblem(),
                Optional(HasSubstr("the antenna's height is 0.000 m throughout")));
}

TEST(RowCheck, NamesAccelerationsThatAreTooSmall)
{
    EXPECT_EQ(RowsAtRest(50, 0.02, 0.85).AccelerationProblem(), std::nullopt);
    EXPECT_EQ(RowsAtRest(50, 0.02, 0.5).AccelerationProblem(),
              "the accelerations average 0.50 g: are they in another unit?");
}

TEST(RowCheck, FindsNothingWrongWithAnAntennaThatStandsStill)
{
    EXPECT_EQ(Epochs(50, 100.0).HeightProblem(), std::nullopt) << "one height is then no wonder";
    EXPECT_EQ(Epochs(50, 100.0).RateProblem(), std::nullopt);
    EXPECT_EQ(Epochs(50, 100.0).ExtentProblem(2.0), std::nullopt);
}

TEST(RowCheck, WithoutEpochsNothingMoves)
{
    const RowCheck none = RowsAtRest(50, 0.02);
    EXPECT_FALSE(none.HasEpochs());
    EXPECT_EQ(none.Moves(), 0.0);
    EXPECT_EQ(none.RateProblem(), std::nullopt);
}

TEST(OccupiedPoint, LacksRowsForReasonsThatLieInTheRows)
{
    using Reason = field::OccupationReason;
    struct Case
    {
        Reason reason;
        bool lacks;
    };
    constexpr Case cases[] = {
        {Reason::Sure,              false},
        {Reason::TooShort,          true },
        {Reason::HeadingUncertain,  false},
        {Reason::VerticalUncertain, false},
        {Reason::LengthUnchecked,   false},
        {Reason::TipUnchecked,      false},
        {Reason::AntennaUncertain,  false},
        {Reason::NoInertialSamples, true },
        {Reason::NoAntennaEpochs,   true },
        {Reason::TimeRanBack,       true },
        {Reason::Gap,               true },
        {Reason::TooLong,           true },
        {Reason::AntennaStill,      false},
        {Reason::GyrosStill,        false},
        {Reason::TipMoved,          false},
        {Reason::WrongLength,       false},
        {Reason::SensorsContradict, false},
        {Reason::Rocked,            false},
        {Reason::NoSolution,        false},
    };
    for (const auto& [reason, lacks] : cases) {
        cli::OccupiedPoint point;
        point.estimate.reason = reason;
        EXPECT_EQ(point.LacksRows(), lacks) << static_cast<int>(reason);
    }
}

TEST(SampleOf, CorrectsAReadingButNotAMissingOne)
{
    cli::OccupySetup setup;
    Incline_MagneticCorrectParameter iron = setup.position.GetMagneticCorrectPar_A();
    iron.x0 = 30.0;
    setup.position.SetMagneticCorrectPar_A(iron);
    const auto xOf = [&](double x, double y, double z) {
        PoseSensorData pose;
        pose.dMag_x = x;
        pose.dMag_y = y;
        pose.dMag_z = z;
        return cli::SampleOf(pose, 0.0, setup).magnetic.x;
    };
    EXPECT_EQ(xOf(0.0, 0.0, 0.0), 0.0);
    EXPECT_EQ(xOf(100.0, 0.0, 0.0), 70.0);
    EXPECT_EQ(xOf(0.0, 100.0, 0.0), -30.0);
    EXPECT_EQ(xOf(0.0, 0.0, 100.0), -30.0);
}

} // namespace
