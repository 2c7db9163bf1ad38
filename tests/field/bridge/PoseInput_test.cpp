// SPDX-License-Identifier: MIT
#include "field/bridge/PoseInput.h"

#include "tests/field/tip/LeaningPole.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>
#include <vector>

namespace field_bridge = tiltpole::field;

using namespace std::chrono_literals;
using field::Instant;
using field::PoseSample;
using field_bridge::PoleMotion;
using field_bridge::PoseInput;
using field_bridge::TipSolver;
using Seconds = std::chrono::duration<double>;

namespace {

constexpr double kSpan = 1.0;         // [s]
constexpr double kDeclination = 4.25; // [degrees]

field::Setup PoleSetup(int sensorType)
{
    field::Setup setup;
    setup.sensorType = sensorType;
    setup.calibration.complete = true;
    return setup;
}

// A pole that swings at times and stands at others, as a sensor with noise sees it.
std::vector<PoseSample> Swinging(int sensorType, Instant step, int count)
{
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 0.01);
    std::vector<PoseSample> samples;
    for (int i = 0; i < count; ++i) {
        const double t = Seconds(i * step).count();
        const double swing = std::fmax(0.0, std::sin(0.8 * t));
        tip_tests::LeaningPole pole;
        pole.sensorType = sensorType;
        pole.heading = 350.0 + 40.0 * swing + noise(random);
        pole.pitch = 4.0 + 6.0 * swing * std::sin(2.0 * t) + noise(random);
        pole.roll = -3.0 + noise(random);
        samples.push_back(pole.Sample());
        samples.back().arrival = i * step + (i % 3) * 1ms;
        samples.back().data.dAcc_x = noise(random);
        samples.back().data.dAcc_z = 1.0 + noise(random);
    }
    return samples;
}

struct Timed
{
    Instant moment;
    double speed; // since a fifth of a second before [m/s]
};

// Of every sample in the span that has one so far before it in the span.
std::vector<Timed> SpeedsOf(const field::PoseRing& ring, const TipSolver& solver, Instant moment)
{
    std::vector<PoseSample> seen;
    for (std::size_t i = 0; i < ring.Size(); ++i) {
        const PoseSample& sample = ring.Sample(i);
        const auto before = std::chrono::duration_cast<Instant>(Seconds(kSpan)) + 200ms;
        if (sample.moment >= moment - before && sample.moment <= moment) seen.push_back(sample);
    }
    std::vector<Timed> speeds;
    for (const PoseSample& now : seen) {
        std::optional<PoseSample> base;
        for (const PoseSample& sample : seen)
            if (now.moment - sample.moment >= 200ms) base = sample;
        if (!base) continue;
        const auto way = solver.Step(now, kDeclination) - solver.Step(*base, kDeclination);
        speeds.push_back({now.moment, tiltpole::survey::Length(way)
                                          / Seconds(now.moment - base->moment).count()});
    }
    return speeds;
}

PoleMotion MotionOf(const std::vector<Timed>& speeds, Instant moment, double limit)
{
    PoleMotion motion;
    if (speeds.empty()) return motion;
    Instant since = speeds.front().moment;
    for (const Timed& timed : speeds)
        if (!(timed.speed < limit)) since = timed.moment;
    motion.speed = speeds.back().speed;
    motion.still = Seconds(moment - since).count();
    return motion;
}

void CheckMotion(const PoseInput& poses, const TipSolver& solver, Instant moment)
{
    const std::vector<Timed> speeds = SpeedsOf(poses.Ring(), solver, moment);
    std::vector<double> limits{0.05};
    for (const Timed& timed : speeds)
        limits.push_back(timed.speed); // not below itself
    for (const double limit : limits) {
        const PoleMotion expected = MotionOf(speeds, moment, limit);
        const PoleMotion motion = poses.Motion(solver, kDeclination, moment, limit, kSpan);
        EXPECT_EQ(motion.still, expected.still) << "limit " << limit;
        if (std::isnan(expected.speed))
            EXPECT_TRUE(std::isnan(motion.speed));
        else
            EXPECT_EQ(motion.speed, expected.speed);
    }
}

} // namespace

TEST(PoseInput, SeesTheMotionOfThePosesBeforeAMoment)
{
    for (const int type : {1, 2, 3}) {
        const TipSolver solver(PoleSetup(type));
        PoseInput poses(field::PoseFormat::Ptps);
        EXPECT_TRUE(std::isnan(poses.Motion(solver, kDeclination, 0s, 0.05, kSpan).speed));
        int added = 0;
        for (const PoseSample& sample : Swinging(type, 20ms, 400)) {
            ASSERT_TRUE(poses.Add(sample, solver));
            if (++added % 7 == 0) CheckMotion(poses, solver, sample.arrival - 63ms);
            if (added % 50 == 0) CheckMotion(poses, solver, sample.arrival + 15ms);
        }
    }
}

TEST(PoseInput, SeesTheMotionWhereItKeepsTheMostPoses)
{
    const TipSolver solver(PoleSetup(1));
    PoseInput poses(field::PoseFormat::Ptps);
    int added = 0;
    for (const PoseSample& sample : Swinging(1, 3300us, 3000)) {
        ASSERT_TRUE(poses.Add(sample, solver));
        if (++added % 1000 == 600) CheckMotion(poses, solver, sample.arrival - 63ms);
    }
    EXPECT_EQ(poses.Ring().Size(), poses.Ring().Room());
}

TEST(PoseInput, SeesNoMotionOfPosesBeforeARestart)
{
    const TipSolver solver(PoleSetup(1));
    PoseInput poses(field::PoseFormat::Ptps);
    const std::vector<PoseSample> samples = Swinging(1, 20ms, 100);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i == 60) poses.Restart();
        poses.Add(samples[i], solver);
        CheckMotion(poses, solver, samples[i].arrival);
    }
}

TEST(PoseInput, ForgetsThePosesOfAClockThatBeganAnew)
{
    const TipSolver solver(PoleSetup(1));
    PoseInput poses(field::PoseFormat::Ptps);
    const std::vector<PoseSample> samples = Swinging(1, 20ms, 100);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        PoseSample sample = samples[i];
        sample.deviceSeconds = (i < 60 ? 1000.0 : 0.0) + 0.02 * static_cast<double>(i);
        const bool kept = poses.Add(sample, solver).has_value();
        EXPECT_EQ(kept, i < 60 || i >= 62) << i; // the third that advances
    }
    EXPECT_EQ(poses.Ring().Size(), 38U);
}

// Of samples that all come more than 0.9 s late, after 2 s.
TEST(PoseInput, ForgetsThePosesBeforeALineThatBecameSlower)
{
    const TipSolver solver(PoleSetup(1));
    PoseInput poses(field::PoseFormat::Ptps);
    const std::vector<PoseSample> samples = Swinging(1, 20ms, 300);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        PoseSample sample = samples[i];
        sample.deviceSeconds = 0.02 * static_cast<double>(i);
        if (i >= 100) sample.arrival += 1200ms;
        poses.Add(sample, solver);
    }
    EXPECT_EQ(poses.Ring().Size(), 100U) << "of the last two seconds";
    EXPECT_GT(poses.Ring().Sample(0).moment, 4400ms);
}

TEST(PoseInput, TakesNoAccelerationThatNeverChangesForMeasured)
{
    const TipSolver solver(PoleSetup(1));
    for (double PoseSensorData::*axis :
         {&PoseSensorData::dAcc_x, &PoseSensorData::dAcc_y, &PoseSensorData::dAcc_z}) {
        for (const double change : {0.0, 0.001}) {
            PoseInput poses(field::PoseFormat::Ptps);
            std::vector<PoseSample> samples = Swinging(1, 20ms, 50);
            for (PoseSample& sample : samples) {
                sample.data.dAcc_x = sample.data.dAcc_y = sample.data.dAcc_z = 0.5;
                if (&sample == &samples.back()) sample.data.*axis += change;
                poses.Add(sample, solver);
            }
            const auto force = poses.MeanForce(samples.back().arrival, 0.5);
            EXPECT_NEAR(force.x + force.y + force.z, change > 0.0 ? 1.5 : 0.0, 1e-4);
        }
    }
}

TEST(PoseInput, AddsTheAccelerationsOfASpanInTheirOrder)
{
    const TipSolver solver(PoleSetup(1));
    PoseInput poses(field::PoseFormat::Ptps);
    const std::vector<PoseSample> samples = Swinging(1, 20ms, 300);
    for (const PoseSample& sample : samples)
        poses.Add(sample, solver);
    const Instant moment = 5610ms;
    double sum = 0.0;
    int count = 0;
    for (const PoseSample& sample : samples) {
        if (sample.arrival < moment - 500ms || sample.arrival > moment) continue;
        sum += sample.data.dAcc_z;
        ++count;
    }
    ASSERT_EQ(count, 25);
    EXPECT_EQ(poses.MeanForce(moment, 0.5).z, sum / count);
    EXPECT_EQ(poses.MeanForce(0s, 0.5).z, 0.0);
}
