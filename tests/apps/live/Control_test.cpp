// SPDX-License-Identifier: MIT
#include "apps/live/Control.h"

#include "apps/live/Recorder.h"
#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include "tests/apps/live/Peers.h"
#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {

using apps::test::Peer;
using apps::test::ReadAll;
using apps::test::RunUntil;
using apps::test::ScratchFolder;
using testing::HasSubstr;

std::vector<std::string> Cut(const std::vector<std::string>& pieces)
{
    live::LineCutter cutter;
    std::vector<std::string> lines;
    for (const std::string& piece : pieces)
        cutter.Feed(piece, [&](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

TEST(LineCutter, PutsPiecesTogether)
{
    const std::vector<std::string> expected = {"store P1", "undo"};
    EXPECT_EQ(Cut({"sto", "re P1\r\nun", "do\n", "ack"}), expected);
}

TEST(LineCutter, DropsALineThatIsTooLong)
{
    const std::string most(1024, 'x');
    const std::string much(5000, 'x');
    const std::vector<std::string> expected = {"undo"};
    EXPECT_EQ(Cut({most, much, "\nundo\n"}), expected);
    EXPECT_EQ(Cut({most, "\n"}).size(), 1U);
}

Peer ConnectedTo(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    live::Descriptor peer(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    EXPECT_EQ(connect(peer.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return Peer(std::move(peer));
}

std::string Shout(std::string_view request)
{
    return std::string(request) + '!';
}

TEST(ControlSocket, AnswersEachRequestAndIsOfThisUserAlone)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("control");
    live::Loop loop;
    {
        const live::ControlSocket control(loop, path, Shout);
        struct stat status = {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0600U);
        Peer a = ConnectedTo(path);
        Peer b = ConnectedTo(path);
        a.Write("store P1\nun");
        b.Write("ack\n");
        EXPECT_TRUE(RunUntil(loop, [&] { return a.Read() == "store P1!\n"; }));
        EXPECT_TRUE(RunUntil(loop, [&] { return b.Read() == "ack!\n"; }));
        a.Write("do\n");
        EXPECT_TRUE(RunUntil(loop, [&] { return a.Read() == "store P1!\nundo!\n"; }));
    }
    EXPECT_NE(access(path.c_str(), F_OK), 0) << "the socket remains";
}

TEST(ControlSocket, LeavesAnEmptyLineWithoutAnswer)
{
    const ScratchFolder folder;
    live::Loop loop;
    const live::ControlSocket control(loop, folder.Path("control"), Shout);
    Peer peer = ConnectedTo(folder.Path("control"));
    peer.Write("\n\r\nack\n");
    EXPECT_TRUE(RunUntil(loop, [&] { return peer.Read() == "ack!\n"; })) << peer.Read();
}

TEST(ControlSocket, ServesNoMoreThanFourClients)
{
    const ScratchFolder folder;
    live::Loop loop;
    const live::ControlSocket control(loop, folder.Path("control"), Shout);
    std::vector<Peer> peers;
    for (int i = 0; i < 5; ++i)
        peers.push_back(ConnectedTo(folder.Path("control")));
    EXPECT_TRUE(RunUntil(loop, [&] { return peers.back().IsAtEnd(); }));
    for (int i = 0; i < 4; ++i)
        peers[static_cast<std::size_t>(i)].Write("ack\n");
    EXPECT_TRUE(RunUntil(loop, [&] {
        return std::all_of(peers.begin(), peers.end() - 1,
                           [](Peer& peer) { return peer.Read() == "ack!\n"; });
    }));
}

// A descriptor of the process that is another one meanwhile.
class Exchanged
{
public:
    Exchanged(int which, int other) : m_which(which), m_before(dup(which)) { dup2(other, which); }
    ~Exchanged() { dup2(m_before.Get(), m_which); }
    Exchanged(const Exchanged&) = delete;
    Exchanged& operator=(const Exchanged&) = delete;

private:
    int m_which;
    live::Descriptor m_before;
};

TEST(KeyReader, HandsOnEachLineThatIsNotEmptyUntilTheInputEnds)
{
    live::Loop loop;
    int both[2] = {-1, -1};
    ASSERT_EQ(pipe2(both, O_CLOEXEC), 0);
    const live::Descriptor input(both[0]);
    live::Descriptor keys(both[1]);
    std::string heard;
    const Exchanged standard(STDIN_FILENO, input.Get());
    const live::KeyReader reader(loop, [&](std::string_view line) {
        heard += std::string(line) + '|';
        return Shout(line);
    });
    testing::internal::CaptureStderr();
    ASSERT_EQ(write(keys.Get(), "\n\r\nack\nundo\n", 12), 12);
    keys.Close();
    EXPECT_TRUE(RunUntil(loop, [&] { return heard.size() >= 9; }));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ack!\nundo!\n");
    EXPECT_EQ(heard, "ack|undo|");
}

TEST(ControlSocket, TakesThePlaceOfADeadSocketOnly)
{
    const ScratchFolder folder;
    live::Loop loop;
    const std::string path = folder.Path("control");
    {
        const live::Opened dead = live::ListenLocal(path);
        ASSERT_TRUE(dead.descriptor.IsOpen());
        EXPECT_THROW(live::ControlSocket(loop, path, Shout), tables::InputError);
    }
    EXPECT_NO_THROW(live::ControlSocket(loop, path, Shout));
    folder.Write("file", "precious");
    EXPECT_THROW(live::ControlSocket(loop, folder.Path("file"), Shout), tables::InputError);
    EXPECT_EQ(folder.Read("file"), "precious");
}

TEST(Recorder, WritesWhatTheReaderOfRecordingsUnderstands)
{
    const ScratchFolder folder;
    std::string events;
    {
        live::Recorder recorder(folder.Path("r"), 1.0e9,
                                [&](const std::string& e) { events += e; });
        recorder.Add({std::chrono::milliseconds(1500), field::Channel::Receiver, "$GNGGA\r\n"});
        recorder.Add({std::chrono::seconds(2), field::Channel::Keys, "store P1"});
    }
    EXPECT_EQ(folder.Read("r"), field::RecordingHeader(1.0e9)
                                    + "+1.500000 R $GNGGA\\x0D\\x0A\n+2.000000 K store P1\n");
    EXPECT_EQ(events, "");
}

TEST(Recorder, NeverOverwritesARecording)
{
    const ScratchFolder folder;
    folder.Write("r", "the only one");
    EXPECT_THROW(live::Recorder(folder.Path("r"), 0.0, {}), tables::InputError);
    EXPECT_EQ(folder.Read("r"), "the only one");
}

TEST(Recorder, NamesAPlaceThatCannotBeWritten)
{
    const ScratchFolder folder;
    try {
        const live::Recorder recorder(folder.Path("no folder/r"), 0.0, {});
        FAIL() << "it was opened";
    } catch (const tables::InputError& error) {
        EXPECT_THAT(error.what(), HasSubstr("cannot be written: No such file or directory"));
    }
}

TEST(Recorder, EndsWithAnEventWhereTheDiskIsFull)
{
    std::string events;
    live::Recorder recorder("/dev/full", 0.0, [&](const std::string& e) { events += e + '\n'; });
    recorder.Add({std::chrono::seconds(1), field::Channel::Receiver, "$GNGGA\r\n"});
    EXPECT_FALSE(recorder.IsRecording());
    EXPECT_EQ(events, "the recording /dev/full ends: No space left on device\n");
}

} // namespace
