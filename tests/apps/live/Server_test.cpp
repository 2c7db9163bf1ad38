// SPDX-License-Identifier: MIT
#include "apps/live/Server.h"

#include "apps/live/Sink.h"
#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include "tests/apps/live/Peers.h"
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sstream>
#include <unistd.h>

namespace {

using apps::test::Peer;
using apps::test::ReadAll;
using apps::test::RunFor;
using apps::test::RunUntil;
using apps::test::ScratchFolder;
using testing::HasSubstr;
using namespace std::chrono_literals;

std::shared_ptr<const std::string> Epoch(const std::string& text)
{
    return std::make_shared<const std::string>(text);
}

live::Endpoint Named(const std::string& text)
{
    const auto parsed = live::ParseSink(text);
    EXPECT_TRUE(parsed.endpoint) << parsed.problem;
    return parsed.endpoint.value_or(live::Endpoint{});
}

// A server on a free port of this computer.
struct Served
{
    explicit Served(live::Loop& loop, live::Server::Setup setup = {})
        : server(loop, Named("tcp:0"), WithEvents(std::move(setup)))
    {}
    live::Server::Setup WithEvents(live::Server::Setup setup)
    {
        setup.onEvent = [this](const std::string& event) { events += event + '\n'; };
        return setup;
    }
    Peer Connect(live::Loop& loop)
    {
        const std::size_t before = server.Clients();
        Peer peer = Peer::ConnectedTo(server.Port());
        EXPECT_TRUE(RunUntil(loop, [&] { return server.Clients() > before; }));
        return peer;
    }
    std::string events;
    live::Server server;
};

TEST(Server, SendsEveryEpochToEveryClient)
{
    live::Loop loop;
    Served s(loop);
    Peer a = s.Connect(loop);
    s.server.Send(Epoch("$1\r\n"));
    Peer b = s.Connect(loop);
    s.server.Send(Epoch("$2\r\n"));
    EXPECT_TRUE(RunUntil(loop, [&] { return a.Read() == "$1\r\n$2\r\n"; }));
    EXPECT_TRUE(RunUntil(loop, [&] { return b.Read() == "$2\r\n"; }));
    a.Close();
    EXPECT_TRUE(RunUntil(loop, [&] { return s.server.Clients() == 1; }));
    EXPECT_THAT(s.events, HasSubstr("127.0.0.1 has gone"));
}

TEST(Server, AdmitsNoMoreThanEightClients)
{
    live::Loop loop;
    Served s(loop);
    std::vector<Peer> peers;
    for (int i = 0; i < 8; ++i)
        peers.push_back(s.Connect(loop));
    Peer ninth = Peer::ConnectedTo(s.server.Port());
    EXPECT_TRUE(RunUntil(loop, [&] { return ninth.IsAtEnd(); }));
    EXPECT_EQ(s.server.Clients(), 8U);
    EXPECT_THAT(s.events, HasSubstr("was refused: 8 clients are connected already"));
    peers.front().Close();
    ASSERT_TRUE(RunUntil(loop, [&] { return s.server.Clients() == 7; }));
    s.Connect(loop);
    EXPECT_EQ(s.server.Clients(), 8U);
}

// An epoch with its number in every line, so that a part of one is seen.
std::string Numbered(int number)
{
    std::string epoch;
    for (int line = 0; line < 8; ++line)
        epoch += '$' + std::to_string(number) + std::string(80, 'x') + "\r\n";
    return epoch;
}

TEST(Server, LetsASlowClientMissWholeEpochsAndNoOtherWait)
{
    constexpr int kEpochs = 20000;
    live::Loop loop;
    Served s(loop);
    Peer slow = s.Connect(loop);
    Peer quick = s.Connect(loop);
    std::string expected;
    int number = 0;
    // The slow client reads nothing while the quick one reads every epoch.
    while (number < kEpochs && s.server.Dropped() < 100) {
        const std::string epoch = Numbered(number++);
        expected += epoch;
        s.server.Send(Epoch(epoch));
        ASSERT_TRUE(RunUntil(loop, [&] { return quick.Read().size() == expected.size(); }));
    }
    ASSERT_GE(s.server.Dropped(), 100U) << "the slow client never fell behind";
    EXPECT_TRUE(quick.Read() == expected);

    // What it reads in the end: whole epochs in order, the last two without a gap, and no others.
    const std::string last = Numbered(number - 2) + Numbered(number - 1);
    ASSERT_TRUE(RunUntil(loop, [&] { return slow.Read().ends_with(last); }));
    std::string_view rest = slow.Read();
    int epochs = 0;
    for (int i = 0; i < number && !rest.empty(); ++i) {
        const std::string epoch = Numbered(i);
        if (!rest.starts_with(epoch)) continue;
        rest.remove_prefix(epoch.size());
        ++epochs;
    }
    EXPECT_TRUE(rest.empty()) << rest.substr(0, 100);
    EXPECT_EQ(static_cast<std::uint64_t>(epochs) + s.server.Dropped(),
              static_cast<std::uint64_t>(number));
}

TEST(Server, GivesUpstreamBytesToWhoeverAskedAndNoFasterThanAgreed)
{
    live::Loop loop;
    std::string upstream;
    live::Server::Setup setup;
    setup.makeUpstream = [&] { return [&](std::string_view bytes) { upstream += bytes; }; };
    Served s(loop, std::move(setup));
    Peer peer = s.Connect(loop);
    const std::string sent(6000, 'r');
    const auto start = loop.Now();
    ASSERT_EQ(peer.Write(sent), sent.size());
    ASSERT_TRUE(RunUntil(loop, [&] { return upstream.size() == sent.size(); }));
    const double least = (6000.0 - 4096.0) / 4096.0; // s after the first 4 KiB
    EXPECT_GE(loop.Now() - start, std::chrono::duration<double>(0.9 * least));
    EXPECT_EQ(upstream, sent);
}

TEST(Server, DropsUpstreamBytesThatNobodyAskedFor)
{
    live::Loop loop;
    Served s(loop);
    Peer peer = s.Connect(loop);
    peer.Write("?WATCH={\"enable\":true}\n");
    RunFor(loop, 20ms);
    s.server.Send(Epoch("$1\r\n"));
    EXPECT_TRUE(RunUntil(loop, [&] { return peer.Read() == "$1\r\n"; }));
}

TEST(Server, NamesThePortThatIsTaken)
{
    live::Loop loop;
    const Served s(loop);
    try {
        const live::Server second(loop, Named("tcp:" + std::to_string(s.server.Port())),
                                  {{}, {}, [](const std::string&) {}});
        FAIL() << "two servers on one port";
    } catch (const tables::InputError& error) {
        EXPECT_THAT(error.what(), HasSubstr("Address already in use"));
    }
}

live::Server::Setup Quiet(std::string& events)
{
    return {{}, {}, [&](const std::string& event) { events += event + '\n'; }};
}

TEST(Sink, OfUdpSendsADatagramAnEpoch)
{
    live::Loop loop;
    const live::Opened receiver = live::BindUdp("127.0.0.1", 0);
    const std::string port = std::to_string(live::PortOf(receiver.descriptor.Get()));
    std::string events;
    const auto sink = live::MakeSink(loop, Named("udp:127.0.0.1:" + port), Quiet(events));
    sink->Send(Epoch("$1\r\n$2\r\n"));
    sink->Send(Epoch("$3\r\n"));
    char block[100];
    EXPECT_EQ(read(receiver.descriptor.Get(), block, sizeof block), 8);
    EXPECT_EQ(read(receiver.descriptor.Get(), block, sizeof block), 4);
    EXPECT_EQ(sink->Dropped(), 0U);
}

TEST(Sink, OfAPtyServesWhoeverHasItOpenWithFreshEpochs)
{
    const ScratchFolder folder;
    const std::string link = folder.Path("pole");
    live::Loop loop;
    std::string events;
    {
        const auto sink = live::MakeSink(loop, Named("pty:" + link), Quiet(events));
        sink->Send(Epoch("$nobody has it open\r\n"));
        for (int round = 0; round < 2; ++round) {
            Peer app(live::Descriptor(open(link.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)));
            EXPECT_EQ(sink->Clients(), 1U);
            const std::string epoch = "$" + std::to_string(round) + "\r\n\x03\x04\x11\r\n";
            sink->Send(Epoch(epoch));
            EXPECT_TRUE(RunUntil(loop, [&] { return app.Read() == epoch; })) << app.Read();
            app.Write("upstream\n");
            app.Close();
            EXPECT_TRUE(RunUntil(loop, [&] { return sink->Clients() == 0; }));
            sink->Send(Epoch("$nobody has it open any more\r\n"));
        }
    }
    EXPECT_NE(access(link.c_str(), F_OK), 0) << "the link remains";
}

TEST(Sink, OfAPtyGivesUpstreamBytesToWhoeverAskedForThem)
{
    const ScratchFolder folder;
    live::Loop loop;
    std::string events;
    std::string upstream;
    live::Server::Setup setup = Quiet(events);
    setup.makeUpstream = [&upstream] {
        return [&upstream](std::string_view bytes) { upstream += bytes; };
    };
    const auto sink = live::MakeSink(loop, Named("pty:" + folder.Path("pole")), setup);
    Peer app(live::Descriptor(open(folder.Path("pole").c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)));
    sink->Send(Epoch("$1\r\n"));
    const std::string corrections("\xd3\x00\x03\x04\x11\r\n", 7);
    EXPECT_EQ(app.Write(corrections), corrections.size());
    EXPECT_TRUE(RunUntil(loop, [&] { return upstream.size() >= corrections.size(); }));
    EXPECT_EQ(upstream, corrections);
}

TEST(Sink, OfAPtyThatIsNotReadMissesWholeEpochsOnly)
{
    const ScratchFolder folder;
    live::Loop loop;
    std::string events;
    const auto sink = live::MakeSink(loop, Named("pty:" + folder.Path("pole")), Quiet(events));
    Peer app(live::Descriptor(open(folder.Path("pole").c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)));
    const std::string filling(3000, 'x');
    std::string last;
    for (int i = 0; sink->Dropped() < 3; ++i) {
        ASSERT_LT(i, 1000);
        last = std::to_string(i) + filling + "\r\n";
        sink->Send(Epoch(last));
    }
    EXPECT_TRUE(RunUntil(loop, [&] { return app.Read().ends_with(last); }));
    std::istringstream lines(app.Read());
    int before = -1;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(line, std::to_string(std::stoi(line)) + filling + "\r");
        EXPECT_GT(std::stoi(line), before);
        before = std::stoi(line);
    }
    EXPECT_EQ(events, "");
}

TEST(Sink, SaysWhereItServes)
{
    const ScratchFolder folder;
    live::Loop loop;
    std::string events;
    const auto bannerOf = [&](const std::string& name) {
        return live::MakeSink(loop, Named(name), Quiet(events))->Banner();
    };
    EXPECT_THAT(bannerOf("tcp:0"), testing::MatchesRegex("tcp 127.0.0.1:[0-9]+ .this computer "
                                                         "only; tcp:0.0.0.0:[0-9]+ lets others "
                                                         "in."));
    EXPECT_THAT(bannerOf("tcp:0.0.0.0:0"),
                testing::MatchesRegex("tcp 0.0.0.0:[0-9]+ .OTHERS CAN CONNECT."));
    EXPECT_EQ(bannerOf("udp:127.0.0.1:9"), "udp 127.0.0.1:9");
    EXPECT_EQ(bannerOf("udp:[::1]:9"), "udp ::1:9");
    EXPECT_EQ(bannerOf("pty:" + folder.Path("p")), "pty " + folder.Path("p"));
    EXPECT_EQ(bannerOf("file:" + folder.Path("f")), "file " + folder.Path("f"));
    EXPECT_EQ(bannerOf("-"), "standard output");
}

TEST(Sink, OfAPtyTakesThePlaceOfADeadLinkButOfNoFile)
{
    const ScratchFolder folder;
    live::Loop loop;
    std::string events;
    ASSERT_EQ(symlink("/dev/pts/none", folder.Path("dead").c_str()), 0);
    EXPECT_EQ(live::MakeSink(loop, Named("pty:" + folder.Path("dead")), Quiet(events))->Banner(),
              "pty " + folder.Path("dead"));
    const std::string file = folder.Write("file", "mine");
    const std::string link = folder.Path("link");
    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    for (const std::string& taken : {file, link, folder.Path("no folder/pole")})
        EXPECT_THROW(live::MakeSink(loop, Named("pty:" + taken), Quiet(events)), tables::InputError)
            << taken;
    EXPECT_EQ(folder.Read("file"), "mine");
    EXPECT_EQ(access(link.c_str(), F_OK), 0) << "the link of another program is gone";
}

TEST(Sink, OfAFullDiskEndsWithAnEventAndIsNotWrittenAgain)
{
    live::Loop loop;
    std::string events;
    const auto sink = live::MakeSink(loop, Named("file:/dev/full"), Quiet(events));
    sink->Send(Epoch("$1\r\n"));
    sink->Send(Epoch("$2\r\n"));
    EXPECT_EQ(events, "file /dev/full ends: No space left on device\n");
}

TEST(Sink, OfAFileKeepsEveryEpoch)
{
    const ScratchFolder folder;
    live::Loop loop;
    std::string events;
    const auto sink = live::MakeSink(loop, Named("file:" + folder.Path("out")), Quiet(events));
    std::string all;
    for (int i = 0; i < 100; ++i) {
        all += Numbered(i);
        sink->Send(Epoch(Numbered(i)));
    }
    EXPECT_EQ(ReadAll(folder.Path("out")), all);
    EXPECT_EQ(events, "");
}

} // namespace
