// SPDX-License-Identifier: MIT
#include "field/gate/Gate.h"
#include "field/gate/Reasons.h"

#include "field/Geodesy.h"

#include <gtest/gtest.h>
#include <limits>

#include <chrono>
#include <functional>
#include <string>

namespace {

using field::Fix;
using field::Reason;
using field::State;
using tiltpole::field::Gate;
using tiltpole::field::Judgement;
using tiltpole::field::PoseSight;
using tiltpole::field::Sight;
using Code = Reason::Code;
using namespace std::chrono_literals;

constexpr std::chrono::sys_days kToday = std::chrono::sys_days(2026y / 11 / 22);

// A fixed epoch of a pole that stands still, all conditions met.
struct Scene
{
    field::Setup setup;
    field::Epoch epoch;
    field::Tip tip;
    double seconds = 100.0;
    PoseSight pose = PoseSight::Found;
    double poseSilence = 0.0;
    double poseGap = 0.02;
    std::string poseFault;
    double timeSigma = 0.007;
    double still = 5.0;
    double age = 0.12;
    double period = 0.2;
    double badLines = 0.0;
    bool timeStep = false;
    bool hasTip = true;
    tiltpole::field::FieldSight field;

    Scene()
    {
        setup.calibration.bytes = "[x]1";
        setup.calibration.complete = true;
        setup.calibration.made = kToday - std::chrono::days(3);
        epoch.utc = "130758.00";
        epoch.date = kToday;
        epoch.antenna = {47.57, 19.0, 193.4};
        epoch.sigma = {64e-6, 0.0, 64e-6, 0.0, 0.0, 225e-6};
        epoch.fix = Fix::Fixed;
        epoch.satellites = 12;
        epoch.correctionAge = 1.0;
        epoch.station = "0207";
        epoch.minuteDecimals = 7;
        tip.sigma = {144e-6, 0.0, 81e-6, 0.0, 0.0, 225e-6};
        tip.tilt = 12.3;
        tip.antennaSpeed = 0.01;
        field.measured = field::FieldShape{530.0, 64.0};
        field.strength = 530.0;
        field.dip = 64.0;
        field.pair = 0.01;
    }

    Judgement JudgedBy(Gate& gate) const
    {
        Sight sight(epoch);
        sight.today = epoch.date;
        sight.seconds = seconds;
        sight.tip = hasTip ? &tip : nullptr;
        sight.doubts = FieldReasons(field, setup.limits);
        sight.pose = pose;
        sight.poseSilence = poseSilence;
        sight.poseGap = poseGap;
        sight.poseFault = poseFault;
        sight.timeSigma = timeSigma;
        sight.still = still;
        sight.age = age;
        sight.period = period;
        sight.badLines = badLines;
        sight.timeStep = timeStep;
        return gate.Judge(sight);
    }

    Judgement Judged() const
    {
        Gate gate(setup);
        return JudgedBy(gate);
    }
};

struct Row
{
    Code code;
    State state;
    bool hidden;
    const char* text;
    std::function<void(Scene&)> provoke;
};

void CheckRow(const Row& row)
{
    Scene scene;
    row.provoke(scene);
    const Judgement judged = scene.Judged();
    ASSERT_EQ(judged.verdict.reasons.size(), 1U) << row.text;
    EXPECT_EQ(judged.verdict.reasons[0].code, row.code) << row.text;
    EXPECT_EQ(judged.verdict.reasons[0].text, row.text);
    EXPECT_EQ(judged.verdict.state, row.state) << row.text;
    EXPECT_EQ(judged.hidden, row.hidden) << row.text;
}

TEST(Gate, LetsAGoodEpochPass)
{
    const Judgement judged = Scene().Judged();
    EXPECT_EQ(judged.verdict.state, State::Store);
    EXPECT_TRUE(judged.verdict.reasons.empty());
    EXPECT_FALSE(judged.hidden);
}

TEST(Gate, HidesATipThatIsNotKnown)
{
    const Row rows[] = {
        {Code::NoFix,               State::Block, true, "no position fix",
         [](Scene& s) { s.epoch.fix = Fix::Invalid; }                                                                                                                        },
        {Code::NoPose,              State::Block, true, "no pose for 0.15 s",
         [](Scene& s) {
             s.pose = PoseSight::None;
             s.poseSilence = 0.15;
             s.hasTip = false;
         }                                                                                                                                                                   },
        {Code::NoPose,              State::Block, true, "no pose yet; last one dropped: a value is not a number",
         [](Scene& s) {
             s.pose = PoseSight::None;
             s.poseSilence = tiltpole::field::kNotKnown;
             s.poseFault = "a value is not a number";
             s.hasTip = false;
         }                                                                                                                                                                   },
        {Code::PoseGap,             State::Block, true, "pose gap of 80 ms (limit 50)",
         [](Scene& s) {
             s.pose = PoseSight::Gap;
             s.poseGap = 0.08;
             s.hasTip = false;
         }                                                                                                                                                                   },
        {Code::SensorStuck,         State::Block, true, "sensor stuck: equal readings",
         [](Scene& s) {
             s.pose = PoseSight::Stuck;
             s.poseFault = "equal readings";
             s.hasTip = false;
         }                                                                                                                                                                   },
        {Code::FieldStrength,       State::Block, true,
         "field 11 % stronger than at calibration (limit 5): move away from iron or level the pole",              [](Scene& s) { s.field.measured->strength = 530.0 * 1.11; }},
        {Code::FieldStrength,       State::Block, true,
         "field 40 % weaker than at calibration (limit 5): move away from iron or level the pole",                [](Scene& s) { s.field.measured->strength = 530.0 * 0.6; } },
        {Code::FieldDip,            State::Block, true,
         "field dips 7.5 degrees flatter than expected (limit 5.0): move away from iron or level "
         "the pole",                                                                                              [](Scene& s) { s.field.measured->dip = 56.5; }             },
        {Code::MagnetometersDiffer, State::Block, true,
         "magnetometers differ by 8 % (limit 5): move away from iron or level the pole",                          [](Scene& s) { s.field.pair = 0.08; }                      },
        {Code::NoCalibration,       State::Block, true, "calibration is incomplete: calibrate again",
         [](Scene& s) { s.setup.calibration.complete = false; }                                                                                                              },
        {Code::NoCalibration,       State::Block, true, "no calibration of the sensor",
         [](Scene& s) { s.setup.calibration = {}; }                                                                                                                          },
        {Code::CalibrationPoor,     State::Block, true, "calibration is poor: calibrate again",
         [](Scene& s) { s.setup.calibration.usable = false; }                                                                                                                },
    };
    for (const Row& row : rows)
        CheckRow(row);
}

TEST(Gate, BlocksATipThatIsNotGoodEnough)
{
    const Row rows[] = {
        {Code::FloatFix,      State::Block, false, "fix is float (needs fixed)",
         [](Scene& s) { s.epoch.fix = Fix::Float; }                                                                                          },
        {Code::FloatFix,      State::Block, false, "fix is estimated (needs fixed)",
         [](Scene& s) { s.epoch.fix = Fix::Estimated; }                                                                                      },
        {Code::FloatFix,      State::Block, false, "fix is single (needs fixed)",
         [](Scene& s) {
             s.epoch.fix = Fix::Single;
             s.setup.limits.allowFloat = true;
         }                                                                                                                                   },
        {Code::FloatFix,      State::Block, false, "fix is none (needs fixed)",
         [](Scene& s) { s.epoch.fix = static_cast<Fix>(3); }                                                                                 },
        {Code::CorrectionAge, State::Block, false, "corrections are 10.5 s old (limit 10)",
         [](Scene& s) { s.epoch.correctionAge = 10.5; }                                                                                      },
        {Code::CorrectionAge, State::Block, false,
         "age of the corrections is negative: -1.0 s (limit 0 to 10)",                         [](Scene& s) { s.epoch.correctionAge = -1.0; }},
        {Code::Satellites,    State::Block, false, "only 4 satellites (needs 5)",
         [](Scene& s) { s.epoch.satellites = 4; }                                                                                            },
        {Code::EpochOld,      State::Block, false, "epoch is 0.6 s old (limit 0.5)",
         [](Scene& s) { s.age = 0.6; }                                                                                                       },
        {Code::EpochOld,      State::Block, false, "epoch is 1.1 s old (limit 1.0)",
         [](Scene& s) {
             s.age = 1.1;
             s.period = 1.0;
         }                                                                                                                                   },
        {Code::BadLines,      State::Block, false, "bad lines of the receiver: 8 % (limit 5)",
         [](Scene& s) { s.badLines = 0.08; }                                                                                                 },
        {Code::PlanSigma,     State::Block, false, "plan sd 42 mm (limit 30)",
         [](Scene& s) { s.tip.sigma.ee = 0.042 * 0.042; }                                                                                    },
        {Code::HeightSigma,   State::Block, false, "height sd 55 mm (limit 40)",
         [](Scene& s) { s.tip.sigma.hh = 0.055 * 0.055; }                                                                                    },
        {Code::Lean,          State::Block, false, "lean 34.2 degrees (limit 30)",
         [](Scene& s) { s.tip.tilt = 34.2; }                                                                                                 },
    };
    for (const Row& row : rows)
        CheckRow(row);
}

TEST(Gate, WaitsForAPoleThatMovesOrSettles)
{
    const Row rows[] = {
        {Code::Moving,   State::Wait, false, "antenna moves 0.31 m/s (limit 0.05)",
         [](Scene& s) {
             s.tip.antennaSpeed = 0.31;
             s.still = 0.0;
         }                                  },
        {Code::Settling, State::Wait, false, "still for 0.3 s (needs 0.5)",
         [](Scene& s) { s.still = 0.3; }    },
        {Code::TimeStep, State::Wait, false, "time of the receiver stepped: wait 2 s",
         [](Scene& s) { s.timeStep = true; }},
    };
    for (const Row& row : rows)
        CheckRow(row);
}

TEST(Gate, WaitsWhereTheMotionIsNotKnown)
{
    Scene scene;
    scene.tip.antennaSpeed = std::numeric_limits<double>::quiet_NaN();
    scene.still = 0.0;
    const Judgement judged = scene.Judged();
    EXPECT_EQ(judged.verdict.state, State::Wait);
    ASSERT_EQ(judged.verdict.reasons.size(), 1U);
    EXPECT_EQ(judged.verdict.reasons[0].text, "it is not known yet whether the antenna moves");
}

TEST(Gate, NotesForbidNothing)
{
    const Row rows[] = {
        {Code::LeanNoted,       State::Store, false, "lean 20.0 degrees (best below 15)",
         [](Scene& s) { s.tip.tilt = 20.0; }                                                                                                   },
        {Code::CalibrationOld,  State::Store, false, "calibration is 31 days old (best below 30)",
         [](Scene& s) { s.setup.calibration.made = kToday - std::chrono::days(31); }                                                           },
        {Code::SigmaAssumed,    State::Store, false, "sd assumed: the receiver sends no GST",
         [](Scene& s) { s.epoch.sigmaAssumed = true; }                                                                                         },
        {Code::CoarseText,      State::Store, false,
         "receiver sends 5 decimals of a minute (best 7 or more)",                                 [](Scene& s) { s.epoch.minuteDecimals = 5; }},
        {Code::OneMagnetometer, State::Store, false, "one magnetometer: A and B are not compared",
         [](Scene& s) { s.setup.oneMagnetometer = true; }                                                                                      },
    };
    for (const Row& row : rows)
        CheckRow(row);
}

TEST(Gate, ComparesTheFieldWithWhatIsKnownOfIt)
{
    Scene scenes[5];
    scenes[0].field.measured.reset();
    scenes[1].field.strength.reset();
    scenes[2].field.strength = 0.0;
    scenes[3].field.dip.reset();
    scenes[4].field.pair.reset();
    for (Scene& scene : scenes) {
        const Judgement judged = scene.Judged();
        EXPECT_EQ(judged.verdict.state, State::Store);
        EXPECT_TRUE(judged.verdict.reasons.empty());
    }
    scenes[0].field.pair = 0.08;
    const Judgement judged = scenes[0].Judged();
    ASSERT_EQ(judged.verdict.reasons.size(), 1U);
    EXPECT_EQ(judged.verdict.reasons[0].code, Code::MagnetometersDiffer);
}

TEST(Gate, KnowsNoAgeOfACalibrationWithoutADate)
{
    Scene scene;
    scene.setup.calibration.made = kToday - std::chrono::days(31);
    scene.epoch.date.reset();
    EXPECT_TRUE(scene.Judged().verdict.reasons.empty());
    scene.epoch.date = kToday;
    scene.setup.calibration.made.reset();
    EXPECT_TRUE(scene.Judged().verdict.reasons.empty());
}

// 0.5 m in 3 s while the pose stands still: 0.17 m/s. What happened in a longer pause is not known.
TEST(Gate, FollowsTheAntennaAcrossPausesOfThreeSecondsAtMost)
{
    for (const double pause : {3.0, 3.1}) {
        Scene scene;
        scene.epoch.speed = 0.2;
        Gate gate(scene.setup);
        ASSERT_EQ(scene.JudgedBy(gate).verdict.state, State::Store);
        scene.epoch.antenna = field::Offset(scene.epoch.antenna, 0.0, 0.5, 0.0);
        scene.seconds += pause;
        const Judgement judged = scene.JudgedBy(gate);
        if (pause > 3.0) {
            EXPECT_EQ(judged.verdict.state, State::Store);
        } else {
            ASSERT_EQ(judged.verdict.reasons.size(), 1U);
            EXPECT_EQ(judged.verdict.reasons[0].text, "antenna moves 0.17 m/s (limit 0.05)");
        }
    }
}

TEST(Gate, DoubtsTheTimeOfAMovingPoleOnly)
{
    Scene scene;
    scene.timeSigma = 0.031;
    EXPECT_EQ(scene.Judged().verdict.state, State::Store);

    scene.tip.antennaSpeed = 0.2;
    const Judgement judged = scene.Judged();
    ASSERT_EQ(judged.verdict.reasons.size(), 2U);
    EXPECT_EQ(judged.verdict.state, State::Block);
    EXPECT_EQ(judged.verdict.reasons[0].text,
              "pose and antenna apart by 31 ms sd while moving (limit 20)");
    EXPECT_EQ(judged.verdict.reasons[1].code, Code::Moving);
}

TEST(Gate, NamesTheMostImportantReasonFirst)
{
    Scene scene;
    scene.epoch.sigmaAssumed = true;
    scene.tip.antennaSpeed = 0.2;
    scene.epoch.fix = Fix::Float;
    scene.field.pair = 0.2;
    std::vector<Code> codes;
    for (const Reason& reason : scene.Judged().verdict.reasons)
        codes.push_back(reason.code);
    EXPECT_EQ(codes, (std::vector{Code::MagnetometersDiffer, Code::FloatFix, Code::Moving,
                                  Code::SigmaAssumed}));
}

TEST(Gate, AllowsFloatWhereAsked)
{
    Scene scene;
    scene.setup.limits.allowFloat = true;
    scene.epoch.fix = Fix::Float;
    EXPECT_EQ(scene.Judged().verdict.state, State::Store);
}

TEST(Gate, NeedsNoCalibrationForAHeadingOfTheSensor)
{
    Scene scene;
    scene.setup.calibration = {};
    scene.tip.pose.heading = 12.0;
    EXPECT_EQ(scene.Judged().verdict.state, State::Store);
}

TEST(Gate, TakesAValueThatIsNotANumberForBad)
{
    Scene scene;
    scene.tip.sigma.nn = tiltpole::field::kNotKnown;
    scene.tip.sigma.ee = tiltpole::field::kNotKnown;
    scene.tip.antennaSpeed = tiltpole::field::kNotKnown;
    scene.field.measured->dip = tiltpole::field::kNotKnown;
    std::vector<Code> codes;
    for (const Reason& reason : scene.Judged().verdict.reasons)
        codes.push_back(reason.code);
    EXPECT_EQ(codes, (std::vector{Code::FieldDip, Code::PlanSigma, Code::Moving}));
}

// sin(1 degree)·2.0 m is 34.9 mm, ·2.1 m 36.6 mm.
TEST(Gate, CallsAPoleLevelByLeanAndFoot)
{
    EXPECT_TRUE(tiltpole::field::IsLevel(0.99, 2.0));
    EXPECT_FALSE(tiltpole::field::IsLevel(1.0, 2.0));
    EXPECT_FALSE(tiltpole::field::IsLevel(0.99, 2.1));
    EXPECT_FALSE(tiltpole::field::IsLevel(tiltpole::field::kNotKnown, 2.0));
}

TEST(Gate, BlocksAnotherBaseUntilItIsAcknowledgedOrGone)
{
    Scene scene;
    Gate gate(scene.setup);
    ASSERT_EQ(scene.JudgedBy(gate).verdict.state, State::Store);

    scene.epoch.station = "0312";
    for (int i = 0; i < 3; ++i) {
        scene.seconds += 0.2;
        const Judgement judged = scene.JudgedBy(gate);
        ASSERT_EQ(judged.verdict.reasons.size(), 1U);
        EXPECT_EQ(judged.verdict.reasons[0].text,
                  "base changed from 0207 to 0312: acknowledge to go on");
        EXPECT_EQ(judged.verdict.state, State::Block);
        EXPECT_FALSE(judged.hidden);
    }

    scene.epoch.station = "0207";
    scene.seconds += 0.2;
    EXPECT_EQ(scene.JudgedBy(gate).verdict.state, State::Store);

    scene.epoch.station = "0312";
    scene.seconds += 0.2;
    scene.JudgedBy(gate);
    gate.Acknowledge(Code::DatumStep);
    scene.seconds += 0.2;
    EXPECT_EQ(scene.JudgedBy(gate).verdict.state, State::Block);
    gate.Acknowledge(Code::BaseChanged);
    scene.seconds += 0.2;
    EXPECT_EQ(scene.JudgedBy(gate).verdict.state, State::Store);
}

TEST(Gate, HoldsAJumpForOneEpochAndADatumStepUntilItIsAcknowledged)
{
    Scene scene;
    Gate gate(scene.setup);
    scene.JudgedBy(gate);

    scene.epoch.antenna = field::Offset(scene.epoch.antenna, 0.0, 0.5, 0.0);
    scene.seconds += 0.2;
    Judgement judged = scene.JudgedBy(gate);
    ASSERT_EQ(judged.verdict.reasons.size(), 1U);
    EXPECT_EQ(judged.verdict.reasons[0].text,
              "antenna jumped 0.50 m (limit 0.11 by lean, speed and sigma)");
    EXPECT_TRUE(judged.hidden);

    for (int i = 0; i < 3; ++i) {
        scene.seconds += 0.2;
        judged = scene.JudgedBy(gate);
        ASSERT_EQ(judged.verdict.reasons.size(), 1U);
        EXPECT_EQ(judged.verdict.reasons[0].text,
                  "position stepped by 0.50 m while the pole stood still (limit 0.30): "
                  "acknowledge to go on");
        EXPECT_FALSE(judged.hidden);
    }
    gate.Acknowledge(Code::DatumStep);
    scene.seconds += 0.2;
    EXPECT_EQ(scene.JudgedBy(gate).verdict.state, State::Store);
}

} // namespace
