// SPDX-License-Identifier: MIT
#include "apps/live/ReportText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

namespace {

using field::Reason;
using field::Report;
using field::State;
using nlohmann::json;
using Code = Reason::Code;

// A pole that leans 12.34 degrees to 250 degrees.
Report Storable()
{
    Report report;
    report.epoch.utc = "130758.04";
    report.epoch.date = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22);
    report.epoch.fix = field::Fix::Fixed;
    report.epoch.satellites = 20;
    report.epoch.correctionAge = 1.0;
    report.epoch.station = "0207";
    report.epoch.geoidSeparation = 39.429;
    field::Tip tip;
    tip.position = {47.566056, 19.008359, 230.8054};
    tip.sigma = {1.44e-4, 2e-5, 8.1e-5, 0.0, 0.0, 2.25e-4};
    tip.tilt = 12.34;
    tip.azimuthTrue = 250.1;
    report.tip = tip;
    report.verdict.state = State::Store;
    report.nmea = "$GNGGA\r\n";
    return report;
}

Report With(State state, std::vector<Reason> reasons)
{
    Report report = Storable();
    report.verdict = {state, std::move(reasons)};
    return report;
}

TEST(ReportText, TellsLeanAndDeviationsOfATipThatMayBeStored)
{
    EXPECT_EQ(live::StateLine(Storable()),
              "13:07:58.0 STORE  lean 12.3 to 250  sd 12 9 15 mm (N E h)  fixed 20 sat age 1.0");
    Report report = Storable();
    report.epoch.correctionAge.reset();
    EXPECT_TRUE(live::StateLine(report).ends_with("fixed 20 sat"));
}

TEST(ReportText, NamesEachFix)
{
    constexpr std::pair<field::Fix, const char*> names[] = {
        {field::Fix::Invalid,      " no fix 20 sat"      },
        {field::Fix::Single,       " single 20 sat"      },
        {field::Fix::Differential, " differential 20 sat"},
        {field::Fix::Fixed,        " fixed 20 sat"       },
        {field::Fix::Float,        " float 20 sat"       },
        {field::Fix::Estimated,    " estimated 20 sat"   },
    };
    for (const auto& [fix, name] : names) {
        Report report = Storable();
        report.epoch.fix = fix;
        EXPECT_THAT(live::StateLine(report), testing::HasSubstr(name));
    }
}

TEST(ReportText, SaysThatTheTipIsNotKnownWhereNothingElseIs)
{
    Report report = Storable();
    report.tip.reset();
    report.epoch.utc = "130758";
    EXPECT_EQ(live::StateLine(report), "13:07:58.0 STORE  the tip is not known");
}

TEST(ReportText, TellsTheFirstReasonAgainstATip)
{
    EXPECT_EQ(live::StateLine(With(State::Wait,
                                   {
                                       {Code::Moving, "antenna moves 0.31 m/s"}
    })),
              "13:07:58.0 WAIT   antenna moves 0.31 m/s");
    EXPECT_EQ(live::StateLine(With(State::Block,
                                   {
                                       {Code::NoPose, "no pose for 2.0 s"},
                                       {Code::Lean,   "lean"             }
    })),
              "13:07:58.0 BLOCK  no pose for 2.0 s");
    Report silence;
    silence.verdict.reasons = {
        {Code::NoReceiver, "the receiver is silent"}
    };
    EXPECT_EQ(live::StateLine(silence), "           BLOCK  the receiver is silent");
}

TEST(ReportText, WritesOneObjectALineWithTheAgreedNames)
{
    const std::string line = live::ReportJson(Storable());
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    const json object = json::parse(line);
    EXPECT_EQ(object["utc"], "130758.04");
    EXPECT_EQ(object["date"], "2026-11-22");
    EXPECT_EQ(object["state"], "store");
    EXPECT_EQ(object["reasons"], json::array());
    const json& tip = object["tip"];
    EXPECT_EQ(tip["latitude"], 47.566056);
    EXPECT_EQ(tip["longitude"], 19.008359);
    EXPECT_EQ(tip["ellipsoidalHeight"], 230.8054);
    EXPECT_DOUBLE_EQ(tip["sd_n_m"], 0.012);
    EXPECT_DOUBLE_EQ(tip["sd_e_m"], 0.009);
    EXPECT_DOUBLE_EQ(tip["sd_h_m"], 0.015);
    EXPECT_EQ(tip["lean_deg"], 12.34);
    EXPECT_EQ(tip["azimuth_true_deg"], 250.1);
    EXPECT_EQ(object["quality"], 4);
    EXPECT_TRUE(object["occupation"].is_null());
}

TEST(ReportText, WritesReasonsInTheirOrderAndNoTipWhereThereIsNone)
{
    Report report = With(State::Block, {
                                           {Code::NoPose,   "no pose for 2.0 s"        },
                                           {Code::FloatFix, "the solution is not fixed"}
    });
    report.tip.reset();
    const json object = json::parse(live::ReportJson(report));
    EXPECT_EQ(object["state"], "block");
    EXPECT_EQ(object["reasons"], json({"no pose for 2.0 s", "the solution is not fixed"}));
    EXPECT_EQ(object["codes"], json({"no pose", "not fixed"}));
    EXPECT_TRUE(object["tip"].is_null());
}

TEST(ReportText, WritesNullForWhatIsNotANumber)
{
    Report report = Storable();
    report.tip->sigma.hh = std::numeric_limits<double>::quiet_NaN();
    report.tip->declination = std::numeric_limits<double>::infinity();
    const json object = json::parse(live::ReportJson(report));
    EXPECT_TRUE(object["tip"]["sd_h_m"].is_null());
    EXPECT_TRUE(object["tip"]["declination_deg"].is_null());
}

TEST(ReportText, WritesNullForWhatTheReceiverDoesNotSay)
{
    Report report = Storable();
    report.epoch.date.reset();
    report.epoch.correctionAge.reset();
    const json object = json::parse(live::ReportJson(report));
    EXPECT_TRUE(object["date"].is_null());
    EXPECT_TRUE(object["age_s"].is_null());
}

TEST(ReportText, KeepsToTheTipOfTheSampleWhereTheOccupationHasNone)
{
    Report report = Storable();
    report.byOccupation = true;
    report.occupationTip = field::Geodetic{1.0, 2.0, 3.0};
    EXPECT_EQ(live::JudgedTip(report).position.latitude, 47.566056);
    report.occupation = field::OccupationEstimate();
    report.occupationTip.reset();
    EXPECT_EQ(live::JudgedTip(report).position.latitude, 47.566056);
}

TEST(ReportText, WritesWhatTheOccupationAdvises)
{
    field::OccupationEstimate estimate;
    estimate.advice = field::OccupationAdvice::Move;
    estimate.reason = field::OccupationReason::HeadingUncertain;
    estimate.hasTip = true;
    estimate.ellipseMajor = 0.031;
    Report report = Storable();
    report.occupation = estimate;
    const json object = json::parse(live::ReportJson(report));
    EXPECT_EQ(object["occupation"]["advice"], "move");
    EXPECT_EQ(object["occupation"]["text"], field::OccupationText(estimate));
    EXPECT_EQ(object["occupation"]["ellipse_major_m"], 0.031);
}

TEST(ReportText, TellsTheTipOfTheOccupationWhereOnlyThatMayBeStored)
{
    Report report = Storable();
    field::OccupationEstimate estimate;
    estimate.advice = field::OccupationAdvice::Store;
    estimate.covariance[0][0] = 4e-6;
    estimate.covariance[1][1] = 9e-6;
    estimate.covariance[2][2] = 25e-6;
    report.occupation = estimate;
    report.occupationTip = field::Geodetic{47.5660001, 19.0080002, 230.5};
    EXPECT_EQ(json::parse(live::ReportJson(report))["tip"]["latitude"], 47.566056);

    report.byOccupation = true;
    const json tip = json::parse(live::ReportJson(report))["tip"];
    EXPECT_EQ(tip["latitude"], 47.5660001);
    EXPECT_EQ(tip["longitude"], 19.0080002);
    EXPECT_EQ(tip["ellipsoidalHeight"], 230.5);
    EXPECT_DOUBLE_EQ(tip["sd_n_m"], 0.002);
    EXPECT_DOUBLE_EQ(tip["sd_e_m"], 0.003);
    EXPECT_DOUBLE_EQ(tip["sd_h_m"], 0.005);
    EXPECT_THAT(live::StateLine(report), testing::HasSubstr("sd 2 3 5 mm"));
}

TEST(ReportText, SumsUpWhatWasReadAndLeftOut)
{
    field::Counters counters;
    counters.receiverLines = 100;
    counters.receiverBad = 3;
    counters.epochs = 20;
    counters.poses = 500;
    counters.stored = 12;
    counters.waited = 5;
    counters.blocked = 3;
    EXPECT_EQ(live::CountersText(counters),
              "receiver   100 lines, 3 of them bad, 0 refused, 0 not used; 20 epochs, 0 repeated\n"
              "pose       500 samples; 0 bad, 0 refused\n"
              "epochs     12 store, 5 wait, 3 block\n");
}

} // namespace
