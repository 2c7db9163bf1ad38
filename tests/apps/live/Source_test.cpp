// SPDX-License-Identifier: MIT
#include "apps/live/Source.h"

#include "tests/apps/ScratchFile.h"
#include "tests/apps/live/Peers.h"
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace {

using apps::test::Device;
using apps::test::Peer;
using apps::test::RunUntil;
using apps::test::ScratchFolder;
using testing::HasSubstr;
using namespace std::chrono_literals;

// What a source has said so far.
struct Heard
{
    std::string bytes;
    std::string events;
    int connections = 0;
    bool isEnded = false;

    live::Source::Events Events()
    {
        return {[this](std::string_view more) { bytes += more; },
                [this](const std::string& event) { events += event + '\n'; },
                [this] { ++connections; }, [this] { isEnded = true; }};
    }
};

live::Endpoint Named(const std::string& text)
{
    const auto parsed = live::ParseSource(text);
    EXPECT_TRUE(parsed.endpoint) << parsed.problem;
    return parsed.endpoint.value_or(live::Endpoint{});
}

// A source that has been started, and what it says.
struct Started
{
    Started(live::Loop& loop, const std::string& text, std::string greeting = {})
        : source(loop, Named(text), heard.Events(), std::move(greeting))
    {
        source.Start();
    }
    Heard heard;
    live::Source source;
};

struct Listener
{
    live::Descriptor descriptor = std::move(live::ListenTcp("127.0.0.1", 0).descriptor);
    std::string Source() const
    {
        return "tcp:127.0.0.1:" + std::to_string(live::PortOf(descriptor.Get()));
    }
    bool HasCaller()
    {
        live::Accepted accepted = live::Accept(descriptor.Get());
        if (!accepted.descriptor.IsOpen()) return false;
        peer = Peer(std::move(accepted.descriptor));
        return true;
    }
    Peer peer;
};

TEST(Source, OfAFileReadsAllAndEnds)
{
    const ScratchFolder folder;
    std::string lines;
    for (int i = 0; i < 20000; ++i)
        lines += "line " + std::to_string(i) + "\r\n";
    std::ofstream(folder.Path("log")) << lines;
    live::Loop loop;
    const Started s(loop, "file:" + folder.Path("log"));
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.isEnded; }));
    EXPECT_TRUE(s.heard.bytes == lines);
    EXPECT_EQ(s.heard.events, "");
}

TEST(Source, OfAFileKeepsToItsRate)
{
    const ScratchFolder folder;
    std::ofstream(folder.Path("log")) << "1\n2\n3\n4\n5\n6\n7\n8\n9\n10";
    live::Loop loop;
    const auto start = loop.Now();
    const Started s(loop, "file:" + folder.Path("log") + "@50");
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.isEnded; }));
    EXPECT_EQ(s.heard.bytes, "1\n2\n3\n4\n5\n6\n7\n8\n9\n10");
    EXPECT_GE(loop.Now() - start, 180ms); // the tenth line comes 9/50 s after the first
}

TEST(Source, OfTcpIsConnectedAgain)
{
    live::Loop loop;
    Listener listener;
    const Started s(loop, listener.Source(), "hello\n");
    ASSERT_TRUE(RunUntil(loop, [&] { return listener.HasCaller(); }));
    listener.peer.Write("$one");
    ASSERT_TRUE(RunUntil(loop, [&] { return s.heard.bytes == "$one"; }));
    ASSERT_TRUE(RunUntil(loop, [&] { return listener.peer.Read() == "hello\n"; }));
    listener.peer.Close();
    ASSERT_TRUE(RunUntil(loop, [&] { return listener.HasCaller(); }));
    listener.peer.Write("$two");
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.bytes == "$one$two"; }));
    EXPECT_TRUE(RunUntil(loop, [&] { return listener.peer.Read() == "hello\n"; }));
    EXPECT_EQ(s.heard.connections, 2);
    EXPECT_THAT(s.heard.events, HasSubstr("the connection was closed"));
    EXPECT_THAT(s.heard.events, HasSubstr("is back"));
    EXPECT_FALSE(s.heard.isEnded);
}

TEST(Source, OfTcpWaitsForAServerAndNamesTheReasonOnce)
{
    live::Loop loop;
    std::uint16_t port = 0;
    {
        const Listener gone;
        port = live::PortOf(gone.descriptor.Get());
    }
    const Started s(loop, "tcp:localhost:" + std::to_string(port));
    ASSERT_TRUE(RunUntil(loop, [&] { return !s.heard.events.empty(); }));
    EXPECT_EQ(s.heard.events, "Connection refused; it is tried again and again\n");
    Listener back;
    back.descriptor = std::move(live::ListenTcp("127.0.0.1", port).descriptor);
    ASSERT_TRUE(RunUntil(loop, [&] { return back.HasCaller(); }));
    EXPECT_EQ(s.heard.events, "Connection refused; it is tried again and again\n");
}

TEST(Source, OfASerialPortIsRawAndBackAfterAnUnplug)
{
    const ScratchFolder folder;
    live::Loop loop;
    Device device(folder.Path("tty"));
    Started s(loop, "serial:" + folder.Path("tty") + ":115200");
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected(); }));
    const std::string everyByte = [] {
        std::string all;
        for (int i = 0; i < 256; ++i)
            all += static_cast<char>(i);
        return all;
    }();
    device->Write(everyByte);
    ASSERT_TRUE(RunUntil(loop, [&] { return s.heard.bytes.size() == 256; }));
    EXPECT_EQ(s.heard.bytes, everyByte);
    EXPECT_TRUE(s.source.Write(everyByte));
    ASSERT_TRUE(RunUntil(loop, [&] { return device->Read().size() >= 256; }));
    EXPECT_EQ(device->Read(), everyByte); // nothing was echoed before

    device.Unplug();
    ASSERT_TRUE(RunUntil(loop, [&] { return !s.source.IsConnected(); }));
    EXPECT_FALSE(s.source.Write("$"));
    device.Plug();
    const auto since = loop.Now();
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected(); }));
    EXPECT_LT(loop.Now() - since, 3s);
    device->Write("again");
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.bytes == everyByte + "again"; }));
    EXPECT_EQ(s.heard.connections, 2);
}

TEST(Source, ThatIsSilentForTooLongIsOpenedAgain)
{
    const ScratchFolder folder;
    live::Loop loop;
    Device device(folder.Path("tty"));
    Listener listener;
    Started serial(loop, "serial:" + folder.Path("tty") + ":115200");
    Started tcp(loop, listener.Source());
    serial.source.SetPatience(100ms);
    tcp.source.SetPatience(100ms);
    Started patient(loop, listener.Source()); // no source of TCP is in a hurry by itself
    ASSERT_TRUE(RunUntil(loop, [&] { return serial.heard.connections > 1; }));
    ASSERT_TRUE(RunUntil(loop, [&] { return tcp.heard.connections > 1; }));
    EXPECT_EQ(patient.heard.connections, 1);
    EXPECT_EQ(serial.heard.events, "silent for 0.1 s; it is opened again and again\n");
    device->Write("$");
    EXPECT_TRUE(RunUntil(loop, [&] { return serial.heard.bytes == "$"; }));
    EXPECT_THAT(serial.heard.events, testing::EndsWith("is back\n"));
}

TEST(Source, OfASerialPortIsForOneProgramOnly)
{
    const ScratchFolder folder;
    live::Loop loop;
    const Device device(folder.Path("tty"));
    const Started first(loop, "serial:" + folder.Path("tty") + ":9600");
    ASSERT_TRUE(RunUntil(loop, [&] { return first.source.IsConnected(); }));
    const live::Opened second = live::OpenSerial(folder.Path("tty"), 9600);
    EXPECT_FALSE(second.descriptor.IsOpen());
    EXPECT_NE(second.problem, "");
}

std::uint16_t FreeUdpPort()
{
    const live::Opened free = live::BindUdp("127.0.0.1", 0);
    return live::PortOf(free.descriptor.Get());
}

TEST(Source, OfUdpTakesDatagrams)
{
    live::Loop loop;
    const std::uint16_t port = FreeUdpPort();
    const Started s(loop, "udp:" + std::to_string(port));
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected(); }));
    const live::Opened sender = live::ConnectUdp("127.0.0.1", port);
    for (const std::string_view text : {"$one\r\n", "$two\r\n"})
        ASSERT_EQ(write(sender.descriptor.Get(), text.data(), text.size()), 6);
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.bytes == "$one\r\n$two\r\n"; }));
}

TEST(Source, OfUdpDoesNotEndWithAnEmptyDatagram)
{
    live::Loop loop;
    const std::uint16_t port = FreeUdpPort();
    const Started s(loop, "udp:" + std::to_string(port));
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected(); }));
    const live::Opened sender = live::ConnectUdp("127.0.0.1", port);
    for (const std::string_view text : {"", "$one\r\n"})
        ASSERT_EQ(send(sender.descriptor.Get(), text.data(), text.size(), 0), std::ssize(text));
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.bytes == "$one\r\n"; }));
    EXPECT_EQ(s.heard.events, "");
    EXPECT_EQ(s.heard.connections, 1);
}

// An epoch with all its satellites in one datagram is longer than a page.
TEST(Source, OfUdpTakesDatagramsOfAnySize)
{
    live::Loop loop;
    const std::uint16_t port = FreeUdpPort();
    const Started s(loop, "udp:" + std::to_string(port));
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected(); }));
    const live::Opened sender = live::ConnectUdp("127.0.0.1", port);
    constexpr std::size_t kLongest = 65507; // by its header
    std::string text(kLongest, 'a');
    text.back() = 'z';
    ASSERT_EQ(write(sender.descriptor.Get(), text.data(), text.size()), std::ssize(text));
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.bytes == text; }));
}

TEST(Source, SaysWhyItCannotBeOpened)
{
    const ScratchFolder folder;
    live::Loop loop;
    const auto expect = [&](const std::string& text, const char* reason) {
        const Started s(loop, text);
        EXPECT_TRUE(RunUntil(loop, [&] { return !s.heard.events.empty(); })) << text;
        EXPECT_THAT(s.heard.events, HasSubstr(reason)) << text;
        EXPECT_FALSE(s.heard.isEnded) << text;
        EXPECT_EQ(s.heard.connections, 0) << text;
    };
    expect("file:" + folder.Path("none"), "No such file or directory; it is tried again");
    expect("serial:/dev/null:9600", "it is not a serial port; it is tried again");
    expect("tcp:224.0.0.1:9", "Network is unreachable; it is tried again");
    expect("tcp:" + std::string(64, 'a') + ":9", "; it is tried again and again");
}

TEST(Source, OfAFileThatIsLongKeepsToItsRateAndItsLines)
{
    const ScratchFolder folder;
    std::string lines;
    for (int i = 0; i < 3000; ++i)
        lines += std::to_string(i) + std::string(100, 'x') + "\r\n";
    std::ofstream(folder.Path("log")) << lines;
    live::Loop loop;
    const Started s(loop, "file:" + folder.Path("log") + "@30000");
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.isEnded; }));
    EXPECT_TRUE(s.heard.bytes == lines);
}

TEST(Source, OfANamedPipeWithARateWaitsForMoreLines)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    live::Loop loop;
    const Started s(loop, "file:" + path + "@1000");
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected(); }));
    Peer writer(live::Descriptor(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)));
    std::string expected;
    for (const std::string_view lines : {"$1\r\n$2\r\n", "$3\r\n"}) {
        expected += lines;
        ASSERT_EQ(writer.Write(lines), lines.size());
        EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.bytes == expected; })) << s.heard.bytes;
    }
    EXPECT_FALSE(s.heard.isEnded);
}

TEST(Source, ThatWasResetNamesTheReasonAndComesBack)
{
    live::Loop loop;
    Listener listener;
    const Started s(loop, listener.Source());
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected() && listener.HasCaller(); }));
    const linger atOnce{1, 0};
    ASSERT_EQ(setsockopt(listener.peer.Get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce), 0);
    listener.peer.Close();
    ASSERT_TRUE(RunUntil(loop, [&] { return !s.heard.events.empty(); }));
    EXPECT_EQ(s.heard.events, "Connection reset by peer; it is tried again and again\n");
    EXPECT_TRUE(RunUntil(loop, [&] { return s.heard.connections == 2; }));
}

TEST(Source, TakesBytesWholeOrNotAtAll)
{
    live::Loop loop;
    Listener listener;
    Started s(loop, listener.Source());
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected() && listener.HasCaller(); }));
    // The other side does not read, until the system takes no more and then the source does not.
    std::string taken;
    bool isRefused = false;
    for (int i = 0; i < 100000 && !isRefused; ++i) {
        const std::string frame = std::to_string(i) + std::string(1000, 'r') + "\n";
        isRefused = !s.source.Write(frame);
        if (!isRefused) taken += frame;
    }
    ASSERT_TRUE(isRefused);
    EXPECT_TRUE(RunUntil(loop, [&] { return listener.peer.Read().size() >= taken.size(); }));
    EXPECT_TRUE(listener.peer.Read() == taken);
    EXPECT_TRUE(s.source.Write("$again\n"));
    EXPECT_TRUE(RunUntil(loop, [&] { return listener.peer.Read() == taken + "$again\n"; }));
}

TEST(Source, OfAFileTakesNoBytes)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    live::Loop loop;
    Started s(loop, "file:" + path);
    ASSERT_TRUE(RunUntil(loop, [&] { return s.source.IsConnected(); }));
    EXPECT_FALSE(s.source.Write("$1\r\n"));
    EXPECT_EQ(s.heard.bytes, "");
}

} // namespace
