// SPDX-License-Identifier: MIT
//
// tiltpole merge as a user runs it: logs of a receiver and of a pose sensor that were recorded apart.
#include "apps/tables/Csv.h"
#include "field/nmea/Sentence.h"
#include "tests/apps/RunProgram.h"
#include "tests/apps/live/Recorded.h"
#include "tests/field/bridge/PlantedPole.h"
#include <fmt/format.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

using namespace apps::test;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> CellsOf(const std::string& row)
{
    std::vector<std::string> cells;
    std::istringstream stream(row);
    for (std::string cell; std::getline(stream, cell, ',');)
        cells.push_back(cell);
    return cells;
}

// Both logs of a pole, as loggers of their own keep them.
struct Logs
{
    explicit Logs(const live_pole::Track& track = live_pole::StandingTrack(5.0))
    {
        std::string pose = "utc,dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,"
                           "dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z\n";
        for (const auto& row : track) {
            const double second = 58.0 + row.seconds;
            pose += fmt::format("2026-11-22T13:{:02}:{:09.6f}Z,{},{},{}\n", second < 60.0 ? 7 : 8,
                                second < 60.0 ? second : second - 60.0, row.pitch, row.roll,
                                fmt::join(row.readings, ","));
        }
        folder.Write("pose.csv", pose);
        std::string nmea;
        for (const auto& record : live_pole::RecordsOf(track))
            if (record.channel == field::Channel::Receiver) nmea += record.bytes;
        folder.Write("rover.nmea", nmea);
    }
    Outcome Merge(const std::vector<std::string>& more = {}) const
    {
        return RunProgram(
            Joined({"merge", "--gnss", folder.Path(rover), "--pose", folder.Path("pose.csv"),
                    "--pole", "2.0", "--north", north, "--heading-sd", "3.0", "--config", config,
                    "--out", folder.Path("tips.csv")},
                   more));
    }
    void Replace(const std::string& name, const std::string& from, const std::string& to) const
    {
        std::string text = folder.Read(name);
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
            text.replace(at, from.size(), to);
        folder.Write(name, text);
    }
    // Changes what is between $ and * of the receiver's sentences; those left empty are left out.
    void ChangeSentences(const std::function<void(std::string&)>& change) const
    {
        std::string nmea;
        for (const std::string& line : LinesOf(folder.Read("rover.nmea"))) {
            std::string body = line.substr(1, line.rfind('*') - 1);
            change(body);
            if (!body.empty()) nmea += tiltpole::field::Framed(body);
        }
        folder.Write("rover.nmea", nmea);
    }
    // The rows of a merge, up to the height of the tip.
    std::vector<std::string> Tips(const std::vector<std::string>& more = {}) const
    {
        const Outcome outcome = Merge(more);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        std::vector<std::string> rows = LinesOf(folder.Read("tips.csv"));
        for (std::string& row : rows) {
            const auto cells = CellsOf(row);
            row = fmt::format("{}", fmt::join(cells.begin(), cells.begin() + 5, ","));
        }
        return rows;
    }
    // Exit code 2 with this sentence, and the output as it was.
    void ExpectRefused(const std::string& says, const std::vector<std::string>& more = {}) const
    {
        folder.Write("tips.csv", "old\n");
        const Outcome outcome = Merge(more);
        EXPECT_EQ(outcome.exitCode, 2) << says;
        EXPECT_THAT(outcome.err, HasSubstr(says));
        EXPECT_EQ(folder.Read("tips.csv"), "old\n");
    }
    ScratchFolder folder;
    std::string rover = "rover.nmea";
    std::string north = "file";
    std::string config = ParameterFile(folder);
};

TEST(Merge, FindsTheTipFromSeparateLogs)
{
    const Logs logs;
    const Outcome outcome = logs.Merge({"--clock", "pose:utc"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto rows = LinesOf(logs.folder.Read("tips.csv"));
    ASSERT_EQ(rows.size(), 1U + 49U) << outcome.err;
    EXPECT_THAT(rows[0], StartsWith("date,utc,latitude,longitude,ellipsoidal_height_m,"));
    const auto fields = CellsOf(rows[30]);
    ASSERT_GE(fields.size(), 16U) << rows[30];
    EXPECT_EQ(fields[0], "2026-11-22");
    EXPECT_EQ(fields[1], "130801.00");
    EXPECT_NEAR(std::stod(fields[2]), live_pole::kTip.latitude, 2e-7) << rows[30];
    EXPECT_NEAR(std::stod(fields[3]), live_pole::kTip.longitude, 3e-7) << rows[30];
    EXPECT_NEAR(std::stod(fields[4]), live_pole::kTip.ellipsoidalHeight, 0.005) << rows[30];
    EXPECT_EQ(fields[15], "STORE") << rows[30];
}

TEST(Merge, SeesAPoseClockThatIsAnother)
{
    const Logs logs;
    const Outcome outcome = logs.Merge({"--clock", "pose:gps"});
    EXPECT_EQ(outcome.exitCode, 1) << outcome.err; // no pose within 18 s of an epoch
    EXPECT_THAT(outcome.err, HasSubstr("0 store"));
}

TEST(Merge, LeavesBlankWhatIsNotKnown)
{
    const Logs logs;
    EXPECT_EQ(logs.Merge().exitCode, 0);
    const auto rows = LinesOf(logs.folder.Read("tips.csv"));
    ASSERT_GT(rows.size(), 1U);
    EXPECT_EQ(CellsOf(rows[1]).at(10), "") << "the speed of the antenna at the first epoch";
    for (const std::string& row : rows)
        EXPECT_THAT(row, testing::Not(HasSubstr("nan")));
}

// The tip of a single epoch of this pole is known to 19 mm and more.
TEST(Merge, StoresTheTipOfTheOccupationWhileThePoleMoves)
{
    const Logs logs(live_pole::RockedTrack(3.0));
    const Outcome outcome = logs.Merge();
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    int stored = 0;
    for (const std::string& row : LinesOf(logs.folder.Read("tips.csv"))) {
        const auto cells = CellsOf(row);
        if (cells.at(15) != "STORE" || std::stod(cells[10]) < 0.2) continue;
        ++stored;
        const field::Geodetic tip{std::stod(cells[2]), std::stod(cells[3]), std::stod(cells[4])};
        const xyhCoordinate off = field::Difference(live_pole::kTip, tip);
        EXPECT_LT(std::hypot(off.x, off.y), 0.010) << row;
        EXPECT_LT(std::stod(cells[5]), 0.012) << row;
    }
    EXPECT_GT(stored, 5) << outcome.err;
}

TEST(Merge, RefusesAReceiversLogInWhichTheTimeRunsBack)
{
    const Logs logs;
    const std::string once = logs.folder.Read("rover.nmea");
    logs.folder.Write("rover.nmea", once + once);
    logs.ExpectRefused("rover.nmea: the time runs back, to 130758.10");
}

TEST(Merge, RefusesLogsOfDifferentDays)
{
    const Logs logs;
    logs.ExpectRefused("rover.nmea: is of 2026-11-22, but --date of 2026-11-23",
                       {"--date", "2026-11-23"});
    logs.Replace("pose.csv", "2026-11-22", "2026-11-21");
    logs.ExpectRefused("pose.csv of 2026-11-21");
}

// The pole's 5 s begin 2 s before midnight; the receiver's log has all of them.
struct LogsAroundMidnight : Logs
{
    LogsAroundMidnight()
    {
        Replace("pose.csv", "2026-11-22T13:07", "2026-11-21T23:59");
        Replace("pose.csv", "2026-11-22T13:08", "2026-11-22T00:00");
        std::string nmea;
        for (std::string line : LinesOf(folder.Read("rover.nmea"))) {
            const std::size_t time = line.find(",130");
            if (time == std::string::npos) continue;
            const bool isBefore = line.compare(time + 1, 4, "1307") == 0;
            line.replace(time + 1, 4, isBefore ? "2359" : "0000");
            if (const std::size_t date = line.find(",221126"); isBefore && date != line.npos)
                line.replace(date, 7, ",211126");
            nmea += tiltpole::field::Framed(line.substr(1, line.rfind('*') - 1));
        }
        folder.Write("rover.nmea", nmea);
    }
    // Leaves only the rows of the pose log after midnight.
    void BeginPoseAfterMidnight() const
    {
        std::string pose;
        for (const std::string& line : LinesOf(folder.Read("pose.csv")))
            if (!line.starts_with("2026-11-21")) pose += line + "\n";
        folder.Write("pose.csv", pose);
    }
    // Leaves only the sentences of the receiver after midnight.
    void BeginReceiverAfterMidnight() const
    {
        std::string nmea;
        for (const std::string& line : LinesOf(folder.Read("rover.nmea")))
            if (line.find(",2359") == std::string::npos) nmea += line + "\n";
        folder.Write("rover.nmea", nmea);
    }
    // The row of 00:00:01 has the tip.
    void ExpectTip(const std::string& date, const std::vector<std::string>& more = {}) const
    {
        const Outcome outcome = Merge(more);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        for (const std::string& row : LinesOf(folder.Read("tips.csv"))) {
            const auto cells = CellsOf(row);
            if (cells.at(1) != "000001.50") continue;
            EXPECT_EQ(cells[0], date);
            ASSERT_NE(cells[2], "") << row;
            EXPECT_NEAR(std::stod(cells[2]), live_pole::kTip.latitude, 2e-7) << row;
            EXPECT_NEAR(std::stod(cells[3]), live_pole::kTip.longitude, 3e-7) << row;
            return;
        }
        ADD_FAILURE() << "there is no row of 00:00:01.5";
    }
};

TEST(Merge, JoinsLogsThatBeginOnEitherSideOfMidnight)
{
    const LogsAroundMidnight poseLater;
    poseLater.ExpectTip("2026-11-22");
    poseLater.BeginPoseAfterMidnight();
    poseLater.ExpectTip("2026-11-22");
    const LogsAroundMidnight receiverLater;
    receiverLater.BeginReceiverAfterMidnight();
    receiverLater.ExpectTip("2026-11-22");
}

TEST(Merge, JoinsTimesOfDayThatBeginOnEitherSideOfMidnight)
{
    const LogsAroundMidnight poseLater;
    poseLater.BeginPoseAfterMidnight();
    poseLater.Replace("pose.csv", "2026-11-22T", "");
    poseLater.Replace("pose.csv", "Z", "");
    poseLater.ExpectTip("2026-11-22");
    poseLater.ExpectTip("2026-11-22", {"--date", "2026-11-21"});
    const LogsAroundMidnight receiverLater;
    receiverLater.BeginReceiverAfterMidnight();
    receiverLater.Replace("pose.csv", "2026-11-21T", "");
    receiverLater.Replace("pose.csv", "2026-11-22T", "");
    receiverLater.Replace("pose.csv", "Z", "");
    receiverLater.ExpectTip("2026-11-22");
}

TEST(Merge, RefusesADateThatStepsInTheReceiversLog)
{
    const LogsAroundMidnight logs;
    std::string nmea;
    for (const std::string& line : LinesOf(logs.folder.Read("rover.nmea"))) {
        std::string body = line.substr(1, line.rfind('*') - 1);
        const std::size_t date = body.find(",221126");
        if (date != body.npos && body.find(",00000") != body.npos) body[date + 2] = '5';
        nmea += tiltpole::field::Framed(body);
    }
    logs.folder.Write("rover.nmea", nmea);
    logs.ExpectRefused("is of 2026-11-25, where 2026-11-22 is expected");
}

TEST(Merge, PassesOverATimeThatWasDamaged)
{
    const Logs logs;
    logs.Merge();
    const auto rows = LinesOf(logs.folder.Read("tips.csv"));
    logs.Replace("rover.nmea", "$GNRMC,130758.50", "$GNRMC,230758.50");
    EXPECT_EQ(logs.Merge().exitCode, 0);
    const auto damaged = LinesOf(logs.folder.Read("tips.csv"));
    ASSERT_GT(damaged.size(), 40U);
    EXPECT_EQ(damaged.back(), rows.back());
}

TEST(Merge, RefusesMillisecondsForSeconds)
{
    const Logs logs;
    std::string pose = "seconds,dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2\n";
    for (int i = 0; i < 250; ++i)
        pose += fmt::format("{},1,2,100,200,-400,-100,-200,-400\n", 47278000 + 20 * i);
    logs.folder.Write("pose.csv", pose);
    logs.ExpectRefused(
        "pose.csv:2: 47278000 seconds since 1970 are before 2000: is the time in seconds?");
}

TEST(Merge, ReplacesNothingWithoutAnEpochAndReadsNoFolder)
{
    Logs logs;
    logs.rover = ".";
    logs.ExpectRefused(": cannot be read: ");
    logs.rover = "rover.nmea";
    logs.folder.Write("rover.nmea", "no sentences\n");
    logs.folder.Write("tips.csv", "old\n");
    const Outcome outcome = logs.Merge();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("tips.csv: not written, because there is no epoch"));
    EXPECT_EQ(logs.folder.Read("tips.csv"), "old\n");
}

void DropDates(std::string& body)
{
    if (body.starts_with("GNRMC")) body.clear();
}

TEST(Merge, TakesTheDateOfZda)
{
    const Logs logs;
    bool isFirst = true;
    logs.ChangeSentences([&](std::string& body) {
        if (!body.starts_with("GNRMC,")) return;
        body = "GNZDA," + body.substr(6, 9) + (isFirst ? ",32,11,2026,00,00" : ",22,11,2026,00,00");
        isFirst = false;
    });
    EXPECT_THAT(logs.Tips().at(30), StartsWith("2026-11-22,130801.00,47."));
    logs.ExpectRefused("rover.nmea: is of 2026-11-22, but --date of 2026-11-23",
                       {"--date", "2026-11-23"});
}

TEST(Merge, TakesTheDayBeforeForTimesBeforeTheFirstDate)
{
    const LogsAroundMidnight logs;
    logs.ChangeSentences([](std::string& body) {
        if (body.starts_with("GNRMC,2359")) body.clear();
    });
    logs.ExpectTip("2026-11-22");
    logs.ExpectRefused("rover.nmea: is of 2026-11-21, but --date of 2026-11-22",
                       {"--date", "2026-11-22"});
}

// True north needs the date.
TEST(Merge, TakesTheDateOfThePoseLogOrTheOptionWhereTheReceiverSendsNone)
{
    Logs logs;
    logs.north = "model";
    const auto rows = logs.Tips();
    const std::string row = rows.at(30).substr(rows.at(30).find(','));
    EXPECT_THAT(row, StartsWith(",130801.00,47.")) << "of the receiver's date";
    logs.ChangeSentences(DropDates);
    EXPECT_THAT(logs.Tips().at(30), testing::EndsWith(row));
    EXPECT_THAT(logs.Tips({"--date", "2026-11-22"}).at(30), testing::EndsWith(row));
    logs.ExpectRefused("rover.nmea: is of 2026-11-25, but ", {"--date", "2026-11-25"});
    logs.ExpectRefused("pose.csv of 2026-11-22", {"--date", "2026-11-25"});
    logs.Replace("pose.csv", "2026-11-22T", "");
    logs.Replace("pose.csv", "Z", "");
    EXPECT_THAT(logs.Tips({"--date", "2026-11-22"}).at(30), testing::EndsWith(row));
    EXPECT_EQ(logs.Merge().exitCode, 1);
    EXPECT_THAT(logs.folder.Read("tips.csv"), HasSubstr("\"the date is not known, and "));
}

TEST(Merge, PassesOverLinesThatAreNoWholeSentences)
{
    const Logs logs;
    const auto rows = logs.Tips();
    const std::string rover = logs.folder.Read("rover.nmea");
    using tiltpole::field::Framed;
    const std::string framed = Framed("GNGGA,230758.00,");
    const std::string others[] = {
        "$GNGGA,230758.00\n",
        "$GNGGA,230758.00*\n",
        "$GNGGA,230758.00*6\r\n",
        "$GNGGA,230758.00*x6\r\n",
        "%" + framed.substr(1),
        Framed("GNVTG,230758.00,T,,M"),
        Framed("GNGGA,,,,,,0,,,,M,,M,,"),
        "\n",
    };
    for (const std::string& other : others) {
        logs.folder.Write("rover.nmea", other + rover);
        EXPECT_EQ(logs.Tips(), rows) << other;
    }
    std::string dated = Framed("GNRMC,130758.10,A,,,,,,,010126,,,N,V");
    dated.replace(dated.size() - 2, 2, " and more\r\n");
    logs.folder.Write("rover.nmea", dated + rover);
    EXPECT_EQ(logs.Tips(), rows) << dated;
}

TEST(Merge, ReadsAReceiversLogThatBeginsWithManyOtherLines)
{
    const Logs logs;
    const auto rows = logs.Tips();
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += "# of the logger\n";
    logs.folder.Write("rover.nmea", text + logs.folder.Read("rover.nmea"));
    EXPECT_EQ(logs.Tips(), rows);
    logs.Replace("pose.csv", "2026-11-22T", "");
    logs.Replace("pose.csv", "Z", "");
    EXPECT_EQ(logs.Tips(), rows) << "no date is known at the start";
}

TEST(Merge, TakesTheColumnUtcBeforeTheOthers)
{
    const Logs logs;
    const auto rows = logs.Tips();
    logs.Replace("pose.csv", "utc,", "Time,utc,seconds,");
    logs.Replace("pose.csv", "2026-11-22T", "01:00:00,2026-11-22T");
    logs.Replace("pose.csv", "Z,", "Z,noon,");
    EXPECT_EQ(logs.Tips(), rows);
}

TEST(Merge, RefusesAPoseLogWithoutUsableTimes)
{
    struct Damage
    {
        const char* from;
        const char* to;
        const char* says;
    };
    constexpr Damage damages[] = {
        {"utc,",              "when,",             "pose.csv:1: there is no column utc, seconds or Time"},
        {"58.020000Z",        "58.02,000Z",        "pose.csv:3: "                                       },
        {"T13:07:58.020000Z", "T25:07:58.020000Z",
         "pose.csv:3: '2026-11-22T25:07:58.020000Z' is not a "
         "time in UTC"                                                                                  },
        {"13:07:58.500000Z",  "13:07:57.500000Z",  "pose.csv:27: the time runs back"                    },
    };
    for (const auto& [from, to, says] : damages) {
        const Logs logs;
        logs.Replace("pose.csv", from, to);
        logs.ExpectRefused(says);
    }
}

TEST(Merge, RefusesMoreThanFourRowsOfOneTime)
{
    const Logs logs;
    const auto rows = LinesOf(logs.folder.Read("pose.csv"));
    const auto repeat = [&](int times) {
        std::string pose;
        for (const std::string& row : rows)
            for (int i = 0; i < (row == rows[20] ? times : 1); ++i)
                pose += row + '\n';
        logs.folder.Write("pose.csv", pose);
    };
    repeat(4);
    EXPECT_EQ(logs.Merge().exitCode, 0);
    repeat(5);
    logs.ExpectRefused("pose.csv:25: many rows have the same time: it needs decimals of a second");
}

TEST(Merge, LeavesTheAgeOfCorrectionsBlankWhereThereIsNone)
{
    const Logs logs;
    logs.Merge();
    EXPECT_EQ(CellsOf(LinesOf(logs.folder.Read("tips.csv")).at(30)).at(13), "1.0");
    logs.ChangeSentences([](std::string& body) {
        if (body.ends_with(",1.0,0207")) body.replace(body.size() - 9, 9, ",,0207");
    });
    logs.Merge();
    EXPECT_EQ(CellsOf(LinesOf(logs.folder.Read("tips.csv")).at(30)).at(13), "");
}

// One epoch of another base; the names of bases are any text.
TEST(Merge, KeepsQuotesInTheNameOfABase)
{
    const Logs logs;
    logs.ChangeSentences([](std::string& body) {
        const std::string base = body.starts_with("GNGGA,130801.0") ? ",\"07" : ",\"02\"";
        if (body.ends_with(",0207")) body.replace(body.size() - 5, 5, base);
    });
    logs.Merge();
    tables::CsvReader rows(logs.folder.Path("tips.csv"));
    const std::size_t utc = rows.Require("utc");
    const std::size_t station = rows.Require("station");
    std::set<std::string> stations;
    std::string reason;
    while (rows.Next()) {
        stations.emplace(rows.Field(station));
        if (rows.Field(utc) == "130801.00") reason = rows.Field(rows.Require("reason"));
    }
    EXPECT_THAT(stations, testing::ElementsAre("\"02\"", "\"07"));
    EXPECT_THAT(reason, testing::AllOf(HasSubstr("\"02\""), HasSubstr("\"07")));
}

TEST(Merge, TakesTheDeviationOfTheDelayThatIsGiven)
{
    const Logs logs(live_pole::RockedTrack(3.0));
    const auto tips = [&](const std::vector<std::string>& more) {
        logs.Merge(more);
        return logs.folder.Read("tips.csv");
    };
    constexpr const char* kApart = "pose and antenna apart by 100 ms sd while moving (limit 20)";
    EXPECT_THAT(tips({"--delay", "0,0.1"}), HasSubstr(kApart));
    const std::string shared = tips({});
    EXPECT_EQ(Count(shared, "pose and antenna apart"), 0U);
    EXPECT_EQ(tips({"--delay", "0,0.002"}), shared);
    const std::string alone = tips({"--delay", "0"});
    EXPECT_NE(alone, shared);
    EXPECT_EQ(alone, tips({"--delay", "0,0.007"})) << "what --find-delay reaches";
}

TEST(LiveReplay, ReadsNoFolder)
{
    const ScratchFolder folder;
    const Outcome outcome = RunProgram({"live", "--replay", folder.Path("."), "--pole", "2"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("cannot be read: "));
}

} // namespace
