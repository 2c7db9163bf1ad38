// SPDX-License-Identifier: MIT
//
// What an occupation keeps of its samples where its memory is full, or where there are hardly any.
#include "field/occupation/Gravity.h"
#include "field/occupation/Track.h"

#include <gtest/gtest.h>

namespace {

using tiltpole::field::Epoch;
using tiltpole::field::MeanForceOf;
using tiltpole::field::OwnMotion;
using tiltpole::field::OwnMotionOf;
using tiltpole::field::Reading6;
using tiltpole::field::Track;

const Eigen::Quaterniond kLevel = Eigen::Quaterniond::Identity();

Reading6 AtRest(double time)
{
    Reading6 reading;
    reading.time = time;
    reading.force = Eigen::Vector3d::UnitZ();
    return reading;
}

Epoch EpochAt(double time)
{
    Epoch epoch;
    epoch.time = time;
    return epoch;
}

// A power of two apart, from the first on, and as many as fit or half as many.
template <class Entry>
void CheckEven(const std::vector<Entry>& entries, int seen, std::size_t most)
{
    ASSERT_FALSE(entries.empty());
    EXPECT_LE(entries.size(), most) << seen;
    EXPECT_EQ(entries.front().time, 0.0);
    double apart = 1.0;
    while (static_cast<double>(entries.size()) * apart < seen)
        apart *= 2.0;
    for (std::size_t i = 0; i < entries.size(); ++i)
        EXPECT_EQ(entries[i].time, static_cast<double>(i) * apart) << seen;
    EXPECT_GT(static_cast<double>(entries.size() + 1) * apart, seen - 1) << "up to the last ones";
}

TEST(Track, KeepsWhatLiesEvenlyOverAllOfItWhereItIsFull)
{
    for (const std::size_t most : {3U, 4U, 7U, 8U}) {
        Track track(most, most);
        for (int seen = 1; seen <= 100; ++seen) {
            track.Add(AtRest(seen - 1), kLevel);
            track.Add(EpochAt(seen - 1));
            CheckEven(track.Nodes(), seen, most);
            CheckEven(track.Epochs(), seen, most);
            EXPECT_EQ(track.End().time, seen - 1);
        }
    }
}

TEST(Track, OfOneReadingHasItsAttitudeAtAnyTime)
{
    Track track(8, 8);
    EXPECT_FALSE(track.Covers(3.0)) << "nothing";
    const Eigen::Quaterniond first(Eigen::AngleAxisd(0.3, Eigen::Vector3d::UnitX()));
    track.Add(AtRest(3.0), first);
    EXPECT_TRUE(track.Covers(3.0));
    for (const double time : {2.0, 3.0, 4.0}) {
        const auto pose = track.At(time);
        EXPECT_EQ(pose.attitude, first.toRotationMatrix());
        EXPECT_EQ(pose.rate, Eigen::Vector3d::Zero());
        EXPECT_EQ(pose.slope, Eigen::Matrix3d::Zero());
    }
}

TEST(MeanForce, IsThatOfTheNodesWithinIt)
{
    Track track(1000, 8);
    for (int i = 0; i <= 300; ++i)
        track.Add(AtRest(0.01 * i), kLevel);
    EXPECT_NEAR(MeanForceOf(track, 1.0, 2.0).force.z(), 1.0, 1e-12);
    EXPECT_TRUE(MeanForceOf(track, 3.0, 4.0).force.isZero(0.0)) << "from the last node on";
    EXPECT_TRUE(MeanForceOf(track, 5.0, 6.0).force.isZero(0.0)) << "behind it";
}

TEST(OwnMotion, ExplainsNothingOfAPoleAtRest)
{
    Track track(1000, 8);
    for (const bool filled : {false, true}) {
        for (int i = 0; filled && i <= 500; ++i)
            track.Add(AtRest(0.01 * i), kLevel);
        const OwnMotion motion = OwnMotionOf(track);
        EXPECT_EQ(motion.lever, 0.0);
        EXPECT_EQ(motion.explained, 0.0);
        EXPECT_EQ(motion.swing, 0.0);
        EXPECT_NEAR(motion.all, 0.0, 1e-12);
    }
}

} // namespace
