// SPDX-License-Identifier: MIT
#include "simulation/trials/FieldFaults.h"

#include "quality/CalibrationReport.h"
#include "quality/JointFit.h"
#include "quality/SolverRun.h"
#include "simulation/trials/Conditions.h"
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

using quality::CalibrationTurns;
using quality::Verdict;
using study::RecordTurns;
using study::Setting;

namespace {

// A careful operator's pole, the same for one seed with any fault.
Setting SettingWith(std::uint64_t seed, const study::RecordingFaults& faults)
{
    simulation::Generator random(seed, simulation::Stream::Placement);
    Setting s = study::Ordinary(random);
    study::Handle(s, 0.3, random);
    s.faults = faults;
    return s;
}

CalibrationTurns TurnsWith(const study::RecordingFaults& faults)
{
    return RecordTurns(SettingWith(3, faults), 3);
}

TEST(FieldFaults, DriftTheOffsetsOfPitchAndRollUpToThoseThatStay)
{
    const CalibrationTurns clean = TurnsWith({});
    const CalibrationTurns drifted = TurnsWith({.pitchDrift = 2.0, .rollStep = 1.0});
    const auto& first = drifted.horizontal.front();
    EXPECT_NEAR(first.dPitch - clean.horizontal.front().dPitch, -2.0, 1e-9);
    EXPECT_NEAR(first.dRoll - clean.horizontal.front().dRoll, -1.0, 1e-9);
    EXPECT_NEAR(drifted.vertical.back().dPitch - clean.vertical.back().dPitch, 0.0, 0.01);
    EXPECT_EQ(drifted.vertical.back().dRoll, clean.vertical.back().dRoll);
}

TEST(FieldFaults, StepTheGainsBetweenTheTurns)
{
    study::RecordingFaults faults;
    faults.gainStep[1].z = 1.25;
    const CalibrationTurns clean = TurnsWith({});
    const CalibrationTurns stepped = TurnsWith(faults);
    EXPECT_DOUBLE_EQ(stepped.horizontal[5].dMag_z_2, clean.horizontal[5].dMag_z_2 / 1.25);
    EXPECT_EQ(stepped.horizontal[5].dMag_z, clean.horizontal[5].dMag_z);
    EXPECT_EQ(stepped.vertical[5].dMag_z_2, clean.vertical[5].dMag_z_2);
}

TEST(FieldFaults, SwingTheVerticalTurnAwayFromThePole)
{
    const CalibrationTurns clean = TurnsWith({});
    const CalibrationTurns swung = TurnsWith({.swing = 0.2});
    EXPECT_EQ(swung.horizontal[9].dPitch, clean.horizontal[9].dPitch);
    EXPECT_DOUBLE_EQ(swung.vertical[9].dAcc_z, clean.vertical[9].dAcc_z - 0.2);
    EXPECT_NE(swung.vertical[9].dPitch, clean.vertical[9].dPitch);
}

TEST(FieldFaults, KeepOneOfSoManySamples)
{
    const CalibrationTurns clean = TurnsWith({});
    const CalibrationTurns sparse = TurnsWith({.keepEvery = 8});
    EXPECT_EQ(sparse.vertical.size(), (clean.vertical.size() + 7) / 8);
    EXPECT_EQ(sparse.vertical[2].dMag_x, clean.vertical[16].dMag_x);
}

TEST(FieldFaults, EndReadingsWhereTheyAreSaturated)
{
    const CalibrationTurns clean = TurnsWith({});
    const CalibrationTurns saturated = TurnsWith({.saturation = 300.0});
    ASSERT_EQ(saturated.horizontal.size(), clean.horizontal.size());
    int ended = 0;
    for (std::size_t i = 0; i < clean.horizontal.size(); ++i) {
        const double reading = clean.horizontal[i].dMag_z;
        EXPECT_EQ(saturated.horizontal[i].dMag_z, std::clamp(reading, -300.0, 300.0));
        if (std::fabs(reading) > 300.0) ++ended;
    }
    EXPECT_GT(ended, 0);
}

bool LiesWithin(double size, double least, double most)
{
    return least <= std::fabs(size) && std::fabs(size) <= most;
}

int DifferentGains(const simulation::Point3& gain)
{
    return (gain.x != 1.0 ? 1 : 0) + (gain.y != 1.0 ? 1 : 0) + (gain.z != 1.0 ? 1 : 0);
}

// Axes of one magnetometer whose iron is reversed against that of another one.
int Mirrored(const simulation::MagnetometerModel& m, const simulation::MagnetometerModel& of)
{
    const double hard[] = {m.hardIron.x, m.hardIron.y, m.hardIron.z};
    const double ofHard[] = {of.hardIron.x, of.hardIron.y, of.hardIron.z};
    int axes = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const simulation::Point3& row = m.softIron.rows[i];
        const simulation::Point3& other = of.softIron.rows[i];
        if (row.x == -other.x && row.y == -other.y && row.z == -other.z && hard[i] == -ofHard[i])
            ++axes;
    }
    return axes;
}

// What a fault does to a setting that is otherwise the same.
struct Kind
{
    const char* name; // the beginning, without "careful, "
    bool (*holds)(const Setting& with, const Setting& without);
};

constexpr Kind kKinds[] = {
    {"no fault",       [](const Setting& s, const Setting&) { return s.faults.keepEvery == 1; }                   },
    {"tilt offset",
     [](const Setting& s,                   const Setting&) {
         return LiesWithin(std::hypot(s.sensor.pitchOffset, s.sensor.rollOffset), 1 - 1e-12,
                           1 + 1e-12);
     }                                                                                   },
    {"pitch offset",
     [](const Setting& s,                   const Setting&) { return std::fabs(s.sensor.pitchOffset) == 1.0; }    },
    {"roll offset",
     [](const Setting& s,                   const Setting&) { return std::fabs(s.sensor.rollOffset) == 1.0; }     },
    {"tilt drifts",
     [](const Setting& s,                   const Setting&) {
         return LiesWithin(s.faults.pitchDrift, 1.0, 3.0)
                && LiesWithin(s.faults.rollDrift, 1.0, 3.0);
     }                                                                                   },
    {"tilt steps",
     [](const Setting& s,                   const Setting&) {
         return LiesWithin(s.faults.pitchStep, 0.5, 2.0) && LiesWithin(s.faults.rollStep, 0.5, 2.0);
     }                                                                                   },
    {"noise to 20",
     [](const Setting& s,                   const Setting& t) {
         return LiesWithin(s.sensor.a.noise / t.sensor.a.noise, 5.0, 20.0)
                && LiesWithin(s.sensor.b.noise / t.sensor.b.noise, 5.0, 20.0)
                && s.sensor.tiltNoise == t.sensor.tiltNoise;
     }                                                                                   },
    {"all noise",
     [](const Setting& s,                   const Setting& t) {
         return LiesWithin(s.sensor.a.noise / t.sensor.a.noise, 5.0, 20.0)
                && LiesWithin(s.sensor.tiltNoise / t.sensor.tiltNoise, 5.0, 20.0);
     }                                                                                   },
    {"noise 20 and 2",
     [](const Setting& s,                   const Setting&) {
         return s.sensor.a.noise == 20.0 && s.sensor.b.noise == 20.0 && s.sensor.tiltNoise == 2.0;
     }                                                                                   },
    {"gains step",
     [](const Setting& s,                   const Setting&) {
         return std::ranges::all_of(s.faults.gainStep, [](const simulation::Point3& gain) {
             return LiesWithin(gain.x - 1.0, 0.01, 0.06) && gain.y == gain.x && gain.z == gain.x;
         });
     }                                                                                   },
    {"gain of one",
     [](const Setting& s,                   const Setting&) {
         return std::ranges::all_of(s.faults.gainStep, [](const simulation::Point3& gain) {
             return DifferentGains(gain) == 1
                    && LiesWithin(gain.x + gain.y + gain.z - 3.0, 0.01 - 1e-12, 0.06 + 1e-12);
         });
     }                                                                                   },
    {"field changes",
     [](const Setting& s,                   const Setting&) {
         return s.faults.fieldFactor == 1.06 && s.faults.dipChange == 3.0;
     }                                                                                   },
    {"swung",
     [](const Setting& s,                   const Setting&) { return LiesWithin(s.faults.swing, 0.1, 0.3); }      },
    {"outliers",
     [](const Setting& s,                   const Setting&) { return LiesWithin(s.faults.outliers, 0.002, 0.03); }},
    {"saturated",
     [](const Setting& s,                   const Setting& t) {
         return LiesWithin(s.faults.saturation / t.field.strength, 0.7, 1.0);
     }                                                                                   },
    {"axis mirrored",
     [](const Setting& s,                   const Setting& t) {
         return Mirrored(s.sensor.a, t.sensor.a) + Mirrored(s.sensor.b, t.sensor.b) == 1;
     }                                                                                   },
    {"an eighth",      [](const Setting& s, const Setting&) { return s.faults.keepEvery == 8; }                   },
};

TEST(FieldFaults, AreOfTheirKindAndSize)
{
    const std::vector<study::Condition>& faults = study::FieldFaults();
    const study::Condition& none = faults[0];
    const study::Condition& careful = faults[1];
    constexpr std::string_view kCareful = "careful, ";
    for (const study::Condition& fault : faults) {
        const bool isCareful = fault.name.starts_with(kCareful);
        const std::string_view name = fault.name.substr(isCareful ? kCareful.size() : 0);
        const auto* const kind = std::ranges::find_if(
            kKinds, [name](const Kind& k) { return name.starts_with(k.name); });
        ASSERT_NE(kind, std::end(kKinds)) << fault.name;
        for (std::uint64_t seed = 1; seed <= 40; ++seed) {
            const auto settingWith = [seed](const study::Condition& condition) {
                simulation::Generator random(seed, simulation::Stream::Placement);
                Setting setting = study::Ordinary(random);
                condition.apply(setting, random);
                return setting;
            };
            EXPECT_TRUE(kind->holds(settingWith(fault), settingWith(isCareful ? careful : none)))
                << fault.name << ", seed " << seed;
        }
    }
}

// The joint fit's own calibration differs from the fit by next to nothing, so that only what is said
// of hidden errors keeps it from being called good.
class HiddenErrors : public ::testing::Test
{
protected:
    static quality::CalibrationReport Assess(const CalibrationTurns& turns, int sensorType = 1)
    {
        quality::CalibrationRun run;
        run.recorded = turns;
        run.used = turns;
        run.sensorType = sensorType;
        run.calibration = quality::FitJointly(turns, sensorType).calibration;
        return quality::AssessCalibration(run);
    }

    // How many of these calibrations are called good.
    static int CalledGood(const study::RecordingFaults& faults, double pitchOffset = 0.0)
    {
        int good = 0;
        for (std::uint64_t seed = 40; seed < 46; ++seed) {
            Setting s = SettingWith(seed, faults);
            s.sensor.pitchOffset = pitchOffset;
            s.sensor.rollOffset = 0.0;
            if (Assess(RecordTurns(s, seed)).verdict == Verdict::Good) ++good;
        }
        return good;
    }
};

TEST_F(HiddenErrors, LeaveMostTurnsWithoutFaultGood)
{
    EXPECT_GE(CalledGood({}), 3);
}

TEST_F(HiddenErrors, AreSeenOfPitchThatIsOff)
{
    EXPECT_EQ(CalledGood({}, 1.5), 0);
}

TEST_F(HiddenErrors, AreSeenOfPitchAndRollThatDrift)
{
    EXPECT_EQ(CalledGood({.pitchDrift = 3.0, .rollDrift = 3.0}), 0);
}

TEST_F(HiddenErrors, AreSeenOfAFieldOfAnotherDipInTheSecondTurn)
{
    const study::RecordingFaults faults = {.dipChange = 3.0, .noGyros = true};
    EXPECT_EQ(CalledGood(faults), 0);
    const auto report = Assess(RecordTurns(SettingWith(41, faults), 41));
    EXPECT_EQ(report.reason, quality::Finding::TurnsDiffer);
    EXPECT_NEAR(report.a.heading->hidden.dipDifference, 3.0, 0.5);
}

// Without gyros a dip that differs could as well be a tilt that has moved.
TEST_F(HiddenErrors, ForgiveAFieldOfAnotherDipWhereGyrosSeeNoStep)
{
    EXPECT_GE(CalledGood({.dipChange = 3.0}), 2);
    EXPECT_EQ(CalledGood({.rollStep = 2.0}), 0);
    EXPECT_EQ(CalledGood({.pitchStep = 2.0}), 0);
}

// What two turns cannot show of pitch and roll, gyros do.
TEST_F(HiddenErrors, LeaveNothingGoodWithoutGyros)
{
    int unseen = 0;
    for (std::uint64_t seed = 40; seed < 46; ++seed) {
        const auto with = Assess(RecordTurns(SettingWith(seed, {}), seed));
        const auto without = Assess(RecordTurns(SettingWith(seed, {.noGyros = true}), seed));
        EXPECT_NE(without.verdict, Verdict::Good) << seed;
        if (without.headingBound >= quality::kGoodHeading) continue;
        ++unseen;
        EXPECT_EQ(without.verdict, Verdict::Usable) << seed;
        EXPECT_EQ(without.reason, quality::Finding::TiltUnseen) << seed;
        EXPECT_NE(with.reason, quality::Finding::TiltUnseen) << seed;
    }
    EXPECT_GE(unseen, 2);
}

// Of type 2 the vertical turn is about the axis that roll counts from: gyros show no step of it.
TEST_F(HiddenErrors, LeaveNothingGoodOfTypeTwo)
{
    for (const study::RecordingFaults& faults :
         {study::RecordingFaults{}, {.pitchStep = 2.0}, {.rollStep = 2.0}}) {
        for (std::uint64_t seed = 40; seed < 46; ++seed) {
            Setting s = SettingWith(seed, faults);
            s.sensor.type = 2;
            EXPECT_NE(Assess(RecordTurns(s, seed), 2).verdict, Verdict::Good) << seed;
        }
    }
}

TEST_F(HiddenErrors, AreNotCheckedAgainstPitchAndRollOfTypeTwo)
{
    Setting s = SettingWith(41, {});
    s.sensor.type = 2;
    const std::string text = ToText(Assess(RecordTurns(s, 41), 2));
    EXPECT_NE(text.find("not checked: not sensor type 1"), std::string::npos) << text;
    EXPECT_NE(text.find("none that follow the turns, or not type 1"), std::string::npos) << text;
}

// Usable is what stays below the limit with everything but the difference counted twice.
TEST_F(HiddenErrors, CountTwiceForUsableWithoutGyros)
{
    for (const bool noGyros : {false, true}) {
        const auto report = Assess(RecordTurns(SettingWith(41, {.noGyros = noGyros}), 41));
        const auto expected = [noGyros](quality::HeadingError error) {
            error.hidden.tilt = error.hidden.tiltInUse;
            const double all = error.With(quality::kUsableCertainty);
            const double unseen = std::sqrt(all * all - error.rms * error.rms);
            return std::hypot(error.rms, noGyros ? 2.0 * unseen : unseen);
        };
        EXPECT_NEAR(report.headingUncertainty,
                    std::max(expected(*report.a.heading), expected(*report.b.heading)), 1e-9);
    }
}

TEST_F(HiddenErrors, AreSeenOfRollThatIsOffWhereThereAreGyros)
{
    const auto withRoll = [](bool noGyros) {
        Setting s = SettingWith(42, {.noGyros = noGyros});
        s.sensor.pitchOffset = 0.0;
        s.sensor.rollOffset = 1.5;
        return Assess(RecordTurns(s, 42));
    };
    const auto seen = withRoll(false);
    EXPECT_NE(seen.verdict, Verdict::Good);
    // tan(dip)·1.5/√2 or more, and what stays does no harm in use.
    EXPECT_GT(seen.a.heading->hidden.tilt, 1.0);
    EXPECT_LT(seen.a.heading->hidden.tiltInUse, 0.7);
    EXPECT_FALSE(withRoll(true).tilt.gyros);
}

// Where eight values lose more than a degree, pitch and roll may still be the larger cause.
TEST_F(HiddenErrors, OfTheJointFitAreNamedByTheLargest)
{
    const auto assessed = [](double rollOffset) {
        Setting s = SettingWith(42, {});
        s.sensor.a.softIron.rows[0].z += 0.16;
        s.sensor.pitchOffset = 0.0;
        s.sensor.rollOffset = rollOffset;
        return quality::AssessCalibration(quality::RunJointFit(RecordTurns(s, 42), 1));
    };
    const auto level = assessed(0.0);
    ASSERT_GT(level.headingError, quality::kGoodHeading);
    EXPECT_EQ(level.reason, quality::Finding::BeyondEightValues);
    const auto off = assessed(8.0);
    ASSERT_GT(off.headingError, quality::kGoodHeading);
    EXPECT_EQ(off.reason, quality::Finding::TiltOff);
}

TEST_F(HiddenErrors, AreSeenOfTheGainOfOneAxisThatChanges)
{
    study::RecordingFaults faults;
    faults.gainStep[0].x = 1.05;
    EXPECT_EQ(CalledGood(faults), 0);
}

// Good is what stays below the limit with what A and B tell of their gains counted twice.
TEST_F(HiddenErrors, CountGainsTwiceForGood)
{
    const auto bound = [](const quality::HeadingError& error, double times) {
        const double once = error.With(quality::kGoodCertainty);
        return std::sqrt(once * once + (times * times - 1.0) * std::pow(error.hidden.gains, 2));
    };
    int lost = 0;
    for (int step = 0; step < 8; ++step) {
        study::RecordingFaults faults;
        faults.gainStep[0].x = 1.0 + 0.004 * step;
        const auto report = Assess(RecordTurns(SettingWith(41, faults), 41));
        const auto larger = [&](double times) {
            return std::max(bound(*report.a.heading, times), bound(*report.b.heading, times));
        };
        EXPECT_NEAR(report.headingBound, larger(1.0), 1e-9) << step;
        EXPECT_EQ(report.verdict == Verdict::Good, larger(2.0) < quality::kGoodHeading) << step;
        if (report.verdict == Verdict::Good || larger(1.0) >= quality::kGoodHeading) continue;
        EXPECT_EQ(report.reason, quality::Finding::TurnsDiffer) << step;
        ++lost;
    }
    EXPECT_GE(lost, 1);
}

TEST_F(HiddenErrors, TellHowFarPitchIsOff)
{
    Setting s = SettingWith(42, {});
    s.sensor.pitchOffset = 1.5;
    s.sensor.rollOffset = 0.0;
    const auto offset = Assess(RecordTurns(s, 42)).tilt.offset;
    EXPECT_NEAR(offset.pitch, 1.5, 3.0 * offset.pitchDeviation);
    EXPECT_LT(offset.pitchDeviation, 0.4);
}

TEST_F(HiddenErrors, LeaveSparseLogsThatGoAllRoundAccepted)
{
    const auto report = Assess(TurnsWith({.keepEvery = 8}));
    EXPECT_FALSE(report.weak);
    EXPECT_TRUE(quality::IsAccepted(report.verdict));
}

} // namespace
