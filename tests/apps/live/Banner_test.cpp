// SPDX-License-Identifier: MIT
#include "apps/live/Banner.h"

#include "tests/apps/live/Recorded.h"
#include <cmath>
#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

// What is shown of a pole after its recording.
std::string Heard(const field::Setup& setup, const std::string& config = "pole.cfg",
                  bool withPoses = true)
{
    live::Banner banner(setup, config, "$PTPS");
    field::Bridge bridge(setup);
    std::string shown;
    for (const field::Record& record : live_pole::RecordsOf(live_pole::StandingTrack(3.0))) {
        if (!withPoses && record.channel == field::Channel::Pose) continue;
        field::Play(bridge, record);
        for (const field::Report& report : bridge.Take())
            banner.Add(report, bridge.Count());
        if (const auto text = banner.Take()) shown += *text;
    }
    return shown;
}

TEST(Banner, SaysOnceWhatReceiverAndSensorSend)
{
    const std::string shown = Heard(live_pole::TrackSetup());
    EXPECT_THAT(shown, HasSubstr("receiver   GGA RMC GST at 10 Hz, 7 decimals, station 0207\n"));
    EXPECT_THAT(shown, HasSubstr("pose       $PTPS at 50 Hz, device clock\n"));
    EXPECT_THAT(shown, HasSubstr("the model is off"));
    EXPECT_EQ(apps::test::Count(shown, "receiver"), 1U);
}

TEST(Banner, NamesTheDeclinationAndAnOffsetThatLooksLikeIt)
{
    field::Setup setup = live_pole::TrackSetup();
    setup.north = field::NorthSource::Model;
    setup.calibration.sensor.SetMagneticBiasAngle_A(-5.8);
    const std::string shown = Heard(setup);
    EXPECT_THAT(shown, HasSubstr("north      true, declination +5."));
    EXPECT_THAT(shown, HasSubstr("(WMM2025, valid to 2030.0), axis offset -5.80 (bias A of "
                                 "pole.cfg)\n"));
    EXPECT_THAT(shown, HasSubstr("warning    the axis offset is the declination"));
}

TEST(Banner, WarnsOfAnOffsetThatIsNotUsual)
{
    field::Setup setup = live_pole::TrackSetup();
    setup.north = field::NorthSource::Model;
    for (const double offset : {2.5, -2.5}) {
        setup.calibration.sensor.SetMagneticBiasAngle_A(offset);
        EXPECT_THAT(Heard(setup), HasSubstr("warning    an axis offset beyond 2 degrees"))
            << offset;
    }
    for (const double offset : {0.0, 1.9, -1.9}) {
        setup.calibration.sensor.SetMagneticBiasAngle_A(offset);
        EXPECT_EQ(apps::test::Count(Heard(setup), "warning"), 0U) << offset;
    }
}

TEST(Banner, SaysThatNoPoseHasComeYet)
{
    field::Setup setup = live_pole::TrackSetup();
    EXPECT_THAT(Heard(setup, "pole.cfg", false), HasSubstr("pose       nothing yet\n"));
    setup.north = field::NorthSource::Model;
    setup.calibration.sensor.SetMagneticBiasAngle_A(2.5);
    const std::string shown = Heard(setup, "", false);
    EXPECT_THAT(shown, HasSubstr("north      true, axis offset +2.50 (no parameter file)\n"));
    EXPECT_EQ(apps::test::Count(shown, "warning"), 0U) << "the declination of no place is known";
}

TEST(Banner, SaysThatOneMagnetometerHasNoComparison)
{
    field::Setup setup = live_pole::TrackSetup();
    setup.oneMagnetometer = true;
    EXPECT_THAT(Heard(setup),
                HasSubstr("device clock, ONE magnetometer: no comparison of A and B\n"));
}

// What is shown of epochs at the given seconds.
std::string ShownOf(const field::Setup& setup, field::Report report,
                    std::initializer_list<double> seconds)
{
    live::Banner banner(setup, "", "$PTPS");
    field::Counters counters;
    for (const double second : seconds) {
        report.epoch.arrival =
            std::chrono::duration_cast<field::Instant>(std::chrono::duration<double>(second));
        counters.poses += 100;
        banner.Add(report, counters);
    }
    return banner.Take().value_or("");
}

field::Report ReportOf(const std::string& lines)
{
    field::Report report;
    report.epoch.utc = "130758.00";
    report.epoch.lines = lines;
    report.epoch.minuteDecimals = 5;
    return report;
}

TEST(Banner, NamesNoSentenceThatHasNoType)
{
    EXPECT_THAT(ShownOf(live_pole::TrackSetup(),
                        ReportOf("$GNGGA,1\r\n!AIVDM,1\r\n$GPGGAX,1\r\n$GNRMC\r\n$GNGST,1"),
                        {0.0, 1.0, 2.0}),
                HasSubstr("receiver   GGA GST at 1 Hz, 5 decimals\n"));
}

TEST(Banner, TellsARateBelowOneAsItIs)
{
    EXPECT_THAT(ShownOf(live_pole::TrackSetup(), ReportOf("$GNGGA,1\r\n"), {0.0, 4.0, 8.0}),
                HasSubstr("receiver   GGA at 0.25 Hz, 5 decimals\n"));
}

TEST(Banner, CountsPosesFromTheFirstSecondOn)
{
    // 100 poses with each epoch; those with the first are from before.
    EXPECT_THAT(ShownOf(live_pole::TrackSetup(), ReportOf("$GNGGA,1\r\n"), {0.0, 2.0, 4.0}),
                HasSubstr("pose       $PTPS at 50 Hz\n"))
        << "no tip tells of a clock";
}

TEST(Banner, SaysWhereASensorHasNoClock)
{
    field::Report report = ReportOf("$GNGGA,1\r\n");
    report.tip = field::Tip();
    EXPECT_THAT(ShownOf(live_pole::TrackSetup(), report, {0.0, 2.0}),
                HasSubstr("pose       $PTPS at 50 Hz, without a clock of its own\n"));
}

TEST(Banner, NamesNoUncertaintyOfADeclinationWithoutADateOrAPlace)
{
    field::Setup setup = live_pole::TrackSetup();
    setup.north = field::NorthSource::Model;
    setup.calibration.sensor.SetMagneticBiasAngle_A(0.0);
    field::Report report = ReportOf("$GNGGA,1\r\n");
    report.tip = field::Tip();
    report.tip->declination = 3.0;
    report.tip->position = {47.5, 19.0, 200.0};
    const char* const kWithout = "north      true, declination +3.00 (WMM2025";
    EXPECT_THAT(ShownOf(setup, report, {0.0, 2.0}), HasSubstr(kWithout));
    report.tip->epoch.date = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22);
    EXPECT_THAT(ShownOf(setup, report, {0.0, 2.0}),
                HasSubstr("north      true, declination +3.00 sd 0."));
    report.tip->position.latitude = std::nan("");
    EXPECT_THAT(ShownOf(setup, report, {0.0, 2.0}), HasSubstr(kWithout));
}

TEST(Banner, AsksForTheAntennaHeightThatIsRight)
{
    field::Setup setup;
    setup.poleLength = 2.0;
    setup.phaseCenter = 0.1165;
    const live::Banner banner(setup, "", "$PTPS");
    EXPECT_EQ(banner.Opening({"tcp 127.0.0.1:10110"}),
              "height     antenna 2.1165 m above the tip; SET THE ANTENNA HEIGHT OF THE APP TO 0\n"
              "serving    tcp 127.0.0.1:10110\n");
    setup.appHeight = 1.8;
    EXPECT_THAT(banner.Opening({}), HasSubstr("OF THE APP TO 1.8000 m"));
}

} // namespace
