// SPDX-License-Identifier: MIT
#include "apps/live/Server.h"

#include "apps/live/Sink.h"
#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include "tests/apps/live/Peers.h"
#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <ifaddrs.h>
#include <iostream>
#include <net/if.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/stat.h>
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

// Goes without a farewell: what is sent to it is refused.
void Reset(Peer& peer)
{
    const linger atOnce{1, 0};
    EXPECT_EQ(setsockopt(peer.Get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce), 0);
    peer.Close();
}

TEST(Server, LosesAClientThatIsResetWhileAnEpochIsSent)
{
    live::Loop loop;
    Served s(loop);
    Peer lost = s.Connect(loop);
    Peer stays = s.Connect(loop);
    Reset(lost);
    EXPECT_TRUE(RunUntil(loop, [&] {
        s.server.Send(Epoch("$1\r\n"));
        return s.server.Clients() == 1;
    }));
    EXPECT_THAT(s.events, testing::EndsWith("127.0.0.1 was lost\n"));
    EXPECT_TRUE(RunUntil(loop, [&] { return stays.Read().starts_with("$1\r\n"); }));
}

TEST(Server, LosesAClientThatIsResetWhileItIsSlow)
{
    live::Loop loop;
    Served s(loop);
    Peer slow = s.Connect(loop);
    for (int i = 0; i < 20000 && s.server.Dropped() == 0; ++i)
        s.server.Send(Epoch(Numbered(i)));
    ASSERT_GT(s.server.Dropped(), 0U) << "the client never fell behind";
    Reset(slow);
    EXPECT_TRUE(RunUntil(loop, [&] { return s.server.Clients() == 0; }));
    EXPECT_THAT(s.events, testing::EndsWith("127.0.0.1 was lost\n"));
}

TEST(Server, RefusesAnyNumberAtATimeBeyondEight)
{
    live::Loop loop;
    Served s(loop);
    std::vector<Peer> peers; // more than are accepted at a time
    for (int i = 0; i < 17; ++i)
        peers.push_back(Peer::ConnectedTo(s.server.Port()));
    EXPECT_TRUE(RunUntil(loop, [&] { return std::ranges::count_if(peers, &Peer::IsAtEnd) == 9; }));
    EXPECT_EQ(s.server.Clients(), 8U);
    s.server.Send(Epoch("$1\r\n"));
    EXPECT_TRUE(RunUntil(loop, [&] {
        return std::ranges::count_if(peers, [](Peer& peer) { return peer.Read() == "$1\r\n"; })
               == 8;
    }));
}

// An address of this computer that others know; empty where it has none.
std::string OuterAddress()
{
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) != 0) return "";
    std::string found;
    for (const ifaddrs* one = all; one && found.empty(); one = one->ifa_next) {
        if (!one->ifa_addr || one->ifa_addr->sa_family != AF_INET) continue;
        if ((one->ifa_flags & (IFF_LOOPBACK | IFF_UP)) != IFF_UP) continue;
        char text[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(one->ifa_addr)->sin_addr, text,
                  sizeof text);
        found = text;
    }
    freeifaddrs(all);
    return found;
}

TEST(Server, RefusesAClientThatIsNotAllowed)
{
    const std::string outer = OuterAddress();
    if (outer.empty()) GTEST_SKIP() << "this computer has no address but that of itself";
    live::Loop loop;
    std::string events;
    live::Server::Setup setup;
    setup.allowed = {live::ParseRange("2001:db8::/32").range.value()};
    setup.onEvent = [&](const std::string& event) { events += event + '\n'; };
    const live::Server server(loop, Named("tcp:" + outer + ":0"), std::move(setup));
    Peer other(std::move(live::BeginConnect(outer, server.Port()).descriptor));
    EXPECT_TRUE(RunUntil(loop, [&] { return other.IsAtEnd(); }));
    EXPECT_EQ(server.Clients(), 0U);
    EXPECT_EQ(events, outer + " was refused: it is not in --allow\n");
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

TEST(Sink, OfUdpSendsAgainWhereNobodyWasThereBefore)
{
    live::Loop loop;
    std::uint16_t port = 0;
    {
        const live::Opened gone = live::BindUdp("127.0.0.1", 0);
        port = live::PortOf(gone.descriptor.Get());
    }
    std::string events;
    const auto sink =
        live::MakeSink(loop, Named("udp:127.0.0.1:" + std::to_string(port)), Quiet(events));
    sink->Send(Epoch("$nobody is there\r\n"));
    const live::Opened receiver = live::BindUdp("127.0.0.1", port);
    ASSERT_TRUE(receiver.descriptor.IsOpen()) << receiver.problem;
    sink->Send(Epoch("$1\r\n")); // the system refuses it for the one before
    char block[100];
    EXPECT_EQ(read(receiver.descriptor.Get(), block, sizeof block), 4);
    EXPECT_EQ(sink->Dropped(), 0U);
    EXPECT_EQ(sink->Clients(), 0U) << "nobody is connected by a datagram";
}

TEST(Sink, OfUdpCountsAnEpochThatNoDatagramHolds)
{
    live::Loop loop;
    const live::Opened receiver = live::BindUdp("127.0.0.1", 0);
    const std::string port = std::to_string(live::PortOf(receiver.descriptor.Get()));
    std::string events;
    const auto sink = live::MakeSink(loop, Named("udp:127.0.0.1:" + port), Quiet(events));
    sink->Send(Epoch(std::string(70000, 'x')));
    EXPECT_EQ(sink->Dropped(), 1U);
    sink->Send(Epoch("$1\r\n"));
    char block[100];
    EXPECT_EQ(read(receiver.descriptor.Get(), block, sizeof block), 4);
}

TEST(Sink, OfAPtyReadsUpstreamBytesBeyondWhatIsAgreedAndDropsThem)
{
    for (const bool isAsked : {false, true}) {
        const ScratchFolder folder;
        live::Loop loop;
        std::string events;
        std::string upstream;
        live::Server::Setup setup = Quiet(events);
        if (isAsked)
            setup.makeUpstream = [&upstream] {
                return [&upstream](std::string_view bytes) { upstream += bytes; };
            };
        const std::string link = folder.Path("pole");
        const auto sink = live::MakeSink(loop, Named("pty:" + link), setup);
        Peer app(live::Descriptor(open(link.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)));
        sink->Send(Epoch("$1\r\n"));
        // Far more than a terminal holds: all of it goes only where it is read.
        const std::string sent(100000, 'r');
        std::size_t taken = 0;
        EXPECT_TRUE(RunUntil(loop, [&] {
            taken += app.Write(std::string_view(sent).substr(taken));
            return taken == sent.size();
        })) << taken;
        EXPECT_EQ(upstream.size() >= 4096, isAsked);
        EXPECT_LT(upstream.size(), sent.size());
        EXPECT_EQ(app.Read(), "$1\r\n");
    }
}

// A named pipe with somebody who has it open to read.
struct NamedPipe
{
    explicit NamedPipe(const ScratchFolder& folder) : path(folder.Path("pipe"))
    {
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        reader = Peer(live::Descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)));
    }
    std::string path;
    Peer reader;
};

TEST(Sink, OfANamedPipeThatIsNotReadMissesWholeEpochsOnly)
{
    const ScratchFolder folder;
    NamedPipe pipe(folder);
    live::Loop loop;
    std::string events;
    const auto sink = live::MakeSink(loop, Named("file:" + pipe.path), Quiet(events));
    std::string last;
    for (int i = 0; sink->Dropped() < 3; ++i) {
        ASSERT_LT(i, 10000);
        last = std::to_string(i) + std::string(3000, 'x') + "\r\n";
        sink->Send(Epoch(last));
    }
    pipe.reader.Read();
    sink->Send(Epoch("$\r\n"));
    const std::string& all = pipe.reader.Read();
    EXPECT_TRUE(all.ends_with(last + "$\r\n")) << all.substr(all.size() - 100);
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line) && line != "$\r";)
        EXPECT_EQ(line, std::to_string(std::stoi(line)) + std::string(3000, 'x') + "\r");
    EXPECT_EQ(sink->Clients(), 0U);
}

TEST(Sink, WhoseReaderHasGoneEndsWithAnEvent)
{
    const ScratchFolder folder;
    NamedPipe pipe(folder);
    live::Loop loop;
    std::string events;
    const auto before = std::signal(SIGPIPE, SIG_IGN); // as the program does
    const auto sink = live::MakeSink(loop, Named("file:" + pipe.path), Quiet(events));
    sink->Send(Epoch("$1\r\n"));
    EXPECT_EQ(pipe.reader.Read(), "$1\r\n");
    pipe.reader.Close();
    sink->Send(Epoch("$2\r\n"));
    sink->Send(Epoch("$3\r\n"));
    std::signal(SIGPIPE, before);
    EXPECT_EQ(events, "file " + pipe.path + " ends: Broken pipe\n");
}

TEST(Sink, OfStandardOutputEndsTheProgramWithItsReaderAndNamesAFullDisk)
{
    const ScratchFolder folder;
    live::Loop loop;
    std::string events;
    const auto sinkTo = [&](int descriptor) { // it keeps a copy of its own
        std::cout.flush();
        std::fflush(stdout);
        const live::Descriptor before(dup(STDOUT_FILENO));
        dup2(descriptor, STDOUT_FILENO);
        auto sink = live::MakeSink(loop, Named("-"), Quiet(events));
        dup2(before.Get(), STDOUT_FILENO);
        return sink;
    };
    const live::Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    sinkTo(full.Get())->Send(Epoch("$1\r\n"));
    EXPECT_EQ(events, "standard output ends: No space left on device\n");

    int both[2] = {-1, -1};
    ASSERT_EQ(pipe2(both, O_CLOEXEC), 0);
    live::Descriptor reader(both[0]);
    const live::Descriptor writer(both[1]);
    const auto sink = sinkTo(writer.Get());
    reader.Close();
    const auto before = std::signal(SIGPIPE, SIG_IGN); // as the program does
    EXPECT_THROW(sink->Send(Epoch("$1\r\n")), tables::OutputClosed);
    std::signal(SIGPIPE, before);
}

} // namespace
