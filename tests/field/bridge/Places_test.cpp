// SPDX-License-Identifier: MIT
//
// Tips all over the Earth, from sentence to sentence.
#include "field/North.h"
#include "tests/field/bridge/LivePole.h"
#include "tests/field/tip/Places.h"

#include <cmath>

namespace {

using namespace live_pole;
using tip_tests::LeaningPole;

constexpr double kYear = 2026.0 + (325.0 + kStart / 86400.0) / 365.0; // 2026-11-22 13:07:58

// A few poses, and one epoch amid them.
std::vector<Record> RecordsAt(const field::Geodetic& antenna, const PoseSensorData& pose)
{
    std::vector<Record> records;
    for (int i = 0; i < 10; ++i) {
        std::string body = "PTPS,1,";
        for (const double value : {pose.dPitch, pose.dRoll})
            body += Printed(",%.12f", value);
        body += ',';
        for (const double value :
             {pose.dMag_x, pose.dMag_y, pose.dMag_z, pose.dMag_x_2, pose.dMag_y_2, pose.dMag_z_2})
            body += Printed(",%.9f", value);
        records.push_back({InstantOf(kFirst + 0.02 * i), field::Channel::Pose,
                           WithChecksum(body + ",0,0,0,0,0,1")});
    }
    EpochFields epoch;
    epoch.utc = kStart;
    epoch.antenna = antenna;
    records.push_back({InstantOf(kFirst + 0.1), field::Channel::Receiver, EpochText(epoch)});
    std::ranges::stable_sort(records, {}, &Record::at);
    return records;
}

// The tip of the antenna as the sentence has it, which is what the engine knows.
TEST(Places, HaveTheirTipsWithinTwoTenthsOfAMillimeterInSentences)
{
    field::Setup setup = tip_tests::SetupOf(2);
    setup.delay = 0.0;
    setup.limits.fieldDip = 180.0; // the field of these poles is the same everywhere
    std::mt19937 random(7);
    std::uniform_real_distribution<double> angle(0.0, 360.0);
    std::uniform_real_distribution<double> lean(-20.0, 20.0);
    double largest = 0.0;
    int solved = 0;
    for (const field::Geodetic& place : tip_tests::Places()) {
        const field::Field north = field::MagneticFieldAt(place, kYear);
        LeaningPole pole{.heading = angle(random), .pitch = lean(random), .roll = lean(random)};
        pole.declination = north.declination;
        const auto records = RecordsAt(place, pole.Sample().data);
        const auto reports = ReportsOf(setup, records);
        ASSERT_EQ(reports.size(), 1U) << place.latitude << ' ' << place.longitude;
        if (north.horizontal < 2000.0) {
            EXPECT_TRUE(PlacesOf(reports[0]).empty()) << place.latitude;
            continue;
        }
        const auto named = PlacesOf(reports[0]);
        ASSERT_EQ(named.size(), 2U) << ReasonsOf(reports[0]);
        const field::Geodetic tip = tip_tests::TrueTip(reports[0].epoch.antenna, pole);
        for (const field::Geodetic& out : named)
            largest = std::max(largest, tip_tests::Distance(out, tip));
        EXPECT_LT(tip_tests::Distance(reports[0].epoch.antenna, place), 0.0002);
        EXPECT_EQ(reports[0].nmea.find("60.0000000"), std::string::npos) << reports[0].nmea;
        ++solved;
    }
    EXPECT_GE(solved, 190);
    EXPECT_LT(largest, 0.0002);
    RecordProperty("largest_mm", std::to_string(1000.0 * largest));
}

} // namespace
