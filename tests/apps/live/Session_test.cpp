// SPDX-License-Identifier: MIT
//
// A whole pole on pseudo terminals and sockets of this computer.
#include "apps/live/Session.h"

#include "tests/apps/RunProgram.h"
#include "tests/apps/live/Peers.h"
#include "tests/apps/live/Recorded.h"
#include <gmock/gmock.h>

namespace {

using namespace apps::test;
using field::Channel;
using testing::HasSubstr;

std::uint16_t PortIn(const std::string& banner)
{
    const std::size_t at = banner.find("127.0.0.1:");
    return at == std::string::npos ? std::uint16_t{0}
                                   : static_cast<std::uint16_t>(std::stoi(banner.substr(at + 10)));
}

// Receiver and pose sensor as serial devices, fed at the pace of the records.
class Pole
{
public:
    explicit Pole(live::Loop& loop, std::vector<field::Record> records)
        : m_loop(loop), m_records(std::move(records))
    {
        m_setup.pole = live_pole::TrackSetup();
        m_setup.receiver = *live::ParseSource("serial:" + folder.Path("gnss") + ":115200").endpoint;
        m_setup.pose = *live::ParseSource("serial:" + folder.Path("imu") + ":115200").endpoint;
        m_setup.sinks = {*live::ParseSink("tcp:0").endpoint};
        m_setup.status = {*live::ParseSink("tcp:0").endpoint};
        m_setup.record = folder.Path("day.tprec");
    }

    void Start()
    {
        live::Session::Listeners listeners;
        listeners.onReport = [this](const field::Report& report) { reports.push_back(report); };
        session = std::make_unique<live::Session>(m_loop, m_setup, listeners);
        session->Start();
        ASSERT_TRUE(RunUntil(m_loop, [&] { return m_setup.record.empty() || IsHeard(); }));
        m_start = m_loop.Now();
        m_feeder = m_loop.Every(1ms, [this] { Send(); });
    }

    bool IsAtEnd() const { return m_next == m_records.size(); }
    live::SessionSetup& Setup() { return m_setup; }

    ScratchFolder folder;
    Device gnss{folder.Path("gnss")};
    Device imu{folder.Path("imu")};
    std::vector<field::Report> reports;
    std::unique_ptr<live::Session> session;

private:
    bool IsHeard() { return live::HasReader(gnss->Get()) && live::HasReader(imu->Get()); }

    void Send()
    {
        const live::Instant elapsed = m_loop.Now() - m_start;
        for (; m_next < m_records.size() && m_records[m_next].at - m_records[0].at <= elapsed;
             ++m_next) {
            const field::Record& record = m_records[m_next];
            (record.channel == Channel::Receiver ? gnss : imu)->Write(record.bytes);
        }
    }

    live::Loop& m_loop;
    std::vector<field::Record> m_records;
    live::SessionSetup m_setup;
    std::size_t m_next = 0;
    live::Instant m_start{};
    std::unique_ptr<live::Timer> m_feeder;
};

// The end of the world of a lagging machine: whatever waits has been delivered.
bool RunToEnd(live::Loop& loop, const Pole& pole)
{
    const bool ended = RunUntil(loop, [&] { return pole.IsAtEnd(); });
    RunFor(loop, 250ms);
    return ended;
}

TEST(Session, SendsEveryEpochWithTheTipAndRecordsWhatReplaysToTheSameBytes)
{
    live::Loop loop;
    Pole pole(loop, live_pole::RecordsOf(live_pole::StandingTrack(1.6)));
    pole.Start();
    const auto serving = pole.session->Serving();
    ASSERT_EQ(serving.size(), 2U);
    Peer app = Peer::ConnectedTo(PortIn(serving[0]));
    Peer status = Peer::ConnectedTo(PortIn(serving[1]));
    ASSERT_TRUE(RunToEnd(loop, pole));

    std::string sent;
    int tips = 0;
    for (const field::Report& report : pole.reports) {
        sent += report.nmea;
        tips += report.tip ? 1 : 0;
    }
    EXPECT_EQ(Count(sent, "$GNGGA,"), 15U);
    EXPECT_GT(tips, 10);
    EXPECT_TRUE(sent.ends_with(app.Read())) << "the client did not get what was sent";
    EXPECT_GT(Count(app.Read(), "$GNGGA,"), 12U);
    EXPECT_EQ(Count(status.Read(), "\n"), Count(app.Read(), "$GNGGA,"));
    EXPECT_THAT(status.Read(), HasSubstr("\"tip\":{\"latitude\":47.5"));

    pole.session.reset();
    const std::string config = ParameterFile(pole.folder);
    const Outcome replay = RunProgram(Joined(
        {"live", "--replay", pole.folder.Path("day.tprec"), "--serve", "-"}, PoleOptions(config)));
    EXPECT_EQ(replay.exitCode, 0) << replay.err;
    EXPECT_EQ(replay.out, sent);
}

TEST(Session, IsBackAfterTheReceiverWasUnplugged)
{
    live::Loop loop;
    Pole pole(loop, live_pole::RecordsOf(live_pole::StandingTrack(3.0)));
    pole.Start();
    ASSERT_TRUE(RunUntil(loop, [&] { return pole.reports.size() >= 4; }));
    pole.gnss.Unplug();
    RunFor(loop, 300ms);
    const std::size_t before = pole.reports.size();
    pole.gnss.Plug();
    const auto back = loop.Now();
    ASSERT_TRUE(RunUntil(loop, [&] { return pole.reports.size() >= before + 3; }));
    EXPECT_LT(loop.Now() - back, 3s);
    EXPECT_THAT(pole.folder.Read("day.tprec"), HasSubstr(" K restart receiver\n"));
}

TEST(Session, OpensAPoseSensorThatIsSilentAgainAfterTwoSeconds)
{
    live::Loop loop;
    Pole pole(loop, live_pole::RecordsOf(live_pole::StandingTrack(0.3)));
    pole.Start();
    const auto recording = [&] { return pole.folder.Read("day.tprec"); };
    ASSERT_TRUE(RunUntil(loop, [&] { return pole.IsAtEnd(); }));
    const auto silent = loop.Now();
    ASSERT_TRUE(RunUntil(
        loop, [&] { return Count(recording(), " K restart pose\n") > 0; }, 4s));
    EXPECT_GT(loop.Now() - silent, 1500ms);
    EXPECT_EQ(Count(recording(), " K restart receiver\n"), 0U);
}

std::size_t ReopenedWithin(live::Instant time, live::Instant reopen)
{
    live::Loop loop;
    Pole pole(loop, live_pole::RecordsOf(live_pole::StandingTrack(0.3)));
    pole.Setup().reopen = reopen;
    pole.Start();
    RunFor(loop, time);
    return Count(pole.folder.Read("day.tprec"), " K restart receiver\n");
}

TEST(Session, OpensTheReceiversPortAgainAfterTheSilenceThatIsAskedForOrNever)
{
    EXPECT_GT(ReopenedWithin(2s, 400ms), 1U);
    EXPECT_EQ(ReopenedWithin(live::Source::kSilence + 1s, 0s), 0U);
}

TEST(Session, GivesCorrectionsOfClientsToTheReceiverAndNothingElse)
{
    live::Loop loop;
    Pole pole(loop, live_pole::RecordsOf(live_pole::StandingTrack(0.3)));
    pole.Setup().corrections = true;
    pole.Start();
    Peer app = Peer::ConnectedTo(PortIn(pole.session->Serving()[0]));
    // A frame of message 1005 as its standard prints it: length 19, CRC 36 4B 98 of this content.
    const std::string frame("\xD3\x00\x13\x3E\xD7\xD3\x02\x02\x98\x0E\xDE\xEF\x34\xB4\xBD\x62\xAC"
                            "\x09\x41\x98\x6F\x33\x36\x0B\x98",
                            25);
    app.Write("?WATCH={\"enable\":true};\n" + frame + "\xB5\x62probe" + frame);
    ASSERT_TRUE(RunUntil(loop, [&] { return pole.gnss->Read().size() >= 2 * frame.size(); }));
    RunFor(loop, 50ms);
    EXPECT_EQ(pole.gnss->Read(), frame + frame);
    EXPECT_EQ(pole.imu->Read(), "");
}

TEST(Session, DropsWhatClientsSendUnlessCorrectionsAreWanted)
{
    live::Loop loop;
    Pole pole(loop, live_pole::RecordsOf(live_pole::StandingTrack(0.3)));
    pole.Start();
    Peer app = Peer::ConnectedTo(PortIn(pole.session->Serving()[0]));
    app.Write(std::string("\xD3\x00\x00\x47\xEA\x4B", 6));
    ASSERT_TRUE(RunToEnd(loop, pole));
    EXPECT_EQ(pole.gnss->Read(), "");
}

} // namespace
