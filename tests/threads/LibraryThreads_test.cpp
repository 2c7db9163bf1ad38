// SPDX-License-Identifier: MIT
//
// What docs/threads.md allows with the libraries above the core, done by several threads at once.
#include "field/DisturbanceMonitor.h"
#include "field/North.h"
#include "field/SpotCalibration.h"
#include "quality/CalibrationReport.h"
#include "quality/ParameterFile.h"
#include "quality/SolverRun.h"
#include "quality/TipEstimate.h"
#include "tests/field/SimulatedOccupations.h"
#include "tests/field/bridge/LiveTrack.h"
#include "tests/reference/Turns.h"
#include "tests/threads/InThreads.h"
#ifdef TILTPOLE_HAS_GRID
#include "field/north/GridNorth.h"
#endif
#ifdef TILTPOLE_HAS_JOB
#include "field/job/Recompute.h"
#include "tests/field/job/JobRows.h"
#include "tests/field/job/StoredPoint.h"
#endif

#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using threads::InThreads;
using threads::kThreads;

// All bits of a number.
std::string Bits(double value)
{
    return std::to_string(std::bit_cast<std::uint64_t>(value)) + ' ';
}

// The texts that the threads came to, which have to be those of one thread alone. The threads go first:
// what is made once is made by one of them.
template <class Work>
void CheckSameInThreads(Work work)
{
    std::array<std::string, kThreads> found;
    InThreads([&](int i) { found[static_cast<std::size_t>(i)] = work(); });
    const std::string alone = work();
    EXPECT_FALSE(alone.empty());
    for (const std::string& text : found)
        EXPECT_EQ(text, alone);
}

TEST(LibraryThreads, FindTheNorthThatTheFirstOfThemSetsUp)
{
    CheckSameInThreads(
        [] { return Bits(field::MagneticFieldAt(live_pole::kTip, 2026.9).declination); });
}

TEST(LibraryThreads, CalibrateAndJudgeOneRecording)
{
    quality::CalibrationTurns turns;
    turns.horizontal = turns::Make({}, turns::TurnAxis::Horizontal);
    turns.vertical = turns::Make({}, turns::TurnAxis::Vertical);
    CheckSameInThreads([&] {
        return ToText(quality::AssessCalibration(quality::RunSolver(turns)))
               + ToText(quality::AssessCalibration(quality::RunJointFit(turns)));
    });
}

TEST(LibraryThreads, EstimateATipAndCheckParameters)
{
    std::vector<xyhCoord> antennas;
    antennas.reserve(20);
    for (int i = 0; i < 20; ++i)
        antennas.push_back({0.6 * std::cos(i), 0.6 * std::sin(i), 1.9 + 0.002 * (i % 3)});
    CheckSameInThreads([&] {
        std::string text = Bits(quality::EstimateTip(antennas, 2.0).tip.h);
        for (const auto& problem : quality::CheckParameterText("[MagneticA.b]nan\r\n"))
            text += ToText(problem);
        return text;
    });
}

// One setup and one recording for all of them.
TEST(LibraryThreads, LeadAPoleByBridgesOfTheirOwn)
{
    field::Setup setup = live_pole::TrackSetup();
    setup.north = field::NorthSource::Model;
    setup.calibration.field = field::FieldShape{500.0, 64.0};
    const auto records = live_pole::RecordsOf(live_pole::StandingTrack(2.0));
    CheckSameInThreads([&] {
        std::string nmea;
        field::Bridge bridge(setup);
        for (const field::Record& record : records) {
            field::Play(bridge, record);
            for (const field::Report& report : bridge.Take())
                nmea += report.nmea;
        }
        return nmea;
    });
}

TEST(LibraryThreads, OccupyAndCalibrateOnTheSpot)
{
    simulation::OccupationPlan plan;
    plan.points = 1;
    plan.motion = simulation::UsualMotion(simulation::OccupationMotion::Free);
    plan.motion.duration = 11.0;
    const auto log = simulation::SimulateOccupations(field_tests::UsualSensor(), {}, plan, 1);
    CheckSameInThreads([&] {
        field::Occupation occupation({});
        field::SpotCalibration calibration({});
        for (const simulation::OccupationRow& row : log.rows) {
            const PoseSensorData& s = row.sample;
            field_tests::Add(occupation, row);
            field::InertialSample sample;
            sample.seconds = row.truth.pose.seconds;
            sample.rate = {s.dGyro_x, s.dGyro_y, s.dGyro_z};
            sample.acceleration = {s.dAcc_x, s.dAcc_y, s.dAcc_z};
            sample.magnetic = {s.dMag_x, s.dMag_y, s.dMag_z};
            calibration.Add(sample);
            if (!row.antenna) continue;
            field::AntennaEpoch epoch;
            epoch.seconds = sample.seconds;
            epoch.position = field_tests::CoordinateOf(*row.antenna);
            calibration.Add(epoch);
        }
        const field::OccupationEstimate estimate = occupation.Estimate();
        return OccupationText(estimate) + Bits(estimate.tip.x) + SpotText(calibration.Estimate());
    });
}

TEST(LibraryThreads, WatchTheFieldOfOneRecording)
{
    const live_pole::Track track = live_pole::ReplayTrack();
    CheckSameInThreads([&] {
        field::DisturbanceMonitor monitor({.strength = 500.0, .dip = 64.0});
        std::string text;
        for (const live_pole::TrackRow& row : track) {
            field::MonitorSample now;
            now.seconds = row.seconds;
            now.tilt.pitch = row.pitch;
            now.tilt.roll = row.roll;
            now.a = {row.readings[0], row.readings[1], row.readings[2]};
            text += Bits(monitor.Add(now).score);
        }
        for (const field::DisturbedSpan& span : monitor.Spans())
            text += field::TextOf(span);
        return text;
    });
}

#ifdef TILTPOLE_HAS_JOB
// Jobs in one folder, each of one thread; the point they store is one that nobody changes.
TEST(LibraryThreads, StorePointsInJobsOfTheirOwnAndComputeThemAnew)
{
    const ScratchFolder folder;
    field::Setup setup = field::test::PoleSetup();
    const field::JobRecord stored = field::test::StoredPoint(setup, 10);
    ASSERT_EQ(stored.error, "");
    setup.poleLength = 1.8;
    std::atomic<int> jobs{0};
    CheckSameInThreads([&] {
        const std::string path = folder.Path("job" + std::to_string(++jobs) + ".gpkg");
        field::JobStore job = field::test::NewJob(path);
        std::string text;
        for (int i = 0; i < 5; ++i) {
            field::JobPoint point = stored.point;
            point.name = job.FreeName("P");
            point.setup = 1;
            text += job.AddPoint(point, stored.epochs).error + point.name;
        }
        for (const field::JobPoint& point : *job.Points()) {
            const auto again = field::Recomputed(point, *job.Epochs(point.id), setup, 0.0);
            text += again.error + Bits(again.point.tip.ellipsoidalHeight);
        }
        return text;
    });
}
#endif

#ifdef TILTPOLE_HAS_GRID
TEST(LibraryThreads, TurnBearingsByGridsOfTheirOwn)
{
    CheckSameInThreads([] {
        const auto grid = field::GridNorth::Of("EPSG:23700");
        return grid ? Bits(grid->Convergence(47.5, 19.05)) : std::string();
    });
}
#endif

} // namespace
