// SPDX-License-Identifier: MIT
//
// When an occupation of a live pole begins and ends, epoch by epoch.
#include "field/bridge/OccupationWatch.h"

#include "tests/field/bridge/PlantedPole.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace {

using namespace live_pole;
using field::Epoch;
using field::OccupationTrack;
using field::PoseSample;
using tiltpole::field::OccupationWatch;

// The track of a rocked pole that may be stored.
const OccupationTrack& Rocked()
{
    static const auto reports = ReportsOf(TrackSetup(), RecordsOf(RockedTrack()));
    static const auto report = ByOccupation(reports);
    if (!report) throw std::runtime_error("no occupation that may be stored");
    return *report->occupationTrack;
}

// Feeds a watch the pieces of that track, changed, and later by so much.
struct Feed
{
    std::function<void(PoseSample&)> pose = [](PoseSample&) {};
    std::function<void(Epoch&, std::size_t)> epoch = [](Epoch&, std::size_t) {};
    field::Instant later{};
    double declination = 0.0;
    std::size_t until = 1000; // pieces

    void Into(OccupationWatch& watch) const
    {
        const auto& pieces = Rocked().pieces;
        for (std::size_t i = 0; i < std::min(until, pieces.size()); ++i) {
            // The first has none: they came before the occupation, which needs to know of gyros.
            const auto& poses = i == 0 ? pieces[1]->poses : pieces[i]->poses;
            for (PoseSample sample : poses) {
                sample.moment += later;
                pose(sample);
                watch.Add(sample, false);
            }
            Epoch changed = pieces[i]->epoch;
            changed.moment += later;
            epoch(changed, i);
            watch.Add(changed, {}, declination);
        }
    }
};

bool Estimates(const Feed& feed, const field::Setup& setup = TrackSetup())
{
    OccupationWatch watch(setup);
    feed.Into(watch);
    return watch.Estimate().has_value();
}

TEST(OccupationWatch, NeedsRatesOfAnyAxisAndGravity)
{
    EXPECT_TRUE(Estimates({}));
    const field::Instant first = Rocked().pieces[1]->poses.back().moment;
    for (double PoseSensorData::*axis :
         {&PoseSensorData::dGyro_x, &PoseSensorData::dGyro_y, &PoseSensorData::dGyro_z}) {
        for (const double rate : {0.0, 0.1}) {
            const auto before = [&](PoseSample& sample) {
                PoseSensorData& data = sample.data;
                if (sample.moment > first) return;
                data.dGyro_x = data.dGyro_y = data.dGyro_z = 0.0;
                data.*axis = rate;
            };
            OccupationWatch watch(TrackSetup());
            Feed{.pose = before, .until = 22}.Into(watch);
            EXPECT_EQ(watch.Estimate().has_value(), rate != 0.0);
        }
    }
    for (const double size : {0.0, 0.4, 9.81}) {
        EXPECT_FALSE(Estimates({.pose = [size](PoseSample& sample) {
            sample.data.dAcc_x *= size;
            sample.data.dAcc_y *= size;
            sample.data.dAcc_z *= size;
        }})) << size;
    }
}

struct BrokenCase
{
    const char* why;
    void (*change)(Epoch& epoch);
};

// From a second before the end on: it has no two seconds any more.
TEST(OccupationWatch, BeginsAnewWhereAnEpochIsOfAnother)
{
    constexpr BrokenCase cases[] = {
        {"another base",   [](Epoch& epoch) { epoch.station = "0312"; }                   },
        {"3 m aside",
         [](Epoch& epoch) { epoch.antenna = field::Offset(epoch.antenna, 3.1, 0.0, 0.0); }},
        {"another minute", [](Epoch& epoch) { epoch.moment -= std::chrono::minutes(1); }  },
    };
    const std::size_t last = Rocked().pieces.size() - 10;
    for (const BrokenCase& c : cases) {
        EXPECT_FALSE(Estimates({.epoch = [&](Epoch& epoch, std::size_t i) {
            if (i >= last) c.change(epoch);
        }})) << c.why;
    }
    EXPECT_FALSE(Estimates({.epoch = [&](Epoch& epoch, std::size_t i) {
        if (i == last) epoch.moment = Rocked().pieces[i - 1]->epoch.moment;
    }})) << "the moment of the epoch before";
}

TEST(OccupationWatch, BeginsAnewAfter32768Poses)
{
    OccupationWatch watch(TrackSetup());
    Feed{}.Into(watch);
    ASSERT_TRUE(watch.Estimate());
    const OccupationTrack::Piece& end = *Rocked().pieces.back();
    Epoch epoch = end.epoch;
    PoseSample pose = end.poses.back();
    for (int i = 0; i < 32768; ++i) {
        pose.moment += std::chrono::microseconds(10);
        watch.Add(pose, false);
    }
    epoch.moment += std::chrono::milliseconds(400);
    watch.Add(epoch, {}, 0.0);
    EXPECT_FALSE(watch.Estimate());
}

TEST(OccupationWatch, NeedsADeclinationUnlessTheFileHoldsTheNorth)
{
    field::Setup byModel = TrackSetup();
    byModel.north = field::NorthSource::Model;
    EXPECT_TRUE(Estimates({.declination = 2.5}, byModel));
    EXPECT_FALSE(Estimates({.declination = std::nan("")}, byModel));
    EXPECT_TRUE(Estimates({.declination = std::nan("")}));
}

TEST(OccupationWatch, FollowsTheDeclinationFromOneOccupationToTheNext)
{
    field::Setup byModel = TrackSetup();
    byModel.north = field::NorthSource::Model;
    OccupationWatch watch(byModel);
    Feed{.declination = 0.0}.Into(watch);
    ASSERT_TRUE(watch.Track());
    EXPECT_EQ(watch.Track()->declination, 0.0);
    const double before = watch.Estimate()->heading;
    for (const double declination : {0.04, 5.0}) {
        const auto later = std::chrono::minutes(declination == 5.0 ? 2 : 1);
        Feed{.later = later, .declination = declination}.Into(watch);
        ASSERT_TRUE(watch.Track()) << declination;
        EXPECT_EQ(watch.Track()->declination, declination == 5.0 ? 5.0 : 0.0);
    }
    EXPECT_NE(watch.Estimate()->heading, before);
}

} // namespace
