// SPDX-License-Identifier: MIT
#include "apps/cli/live/Live.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/live/FindDelay.h"
#include "apps/cli/live/LiveOptions.h"
#include "apps/cli/live/PointKeeper.h"
#include "apps/cli/live/Replay.h"
#include "apps/live/Control.h"
#include "apps/live/Session.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include <filesystem>
#include <memory>
#include <optional>

namespace cli {

namespace {

constexpr const char* kFooter = R"(
Reads a GNSS receiver and a pose sensor, and sends on what the receiver says with the tip of the
pole in place of the antenna: GGA, RMC, GST and GSA, and $PTLTS with the state. Any app that reads
NMEA works with it. Nothing else of the receiver is passed on.

Sources (--gnss, --pose):
  serial:DEV:BAUD  tcp:HOST:PORT  udp:[ADDR:]PORT  gpsd:HOST:PORT  file:PATH[@RATE]  -
Sinks (--serve, --status):
  tcp:[ADDR:]PORT  udp:ADDR:PORT  pty:LINK  file:PATH  -
What listens without an address does so for this computer alone. RATE is in lines a second.
Sources are opened again for ever; a slow client misses whole epochs and delays nobody.

The state of an epoch is STORE, the tip may be stored; WAIT, the pole moves or settles; or BLOCK,
with the reason. A line on standard error tells each change, and a summary ends the run.

With --job FILE points are stored: a line `store NAME [CODE] [NOTE]` on standard input, or on the
socket of --control, averages the last epochs, or takes the tip of the occupation while the pole
moves about it; `store! NAME` stores the last one against the gate and marks it, `undo` declares the
last point void, `ack` confirms another base. A recording holds these lines: --replay with --job
stores the same points again.

Examples:
  tiltpole live --gnss serial:/dev/ttyACM0:460800 --pose serial:/dev/ttyUSB0:115200 \
      --pole 2.0 --apc 0.1165 --config pole.cfg --delay 0.124,0.007 --serve tcp:10110
  tiltpole live --find-delay --seconds 20 --gnss ... --pose ... --pole 2.0 --config pole.cfg
  tiltpole live --replay day.tprec --pole 2.0 --config pole.cfg --json > again.jsonl

Exit codes: 0 done, 1 no epoch was read, or no delay was found, 2 wrong use or unreadable input.)";

void CheckTogether(const LiveOptions& options)
{
    const bool isReplay = !options.replay.empty();
    if (isReplay && !(options.gnss.empty() && options.pose.empty()))
        throw tables::InputError("--replay has its own receiver and pose: leave --gnss and --pose "
                                 "out");
    if (isReplay && !options.record.empty())
        throw tables::InputError("--replay does not record: leave --record out");
    if (isReplay && !options.status.empty())
        throw tables::InputError("--replay has no --status; --json writes the same objects");
    if (isReplay && !options.control.empty())
        throw tables::InputError("--replay takes its requests from the recording: leave --control "
                                 "out");
    if (options.reopen && !options.gnss.starts_with("serial:"))
        throw tables::InputError("--reopen is for a receiver on a serial port");
    if (!isReplay && (options.gnss.empty() || options.pose.empty()))
        throw tables::InputError("--gnss and --pose are both required, or --replay");
    if (!isReplay && options.gnss == "-" && options.pose == "-")
        throw tables::InputError("--gnss and --pose cannot both be standard input");
}

// A file that is named by mistake is told at once; a device may be plugged in later.
void CheckFile(const std::string& option, const live::Endpoint& endpoint)
{
    if (endpoint.kind != live::Endpoint::Kind::File) return;
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(endpoint.name, error);
    if (!std::filesystem::exists(status))
        throw tables::InputError(endpoint.name, "there is no such file for " + option);
    if (std::filesystem::is_directory(status))
        throw tables::InputError(endpoint.name, "is a folder, not a file for " + option);
}

live::SessionSetup SessionSetupOf(const LiveOptions& options)
{
    live::SessionSetup setup;
    setup.pole = SetupOf(options.pole);
    setup.receiver = SourceOf(options.gnss);
    setup.pose = SourceOf(options.pose);
    CheckFile("--gnss", setup.receiver);
    CheckFile("--pose", setup.pose);
    setup.sinks = SinksOf(options.serve);
    setup.status = SinksOf(options.status);
    if (options.json) setup.status.push_back(SinkOf("-"));
    setup.allowed = RangesOf(options.allow);
    if (options.reopen)
        setup.reopen =
            std::chrono::round<field::Instant>(std::chrono::duration<double>(*options.reopen));
    setup.corrections = options.corrections == "clients";
    setup.record = options.record;
    setup.config = options.pole.config;
    setup.poseFormat = PoseFormatName(options.pole);
    int outputs = 0;
    std::vector<std::string> files{options.job, options.record};
    for (const auto* const sinks : {&setup.sinks, &setup.status})
        for (const live::Endpoint& sink : *sinks) {
            if (sink.kind == live::Endpoint::Kind::Standard) ++outputs;
            if (sink.kind == live::Endpoint::Kind::File) files.push_back(sink.name);
        }
    std::vector<std::string> inputs{options.pole.config};
    for (const live::Endpoint* const source : {&setup.receiver, &setup.pose})
        if (source->kind == live::Endpoint::Kind::File) inputs.push_back(source->name);
    tables::KeepApart(files, inputs);
    if (outputs > 1) throw tables::InputError("standard output is asked for twice (-, --json)");
    return setup;
}

int RunFindDelay(const LiveOptions& options)
{
    if (!options.serve.empty() || options.json || !options.status.empty())
        throw tables::InputError("--find-delay prints the delay, and serves nothing");
    if (!options.replay.empty()) return FindDelayInRecording(options);
    live::SessionSetup setup = SessionSetupOf(options);
    return FindDelayLive(setup, options);
}

int RunLive(const LiveOptions& options)
{
    const live::SessionSetup setup = SessionSetupOf(options);
    PointKeeper points(options.job, setup.pole, options.program);
    live::Loop loop;
    live::Session session(loop, setup,
                          {[&](const field::Report& report) { points.Add(report); }, {}});
    const live::Handler answer = [&](std::string_view request) {
        session.Key(request);
        return points.Do(request, [&] { session.Acknowledge(); });
    };
    std::optional<live::KeyReader> keys;
    if (options.gnss != "-" && options.pose != "-") keys.emplace(loop, answer);
    std::optional<live::ControlSocket> control;
    if (!options.control.empty()) control.emplace(loop, options.control, answer);
    loop.OnSignals([&](int) { loop.Stop(); });
    session.Start();
    loop.Run();
    tables::TellText(session.Counters());
    return session.HasEpochs() ? kDone : kNegative;
}

int Run(const LiveOptions& options)
{
    CheckTogether(options);
    if (options.findDelay) return RunFindDelay(options);
    if (!options.replay.empty()) return Replay(options);
    return RunLive(options);
}

void AddConnections(CLI::App& command, LiveOptions& options)
{
    command.add_option("--gnss", options.gnss, "Source of the receiver's NMEA sentences")
        ->type_name("SOURCE")
        ->check(SourceText());
    command.add_option("--pose", options.pose, "Source of the pose sensor")
        ->type_name("SOURCE")
        ->check(SourceText());
    command
        .add_option("--serve", options.serve, "Sink of the tip's NMEA sentences; may be repeated")
        ->type_name("SINK")
        ->check(SinkText());
    command
        .add_option("--status", options.status, "Sink of one JSON object an epoch; may be repeated")
        ->type_name("SINK")
        ->check(SinkText());
    command
        .add_option("--allow", options.allow,
                    "Addresses that may connect, besides this computer; may be repeated")
        ->type_name("ADDRESS/BITS")
        ->check(AddressRangeText());
    command
        .add_option(
            "--corrections", options.corrections,
            "clients: RTCM 3 frames that clients send go to the receiver; nothing else does")
        ->type_name("FROM")
        ->check(CLI::IsMember({"clients"}));
    command
        .add_option("--record", options.record,
                    "File for everything that arrives, for --replay; it must not exist yet")
        ->type_name("FILE");
    command
        .add_option("--replay", options.replay,
                    "A recording instead of --gnss and --pose; the same bytes each time")
        ->type_name("FILE");
    command.add_flag(
        "--find-delay", options.findDelay,
        "Print how much later the receiver tells of a moment than the pose sensor: rock "
        "the pole about its tip on a fixed mark");
    command
        .add_option(
            "--reopen", options.reopen,
            "After how much silence the receiver's serial port is opened again [s]; default "
            "5, 0: never. More than the time between two epochs")
        ->type_name("NUMBER")
        ->check(NumberIn({0.0, 3600.0, "s"}));
    command
        .add_option("--seconds", options.seconds,
                    "How long to look for the delay [s]; default 20, of a recording 60")
        ->type_name("NUMBER")
        ->check(NumberIn({5.0, 60.0, "s"}));
    command
        .add_option("--job", options.job,
                    "Job (GeoPackage) that points are stored in; made where it is not there")
        ->type_name("FILE");
    command
        .add_option(
            "--control", options.control,
            "Unix socket, for this user alone, that takes the same requests as standard input")
        ->type_name("PATH");
    command.add_flag("--json", options.json, "Write one JSON object an epoch to standard output");
}

} // namespace

void AddLiveCommand(CLI::App& program, int& exitCode)
{
    const auto options = std::make_shared<LiveOptions>();
    options->program = program.version();
    CLI::App* const command = program.add_subcommand(
        "live", "Send the tip of a pole on a real receiver to apps that read NMEA.");
    command->footer(kFooter);
    AddConnections(*command, *options);
    AddPoleOptions(*command, options->pole);
    command->callback([options, &exitCode] { exitCode = Run(*options); });
}

} // namespace cli
