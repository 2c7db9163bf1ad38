// SPDX-License-Identifier: MIT
#include "apps/cli/live/Merge.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/live/LiveOptions.h"
#include "apps/cli/live/UtcText.h"
#include "apps/live/Feed.h"
#include "apps/live/ReportText.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include "apps/tables/SampleLog.h"
#include "field/nmea/Sentence.h"
#include "field/nmea/StateName.h"
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <memory>
#include <system_error>

namespace cli {

namespace {

constexpr double kDay = 86400.0;

struct MergeOptions
{
    PoleOptions pole;
    std::string gnss;
    std::string pose;
    std::string clock = "pose:utc";
    std::string date;
    std::string out;
};

constexpr const char* kFooter = R"(
Takes the NMEA log of a receiver and the log of a pose sensor that were recorded apart, and
computes the tip of each epoch as `tiltpole live` would have done.

The pose log is a table as `tiltpole measure` reads it, without the antenna, and with one of the
columns utc, seconds or Time. It holds times of day (13:07:58.120), dates and times
(2026-11-22T13:07:58.120Z), or seconds since midnight or since 1970, with decimals. --clock tells
which clock that is. A receiver's log without dates (RMC or ZDA) needs --date. Both logs have to be
of one day, and in neither may the time run back. Without an epoch no file is written.

Examples:
  tiltpole merge --gnss rover.nmea --pose pose.csv --pole 2.0 --clock pose:utc --out tips.csv

Exit codes: 0 done, 1 no epoch has a tip, 2 wrong use or unreadable input.)";

bool HasChecksum(std::string_view line)
{
    const std::size_t star = line.rfind('*');
    if (star == line.npos || line.size() < star + 3) return false;
    unsigned stated = 0;
    const char* const first = line.data() + star + 1;
    const auto read = std::from_chars(first, first + 2, stated, 16);
    return read.ptr == first + 2 && tiltpole::field::Checksum(line.substr(1, star - 1)) == stated;
}

// The time of day of a sentence that has one.
std::optional<UtcTime> TimeOf(std::string_view line)
{
    const std::size_t comma = line.find(',');
    if (comma != 6 || line.front() != '$' || !HasChecksum(line)) return std::nullopt;
    const std::string_view type = line.substr(3, 3);
    if (type != "GGA" && type != "RMC" && type != "GST" && type != "ZDA") return std::nullopt;
    const std::string_view rest = line.substr(comma + 1);
    const std::string_view time = rest.substr(0, rest.find_first_of(",*"));
    constexpr std::size_t kShortest = 6;
    if (time.size() < kShortest) return std::nullopt;
    return ParseUtcTime(
        fmt::format("{}:{}:{}", time.substr(0, 2), time.substr(2, 2), time.substr(4)));
}

// Lines of the receiver with the time at which they were true.
class ReceiverLog
{
public:
    explicit ReceiverLog(const std::string& path) : m_path(path), m_file(path, std::ios::binary)
    {
        if (!m_file) throw Unreadable();
        Next();
    }

    bool IsAtEnd() const { return m_isAtEnd; }
    double Seconds() const { return m_seconds; } // since the first midnight
    const std::string& Line() const { return m_line; }

    void Next()
    {
        m_isAtEnd = !std::getline(m_file, m_line);
        if (m_file.bad()) throw Unreadable();
        m_line += '\n';
        if (const auto time = TimeOf(m_line)) m_seconds = std::max(m_seconds, m_days.Next(*time));
    }

private:
    tables::InputError Unreadable() const
    {
        return {m_path, "cannot be read: " + std::generic_category().message(errno)};
    }

    std::string m_path;
    std::ifstream m_file;
    std::string m_line;
    double m_seconds = 0.0;
    DayCounter m_days;
    bool m_isAtEnd = false;
};

// Samples of the pose sensor with their time.
class PoseLog
{
public:
    PoseLog(const std::string& path, double ahead) : m_log(path, {}), m_ahead(ahead)
    {
        for (const char* const name : {"utc", "seconds", "Time"}) {
            const auto column = m_log.Rows().Find(name);
            if (column && !m_column) m_column = column;
        }
        if (!m_column) throw m_log.Rows().HeaderError("there is no column utc, seconds or Time");
        Next();
    }

    bool IsAtEnd() const { return m_isAtEnd; }
    double Seconds() const { return m_seconds; }
    bool HasDate() const { return m_hasDate; }

    field::PoseSample Sample(field::Instant arrival) const
    {
        field::PoseSample sample;
        sample.data = m_log.Pose();
        sample.deviceSeconds = m_seconds;
        sample.arrival = arrival;
        return sample;
    }

    void Next()
    {
        m_isAtEnd = !m_log.Next();
        if (m_isAtEnd) return;
        const std::string_view text = m_log.Rows().Field(*m_column);
        const auto time = ParseUtcTime(text);
        if (!time) throw m_log.Rows().Error(fmt::format("'{:.40}' is not a time in UTC", text));
        constexpr double kYear2000 = 946684800.0; // seconds since 1970
        if (time->hasDate && time->seconds < kYear2000)
            throw m_log.Rows().Error(fmt::format(
                "{:.40} seconds since 1970 are before 2000: is the time in seconds?", text));
        const double seconds = m_days.Next(*time) - m_ahead;
        if (m_isBegun && seconds == m_seconds && ++m_equal > kMostEqual)
            throw m_log.Rows().Error("many rows have the same time: it needs decimals of a second");
        if (m_isBegun && seconds < m_seconds) throw m_log.Rows().Error("the time runs back");
        if (seconds != m_seconds) m_equal = 0;
        m_isBegun = true;
        m_hasDate = time->hasDate;
        m_seconds = seconds;
    }

private:
    static constexpr int kMostEqual = 3; // rows

    tables::SampleLog m_log;
    double m_ahead; // of the log's clock before UTC [s]
    std::optional<std::size_t> m_column;
    DayCounter m_days;
    double m_seconds = 0.0;
    bool m_hasDate = false;
    bool m_isAtEnd = false;
    bool m_isBegun = false;
    int m_equal = 0;
};

constexpr const char* kHeader =
    "date,utc,latitude,longitude,ellipsoidal_height_m,sd_n_m,sd_e_m,sd_h_m,lean_deg,"
    "azimuth_true_deg,antenna_speed_m_s,quality,satellites,age_s,station,state,reason\n";

std::string DateText(const std::optional<std::chrono::sys_days>& day)
{
    if (!day) return {};
    const std::chrono::year_month_day date(*day);
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

std::string Quoted(std::string text)
{
    for (std::size_t at = 0; (at = text.find('"', at)) != std::string::npos; at += 2)
        text.insert(at, 1, '"');
    return '"' + text + '"';
}

// Blank where it is not known.
std::string Cell(double value, int decimals)
{
    return std::isfinite(value) ? fmt::format("{:.{}f},", value, decimals) : ",";
}

std::string Row(const field::Report& report)
{
    const field::Epoch& epoch = report.epoch;
    std::string row = fmt::format("{},{},", DateText(epoch.date), epoch.utc);
    if (report.tip) {
        const field::Tip tip = live::JudgedTip(report);
        row += Cell(tip.position.latitude, 10) + Cell(tip.position.longitude, 10)
               + Cell(tip.position.ellipsoidalHeight, 4) + Cell(std::sqrt(tip.sigma.nn), 4)
               + Cell(std::sqrt(tip.sigma.ee), 4) + Cell(std::sqrt(tip.sigma.hh), 4)
               + Cell(tip.tilt, 3) + Cell(tip.azimuthTrue, 3) + Cell(tip.antennaSpeed, 3);
    } else {
        row += ",,,,,,,,,";
    }
    const std::string age =
        epoch.correctionAge ? fmt::format("{:.1f}", *epoch.correctionAge) : std::string();
    const auto& reasons = report.verdict.reasons;
    return row
           + fmt::format("{},{},{},{},{},{}\n", static_cast<int>(epoch.fix), epoch.satellites, age,
                         epoch.station, tiltpole::field::StateName(report.verdict.state),
                         reasons.empty() ? std::string() : Quoted(reasons.front().text));
}

field::Setup MergeSetup(const MergeOptions& options)
{
    constexpr double kSharedClock = 0.002; // s
    field::Setup setup = SetupOf(options.pole);
    if (options.pole.delay.empty()) setup.delaySigma = kSharedClock;
    return setup;
}

// Seconds since 1970 of the midnight that both logs count from, where it is known.
std::optional<double> MidnightOf(const MergeOptions& options, const PoseLog& pose)
{
    if (!options.date.empty())
        if (const auto day = ParseUtcTime(options.date + "T00:00:00")) return day->seconds;
    if (pose.HasDate()) return std::floor(pose.Seconds() / kDay) * kDay;
    return std::nullopt;
}

// Epochs in the order of their time, of the day that was given or that the pose log has.
class EpochOrder
{
public:
    EpochOrder(const MergeOptions& options, const PoseLog& pose)
        : m_options(options),
          m_poseDay(pose.HasDate() ? std::optional(DayOf(pose.Seconds())) : std::nullopt)
    {}

    /// @throws InputError where the epoch is earlier than one before it, or of another day
    void Check(const field::Epoch& epoch)
    {
        const auto time = ParseUtcTime(epoch.utc.substr(0, 2) + ":" + epoch.utc.substr(2, 2) + ":"
                                       + epoch.utc.substr(4));
        if (!time) return;
        const double seconds = m_days.Next(*time);
        if (m_last && seconds < *m_last)
            throw tables::InputError(m_options.gnss,
                                     fmt::format("the time runs back, to {}", epoch.utc));
        m_last = seconds;
        if (!epoch.date) return;
        const auto first = *epoch.date - std::chrono::days(static_cast<int>(seconds / kDay));
        if (!m_options.date.empty())
            Compare(first, DayOf(ParseUtcTime(m_options.date + "T00:00:00")->seconds), "--date");
        if (m_poseDay) Compare(first, *m_poseDay, m_options.pose);
    }

private:
    static std::chrono::sys_days DayOf(double seconds)
    {
        return std::chrono::sys_days(std::chrono::days(static_cast<int>(seconds / kDay)));
    }

    void Compare(std::chrono::sys_days is, std::chrono::sys_days other,
                 const std::string& says) const
    {
        if (is != other)
            throw tables::InputError(
                m_options.gnss,
                fmt::format("is of {}, but {} of {}", DateText(is), says, DateText(other)));
    }

    const MergeOptions& m_options;
    std::optional<std::chrono::sys_days> m_poseDay;
    std::optional<double> m_last; // since the first midnight [s]
    DayCounter m_days;
};

int Run(const MergeOptions& options)
{
    constexpr double kLeapSeconds = 18.0; // GPS time ahead of UTC since 2017
    tables::KeepApart({options.out}, {options.gnss, options.pose, options.pole.config});
    field::Setup setup = MergeSetup(options);
    ReceiverLog receiver(options.gnss);
    PoseLog pose(options.pose, options.clock == "pose:gps" ? kLeapSeconds : 0.0);
    const auto midnight = MidnightOf(options, pose);
    const double poseBase = pose.HasDate() ? std::floor(pose.Seconds() / kDay) * kDay : 0.0;
    setup.started = midnight;

    field::Bridge bridge(setup);
    live::Feed feed(bridge);
    tables::Output out(options.out);
    out.Write(kHeader);
    std::uint64_t tips = 0;
    EpochOrder order(options, pose);
    const auto write = [&] {
        for (const field::Report& report : bridge.Take()) {
            if (report.epoch.utc.empty()) continue;
            order.Check(report.epoch);
            tips += report.tip ? 1 : 0;
            out.Write(Row(report));
        }
    };
    field::Instant now{};
    while (!receiver.IsAtEnd() || !pose.IsAtEnd()) {
        const double poseSeconds = pose.Seconds() - poseBase;
        const bool isPose =
            receiver.IsAtEnd() || (!pose.IsAtEnd() && poseSeconds <= receiver.Seconds());
        const double seconds = isPose ? poseSeconds : receiver.Seconds();
        now = std::max(now, std::chrono::duration_cast<field::Instant>(
                                std::chrono::duration<double>(std::max(seconds, 0.0))));
        feed.Advance(now);
        if (isPose) {
            bridge.FeedPose(pose.Sample(now));
            pose.Next();
        } else {
            bridge.FeedReceiver(receiver.Line(), now);
            receiver.Next();
        }
        write();
    }
    feed.Advance(now + live::Feed::kLastEpoch);
    write();
    tables::TellText(live::CountersText(bridge.Count()));
    if (bridge.Count().epochs == 0) {
        tables::Tell("{}: not written, because there is no epoch\n", options.out);
        return kNegative;
    }
    out.Finish();
    return tips > 0 ? kDone : kNegative;
}

CLI::Validator DateText()
{
    return {[](std::string& text) {
                return ParseUtcTime(text + "T00:00:00") ? std::string()
                                                        : "'" + text + "' is not YYYY-MM-DD";
            },
            "", "date"};
}

} // namespace

void AddMergeCommand(CLI::App& program, int& exitCode)
{
    const auto options = std::make_shared<MergeOptions>();
    CLI::App* const command = program.add_subcommand(
        "merge", "Compute tips from logs of a receiver and of a pose sensor.");
    command->footer(kFooter);
    command->add_option("--gnss", options->gnss, "NMEA log of the receiver")
        ->required()
        ->type_name("FILE");
    command->add_option("--pose", options->pose, "Log of the pose sensor")
        ->required()
        ->type_name("FILE");
    command
        ->add_option(
            "--clock", options->clock,
            "Clock of the pose log: pose:utc (default), or pose:gps, GPS time, which is 18 "
            "s ahead")
        ->type_name("CLOCK")
        ->check(CLI::IsMember({"pose:utc", "pose:gps"}));
    command
        ->add_option("--date", options->date,
                     "Date of the first epoch in UTC, for receivers that send none")
        ->type_name("YYYY-MM-DD")
        ->check(DateText());
    command
        ->add_option(
            "--out", options->out,
            "Output file of one row an epoch, replaced when complete; - is standard output")
        ->required()
        ->type_name("FILE");
    AddPoleOptions(*command, options->pole);
    command->callback([options, &exitCode] { exitCode = Run(*options); });
}

} // namespace cli
