// SPDX-License-Identifier: MIT
//
// What an app reads while the tip must not be stored: no coordinates at all, or an accuracy that its gate
// refuses. Every reason to block is provoked, in both profiles, with and without --enforce.
#include "tests/field/bridge/LivePole.h"

namespace {

using namespace live_pole;
using Code = field::Reason::Code;
using field::State;

struct Trouble
{
    Code code{};
    bool known = false; // the tip is
    std::function<void(EpochFields&)> epoch = [](EpochFields&) {};
    std::function<void(PoseFields&)> pose = [](PoseFields&) {};
    std::function<void(field::Setup&)> setup = [](field::Setup&) {};
    double pitch = 6.0; // of the pole [degrees]
};

bool During(double seconds)
{
    return seconds > 2.0 && seconds < 3.5;
}

std::function<void(EpochFields&)> Epochs(std::function<void(EpochFields&)> change)
{
    return [change = std::move(change)](EpochFields& epoch) {
        if (During(epoch.seconds)) change(epoch);
    };
}

std::function<void(PoseFields&)> Poses(std::function<void(PoseFields&)> change)
{
    return [change = std::move(change)](PoseFields& pose) {
        if (During(pose.seconds)) change(pose);
    };
}

void Scale(PoseFields& pose, std::size_t from, std::size_t to, double factor)
{
    for (std::size_t i = from; i < to; ++i)
        pose.readings[i] *= factor;
}

// The readings as of a field with another dip.
void Steepen(PoseFields& pose)
{
    for (const std::size_t i : {0U, 1U, 3U, 4U})
        pose.readings[i] *= 0.6;
    for (const std::size_t i : {2U, 5U})
        pose.readings[i] *= 1.065;
}

void LosePoses(PoseFields& pose)
{
    pose.send = false;
}

// A pole that leans further, so that the gaps are not bridged.
void LeaveGaps(PoseFields& pose)
{
    const double ofHalf = std::fmod(pose.seconds, 0.5);
    pose.pitch += 3.0 * pose.seconds;
    pose.send = ofHalf < 0.25 || ofHalf > 0.39;
}

void Stick(PoseFields& pose)
{
    pose.readings = {200.0, 100.0, -450.0, -200.0, -100.0, -450.0};
}

void KnowTheField(field::Setup& setup)
{
    setup.calibration.field = field::FieldShape{500.0, 64.0};
}

// Troubles of which the tip is not known.
std::vector<Trouble> Unknown()
{
    std::vector<Trouble> all;
    const auto add = [&](Code code) -> Trouble& { return all.emplace_back(Trouble{.code = code}); };
    add(Code::NoPose).pose = Poses(LosePoses);
    add(Code::PoseGap).pose = LeaveGaps;
    Trouble& stuck = add(Code::SensorStuck);
    stuck.pose = Poses(Stick);
    stuck.setup = [](field::Setup& setup) { setup.limits.fieldPair = 1.0; };
    add(Code::NoHeading).pose = Poses([](PoseFields& p) { Scale(p, 0, 6, 0.0); });
    Trouble& strong = add(Code::FieldStrength);
    strong.pose = Poses([](PoseFields& p) { Scale(p, 0, 6, 1.1); });
    strong.setup = KnowTheField;
    Trouble& steep = add(Code::FieldDip);
    steep.pose = Poses(Steepen);
    steep.setup = [](field::Setup& setup) {
        KnowTheField(setup);
        setup.limits.fieldStrength = 10.0;
    };
    add(Code::MagnetometersDiffer).pose = Poses([](PoseFields& p) { Scale(p, 3, 6, 1.2); });
    add(Code::NoCalibration).setup = [](field::Setup& s) { s.calibration.complete = false; };
    add(Code::CalibrationPoor).setup = [](field::Setup& s) { s.calibration.usable = false; };
    Trouble& north = add(Code::NoNorth);
    north.epoch = [](EpochFields& e) { e.date = "010131"; };
    north.setup = [](field::Setup& s) { s.north = field::NorthSource::Model; };
    add(Code::NoFix).epoch = Epochs([](EpochFields& e) { e.quality = 0; });
    add(Code::Jump).epoch = [](EpochFields& e) {
        if (std::fabs(e.seconds - 3.0) < 1e-6) e.antenna = field::Offset(e.antenna, 30.0, 0.0, 0.0);
    };
    return all;
}

// Troubles of a tip that is known, and named with its sigma unless every block is enforced.
std::vector<Trouble> Known()
{
    std::vector<Trouble> all;
    const auto add = [&](Code code, void (*epoch)(EpochFields&)) {
        all.push_back({.code = code, .known = true, .epoch = Epochs(epoch)});
    };
    add(Code::FloatFix, [](EpochFields& e) { e.quality = 5; });
    add(Code::CorrectionAge, [](EpochFields& e) { e.age = "11.0"; });
    add(Code::Satellites, [](EpochFields& e) { e.satellites = 4; });
    add(Code::BaseChanged, [](EpochFields& e) { e.station = "0312"; });
    add(Code::DatumStep, [](EpochFields& e) { e.antenna.ellipsoidalHeight += 0.5; });
    add(Code::PlanSigma, [](EpochFields& e) { e.sigma = {0.1, 0.1, 0.015}; });
    add(Code::HeightSigma, [](EpochFields& e) { e.sigma[2] = 0.1; });
    all.push_back({.code = Code::Lean, .known = true, .pitch = 33.0});
    return all;
}

// As an app reads it: NaN without coordinates, otherwise what the two sigmas of GST show [m].
double ShownAccuracy(const Report& report)
{
    const std::string gst = LineOf(report, "$GNGST");
    const std::string gga = LineOf(report, "$GNGGA");
    EXPECT_EQ(FieldOf(gst, 1), report.epoch.utc) << "every epoch has its GST";
    EXPECT_EQ(FieldOf(gga, 2).empty(), FieldOf(LineOf(report, "$GNRMC"), 3).empty());
    if (FieldOf(gga, 2).empty()) {
        for (const int field : {3, 4, 5, 9, 11})
            EXPECT_EQ(FieldOf(gga, field), "") << gga;
        return std::nan("");
    }
    return std::hypot(NumberOf(FieldOf(gst, 6)), NumberOf(FieldOf(gst, 7))) / std::sqrt(2.0);
}

void CheckUnknown(const Report& report, field::Profile profile)
{
    const double accuracy = ShownAccuracy(report);
    const std::string gga = LineOf(report, "$GNGGA");
    const std::string rmc = LineOf(report, "$GNRMC");
    if (std::isnan(accuracy)) {
        EXPECT_EQ(FieldOf(gga, 6) + FieldOf(rmc, 2) + FieldOf(rmc, 12), "0VN") << report.nmea;
        return;
    }
    EXPECT_EQ(profile, field::Profile::QField) << report.nmea;
    EXPECT_EQ(FieldOf(gga, 6) + FieldOf(rmc, 2) + FieldOf(rmc, 12), "6AE") << report.nmea;
    EXPECT_GE(accuracy, 0.3) << report.nmea;
    const double drop = report.epoch.antenna.ellipsoidalHeight - NumberOf(FieldOf(gga, 9))
                        - NumberOf(FieldOf(gga, 11));
    EXPECT_GT(drop, 1.6) << report.nmea;
}

void CheckTrouble(const Trouble& trouble, field::Profile profile, bool enforce)
{
    Options options;
    options.epoch = trouble.epoch;
    options.pose = trouble.pose;
    field::Setup setup = TrackSetup();
    setup.profile = profile;
    setup.enforce = enforce;
    trouble.setup(setup);
    int provoked = 0;
    for (const Report& report :
         ReportsOf(setup, RecordsOf(StandingTrack(4.5, trouble.pitch), options))) {
        const bool hasIt = Has(report, trouble.code);
        provoked += hasIt ? 1 : 0;
        const bool named = !PlacesOf(report).empty();
        if (!named) CheckUnknown(report, profile);
        if (report.verdict.state == State::Block && enforce) {
            EXPECT_FALSE(named) << ReasonsOf(report);
        }
        if (!hasIt) continue;
        EXPECT_EQ(report.verdict.state, State::Block) << ReasonsOf(report);
        const bool naming = trouble.known && !enforce && !Has(report, Code::Jump);
        EXPECT_EQ(named, naming) << ReasonsOf(report) << report.nmea;
    }
    EXPECT_GT(provoked, 0);
}

TEST(Blocked, IsReadBackAsNothingOrAsTooWideToStore)
{
    std::vector<Trouble> troubles = Unknown();
    std::ranges::move(Known(), std::back_inserter(troubles));
    for (const Trouble& trouble : troubles) {
        for (const field::Profile profile : {field::Profile::Strict, field::Profile::QField}) {
            for (const bool enforce : {false, true}) {
                SCOPED_TRACE(testing::Message()
                             << "code " << static_cast<int>(trouble.code) << ", profile "
                             << static_cast<int>(profile) << (enforce ? ", enforced" : ""));
                CheckTrouble(trouble, profile, enforce);
            }
        }
    }
}

} // namespace
