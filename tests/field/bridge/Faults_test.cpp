// SPDX-License-Identifier: MIT
//
// What fails on a real pole, and how the engine comes back from it. A standing pole may be stored from
// its first second on; the fault lasts from 4 s to 6 s of the track, or begins at 4 s.
#include "tests/field/bridge/LivePole.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

using namespace live_pole;
using field::State;
using Code = field::Reason::Code;

constexpr double kFrom = 4.0;
constexpr double kTo = 6.0;
constexpr double kEnd = 9.0;

bool During(double seconds)
{
    return seconds >= kFrom - 1e-6 && seconds < kTo - 1e-6;
}

std::vector<Report> RunFault(const Options& options, const field::Setup& setup = TrackSetup())
{
    return ReportsOf(setup, RecordsOf(StandingTrack(kEnd), options));
}

// The track's seconds of an epoch, by its number: moments do not tell where the time stepped.
struct Expected
{
    Code code;
    State state;
    double from;         // the reason is there from here
    double to;           // to here
    double recovers;     // and the pole may be stored again from here
    const char* quality; // of GGA meanwhile; empty: of no interest
};

void Check(const std::vector<Report>& reports, const Expected& expected,
           const std::function<double(const Report&)>& secondsOf = SecondsOf)
{
    int seen = 0;
    for (const Report& report : reports) {
        if (report.epoch.utc.empty()) continue;
        const double t = secondsOf(report);
        const bool within = t > expected.from - 0.01 && t < expected.to - 0.01;
        if (within) {
            ++seen;
            EXPECT_TRUE(Has(report, expected.code)) << t << ' ' << ReasonsOf(report);
            EXPECT_EQ(report.verdict.state, expected.state) << t << ' ' << ReasonsOf(report);
            if (*expected.quality != '\0') {
                EXPECT_EQ(FieldOf(LineOf(report, "GGA"), 6), expected.quality) << report.nmea;
            }
        }
        const bool sound = (t > 1.0 && t < kFrom - 0.1) || t > expected.recovers;
        if (sound) {
            EXPECT_EQ(report.verdict.state, State::Store) << t << ' ' << ReasonsOf(report);
        }
        EXPECT_FALSE(CarriesAntenna(report)) << report.nmea;
        if (report.tip) {
            EXPECT_LT(PlanError(report), 0.004) << t;
        }
    }
    EXPECT_GT(seen, 0);
}

// The sensor fell from the pole, is that of another one, or tells its angles in radians.
TEST(Faults, PoseStillWhileTheAntennaMoves)
{
    for (const double speed : {0.2, 0.5, 1.5}) {
        Options options;
        options.epoch = [speed](EpochFields& epoch) {
            const double t = std::clamp(epoch.seconds - 4.0, 0.0, 2.0);
            epoch.antenna = field::Offset(epoch.antenna, speed * t, 0.0, 0.0);
            epoch.speed = epoch.seconds > 4.0 && epoch.seconds < 6.0 ? speed : 0.0;
        };
        int stored = 0;
        for (const Report& report :
             ReportsOf(TrackSetup(), RecordsOf(StandingTrack(kEnd), options))) {
            const double t = SecondsOf(report);
            const bool moves = t > 5.1 && t < 6.0;
            if (moves) {
                EXPECT_EQ(report.verdict.state, State::Wait)
                    << speed << ' ' << t << ' ' << ReasonsOf(report);
                EXPECT_TRUE(Has(report, Code::Moving))
                    << speed << ' ' << t << ' ' << ReasonsOf(report);
            }
            const bool still = (t > 1.0 && t < 4.0) || t > 7.2;
            if (!still) continue;
            ++stored;
            EXPECT_EQ(report.verdict.state, State::Store)
                << speed << ' ' << t << ' ' << ReasonsOf(report);
        }
        EXPECT_GT(stored, 40);
    }
}

// What an accelerometer that stands tells besides gravity.
void AddNoise(PoseFields& pose)
{
    pose.readings[9] += 0.002 * std::sin(400.0 * pose.seconds);
}

// A pole that leans by 7 degrees looks plumb: nothing else shows it as long as it stands.
TEST(Faults, PoseInRadians)
{
    for (const double pitch : {6.0, 20.0}) {
        Options options;
        options.pose = [](PoseFields& pose) {
            pose.pitch *= kPi / 180.0;
            pose.roll *= kPi / 180.0;
            AddNoise(pose);
        };
        int named = 0;
        for (const Report& report :
             ReportsOf(TrackSetup(), RecordsOf(StandingTrack(kEnd, pitch), options))) {
            EXPECT_NE(report.verdict.state, State::Store) << SecondsOf(report);
            if (report.epoch.utc.empty() || !(SecondsOf(report) > 1.0)) continue;
            ++named;
            EXPECT_FALSE(report.tip);
            ASSERT_FALSE(report.verdict.reasons.empty());
            EXPECT_EQ(report.verdict.reasons[0].text,
                      "no pose yet; last one dropped: pitch and roll are not those of the "
                      "accelerations: are they in degrees?");
        }
        EXPECT_GT(named, 70);
    }
}

TEST(Faults, ASensorWithoutAccelerometersIsBelieved)
{
    for (const double vertical : {0.0, 1.0}) { // of all samples: filled in, not measured
        Options options;
        options.pose = [vertical](PoseFields& pose) {
            pose.readings[9] = pose.readings[10] = 0.0;
            pose.readings[11] = vertical;
        };
        const auto reports = ReportsOf(TrackSetup(), RecordsOf(StandingTrack(kEnd, 20.0), options));
        EXPECT_EQ(reports.back().verdict.state, State::Store) << ReasonsOf(reports.back());
    }
}

TEST(Faults, AccelerationsOfEitherSignAreGravity)
{
    for (const double sign : {1.0, -1.0}) {
        Options options;
        options.pose = [sign](PoseFields& pose) {
            AddNoise(pose);
            for (std::size_t i = 9; i < 12; ++i)
                pose.readings[i] *= sign;
        };
        const auto reports = ReportsOf(TrackSetup(), RecordsOf(StandingTrack(kEnd, 20.0), options));
        EXPECT_EQ(reports.back().verdict.state, State::Store) << ReasonsOf(reports.back());
    }
}

TEST(Faults, LevelAccelerationsOfALeaningPoleAreNoGravityOfItsPose)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        pose.readings[9] = pose.readings[10] = 0.0;
        pose.readings[11] = 1.0;
        AddNoise(pose);
    };
    const auto reports = ReportsOf(TrackSetup(), RecordsOf(StandingTrack(kEnd, 20.0), options));
    EXPECT_FALSE(reports.back().tip);
    EXPECT_EQ(reports.back().verdict.state, State::Block);
}

// m/s² in place of g.
TEST(Faults, AccelerationsInAnotherUnitSayNothingOfThePose)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        pose.readings[9] = pose.readings[10] = 0.0;
        pose.readings[11] = 9.81;
        AddNoise(pose);
    };
    const auto reports = ReportsOf(TrackSetup(), RecordsOf(StandingTrack(kEnd, 20.0), options));
    EXPECT_EQ(reports.back().verdict.state, State::Store) << ReasonsOf(reports.back());
}

TEST(Faults, AnglesThatStayWhileAccelerationsTurn)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        if (pose.seconds > kFrom) {
            pose.readings[9] = pose.readings[10] = 0.0;
            pose.readings[11] = 1.0;
        }
        AddNoise(pose);
    };
    const auto reports = ReportsOf(TrackSetup(), RecordsOf(StandingTrack(kEnd, 20.0), options));
    const Report& last = reports.back();
    EXPECT_FALSE(last.tip);
    ASSERT_FALSE(last.verdict.reasons.empty());
    const std::string& text = last.verdict.reasons[0].text;
    EXPECT_TRUE(text.starts_with("no pose for 4.") || text.starts_with("no pose for 5.")) << text;
    EXPECT_TRUE(text.ends_with("pitch and roll are not those of the accelerations: are they in "
                               "degrees?"))
        << text;
}

TEST(Faults, ADisturbanceIsNoneOfAHeadingThatTheSensorForms)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        pose.heading = "40.0";
        for (std::size_t i = 0; i < 3; ++i)
            pose.readings[i] *= 1.0 + 0.1 * pose.seconds;
    };
    field::Setup setup = TrackSetup();
    setup.calibration.field = field::FieldShape{500.0, 64.0};
    const auto reports = RunFault(options, setup);
    EXPECT_EQ(reports.back().verdict.state, State::Store) << ReasonsOf(reports.back());
    EXPECT_LT(PlanError(reports.back()), 0.004);
    options.pose = [formed = options.pose](PoseFields& pose) {
        formed(pose);
        pose.heading.clear();
    };
    EXPECT_TRUE(Has(RunFault(options, setup).back(), Code::FieldStrength)) << "of readings";
}

TEST(Faults, PoseSilent)
{
    Options options;
    options.pose = [](PoseFields& pose) { pose.send = !During(pose.seconds); };
    Check(RunFault(options), {Code::NoPose, State::Block, 4.2, 5.9, 6.8, "0"});
}

TEST(Faults, PoseGapOfAFewSamples)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        pose.pitch += pose.seconds; // a pole that leans further, so that the gap is not bridged
        pose.send = !(pose.seconds > 4.03 && pose.seconds < 4.17);
    };
    bool seen = false;
    for (const Report& report : RunFault(options)) {
        if (std::fabs(SecondsOf(report) - 4.1) > 0.04) continue;
        seen = true;
        EXPECT_TRUE(Has(report, Code::PoseGap)) << ReasonsOf(report);
        EXPECT_FALSE(report.tip);
    }
    EXPECT_TRUE(seen);
}

TEST(Faults, PoseNotANumber)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        if (During(pose.seconds)) pose.pitch = std::nan("");
    };
    field::Bridge bridge(TrackSetup());
    const auto reports = ReportsOf(bridge, RecordsOf(StandingTrack(kEnd), options));
    Check(reports, {Code::NoPose, State::Block, 4.2, 5.9, 6.8, "0"});
    EXPECT_EQ(bridge.Count().posesRefused, 100U);
    for (const Report& report : reports) {
        if (std::fabs(SecondsOf(report) - 5.0) > 0.01) continue;
        EXPECT_EQ(report.verdict.reasons[0].text,
                  "no pose for 1.02 s; last one dropped: a value is not a number");
    }
}

TEST(Faults, SensorStuck)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        if (During(pose.seconds)) pose.readings = {200.0, 100.0, -450.0, -200.0, -100.0, -450.0};
    };
    field::Setup setup = TrackSetup();
    setup.limits.fieldPair = 1.0; // the frozen reading is another field
    int seen = 0;
    for (const Report& report : RunFault(options, setup)) {
        const double t = SecondsOf(report);
        if (t > 4.6 && t < 5.9) {
            ++seen;
            EXPECT_TRUE(Has(report, Code::SensorStuck)) << t << ' ' << ReasonsOf(report);
            EXPECT_EQ(report.verdict.state, State::Block);
        }
        if (t > 7.0) {
            EXPECT_EQ(report.verdict.state, State::Store) << t << ReasonsOf(report);
        }
    }
    EXPECT_GT(seen, 10);
}

TEST(Faults, FixLostAndFloat)
{
    Options options;
    int quality = 0;
    options.epoch = [&](EpochFields& epoch) {
        if (During(epoch.seconds)) epoch.quality = quality;
    };
    Check(RunFault(options), {Code::NoFix, State::Block, 4.0, 6.0, 6.0, "0"});
    quality = 5;
    Check(RunFault(options), {Code::FloatFix, State::Block, 4.0, 6.0, 6.0, "5"});
}

TEST(Faults, CorrectionsOldOrOfTheFuture)
{
    Options options;
    const char* age = "11.0";
    options.epoch = [&](EpochFields& epoch) {
        if (During(epoch.seconds)) epoch.age = age;
    };
    Check(RunFault(options), {Code::CorrectionAge, State::Block, 4.0, 6.0, 6.0, "4"});
}

TEST(Faults, ReceiverSilent)
{
    Options options;
    options.epoch = [](EpochFields& epoch) { epoch.send = !During(epoch.seconds); };
    const auto reports = RunFault(options);
    int silent = 0;
    for (const Report& report : reports) {
        if (!report.epoch.utc.empty()) continue;
        ++silent;
        EXPECT_TRUE(report.nmea.empty());
        EXPECT_FALSE(report.tip);
        EXPECT_EQ(report.verdict.state, State::Block);
        EXPECT_TRUE(Has(report, Code::NoReceiver));
    }
    EXPECT_EQ(silent, 1);
    EXPECT_EQ(reports.size() - 1, 69U) << "one for each epoch that came";
    EXPECT_EQ(reports.back().verdict.state, State::Store) << ReasonsOf(reports.back());
}

TEST(Faults, ReceiverSilentFromTheBeginning)
{
    Options options;
    options.epoch = [](EpochFields& epoch) { epoch.send = false; };
    const auto reports = RunFault(options);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].verdict.reasons.at(0).text, "no epoch of the receiver for 3.0 s");
}

TEST(Faults, BaseChanged)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        if (epoch.seconds >= kFrom - 1e-6) epoch.station = "0312";
    };
    const auto records = RecordsOf(StandingTrack(kEnd), options);
    Check(ReportsOf(TrackSetup(), records), {Code::BaseChanged, State::Block, 4.0, 9.0, 9.0, "4"});

    auto acknowledged = records;
    acknowledged.push_back(
        {InstantOf(kFirst + kTo), field::Channel::Keys, std::string(field::kAcknowledgeBase)});
    std::ranges::stable_sort(acknowledged, {}, &Record::at);
    Check(ReportsOf(TrackSetup(), acknowledged),
          {Code::BaseChanged, State::Block, 4.0, 5.8, 6.0, "4"});
}

TEST(Faults, DatumStep)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        if (epoch.seconds >= kFrom - 1e-6) epoch.antenna.ellipsoidalHeight += 0.5;
    };
    const auto records = RecordsOf(StandingTrack(kEnd), options);
    Check(ReportsOf(TrackSetup(), records), {Code::DatumStep, State::Block, 4.1, 9.0, 9.0, "4"});

    auto acknowledged = records;
    acknowledged.push_back(
        {InstantOf(kFirst + kTo), field::Channel::Keys, std::string(field::kAcknowledgeDatum)});
    std::ranges::stable_sort(acknowledged, {}, &Record::at);
    Check(ReportsOf(TrackSetup(), acknowledged),
          {Code::DatumStep, State::Block, 4.1, 5.8, 6.0, "4"});
}

// A float solution may stand elsewhere and call itself good; the fix after it is no other datum.
TEST(Faults, AFixAfterAFloatThatStoodElsewhere)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        if (!During(epoch.seconds)) return;
        epoch.quality = 5;
        epoch.sigma = {0.02, 0.02, 0.03};
        epoch.antenna = field::Offset(epoch.antenna, 0.4, -0.3, 0.6);
    };
    for (const Report& report : RunFault(options)) {
        const double t = SecondsOf(report);
        if (report.epoch.utc.empty()) continue;
        EXPECT_FALSE(Has(report, Code::DatumStep)) << t;
        if (During(t)) {
            EXPECT_EQ(report.verdict.state, State::Block) << t;
        } else if (t > kTo + 0.05) {
            EXPECT_EQ(report.verdict.state, State::Store) << t << ' ' << ReasonsOf(report);
            ASSERT_TRUE(report.tip) << t;
            EXPECT_LT(PlanError(report), 0.004) << t;
        }
    }
}

// The geoid of the receiver is taken for another one: the height that is sent would change alone.
TEST(Faults, AnotherGeoidSeparation)
{
    auto records = RecordsOf(StandingTrack(kEnd));
    for (Record& record : records) {
        if (record.channel != field::Channel::Receiver || record.at < InstantOf(kFirst + kFrom))
            continue;
        const std::size_t gga = record.bytes.find("$GNGGA");
        if (gga == std::string::npos) continue;
        const std::size_t end = record.bytes.find('*', gga);
        std::string body = record.bytes.substr(gga + 1, end - gga - 1);
        const std::size_t at = body.find("39.429");
        ASSERT_NE(at, std::string::npos);
        body.replace(at, 6, "40.229");
        record.bytes.replace(gga, end + 5 - gga, WithChecksum(body));
    }
    Check(ReportsOf(TrackSetup(), records), {Code::DatumStep, State::Block, 4.1, 9.0, 9.0, "4"});
}

// Of a receiver without a date the start of the program tells the day.
TEST(Faults, AStartThatIsNoDate)
{
    for (const double started : {1795352878.0, 1e12, -1e300}) {
        Options options;
        options.epoch = [](EpochFields& epoch) { epoch.rmc = false; };
        field::Setup setup = TrackSetup();
        setup.north = field::NorthSource::Model;
        setup.started = started;
        const auto reports = RunFault(options, setup);
        const bool known = started == 1795352878.0;
        EXPECT_EQ(reports.back().tip.has_value(), known) << ReasonsOf(reports.back());
        EXPECT_EQ(Has(reports.back(), Code::NoNorth), !known) << ReasonsOf(reports.back());
    }
}

// A receiver whose weeks rolled over dates the day 1024 weeks back: no declination for it.
TEST(Faults, ADateOf1024WeeksAgo)
{
    Options options;
    options.epoch = [](EpochFields& epoch) { epoch.date = "080407"; };
    field::Setup setup = TrackSetup();
    setup.north = field::NorthSource::Model;
    int epochs = 0;
    for (const Report& report : RunFault(options, setup)) {
        if (report.epoch.utc.empty()) continue;
        ++epochs;
        EXPECT_TRUE(Has(report, Code::NoNorth)) << ReasonsOf(report);
        EXPECT_FALSE(report.tip);
    }
    EXPECT_GT(epochs, 50);
}

TEST(Faults, OneEpochElsewhere)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        if (std::fabs(epoch.seconds - kFrom) < 1e-6)
            epoch.antenna = field::Offset(epoch.antenna, 30.0, 0.0, 0.0);
    };
    Check(RunFault(options), {Code::Jump, State::Block, 4.0, 4.1, 4.05, "0"});
}

// Seconds of the track by the number of the epoch.
std::function<double(const Report&)> ByNumber()
{
    return [number = 0](const Report&) mutable { return 0.1 * ++number; };
}

TEST(Faults, TimeOfTheReceiverSteps)
{
    for (const double step : {18.0, -18.0, 3600.0}) {
        Options options;
        options.epoch = [&](EpochFields& epoch) {
            if (epoch.seconds >= kFrom - 1e-6) epoch.utc += step;
        };
        Check(RunFault(options), {Code::TimeStep, State::Wait, 4.0, 6.0, 6.2, "4"}, ByNumber());
    }
}

TEST(Faults, NothingHappensAtMidnight)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        epoch.utc = std::fmod(86400.0 - kFrom + epoch.seconds, 86400.0);
        if (epoch.seconds >= kFrom - 1e-6) epoch.date = "231126";
    };
    const auto reports = RunFault(options);
    EXPECT_EQ(reports.size(), 89U);
    for (std::size_t i = 10; i < reports.size(); ++i)
        EXPECT_EQ(reports[i].verdict.state, State::Store) << i << ' ' << ReasonsOf(reports[i]);
}

TEST(Faults, NothingHappensInALeapSecond)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        const double t = 86400.0 - kFrom + epoch.seconds;
        epoch.utc = t < 86400.5 ? t : t - 86401.0;
        if (t > 86399.999 && t < 86400.999)
            epoch.time =
                Printed("235960.%02d", static_cast<int>(std::lround(100.0 * (t - 86400.0))));
        if (t > 86400.999) epoch.date = "231126";
    };
    const auto reports = RunFault(options);
    EXPECT_EQ(reports.size(), 89U);
    for (std::size_t i = 10; i < reports.size(); ++i)
        EXPECT_EQ(reports[i].verdict.state, State::Store) << i << ' ' << ReasonsOf(reports[i]);
}

// A receiver that knows no 23:59:60 says 23:59:59 twice; at 1 Hz no time runs back.
TEST(Faults, ASecondThatIsRepeatedMakesNoPoseOld)
{
    Options options;
    options.epochRate = 1.0;
    options.epoch = [](EpochFields& epoch) { epoch.utc -= epoch.seconds > 19.5 ? 1.0 : 0.0; };
    int stored = 0;
    for (const Report& report : ReportsOf(TrackSetup(), RecordsOf(StandingTrack(30.0), options))) {
        if (report.verdict.state != State::Store) continue;
        const Instant ago = report.epoch.arrival - report.epoch.moment;
        EXPECT_NEAR(std::chrono::duration<double>(ago).count(), 0.12 - kLink, 0.005)
            << report.epoch.utc;
        ++stored;
    }
    EXPECT_GT(stored, 20);
}

TEST(Faults, EpochsOfOneTimeAreOne)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        if (During(epoch.seconds)) epoch.utc = kStart + kFrom;
    };
    field::Bridge bridge(TrackSetup());
    const auto reports = ReportsOf(bridge, RecordsOf(StandingTrack(kEnd), options));
    std::size_t frozen = 0;
    for (const Report& report : reports)
        frozen += report.epoch.utc == "130802.00" ? 1U : 0U;
    EXPECT_EQ(frozen, 1U);
    EXPECT_GE(bridge.Count().repeated, 19U);
}

// n seconds of the day.
std::string EpochOf(int n)
{
    EpochFields epoch;
    epoch.utc = n;
    epoch.antenna = kTip;
    return EpochText(epoch);
}

// The time of the last epoch that was taken: what lies between did not count.
TEST(Faults, AnEpochThatComesAgainBehindARefusedOneIsRepeated)
{
    EpochFields there;
    there.utc = 2.0;
    there.antenna = kTip;
    EpochFields elsewhere = there;
    elsewhere.antenna.latitude += 0.001;
    const std::string gga = EpochText(there);
    const std::string rmc = EpochText(elsewhere);
    const std::size_t first = gga.find('\n') + 1;
    const std::string refused = gga.substr(0, first) + rmc.substr(rmc.find('\n') + 1);

    field::Bridge bridge(TrackSetup());
    Instant now = InstantOf(1.0);
    for (const std::string& text : {EpochOf(1), refused, EpochOf(1), EpochOf(3)}) {
        bridge.FeedReceiver(text, now);
        now += std::chrono::milliseconds(200);
        bridge.Tick(now);
    }
    EXPECT_EQ(bridge.Count().receiverRefused, 1U);
    EXPECT_EQ(bridge.Count().repeated, 1U);
    EXPECT_EQ(bridge.Count().epochs, 2U);
}

TEST(Faults, ManyEpochsAtOnceDoNotWaitForAPose)
{
    field::Bridge bridge(TrackSetup());
    for (int n = 0; n < 100; ++n)
        bridge.FeedReceiver(EpochOf(n), InstantOf(1.0));
    const auto judged = bridge.Take();
    ASSERT_EQ(judged.size(), 36U) << "of 100, 64 wait";
    EXPECT_EQ(judged.front().epoch.utc, "000000.00");
    EXPECT_TRUE(Has(judged.front(), Code::NoPose));
    bridge.Tick(InstantOf(1.2));
    EXPECT_EQ(bridge.Take().size(), 64U);
}

TEST(Faults, ReportsThatNobodyTakesAreForgottenFromTheOldestOn)
{
    field::Bridge bridge(TrackSetup());
    for (int n = 0; n < 4200; ++n)
        bridge.FeedReceiver(EpochOf(n), InstantOf(1.0 + n));
    bridge.Tick(InstantOf(4201.0));
    const auto reports = bridge.Take();
    ASSERT_EQ(reports.size(), 4096U);
    EXPECT_EQ(reports.front().epoch.utc, "000144.00") << "4200 - 4096 = 104 s";
    EXPECT_EQ(reports.back().epoch.utc, "010959.00");
}

TEST(Faults, WrongBaudRate)
{
    auto records = RecordsOf(StandingTrack(kEnd + 5.0));
    std::mt19937 random(3);
    for (Record& record : records) {
        const double t = std::chrono::duration<double>(record.at).count() - kFirst;
        if (record.channel != field::Channel::Receiver || t < kFrom || t > kFrom + 3.0) continue;
        for (char& c : record.bytes)
            c = static_cast<char>(random() % 256);
    }
    field::Bridge bridge(TrackSetup());
    const auto reports = ReportsOf(bridge, records);
    int named = 0;
    for (const Report& report : reports) {
        if (!Has(report, Code::BaudRate)) continue;
        ++named;
        EXPECT_EQ(report.verdict.reasons[0].text,
                  "no good line of the receiver for 2 s of bytes: check the baud rate");
        EXPECT_TRUE(report.nmea.empty());
    }
    EXPECT_EQ(named, 1);
    EXPECT_EQ(reports.back().epoch.utc, "130811.90");
    EXPECT_TRUE(reports.back().tip) << ReasonsOf(reports.back());
}

TEST(Faults, ManyBadLines)
{
    auto records = RecordsOf(StandingTrack(kEnd));
    int number = 0;
    for (Record& record : records) {
        if (record.channel != field::Channel::Receiver) continue;
        if (++number % 5 == 0) record.bytes += "$GNVTG,,,,,,,,,N*00\r\n"; // 1 of 16 lines
    }
    const auto reports = ReportsOf(TrackSetup(), records);
    EXPECT_TRUE(Has(reports.back(), Code::BadLines));
    EXPECT_EQ(reports.back().verdict.state, State::Block);
    EXPECT_EQ(reports.back().verdict.reasons[0].text, "bad lines of the receiver: 6 % (limit 5)");
}

TEST(Faults, NoGst)
{
    Options options;
    options.epoch = [](EpochFields& epoch) { epoch.gst = !During(epoch.seconds); };
    Check(RunFault(options), {Code::SigmaAssumed, State::Store, 4.0, 6.0, 6.0, "4"});
}

TEST(Faults, MagneticDisturbance)
{
    Options options;
    options.pose = [](PoseFields& pose) {
        if (!During(pose.seconds)) return;
        for (int i : {0, 1, 2})
            pose.readings[static_cast<std::size_t>(i)] *= 1.1;
        for (int i : {3, 4, 5})
            pose.readings[static_cast<std::size_t>(i)] *= 1.1;
    };
    field::Setup setup = TrackSetup();
    setup.calibration.field = field::FieldShape{500.0, 64.0};
    const auto reports = RunFault(options, setup);
    Check(reports, {Code::FieldStrength, State::Block, 4.1, 5.9, 6.9, "0"});

    // The heading of a level pole does not matter, and its sigma says so.
    int level = 0;
    for (const Report& report :
         ReportsOf(setup, RecordsOf(StandingTrack(kEnd, 0.5, 0.3), options))) {
        const double t = SecondsOf(report);
        if (t < 4.8 || t > 5.9) continue;
        ++level;
        EXPECT_EQ(report.verdict.state, State::Store) << ReasonsOf(report);
        ASSERT_TRUE(report.tip);
        EXPECT_GT(report.tip->sigma.nn, 0.5 * std::pow(2.0 * std::sin(0.55 * kPi / 180.0), 2));
    }
    EXPECT_GT(level, 5);
}

TEST(Faults, CablesPulled)
{
    field::Bridge bridge(TrackSetup());
    auto records = RecordsOf(StandingTrack(kEnd));
    for (Record& record : records) {
        const double t = std::chrono::duration<double>(record.at).count() - kFirst;
        if (t >= kFrom && t < kTo) record.channel = field::Channel::Corrections;
    }
    // The rest of what was half read must not be put together with what comes next.
    const auto half = InstantOf(kFirst + kFrom);
    records.push_back({half, field::Channel::Receiver, "$GNGGA,130802.00,4734"});
    records.push_back({half, field::Channel::Pose, "$PTPS,1,9000,"});
    records.push_back({half, field::Channel::Keys, std::string(field::kRestartReceiver)});
    records.push_back({half, field::Channel::Keys, std::string(field::kRestartPose)});
    std::ranges::stable_sort(records, {}, &Record::at);
    const auto reports = ReportsOf(bridge, records);
    EXPECT_EQ(reports.back().verdict.state, State::Store) << ReasonsOf(reports.back());
    EXPECT_EQ(bridge.Count().receiverBad, 0U);
    EXPECT_EQ(bridge.Count().posesBad, 0U);
    EXPECT_GT(bridge.Count().epochs, 60U) << "counters are kept";
}

TEST(Faults, QFieldGetsThePointUnderTheAntennaWithQualitySix)
{
    Options options;
    options.pose = [](PoseFields& pose) { pose.send = !During(pose.seconds); };
    field::Setup setup = TrackSetup();
    setup.profile = field::Profile::QField;
    int blocked = 0;
    for (const Report& report : RunFault(options, setup)) {
        const std::string quality = FieldOf(LineOf(report, "GGA"), 6);
        if (quality != "6") {
            EXPECT_FALSE(CarriesAntenna(report)) << report.nmea;
            continue;
        }
        ++blocked;
        EXPECT_FALSE(report.tip);
        EXPECT_EQ(report.verdict.state, State::Block);
    }
    EXPECT_GE(blocked, 18);
}

} // namespace
