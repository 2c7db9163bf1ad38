// SPDX-License-Identifier: MIT
#include "apps/live/Open.h"

#include "tests/apps/ScratchFile.h"
#include "tests/apps/live/Peers.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <system_error>
#include <termios.h>

namespace {

using apps::test::Peer;
using apps::test::ScratchFolder;
using testing::HasSubstr;

// The program may open so many descriptors more.
class DescriptorsLeft
{
public:
    explicit DescriptorsLeft(rlim_t count)
    {
        // The sanitizers look at a type once, for which they need a descriptor.
        static_cast<void>(std::generic_category().message(EMFILE));
        getrlimit(RLIMIT_NOFILE, &m_before);
        const live::Descriptor next(open("/dev/null", O_RDONLY | O_CLOEXEC));
        const rlimit now{static_cast<rlim_t>(next.Get()) + count, m_before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &now);
    }
    ~DescriptorsLeft() { setrlimit(RLIMIT_NOFILE, &m_before); }
    DescriptorsLeft(const DescriptorsLeft&) = delete;
    DescriptorsLeft& operator=(const DescriptorsLeft&) = delete;

private:
    rlimit m_before = {};
};

std::string ProblemOf(const live::Opened& opened)
{
    EXPECT_FALSE(opened.descriptor.IsOpen());
    return opened.problem;
}

TEST(Open, NamesWhatIsNotThereOrIsSomethingElse)
{
    const ScratchFolder folder;
    const std::string none = folder.Path("none/at all");
    EXPECT_EQ(ProblemOf(live::OpenToRead(none)), "No such file or directory");
    EXPECT_EQ(ProblemOf(live::OpenToRead(folder.Path(""))), "it is a folder");
    EXPECT_EQ(ProblemOf(live::OpenToWrite(none)), "No such file or directory");
    EXPECT_EQ(ProblemOf(live::OpenSerial(none, 9600)), "No such file or directory");
    EXPECT_EQ(ProblemOf(live::OpenSerial("/dev/null", 9600)), "it is not a serial port");
    EXPECT_EQ(ProblemOf(live::OpenPty(none)), "No such file or directory");
    EXPECT_EQ(ProblemOf(live::ListenLocal(none)), "No such file or directory");
    EXPECT_EQ(ProblemOf(live::ListenLocal(folder.Path(std::string(108, 'x')))),
              "its path is too long for a socket");
}

TEST(Open, RefusesAnAddressThatIsNotInDigits)
{
    constexpr const char* kProblem = "Address family not supported by protocol";
    for (const char* const address : {"", "localhost", "1.2.3", "::g"}) {
        EXPECT_EQ(ProblemOf(live::BeginConnect(address, 9)), kProblem) << address;
        EXPECT_EQ(ProblemOf(live::ListenTcp(address, 0)), kProblem) << address;
        EXPECT_EQ(ProblemOf(live::BindUdp(address, 0)), kProblem) << address;
        EXPECT_EQ(ProblemOf(live::ConnectUdp(address, 9)), kProblem) << address;
    }
}

TEST(Open, NamesAnAddressThatCannotBeReachedAtOnce)
{
    EXPECT_EQ(ProblemOf(live::BeginConnect("224.0.0.1", 9)), "Network is unreachable");
    const live::Opened taken = live::BindUdp("127.0.0.1", 0);
    EXPECT_EQ(ProblemOf(live::BindUdp("127.0.0.1", live::PortOf(taken.descriptor.Get()))),
              "Address already in use");
}

TEST(Open, SaysThatTooManyFilesAreOpen)
{
    const ScratchFolder folder;
    folder.Write("log", "$1\r\n");
    {
        const DescriptorsLeft none(0);
        constexpr const char* kProblem = "Too many open files";
        EXPECT_EQ(ProblemOf(live::OpenToRead(folder.Path("log"))), kProblem);
        EXPECT_EQ(ProblemOf(live::OpenToWrite(folder.Path("out"))), kProblem);
        EXPECT_EQ(ProblemOf(live::ListenTcp("127.0.0.1", 0)), kProblem);
        EXPECT_EQ(ProblemOf(live::ListenLocal(folder.Path("control"))), kProblem);
        EXPECT_EQ(ProblemOf(live::OpenPty(folder.Path("pole"))), kProblem);
    }
    const DescriptorsLeft one(1); // a pseudo terminal takes two
    EXPECT_EQ(ProblemOf(live::OpenPty(folder.Path("pole"))), "Too many open files");
    EXPECT_NE(access(folder.Path("pole").c_str(), F_OK), 0) << "a link to nothing";
}

TEST(Open, TellsTheProblemAndThePortOfNoSocket)
{
    EXPECT_EQ(live::ConnectProblem(-1), "Bad file descriptor");
    EXPECT_EQ(live::PortOf(-1), 0);
}

TEST(Open, NamesTheCallerAndThePortByEitherProtocol)
{
    for (const char* const address : {"127.0.0.1", "::1"}) {
        const live::Opened listener = live::ListenTcp(address, 0);
        if (!listener.descriptor.IsOpen()) GTEST_SKIP() << address << ": " << listener.problem;
        const std::uint16_t port = live::PortOf(listener.descriptor.Get());
        ASSERT_NE(port, 0) << address;
        const live::Opened caller = live::BeginConnect(address, port);
        ASSERT_TRUE(caller.descriptor.IsOpen()) << caller.problem;
        pollfd waiting{listener.descriptor.Get(), POLLIN, 0};
        ASSERT_EQ(poll(&waiting, 1, 10000), 1) << address;
        const live::Accepted accepted = live::Accept(listener.descriptor.Get());
        ASSERT_TRUE(accepted.descriptor.IsOpen());
        EXPECT_EQ(accepted.name, address);
        EXPECT_EQ(accepted.peer.isV6, accepted.name == "::1");
        EXPECT_TRUE(live::IsLoopback(accepted.peer)) << address;
    }
}

TEST(Open, GivesASerialPortItsSpeed)
{
    const ScratchFolder folder;
    const live::Opened pty = live::OpenPty(folder.Path("tty"));
    ASSERT_TRUE(pty.descriptor.IsOpen()) << pty.problem;
    constexpr std::pair<unsigned, speed_t> speeds[] = {
        {1200,    B1200   },
        {115200,  B115200 },
        {4000000, B4000000},
        {12345,   B9600   }, // none of a serial port
    };
    for (const auto& [baud, speed] : speeds) {
        const live::Opened port = live::OpenSerial(folder.Path("tty"), baud);
        ASSERT_TRUE(port.descriptor.IsOpen()) << port.problem;
        termios settings = {};
        ASSERT_EQ(tcgetattr(port.descriptor.Get(), &settings), 0);
        EXPECT_EQ(cfgetospeed(&settings), speed) << baud;
        EXPECT_EQ(cfgetispeed(&settings), speed) << baud;
    }
}

TEST(Open, RemovesTheLinkOfAPseudoTerminalOnly)
{
    const ScratchFolder folder;
    const std::string file = folder.Write("file", "mine");
    live::RemovePtyLink(file);
    live::RemovePtyLink(folder.Path("none"));
    EXPECT_EQ(folder.Read("file"), "mine");
    const std::string link = folder.Path("link");
    ASSERT_EQ(symlink("/dev/pts/none", link.c_str()), 0);
    live::RemovePtyLink(link);
    EXPECT_FALSE(std::filesystem::is_symlink(link));
}

} // namespace
