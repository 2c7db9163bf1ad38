// SPDX-License-Identifier: MIT
//
// What programs of others read from us is what was sent, and what they send is read. They are Debian
// packages that ./dev test installs.
#include "apps/live/Server.h"

#include "tests/apps/live/Peers.h"
#include "tests/apps/live/Process.h"
#include "tests/apps/live/Recorded.h"
#include <cstdlib>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using namespace apps::test;
using field::Report;
using nlohmann::json;

#define REQUIRE_PROGRAM(name)                                                                      \
    if (Find(name).empty()) FAIL() << name << " is not installed; ./dev test installs it"

// Epochs of a pole that stands still, the pose missing in the middle.
const std::vector<Report>& Epochs()
{
    static const std::vector<Report> reports = [] {
        live_pole::Options options;
        options.pose = [](live_pole::PoseFields& pose) {
            pose.send = pose.seconds < 2.0 || pose.seconds > 2.7;
        };
        std::vector<Report> all;
        for (Report& report :
             live_pole::ReportsOf(live_pole::TrackSetup(),
                                  live_pole::RecordsOf(live_pole::StandingTrack(4.0), options)))
            if (!report.nmea.empty()) all.push_back(std::move(report));
        return all;
    }();
    return reports;
}

std::string AllNmea()
{
    std::string all;
    for (const Report& report : Epochs())
        all += report.nmea;
    return all;
}

// Whether the tip of an epoch was sent.
bool IsSent(const Report& report)
{
    return live_pole::FieldOf(live_pole::LineOf(report, "$GNGGA"), 6) == "4";
}

// Degrees of ddmm.mmmmmmm.
double DegreesOf(const std::string& text)
{
    const double value = std::strtod(text.c_str(), nullptr);
    const double whole = std::floor(value / 100.0);
    return whole + (value - 100.0 * whole) / 60.0;
}

double SentLatitude(const Report& report)
{
    return DegreesOf(live_pole::FieldOf(live_pole::LineOf(report, "$GNGGA"), 2));
}

TEST(Counterparts, EpochsHaveTipsAndBlockedStates)
{
    const auto& reports = Epochs();
    EXPECT_GT(std::ranges::count_if(reports, IsSent), 20);
    EXPECT_GT(std::ranges::count_if(reports, [](const Report& r) { return !IsSent(r); }), 3);
}

// A server that sends the epochs, as fast as its clients take them, once somebody is there.
class Feeder
{
public:
    explicit Feeder(live::Loop& loop)
        : m_loop(loop),
          m_server(loop, *live::ParseSink("tcp:0").endpoint, {{}, {}, [](const std::string&) {}})
    {}
    std::string Port() const { return std::to_string(m_server.Port()); }
    bool HasClient() const { return m_server.Clients() > 0; }
    void Start(live::Instant period)
    {
        m_timer = m_loop.Every(period, [this] {
            if (m_next == Epochs().size()) return;
            m_server.Send(std::make_shared<const std::string>(Epochs()[m_next++].nmea));
        });
    }
    bool IsAtEnd() const { return m_next == Epochs().size(); }

private:
    live::Loop& m_loop;
    live::Server m_server;
    std::unique_ptr<live::Timer> m_timer;
    std::size_t m_next = 0;
};

TEST(Counterparts, SocatReadsEveryByte)
{
    REQUIRE_PROGRAM("socat");
    const ScratchFolder folder;
    live::Loop loop;
    Feeder feeder(loop);
    const Process socat({"socat", "-u", "TCP:127.0.0.1:" + feeder.Port(), "-"}, folder.Path("out"));
    ASSERT_TRUE(RunUntil(loop, [&] { return feeder.HasClient(); }));
    feeder.Start(1ms);
    EXPECT_TRUE(RunUntil(loop, [&] { return folder.Read("out") == AllNmea(); }));
}

TEST(Counterparts, AStreamServerPassesEveryEpochOn)
{
    REQUIRE_PROGRAM("str2str");
    const ScratchFolder folder;
    live::Loop loop;
    Feeder feeder(loop);
    const Process relay({"str2str", "-in", "tcpcli://127.0.0.1:" + feeder.Port(), "-out",
                         "file://" + folder.Path("relayed")},
                        folder.Path("out"));
    ASSERT_TRUE(RunUntil(loop, [&] { return feeder.HasClient(); }));
    feeder.Start(5ms);
    EXPECT_TRUE(RunUntil(loop, [&] { return folder.Read("relayed") == AllNmea(); }));
}

// TPV reports of gpsd, by time.
std::vector<json> ReportsOfGpsd(const std::string& text)
{
    std::vector<json> reports;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        json object = json::parse(line, nullptr, false);
        if (object.is_object() && object.value("class", "") == "TPV")
            reports.push_back(std::move(object));
    }
    return reports;
}

std::uint16_t FreePort()
{
    const live::Opened free = live::ListenTcp("127.0.0.1", 0);
    return live::PortOf(free.descriptor.Get());
}

TEST(Counterparts, GpsdShowsTheTipAndNoneWhileItIsBlocked)
{
    REQUIRE_PROGRAM("gpsd");
    REQUIRE_PROGRAM("gpspipe");
    const ScratchFolder folder;
    live::Loop loop;
    Feeder feeder(loop);
    const std::string port = std::to_string(FreePort());
    const Process gpsd({"gpsd", "-N", "-n", "-S", port, "tcp://127.0.0.1:" + feeder.Port()},
                       folder.Path("gpsd"));
    ASSERT_TRUE(RunUntil(loop, [&] { return feeder.HasClient(); }));
    const Process pipe({"gpspipe", "-w", "127.0.0.1:" + port}, folder.Path("out"));
    ASSERT_TRUE(
        RunUntil(loop, [&] { return folder.Read("out").find("WATCH") != std::string::npos; }));
    feeder.Start(10ms);
    ASSERT_TRUE(RunUntil(loop, [&] { return feeder.IsAtEnd(); }));
    RunUntil(
        loop, [&] { return ReportsOfGpsd(folder.Read("out")).size() + 3 >= Epochs().size(); }, 3s);

    std::size_t shown = 0;
    for (const json& tpv : ReportsOfGpsd(folder.Read("out"))) {
        if (!tpv.contains("time")) continue;
        const std::string time = tpv["time"]; // 2026-11-22T13:07:58.100Z
        const std::string utc = time.substr(11, 2) + time.substr(14, 2) + time.substr(17, 5);
        for (const Report& report : Epochs()) {
            if (report.epoch.utc != utc) continue;
            if (IsSent(report)) {
                EXPECT_NEAR(tpv.value("lat", 0.0), SentLatitude(report), 1e-9) << tpv;
                ++shown;
            } else {
                EXPECT_LE(tpv.value("mode", 0), 1) << tpv;
            }
        }
    }
    EXPECT_GT(shown, 15U);
}

// Plan distances of the tips in what an app got [m].
std::vector<double> TipErrors(const std::string& nmea)
{
    std::vector<double> errors;
    std::istringstream lines(nmea);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("$GNGGA") || live_pole::FieldOf(line, 2).empty()) continue;
        field::Geodetic place = live_pole::kTip;
        place.latitude = live_pole::DegreesOf(line, 2);
        place.longitude = live_pole::DegreesOf(line, 4);
        const xyhCoordinate d = field::Difference(live_pole::kTip, place);
        errors.push_back(std::hypot(d.x, d.y));
    }
    return errors;
}

TEST(Counterparts, GpsdAsTheReceiverGivesTheTip)
{
    REQUIRE_PROGRAM("gpsd");
    const ScratchFolder folder;
    live::Loop loop;
    live::Server receiver(loop, *live::ParseSink("tcp:0").endpoint, {{}, {}, [](auto&) {}});
    Device imu(folder.Path("imu"));
    const std::string port = std::to_string(FreePort());
    const Process gpsd(
        {"gpsd", "-N", "-n", "-S", port, "tcp://127.0.0.1:" + std::to_string(receiver.Port())},
        folder.Path("gpsd"));
    ASSERT_TRUE(RunUntil(loop, [&] { return receiver.Clients() > 0; }));
    const Process program(
        Joined({TILTPOLE_PROGRAM, "live", "--gnss", "gpsd:127.0.0.1:" + port, "--pose",
                "serial:" + folder.Path("imu") + ":115200", "--serve", "pty:" + folder.Path("app")},
               PoleOptions(ParameterFile(folder))),
        "/dev/null", folder.Path("errors"));
    ASSERT_TRUE(RunUntil(loop, [&] { return live::HasReader(imu->Get()); }));
    const live::Opened app = live::OpenSerial(folder.Path("app"), 115200);
    ASSERT_TRUE(app.descriptor.IsOpen()) << app.problem;
    Peer reader(live::Descriptor(dup(app.descriptor.Get())));

    const auto records = live_pole::RecordsOf(live_pole::StandingTrack(30.0));
    std::size_t next = 0;
    const live::Instant start = loop.Now() - records[0].at;
    const auto feeder = loop.Every(2ms, [&] {
        for (; next < records.size() && records[next].at <= loop.Now() - start; ++next) {
            const field::Record& record = records[next];
            if (record.channel == field::Channel::Pose)
                imu->Write(record.bytes);
            else
                receiver.Send(std::make_shared<const std::string>(record.bytes));
        }
    });
    EXPECT_TRUE(RunUntil(
        loop, [&] { return TipErrors(reader.Read()).size() >= 10; }, 20s))
        << folder.Read("errors") << reader.Read();
    for (const double error : TipErrors(reader.Read()))
        EXPECT_LT(error, 0.05); // the antenna is 0.25 m away
}

TEST(Counterparts, ReadersOfFilesFindWhatWasSent)
{
    REQUIRE_PROGRAM("python3");
    const ScratchFolder folder;
    folder.Write("sent.nmea", AllNmea());
    folder.Write("read.py", "import sys\n"
                            "try:\n    import pynmea2\n"
                            "except ImportError:\n    sys.exit(3)\n"
                            "for line in open(sys.argv[1], newline='\\r\\n'):\n"
                            "    m = pynmea2.parse(line.strip(), check=True)\n"
                            "    if getattr(m, 'sentence_type', '') == 'GGA':\n"
                            "        print(m.data[0], '%.12f' % m.latitude, m.gps_qual)\n");
    live::Loop loop;
    Process python({"python3", folder.Path("read.py"), folder.Path("sent.nmea")},
                   folder.Path("out"));
    ASSERT_TRUE(RunUntil(loop, [&] { return python.HasEnded(); }));
    if (python.ExitCode() == 3) FAIL() << "pynmea2 is not installed; ./dev test installs it";
    ASSERT_EQ(python.ExitCode(), 0);
    std::istringstream lines(folder.Read("out"));
    for (const Report& report : Epochs()) {
        std::string utc, latitude, quality;
        ASSERT_TRUE(lines >> utc >> latitude >> quality);
        EXPECT_EQ(utc, report.epoch.utc);
        EXPECT_EQ(quality == "4", IsSent(report)) << utc;
        if (IsSent(report)) {
            EXPECT_NEAR(std::stod(latitude), SentLatitude(report), 1e-9) << utc;
        }
    }
}

TEST(Counterparts, GpsbabelConvertsEveryTip)
{
    REQUIRE_PROGRAM("gpsbabel");
    const ScratchFolder folder;
    folder.Write("sent.nmea", AllNmea());
    live::Loop loop;
    Process gpsbabel({"gpsbabel", "-t", "-i", "nmea", "-f", folder.Path("sent.nmea"), "-o",
                      "unicsv,utc=0,format=0", "-F", folder.Path("out.csv")},
                     folder.Path("out"));
    ASSERT_TRUE(RunUntil(loop, [&] { return gpsbabel.HasEnded(); }));
    ASSERT_EQ(gpsbabel.ExitCode(), 0);
    std::vector<double> latitudes;
    std::istringstream rows(folder.Read("out.csv"));
    std::string row;
    std::getline(rows, row);
    while (std::getline(rows, row)) {
        const std::size_t comma = row.find(',');
        latitudes.push_back(std::strtod(row.c_str() + comma + 1, nullptr));
    }
    std::vector<double> sent;
    for (const Report& report : Epochs())
        if (IsSent(report)) sent.push_back(SentLatitude(report));
    ASSERT_EQ(latitudes.size(), sent.size());
    for (std::size_t i = 0; i < sent.size(); ++i)
        EXPECT_NEAR(latitudes[i], sent[i], 1e-6); // as many digits as it writes
}

} // namespace
