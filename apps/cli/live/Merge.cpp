// SPDX-License-Identifier: MIT
#include "apps/cli/live/Merge.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/live/LiveOptions.h"
#include "apps/cli/live/MergeLogs.h"
#include "apps/live/Feed.h"
#include "apps/live/ReportText.h"
#include "apps/tables/CsvField.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include "field/nmea/StateName.h"
#include <cmath>
#include <fmt/format.h>
#include <memory>

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
which clock that is. A receiver's log without dates (RMC or ZDA) needs --date. One log may begin
before midnight and the other after it: dates tell, and without them times of day that are more than
18 hours apart. In neither may the time run back. Without an epoch no file is written.

Examples:
  tiltpole merge --gnss rover.nmea --pose pose.csv --pole 2.0 --clock pose:utc --out tips.csv

Exit codes: 0 done, 1 no epoch has a tip, 2 wrong use or unreadable input.)";

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
    fmt::memory_buffer station; // of the receiver, any text
    tables::AppendField(station, epoch.station);
    const auto& reasons = report.verdict.reasons;
    return row
           + fmt::format("{},{},{},{},{},{}\n", static_cast<int>(epoch.fix), epoch.satellites, age,
                         fmt::to_string(station), tiltpole::field::StateName(report.verdict.state),
                         reasons.empty() ? std::string() : Quoted(reasons.front().text));
}

field::Setup MergeSetup(const MergeOptions& options)
{
    constexpr double kSharedClock = 0.002; // s
    field::Setup setup = SetupOf(options.pole);
    if (options.pole.delay.empty()) setup.delaySigma = kSharedClock;
    return setup;
}

// How the logs lie to one another: their midnights are those before their starts, and the earlier one
// is the midnight from which the instants of the merged log count.
struct Midnights
{
    double receiver = 0.0;                          // after the earlier one [s]
    double pose = 0.0;                              // likewise
    std::optional<std::chrono::sys_days> receivers; // day of the receiver's, where it is known
    std::optional<double> unix;                     // the earlier one, since 1970 [s]
};

std::chrono::sys_days DateIn(const std::string& date)
{
    const double seconds = ParseUtcTime(date + "T00:00:00")->seconds;
    return std::chrono::sys_days(std::chrono::days(std::lround(seconds / kDay)));
}

tables::InputError OtherDay(const MergeOptions& options, std::chrono::sys_days is,
                            const std::string& source, std::chrono::sys_days other)
{
    return {options.gnss,
            fmt::format("is of {}, but {} of {}", DateText(is), source, DateText(other))};
}

Midnights MidnightsOf(const MergeOptions& options, const ReceiverLog& receiver, const PoseLog& pose)
{
    LogStart start = receiver.Start().value_or(pose.Start());
    if (!options.date.empty()) {
        const auto date = DateIn(options.date);
        if (start.day && *start.day != date) throw OtherDay(options, *start.day, "--date", date);
        start.day = date;
    }
    const auto days = DaysBetween(start, pose.Start());
    if (!days) throw OtherDay(options, *start.day, options.pose, *pose.Start().day);

    Midnights midnights;
    midnights.receiver = std::max(0, *days) * kDay;
    midnights.pose = std::max(0, -*days) * kDay;
    midnights.receivers = start.day;
    if (!start.day && pose.Start().day)
        midnights.receivers = *pose.Start().day + std::chrono::days(*days);
    if (midnights.receivers) {
        const double day = static_cast<double>(midnights.receivers->time_since_epoch().count());
        midnights.unix = kDay * day - midnights.receiver;
    }
    return midnights;
}

// Epochs in the order of their time, of the day on which the log begins.
class EpochOrder
{
public:
    EpochOrder(const MergeOptions& options, const ReceiverLog& receiver, const Midnights& midnights)
        : m_options(options), m_first(midnights.receivers)
    {
        if (const auto start = receiver.Start()) m_days.Next({start->timeOfDay, false});
    }

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
        if (!epoch.date || !m_first) return;
        const auto expected = *m_first + std::chrono::days(static_cast<int>(seconds / kDay));
        if (*epoch.date != expected)
            throw tables::InputError(
                m_options.gnss, fmt::format("its time {} is of {}, where {} is expected", epoch.utc,
                                            DateText(*epoch.date), DateText(expected)));
    }

private:
    const MergeOptions& m_options;
    std::optional<std::chrono::sys_days> m_first; // day of the log's start
    std::optional<double> m_last;                 // since the first midnight [s]
    DayCounter m_days;
};

int Run(const MergeOptions& options)
{
    constexpr double kLeapSeconds = 18.0; // GPS time ahead of UTC since 2017
    tables::KeepApart({options.out}, {options.gnss, options.pose, options.pole.config});
    field::Setup setup = MergeSetup(options);
    ReceiverLog receiver(options.gnss);
    PoseLog pose(options.pose, options.clock == "pose:gps" ? kLeapSeconds : 0.0);
    const Midnights midnights = MidnightsOf(options, receiver, pose);
    setup.started = midnights.unix;

    field::Bridge bridge(setup);
    live::Feed feed(bridge);
    tables::Output out(options.out);
    out.Write(kHeader);
    std::uint64_t tips = 0;
    EpochOrder order(options, receiver, midnights);
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
        const double poseSeconds = midnights.pose + pose.Seconds();
        const double receiverSeconds = midnights.receiver + receiver.Seconds();
        const bool isPose =
            receiver.IsAtEnd() || (!pose.IsAtEnd() && poseSeconds <= receiverSeconds);
        const double seconds = isPose ? poseSeconds : receiverSeconds;
        now = std::max(now, std::chrono::duration_cast<field::Instant>(
                                std::chrono::duration<double>(seconds)));
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
