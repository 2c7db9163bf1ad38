// SPDX-License-Identifier: MIT
//
// tiltpole live as a user runs it, and the options of merge.
#include "apps/cli/SpotSidecar.h"
#include "apps/cli/live/LiveOptions.h"
#include "tests/apps/RunLine.h"
#include "tests/apps/RunProgram.h"
#include "tests/apps/live/Recorded.h"
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace apps::test;
using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

// The recorded pole of examples/pole-replay.csv.
struct Recorded
{
    Recorded()
        : config(ParameterFile(folder, 0.75)),
          recording(folder.Write("day.tprec",
                                 RecordingOf(live_pole::RecordsOf(live_pole::ReplayTrack()))))
    {}
    Outcome Replay(const std::vector<std::string>& more) const
    {
        return RunProgram(
            Joined(Joined({"live", "--replay", recording}, PoleOptions(config)), more));
    }
    ScratchFolder folder;
    std::string config;
    std::string recording;
};

TEST(LiveReplay, GivesTheSameBytesEachTime)
{
    const Recorded r;
    const Outcome first = r.Replay({"--json", "--serve", "file:" + r.folder.Path("a.nmea")});
    EXPECT_EQ(first.exitCode, 0) << first.err;
    const Outcome second = r.Replay({"--json", "--serve", "file:" + r.folder.Path("b.nmea")});
    EXPECT_TRUE(first.out == second.out);
    const std::string nmea = r.folder.Read("a.nmea");
    EXPECT_TRUE(nmea == r.folder.Read("b.nmea"));
    EXPECT_EQ(Count(nmea, "$GNGGA,"), LinesOf(first.out).size());
    EXPECT_TRUE(r.Replay({"--serve", "-"}).out == nmea);
}

TEST(LiveReplay, WritesTheTipOfTheRecordedPole)
{
    const Recorded r;
    const Outcome outcome = r.Replay({"--json"});
    std::vector<double> errors;
    for (const std::string& line : LinesOf(outcome.out)) {
        const json object = json::parse(line);
        ASSERT_TRUE(object.contains("utc"));
        ASSERT_THAT((std::vector<std::string>{"store", "wait", "block"}),
                    testing::Contains(object["state"].get<std::string>()));
        if (object["tip"].is_null()) continue;
        const field::Geodetic tip{object["tip"]["latitude"], object["tip"]["longitude"],
                                  object["tip"]["ellipsoidalHeight"]};
        const xyhCoordinate d = field::Difference(live_pole::kTip, tip);
        errors.push_back(std::hypot(d.x, d.y));
    }
    EXPECT_GT(errors.size(), 420U);
    EXPECT_LE(live_pole::Percentile(errors, 0.5), 0.010);
    EXPECT_LE(live_pole::Percentile(errors, 0.9), 0.038);
    EXPECT_THAT(outcome.err, HasSubstr("432 epochs"));
}

TEST(LiveReplay, FindsTheDelayOfTheRecordedPole)
{
    const Recorded r;
    const Outcome outcome = r.Replay({"--find-delay"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    ASSERT_THAT(outcome.out, StartsWith("delay "));
    const double found = std::stod(outcome.out.substr(6));
    EXPECT_NEAR(found, 117.0, 10.0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr(" m as set; heading offset "));
}

TEST(LiveReplay, LeavesOutHalfALineAtTheEndAndRefusesOtherDamage)
{
    const Recorded r;
    const std::string whole = r.folder.Read("day.tprec");
    r.folder.Write("day.tprec", whole.substr(0, whole.size() - 10));
    const Outcome cut = r.Replay({"--serve", "-"});
    EXPECT_EQ(cut.exitCode, 0);
    r.folder.Write("day.tprec", whole.substr(0, whole.size() - 3));
    const Outcome inAnEscape = r.Replay({"--serve", "-"});
    EXPECT_EQ(inAnEscape.exitCode, 0);
    EXPECT_THAT(inAnEscape.err, HasSubstr("; it is the last one and is left out\n"));
    r.folder.Write("day.tprec", whole.substr(0, 5000) + "\n+garbage\n" + whole.substr(5000));
    const Outcome damaged = r.Replay({"--serve", "-"});
    EXPECT_EQ(damaged.exitCode, 2);
    EXPECT_THAT(damaged.err, HasSubstr("day.tprec: line "));
    r.folder.Write("day.tprec", "$GNGGA,130758.00\r\n");
    EXPECT_THAT(r.Replay({}).err, HasSubstr("not a recording"));
}

TEST(LiveReplay, RefusesALineThatIsTooLong)
{
    const Recorded r;
    r.folder.Write("day.tprec", field::RecordingHeader(0.0) + "+1.000000 R "
                                    + std::string(200000, 'a') + "\n+2.000000 R b\n");
    const Outcome outcome = r.Replay({"--serve", "-"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("day.tprec: line 2: "));
    EXPECT_LT(outcome.err.size(), 300U);
}

TEST(LiveReplay, IsNegativeWithoutAnEpoch)
{
    const Recorded r;
    r.folder.Write("day.tprec", field::RecordingHeader(0.0) + "+1.000000 P $PTPS\\x0D\\x0A\n");
    EXPECT_EQ(r.Replay({}).exitCode, 1);
    r.folder.Write("day.tprec", field::RecordingHeader(0.0));
    EXPECT_EQ(r.Replay({}).exitCode, 1);
    const Outcome delay = r.Replay({"--find-delay"});
    EXPECT_EQ(delay.exitCode, 1);
    EXPECT_THAT(delay.err, HasSubstr("no delay was found in 0 epochs: "));
}

TEST(LiveReplay, FindsTheDelayOfPosesWithoutAClock)
{
    const ScratchFolder folder;
    live_pole::Options options;
    options.pose = [](live_pole::PoseFields& pose) { pose.milliseconds.clear(); };
    const std::string recording = folder.Write(
        "day.tprec", RecordingOf(live_pole::RecordsOf(live_pole::ReplayTrack(), options)));
    const Outcome outcome =
        RunProgram({"live", "--find-delay", "--replay", recording, "--pole", "2.0", "--north",
                    "file", "--config", ParameterFile(folder, 0.75)});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    ASSERT_THAT(outcome.out, StartsWith("delay "));
    EXPECT_NEAR(std::stod(outcome.out.substr(6)), 117.0, 10.0) << outcome.out;
}

TEST(LiveReplay, SaysThatThePoleHasAnotherLengthThanIsSet)
{
    const Recorded r;
    const Outcome outcome = RunProgram({"live", "--find-delay", "--replay", r.recording, "--pole",
                                        "2.05", "--north", "file", "--config", r.config});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.out,
                testing::ContainsRegex("; pole (1\\.99|2\\.00)[0-9] m, BUT 2\\.050 m ARE SET; "));
}

TEST(LiveReplay, LooksForTheDelayInTheSecondsThatAreGiven)
{
    const ScratchFolder folder;
    const std::string recording =
        folder.Write("day.tprec", RecordingOf(live_pole::RecordsOf(live_pole::StandingTrack(9.0))));
    const auto epochs = [&](const char* seconds) {
        return RunProgram({"live", "--find-delay", "--replay", recording, "--pole", "2",
                           "--seconds", seconds})
            .err;
    };
    // An epoch each 0.1 s from 0.1 s on: the last one of 5 s is that of 5.1 s, of all that of 8.9 s.
    EXPECT_THAT(epochs("5"), HasSubstr("no delay was found in 51 epochs: "));
    EXPECT_THAT(epochs("60"), HasSubstr("no delay was found in 89 epochs: "));
}

// The record beside the parameter file has the verdict; only a good or usable one may store.
TEST(LiveReplay, StoresNothingByACalibrationThatIsNotUsable)
{
    const Recorded r;
    constexpr const char* kPoor = "calibration is poor: calibrate again";
    for (const auto* const verdict : {"good", "usable"}) {
        r.folder.Write("pole.cfg.json",
                       json{
                           {"verdict", verdict}
        }
                           .dump());
        EXPECT_EQ(Count(r.Replay({"--json"}).out, kPoor), 0U) << verdict;
    }
    for (const auto* const verdict : {"poor", "refused", "unchecked"}) {
        r.folder.Write("pole.cfg.json",
                       json{
                           {"verdict", verdict}
        }
                           .dump());
        const std::string reports = r.Replay({"--json"}).out;
        EXPECT_EQ(Count(reports, kPoor), LinesOf(reports).size()) << verdict;
        EXPECT_EQ(Count(reports, R"("state":"store")"), 0U) << verdict;
    }
}

// What a calibration on the spot left beside the parameter file, changed where a test says how.
using Change = std::function<void(field::SpotMagnetometer&)>;

void WriteSidecar(const Recorded& r, const std::string& made, const Change& change = {})
{
    cli::SpotSidecar sidecar;
    sidecar.poleLength = 2.0;
    sidecar.madeUtc = made;
    sidecar.result.reason = field::SpotReason::Usable;
    sidecar.result.hasValues = true;
    sidecar.result.a.found = true;
    sidecar.result.a.correction = CInclineSensor_Position().GetMagneticCorrectPar_A();
    sidecar.result.a.strength = 1e-3; // of no field on earth
    sidecar.result.a.dip = -60.0;
    if (change) change(sidecar.result.a);
    r.folder.Write("pole.cfg.spot.json", cli::SpotJson(sidecar, "").dump());
}

TEST(LiveReplay, HoldsTheFieldOfItsCalibrationAgainstThatOfThePole)
{
    const Recorded r;
    const std::string without = r.Replay({"--json"}).out;
    EXPECT_EQ(Count(without, R"("FIELD")"), 0U);
    WriteSidecar(r, "2026-11-20T10:00:00Z");
    const Outcome outcome = r.Replay({"--json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(Count(outcome.err, "is of another calibration"), 0U);
    EXPECT_NE(outcome.out, without);
    EXPECT_EQ(Count(outcome.out, R"("state":"store")"), 0U) << "in a field of another strength";
}

TEST(LiveReplay, UsesNoSidecarOfAnotherCalibration)
{
    const Recorded r;
    const std::string without = r.Replay({"--json"}).out;
    const Change changes[] = {
        [](field::SpotMagnetometer& a) { a.correction.x0 += 0.02; },
        [](field::SpotMagnetometer& a) { a.correction.y0 -= 0.02; },
        [](field::SpotMagnetometer& a) { a.correction.z0 += 0.02; },
        [](field::SpotMagnetometer& a) { a.correction.a += 2e-4; },
        [](field::SpotMagnetometer& a) { a.correction.b += 2e-4; },
        [](field::SpotMagnetometer& a) { a.correction.c -= 2e-4; },
        [](field::SpotMagnetometer& a) { a.found = false; },
    };
    for (const Change& change : changes) {
        WriteSidecar(r, "2026-11-20T10:00:00Z", change);
        const Outcome outcome = r.Replay({"--json"});
        EXPECT_THAT(outcome.err, HasSubstr("pole.cfg.spot.json: is of another calibration than "));
        EXPECT_TRUE(outcome.out == without);
    }
}

TEST(LiveReplay, NotesHowOldTheCalibrationIsWhereItsSidecarSaysSo)
{
    const Recorded r;
    constexpr const char* kOld = " days old (best below 30)";
    WriteSidecar(r, "2026-09-20T10:00:00Z"); // 63 days before the recording
    EXPECT_THAT(r.Replay({"--json"}).out, HasSubstr(std::string("63") + kOld));
    for (const char* const made : {"2026-11-20T10:00:00Z", "2026-02-30T10:00:00Z", "2026", ""}) {
        WriteSidecar(r, made);
        const Outcome outcome = r.Replay({"--json"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_EQ(Count(outcome.out, kOld), 0U) << made;
    }
}

TEST(LiveReplay, TakesNoVerdictFromARecordWithoutOne)
{
    const Recorded r;
    const std::string without = r.Replay({"--json"}).out;
    for (const char* const record :
         {"[]", "{}", R"({"verdict":1})", R"({"verdict":""})", "cut {"}) {
        r.folder.Write("pole.cfg.json", record);
        const Outcome outcome = r.Replay({"--json"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_TRUE(outcome.out == without) << record;
    }
}

TEST(LiveReplay, ReadsARecordingFromStandardInput)
{
    const Recorded r;
    const Outcome piped =
        RunProgram(Joined({"live", "--replay", "-", "--json"}, PoleOptions(r.config)),
                   r.folder.Read("day.tprec"));
    EXPECT_EQ(piped.exitCode, 0) << piped.err;
    EXPECT_TRUE(piped.out == r.Replay({"--json"}).out);
}

struct Mistake
{
    const char* line;
    const char* sentence;
};

TEST(Live, RefusesWhatCannotBeInOneSentence)
{
    constexpr Mistake mistakes[] = {
        {"live",                                                                                 "--pole is required"                 },
        {"live --pole 2",                                                                        "--gnss and --pose are both required"},
        {"live --pole 2 --gnss - --pose -",                                                      "cannot both be standard input"      },
        {"live --pole 2 --gnss x --pose -",                                                      "'x' is not a source"                },
        {"live --pole 2 --gnss tcp:h:1 --pose - --serve udp:1",                                  "lacks ADDR or PORT"                 },
        {"live --pole 2 --gnss - --pose file:/nowhere",                                          "there is no such file for --pose"   },
        {"live --pole 2 --gnss - --pose file:/",                                                 "a folder, not a file for --pose"    },
        {"live --pole 2 --gnss file:/@5 --pose -",                                               "a folder, not a file for --gnss"    },
        {"live --pole 2 --gnss tcp:h:1 --pose - --reopen 9",                                     "for a receiver on a serial port"    },
        {"live --pole 2 --gnss -",                                                               "--gnss and --pose are both required"},
        {"live --pole 2 --replay a --gnss -",                                                    "leave --gnss and --pose"            },
        {"live --pole 2 --replay a --pose -",                                                    "leave --gnss and --pose"            },
        {"live --pole 2 --replay a --record b",                                                  "leave --record out"                 },
        {"live --pole 2 --replay a --status -",                                                  "--replay has no --status"           },
        {"live --pole 2 --replay /nowhere",                                                      "/nowhere: cannot be read"           },
        {"live --pole 2 --replay /dev/null",                                                     "is not a recording"                 },
        {"live --pole 2 --replay a --serve tcp:0",                                               "is not a sink of --replay"          },
        {"live --pole 2 --replay a --json --serve -",                                            "both write to standard output"      },
        {"live --pole 2 --gnss - --pose tcp:h:1 --allow x",                                      "'x' is not ADDRESS/BITS"            },
        {"live --pole 2 --gnss - --pose tcp:h:1 --delay x",                                      "is not DELAY or DELAY,SD"           },
        {"live --pole 2 --gnss - --pose tcp:h:1 --max-lean 0",                                   "between"                            },
        {"live --pole 2 --gnss - --pose tcp:h:1 --delay 1e9",                                    "--delay: DELAY "                    },
        {"live --pole 2 --gnss - --pose tcp:h:1 --delay 0.1,1e9",                                "--delay: SD "                       },
        {"live --pole 2 --gnss - --pose tcp:h:1 --config /nowhere",                              "/nowhere"                           },
        {"live --pole 2 --gnss serial:/nowhere:9600 --pose tcp:h:1 --reopen 9 --json --serve -",
         "standard output is asked for"                                                                                               },
        {"live --pole 2 --gnss - --pose tcp:h:1 --json --serve -",                               "standard output is asked for"       },
        {"live --pole 2 --find-delay --replay a --json",                                         "serves nothing"                     },
        {"live --pole 2 --find-delay --replay a --serve -",                                      "serves nothing"                     },
        {"live --pole 2 --find-delay --gnss - --pose tcp:h:1 --status -",                        "serves nothing"                     },
        {"merge --pole 2 --gnss a --pose b --out c --clock x",                                   "x not in"                           },
        {"merge --pole 2 --gnss /nowhere --pose b --out c",                                      "/nowhere"                           },
        {"merge --pole 2 --gnss a --pose b --out c --date x",                                    "is not YYYY-MM-DD"                  },
    };
    for (const Mistake& m : mistakes) {
        const LineOutcome outcome = RunLine(m.line);
        EXPECT_EQ(outcome.exitCode, 2) << m.line;
        EXPECT_THAT(outcome.output, HasSubstr(m.sentence)) << m.line;
        EXPECT_EQ(Count(outcome.output, "\n"), 1U) << outcome.output;
    }
}

// Sentences that were written into the job destroyed it.
TEST(Live, NeverWritesTwoOutputsIntoOneFile)
{
    const ScratchFolder folder;
    const std::string job = folder.Path("site.gpkg");
    const std::string pose = folder.Write("pose", "");
    const std::vector<std::string> run = {"live", "--pole", "2",           "--gnss",
                                          "-",    "--pose", "file:" + pose};
    RunProgram(Joined(run, {"--job", job}));
    const std::string before = folder.Read("site.gpkg");
    ASSERT_THAT(before, StartsWith("SQLite format 3"));
    const std::string sink = "file:" + job;
    const std::vector<std::string> twice[] = {
        {"--job",   job,  "--serve",  sink},
        {"--job",   job,  "--status", sink},
        {"--serve", sink, "--status", sink},
        {"--serve", sink, "--serve",  sink},
    };
    for (const auto& more : twice) {
        const Outcome outcome = RunProgram(Joined(run, more));
        EXPECT_EQ(outcome.exitCode, 2) << more[2];
        EXPECT_THAT(outcome.err, HasSubstr(": is the same file as the output " + job));
    }
    const Outcome record = RunProgram(Joined(run, {"--record", pose}));
    EXPECT_EQ(record.exitCode, 2);
    EXPECT_THAT(record.err, HasSubstr(pose + ": is an input of this command"));
    const Outcome replay =
        RunProgram({"live", "--pole", "2", "--replay", pose, "--job", job, "--serve", sink});
    EXPECT_EQ(replay.exitCode, 2);
    EXPECT_THAT(replay.err, HasSubstr(": is the same file as the output " + job));
    EXPECT_EQ(folder.Read("site.gpkg"), before);
}

TEST(Live, EndsWithItsInputAndSumsUp)
{
    const ScratchFolder folder;
    folder.Write("pose", "");
    const Outcome outcome = RunProgram(
        {"live", "--pole", "2", "--gnss", "-", "--pose", "file:" + folder.Path("pose")},
        "$GNGGA,130758.00,4733.9633191,N,01900.5012567,E,4,12,0.72,193.4440,M,39.4290,M,1.0,"
        "0207*66\r\n$GNGGA,cut");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("SET THE ANTENNA HEIGHT OF THE APP TO 0"));
    EXPECT_THAT(outcome.err, HasSubstr("BLOCK"));
    EXPECT_THAT(outcome.err, HasSubstr("1 epochs"));
    EXPECT_EQ(outcome.out, "");
}

TEST(Live, TakesThePoseFromItsInput)
{
    const ScratchFolder folder;
    live_pole::PoseFields pose;
    pose.milliseconds = "1000";
    const Outcome outcome = RunProgram(
        {"live", "--pole", "2", "--pose", "-", "--gnss", "file:" + folder.Write("gnss", "")},
        live_pole::PoseText(pose));
    EXPECT_EQ(outcome.exitCode, 1) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("pose       1 samples; 0 bad"));
}

TEST(Live, LooksForTheDelayInEveryEpochOfItsInput)
{
    const ScratchFolder folder;
    std::string sentences;
    for (const field::Record& record : live_pole::RecordsOf(live_pole::StandingTrack(9.0)))
        if (record.channel == field::Channel::Receiver) sentences += record.bytes;
    const Outcome outcome = RunProgram({"live", "--find-delay", "--seconds", "60", "--pole", "2",
                                        "--gnss", "-", "--pose", "file:" + folder.Write("p", "")},
                                       sentences);
    EXPECT_EQ(outcome.exitCode, 1);
    // 0.1, 0.2, ... 8.9 s
    EXPECT_THAT(outcome.err, HasSubstr("no delay was found in 89 epochs: "));
}

TEST(LiveOptions, LetTheirRangesOfAddressesConnect)
{
    const auto mayConnect = [](const char* address) {
        return live::MayConnect(cli::RangesOf({"10.1.0.0/16", "no range", "fd00::/8"}),
                                *live::ParseAddress(address));
    };
    EXPECT_TRUE(mayConnect("10.1.2.3"));
    EXPECT_TRUE(mayConnect("fd12::1"));
    EXPECT_FALSE(mayConnect("10.2.0.1"));
    EXPECT_FALSE(mayConnect("fe80::1"));
}

TEST(LiveOptions, KnowNameAndUsualAxesOfEachFormatOfPoses)
{
    struct Case
    {
        const char* format;
        const char* name;
        field::PoseFormat kind;
        int sensorType;
    };
    constexpr Case cases[] = {
        {"ptps",   "$PTPS",  field::PoseFormat::Ptps,         1},
        {"csv",    "rows",   field::PoseFormat::Csv,          1},
        {"frames", "frames", field::PoseFormat::SerialFrames, 2},
    };
    for (const Case& c : cases) {
        cli::PoleOptions options;
        options.poseFormat = c.format;
        EXPECT_EQ(cli::PoseFormatName(options), c.name);
        EXPECT_EQ(cli::SetupOf(options).poseFormat, c.kind) << c.format;
        EXPECT_EQ(cli::SetupOf(options).sensorType, c.sensorType) << c.format;
        options.sensorType = 7;
        EXPECT_EQ(cli::SetupOf(options).sensorType, 7) << c.format;
    }
}

TEST(Live, LooksForTheDelayInItsInput)
{
    const ScratchFolder folder;
    folder.Write("pose", "");
    const Outcome outcome = RunProgram({"live", "--find-delay", "--pole", "2", "--gnss", "-",
                                        "--pose", "file:" + folder.Path("pose")},
                                       "");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("rock the pole for 20 s, the tip on a fixed mark\n"));
    EXPECT_THAT(outcome.err, HasSubstr("no delay was found in 0 epochs: "));
}

} // namespace
