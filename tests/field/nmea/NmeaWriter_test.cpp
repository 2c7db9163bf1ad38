// SPDX-License-Identifier: MIT
#include "field/nmea/NmeaWriter.h"

#include "field/nmea/ReasonName.h"
#include "field/nmea/SentenceText.h"
#include "field/nmea/StateName.h"
#include "survey/Angle.h"
#include "tests/field/nmea/Sentences.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using field::Epoch;
using field::Fix;
using field::Geodetic;
using field::Profile;
using field::Reason;

using field::State;
using field::Tip;
using field::Verdict;
using tiltpole::field::PoleState;
using tiltpole::field::WriteEpoch;

namespace survey = tiltpole::survey;

namespace {

constexpr double kLength = 2.1165;
constexpr double kLean = 12.34;
constexpr double kAzimuth = 70.1; // from the antenna to the tip

field::Setup APole()
{
    field::Setup setup;
    setup.poleLength = 2.0;
    setup.phaseCenter = kLength - 2.0;
    return setup;
}

Epoch Received()
{
    Epoch epoch;
    epoch.utc = "130758.00";
    epoch.date = std::chrono::sys_days(2026y / 11 / 22);
    epoch.antenna = {47.0 + 33.9633191 / 60, 19.0 + 0.5012567 / 60, 193.444 + 39.429};
    epoch.geoidSeparation = 39.429;
    epoch.sigma = {8e-3 * 8e-3, 0.0, 8e-3 * 8e-3, 0.0, 0.0, 15e-3 * 15e-3};
    epoch.fix = Fix::Fixed;
    epoch.speed = 0.01 * 1852 / 3600;
    epoch.course = 271.3;
    epoch.text = {"12", "0.72", "39.4290", "1.0", "0207"};
    return epoch;
}

// The tip of that epoch, by hand: towards the azimuth by L·sin(lean) along an arc of the mean Earth at
// this latitude, its errors along and across the lean.
Tip Leaning(const Epoch& epoch)
{
    constexpr double kMeridian = 6370163.0; // radius of curvature at latitude 47.57 [m]
    constexpr double kNormal = 6389813.0;
    const double g = survey::Deg2Rad(kLean);
    const double azimuth = survey::Deg2Rad(kAzimuth);
    const double reach = kLength * std::sin(g);
    Tip tip;
    tip.epoch = epoch;
    tip.position = epoch.antenna;
    tip.position.latitude += survey::Rad2Deg(reach * std::cos(azimuth) / kMeridian);
    tip.position.longitude += survey::Rad2Deg(
        reach * std::sin(azimuth) / (kNormal * std::cos(survey::Deg2Rad(epoch.antenna.latitude))));
    tip.position.ellipsoidalHeight -= kLength * std::cos(g);

    const double tilt = kLength * survey::Deg2Rad(0.1);
    const double along = std::hypot(std::cos(g) * tilt, std::sin(g) * 0.001);
    const double across = std::hypot(reach * survey::Deg2Rad(1.2), tilt);
    const double c = std::cos(azimuth);
    const double s = std::sin(azimuth);
    tip.sigma = epoch.sigma;
    tip.sigma.nn += along * along * c * c + across * across * s * s;
    tip.sigma.ee += along * along * s * s + across * across * c * c;
    tip.sigma.ne += (along * along - across * across) * c * s;
    tip.sigma.hh += std::sin(g) * std::sin(g) * tilt * tilt + std::cos(g) * std::cos(g) * 1e-6;
    tip.tilt = kLean;
    tip.azimuthTrue = kAzimuth + 180.0;
    tip.headingTrue = 123.44;
    tip.declination = 5.81;
    tip.antennaSpeed = 0.0123;
    return tip;
}

Verdict Because(State state, Reason::Code code)
{
    return {state, {Reason{code, "text, with *signs$"}}};
}

std::vector<std::string> LinesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line.substr(0, line.size() - 1));
    return lines;
}

// Field of the sentence of this type; "-" where the sentence is missing or wrong.
std::string FieldOf(const std::string& text, const std::string& type, std::size_t number)
{
    for (const std::string& line : LinesOf(text)) {
        const auto sentence = tiltpole::field::ReadSentence(line);
        if (!sentence) return "-";
        if (sentence->Type() == type) return std::string(sentence->Field(number));
    }
    return "-";
}

std::string FieldsOf(const std::string& text, const std::string& type, std::size_t first,
                     std::size_t last)
{
    std::string fields = FieldOf(text, type, first);
    for (std::size_t i = first + 1; i <= last; ++i)
        fields += ',' + FieldOf(text, type, i);
    return fields;
}

const std::string kAntenna = "4733.9633191,N,01900.5012567,E";
const std::string kTip = "4733.9634022,N,01900.5015958,E";

} // namespace

TEST(NmeaWriter, WritesTheTipDigitByDigit)
{
    const Epoch epoch = Received();
    const auto lines =
        LinesOf(WriteEpoch(epoch, Leaning(epoch), {State::Store, {}}, APole(), {}, 2));
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0],
              "$GNGGA,130758.00,4733.9634022,N,01900.5015958,E,4,12,0.72,191.3764,M,39.4290,M,"
              "1.0,0207*6F");
    EXPECT_EQ(lines[1],
              "$GNRMC,130758.00,A,4733.9634022,N,01900.5015958,E,0.01,,221126,5.8,E,R,V*5A");
    EXPECT_EQ(lines[2], "$GNGST,130758.00,,0.0129,0.0088,160.1,0.0125,0.0094,0.0151*5D");
    EXPECT_EQ(lines[3].substr(0, lines[3].size() - 3),
              "$PTLTS,1,130758.00,STORE,,12.34,250.1,123.4,5.81,0.012,2");
    EXPECT_EQ(lines[4].substr(0, lines[4].size() - 3),
              "$PTLTA,1,130758.00," + kAntenna + ",193.4440,2.1165");
}

TEST(NmeaWriter, EndsEveryLineWithCrLf)
{
    const Epoch epoch = Received();
    const std::string text = WriteEpoch(epoch, Leaning(epoch), {State::Store, {}}, APole(), {}, 0);
    std::size_t ends = 0;
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; ++at, ++ends)
        EXPECT_EQ(text[at - 1], '\r');
    EXPECT_EQ(ends, 5U);
    EXPECT_EQ(text.back(), '\n');
}

TEST(NmeaWriter, GivesTheModeThatBelongsToTheQuality)
{
    struct Case
    {
        Fix fix;
        const char* quality;
        const char* mode;
    };
    for (const Case& c : {
             Case{Fix::Fixed,        "4", "R"},
             {Fix::Float,        "5", "F"},
             {Fix::Differential, "2", "D"},
             {Fix::Single,       "1", "A"},
             {Fix::Estimated,    "6", "E"}
    }) {
        Epoch epoch = Received();
        epoch.fix = c.fix;
        const std::string text =
            WriteEpoch(epoch, Leaning(epoch), {State::Store, {}}, APole(), {}, 0);
        EXPECT_EQ(FieldOf(text, "GGA", 6), c.quality);
        EXPECT_EQ(FieldOf(text, "RMC", 12), c.mode);
        EXPECT_EQ(FieldOf(text, "RMC", 2), "A");
        EXPECT_EQ(FieldsOf(text, "GGA", 2, 5), kTip);
        EXPECT_EQ(FieldsOf(text, "RMC", 3, 6), kTip);
    }
}

TEST(NmeaWriter, KeepsEllipsoidalHeightTheSumOfTwoFields)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> any(-1.0, 1.0);
    for (int i = 0; i < 1000; ++i) {
        Epoch epoch = Received();
        std::string separation;
        separation = std::to_string(static_cast<int>(any(random) * 100000));
        separation.insert(separation.size() - std::min<std::size_t>(3, separation.size()), ".");
        if (separation.front() == '.' || separation.starts_with("-.")) continue;
        epoch.text.geoidSeparation = separation;
        epoch.geoidSeparation = std::stod(separation);
        epoch.antenna.ellipsoidalHeight = any(random) * 3000;
        const Tip tip = Leaning(epoch);
        const std::string text = WriteEpoch(epoch, tip, {State::Store, {}}, APole(), {}, 0);
        EXPECT_EQ(FieldOf(text, "GGA", 11), separation);
        EXPECT_NEAR(std::stod(FieldOf(text, "GGA", 9)) + std::stod(separation),
                    tip.position.ellipsoidalHeight, 0.0000501);
    }
}

TEST(NmeaWriter, AddsTheHeightThatAppsSubtract)
{
    field::Setup setup = APole();
    setup.appHeight = 1.8;
    const Epoch epoch = Received();
    const std::string text = WriteEpoch(epoch, Leaning(epoch), {State::Store, {}}, setup, {}, 0);
    EXPECT_EQ(FieldOf(text, "GGA", 9), "193.1764");
    EXPECT_EQ(FieldOf(text, "TLTA", 7), "193.4440");
}

TEST(NmeaWriter, GivesTheCourseOnlyOfAMovingAntenna)
{
    struct Case
    {
        double speed;
        const char* fields;
    };
    for (const Case& c : {
             Case{0.199, "0.39,"       },
             {0.2,   "0.39,271.30" },
             {10.0,  "19.44,271.30"}
    }) {
        Epoch epoch = Received();
        epoch.speed = c.speed;
        EXPECT_EQ(FieldsOf(WriteEpoch(epoch, Leaning(epoch), {}, APole(), {}, 0), "RMC", 7, 8),
                  c.fields);
    }
    Epoch epoch = Received();
    epoch.speed.reset();
    EXPECT_EQ(FieldsOf(WriteEpoch(epoch, Leaning(epoch), {}, APole(), {}, 0), "RMC", 7, 8), ",");
}

TEST(NmeaWriter, SignsTheVariationByItsLetter)
{
    const Epoch epoch = Received();
    Tip tip = Leaning(epoch);
    tip.declination = -3.14;
    EXPECT_EQ(FieldsOf(WriteEpoch(epoch, tip, {}, APole(), {}, 0), "RMC", 10, 11), "3.1,W");
    tip.declination = std::nan("");
    EXPECT_EQ(FieldsOf(WriteEpoch(epoch, tip, {}, APole(), {}, 0), "RMC", 10, 11), ",");
}

TEST(NmeaWriter, PassesGsaWithATipAlone)
{
    Epoch epoch = Received();
    epoch.gsa = nmea_tests::Line("GNGSA,A,3,15,,,,,,,,,,,,1.15,0.68,0.93,1");
    EXPECT_NE(WriteEpoch(epoch, Leaning(epoch), {}, APole(), {}, 0).find(epoch.gsa),
              std::string::npos);
    EXPECT_EQ(FieldOf(WriteEpoch(epoch, {}, {}, APole(), {}, 0), "GSA", 1), "-");
}

TEST(NmeaWriter, StrictBlocksWithEmptyCoordinates)
{
    const Verdict blocked = Because(State::Block, Reason::Code::NoPose);
    const std::string text = WriteEpoch(Received(), {}, blocked, APole(), {}, 1);
    EXPECT_EQ(FieldsOf(text, "GGA", 1, 14), "130758.00,,,,,0,12,0.72,,M,,M,1.0,0207");
    EXPECT_EQ(FieldsOf(text, "RMC", 1, 6), "130758.00,V,,,,");
    EXPECT_EQ(FieldsOf(text, "RMC", 9, 13), "221126,,,N,V");
    EXPECT_EQ(FieldsOf(text, "GST", 6, 7), "0.7483,0.7483") << "2.1165 m · sin 30° / sqrt 2";
    EXPECT_EQ(FieldsOf(text, "TLTS", 3, 10), "BLOCK,no pose,,,,,,1");
}

TEST(NmeaWriter, QFieldBlocksWithThePointUnderTheAntenna)
{
    field::Setup setup = APole();
    setup.profile = Profile::QField;
    const Verdict blocked = Because(State::Block, Reason::Code::FieldDip);
    const std::string text = WriteEpoch(Received(), {}, blocked, setup, PoleState{kLean, 5.81}, 1);
    EXPECT_EQ(FieldsOf(text, "GGA", 1, 14),
              "130758.00," + kAntenna + ",6,12,0.72,191.3764,M,39.4290,M,1.0,0207");
    EXPECT_EQ(FieldsOf(text, "RMC", 2, 6), "A," + kAntenna);
    EXPECT_EQ(FieldOf(text, "RMC", 12), "E");
    // 2.1165 m · sin 12.34° / sqrt 2 = 0.3198 m; with 8 mm of the antenna and 3.7 mm of tilt 0.3200.
    EXPECT_EQ(FieldsOf(text, "GST", 6, 7), "0.3200,0.3200");
    EXPECT_EQ(FieldsOf(text, "TLTS", 3, 9), "BLOCK,field dip,12.34,,,5.81,");
}

TEST(NmeaWriter, QFieldWithoutAPoseStatesALeanOfThirtyDegrees)
{
    field::Setup setup = APole();
    setup.profile = Profile::QField;
    const Verdict blocked = Because(State::Block, Reason::Code::NoPose);
    const std::string text = WriteEpoch(Received(), {}, blocked, setup, {}, 1);
    EXPECT_EQ(FieldOf(text, "GGA", 6), "6");
    EXPECT_EQ(FieldOf(text, "GGA", 9), "191.3275") << "193.4440 - 2.1165";
    EXPECT_EQ(FieldsOf(text, "GST", 6, 7), "0.7483,0.7483");
    EXPECT_NEAR(std::stod(FieldOf(text, "GST", 8)), kLength * (1 - std::sqrt(3.0) / 2), 1e-3);
}

TEST(NmeaWriter, BlockedSigmasAreRefusedByAnAppsLimitAtAnyLean)
{
    field::Setup setup = APole();
    for (const double lean : {0.0, 1.5, 5.0, 10.0, 20.0, 45.0}) {
        const std::string text =
            WriteEpoch(Received(), {}, Because(State::Block, Reason::Code::NoHeading), setup,
                       PoleState{lean, 0.0}, 1);
        EXPECT_GE(std::stod(FieldOf(text, "GST", 6)), 0.3) << lean;
        EXPECT_GE(std::stod(FieldOf(text, "GST", 7)), 0.3) << lean;
    }
}

TEST(NmeaWriter, NamesNoPlaceWithoutAFixOrWhereItIsDoubted)
{
    Epoch unfixed = Received();
    unfixed.fix = Fix::Invalid;
    unfixed.antenna = {std::nan(""), std::nan(""), std::nan("")};
    for (const Profile profile : {Profile::Strict, Profile::QField}) {
        field::Setup setup = APole();
        setup.profile = profile;
        const std::string texts[] = {
            WriteEpoch(unfixed, {}, Because(State::Block, Reason::Code::NoFix), setup,
                       PoleState{5, 0}, 0),
            WriteEpoch(Received(), Leaning(Received()), Because(State::Block, Reason::Code::Jump),
                       setup, PoleState{5, 0}, 0)};
        for (const std::string& text : texts) {
            EXPECT_EQ(FieldsOf(text, "GGA", 2, 6), ",,,,0");
            EXPECT_EQ(FieldsOf(text, "GGA", 9, 11), ",M,");
            EXPECT_EQ(FieldsOf(text, "RMC", 2, 6), "V,,,,");
            EXPECT_EQ(FieldsOf(text, "GST", 3, 8),
                      "100.0000,100.0000,0.0,100.0000,100.0000,100.0000");
        }
        EXPECT_EQ(FieldOf(texts[0], "TLTA", 1), "-");
    }
}

TEST(NmeaWriter, NamesNoPlaceOfAnAntennaWithoutNumbers)
{
    field::Setup setup = APole();
    setup.profile = Profile::QField;
    for (double Geodetic::*part :
         {&Geodetic::latitude, &Geodetic::longitude, &Geodetic::ellipsoidalHeight}) {
        Epoch epoch = Received();
        epoch.antenna.*part = std::nan("");
        const std::string text =
            WriteEpoch(epoch, {}, Because(State::Block, Reason::Code::NoPose), setup, {5, 0}, 0);
        EXPECT_EQ(FieldsOf(text, "GGA", 2, 6), ",,,,0");
        EXPECT_EQ(FieldsOf(text, "GST", 6, 8), "100.0000,100.0000,100.0000");
        EXPECT_EQ(FieldOf(text, "TLTA", 1), "-");
    }
}

TEST(NmeaWriter, SendsNoTipWithoutNumbers)
{
    for (double Geodetic::*part :
         {&Geodetic::latitude, &Geodetic::longitude, &Geodetic::ellipsoidalHeight}) {
        Tip tip = Leaning(Received());
        tip.position.*part = std::nan("");
        const std::string text = WriteEpoch(Received(), tip, {State::Store, {}}, APole(), {}, 0);
        EXPECT_EQ(FieldsOf(text, "GGA", 2, 6), ",,,,0");
    }
}

TEST(NmeaWriter, EnforceTreatsEveryBlockLikeAnUnknownTip)
{
    field::Setup setup = APole();
    const Epoch epoch = Received();
    const Verdict lean = Because(State::Block, Reason::Code::Lean);
    EXPECT_EQ(FieldsOf(WriteEpoch(epoch, Leaning(epoch), lean, setup, {}, 0), "GGA", 2, 6),
              kTip + ",4");
    setup.enforce = true;
    EXPECT_EQ(FieldsOf(WriteEpoch(epoch, Leaning(epoch), lean, setup, {}, 0), "GGA", 2, 6),
              ",,,,0");
    const Verdict moving = Because(State::Wait, Reason::Code::Moving);
    EXPECT_EQ(FieldsOf(WriteEpoch(epoch, Leaning(epoch), moving, setup, {}, 0), "GGA", 2, 6),
              kTip + ",4");
    setup.profile = Profile::QField;
    const std::string text = WriteEpoch(epoch, Leaning(epoch), lean, setup, {}, 0);
    EXPECT_EQ(FieldsOf(text, "GGA", 2, 6), kAntenna + ",6");
    EXPECT_EQ(FieldOf(text, "GGA", 9), "191.3764");
}

TEST(NmeaWriter, WritesNoCoordinateOfTheAntennaWithAnotherQuality)
{
    constexpr Reason::Code codes[] = {
        Reason::Code::NoFix, Reason::Code::NoPose, Reason::Code::NoHeading, Reason::Code::FloatFix,
        Reason::Code::Jump,  Reason::Code::Lean,   Reason::Code::DatumStep, Reason::Code::Moving};
    std::mt19937 random(5);
    for (int i = 0; i < 2000; ++i) {
        Epoch epoch = Received();
        epoch.fix = static_cast<Fix>(std::array{0, 1, 2, 4, 5, 6}.at(random() % 6));
        field::Setup setup = APole();
        setup.enforce = random() % 2 == 0;
        setup.profile = random() % 2 == 0 ? Profile::Strict : Profile::QField;
        const Verdict verdict =
            Because(static_cast<State>(random() % 3), codes[random() % std::size(codes)]);
        std::optional<Tip> tip;
        if (random() % 2 == 0) tip = Leaning(epoch);
        if (tip && random() % 4 == 0) tip->position.longitude = std::nan("");
        const PoleState pole{random() % 2 == 0 ? kLean : std::nan(""), 5.8};
        const std::string text = WriteEpoch(epoch, tip, verdict, setup, pole, 0);
        ASSERT_EQ(text.find("nan"), std::string::npos) << text;
        ASSERT_NE(FieldOf(text, "GST", 6), "") << text;
        const bool isAntenna =
            FieldsOf(text, "GGA", 2, 5) == kAntenna || FieldsOf(text, "RMC", 3, 6) == kAntenna;
        if (!isAntenna) continue;
        EXPECT_EQ(FieldOf(text, "GGA", 6), "6") << text;
        EXPECT_EQ(FieldOf(text, "RMC", 12), "E") << text;
        EXPECT_EQ(setup.profile, Profile::QField);
        EXPECT_GE(std::stod(FieldOf(text, "GST", 6)), 0.3) << text;
        EXPECT_LT(std::stod(FieldOf(text, "GGA", 9)), 191.5) << text;
    }
}

TEST(NmeaWriter, IsReadBackAsItWasWritten)
{
    std::mt19937 random(9);
    std::uniform_real_distribution<double> any(-1.0, 1.0);
    for (int i = 0; i < 500; ++i) {
        Epoch epoch = Received();
        Tip tip = Leaning(epoch);
        tip.position = {any(random) * 85, any(random) * 180, any(random) * 4000};
        tiltpole::field::EpochReader reader;
        const auto read = nmea_tests::EpochsOf(
            reader, WriteEpoch(epoch, tip, {State::Store, {}}, APole(), {}, 1));
        ASSERT_EQ(read.size(), 1U);
        EXPECT_NEAR(read[0].antenna.latitude, tip.position.latitude, 0.51e-7 / 60);
        EXPECT_NEAR(read[0].antenna.longitude, tip.position.longitude, 0.51e-7 / 60);
        EXPECT_NEAR(read[0].antenna.ellipsoidalHeight, tip.position.ellipsoidalHeight, 0.51e-4);
        EXPECT_NEAR(std::sqrt(read[0].sigma.nn), std::sqrt(tip.sigma.nn), 0.51e-4);
        EXPECT_NEAR(read[0].sigma.ne, tip.sigma.ne, 4e-6);
        EXPECT_EQ(read[0].fix, Fix::Fixed);
        EXPECT_EQ(read[0].date, epoch.date);
    }
}

// pynmea2, which ./dev test installs.
TEST(NmeaWriter, IsUnderstoodByAnotherReader)
{
    const std::string script = TILTPOLE_SOURCE_DIR "/tests/field/nmea/read_nmea.py";
    if (std::system("/usr/bin/python3 -c 'import pynmea2' 2>/dev/null") != 0)
        FAIL() << "pynmea2 is missing; ./dev test installs it";
    Epoch epoch = Received();
    epoch.gsa = nmea_tests::Line("GNGSA,A,3,15,,,,,,,,,,,,1.15,0.68,0.93,1");
    const std::string path = testing::TempDir() + "nmea_writer.txt";
    std::ofstream(path, std::ios::binary)
        << WriteEpoch(epoch, Leaning(epoch), {State::Store, {}}, APole(), {}, 1)
        << WriteEpoch(epoch, {}, Because(State::Block, Reason::Code::NoPose), APole(), {}, 1);
    ASSERT_EQ(std::system((script + " " + path + " > " + path + ".read").c_str()), 0);
    std::ifstream file(path + ".read");
    const std::string read{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(read, "GGA 47.5660567033 19.0083599300 191.3764 39.4290 4\n"
                    "RMC A 47.5660567033 19.0083599300 2026-11-22T13:07:58\n"
                    "GST 0.0125 0.0094 0.0151\n"
                    "GGA 0.0000000000 0.0000000000 None  0\n"
                    "RMC V 0.0000000000 0.0000000000 2026-11-22T13:07:58\n"
                    "GST 0.7483 0.7483 0.284\n");
}

TEST(NmeaWriter, HasANameForEveryReason)
{
    for (int code = 0; code <= static_cast<int>(Reason::Code::OneMagnetometer); ++code) {
        const std::string_view name = tiltpole::field::ReasonName(static_cast<Reason::Code>(code));
        EXPECT_FALSE(name.empty()) << code;
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz "), std::string_view::npos)
            << name;
    }
    EXPECT_EQ(tiltpole::field::ReasonName(static_cast<Reason::Code>(255)), "");
}

TEST(StateName, BlocksWhatIsNoState)
{
    using tiltpole::field::StateName;
    EXPECT_EQ(StateName(State::Store), "STORE");
    EXPECT_EQ(StateName(State::Wait), "WAIT");
    EXPECT_EQ(StateName(State::Block), "BLOCK");
    EXPECT_EQ(StateName(static_cast<State>(99)), "BLOCK");
}
