// SPDX-License-Identifier: MIT
//
// The file beside the one that is replaced: what a signal removes at once, what the next replacement
// removes after a kill, and what is never removed.
#include "framework/core/AtomicFile.h"
#include "tests/framework/core/Folder.h"
#include "tests/framework/core/OrdinaryUser.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

using framework::FileReplacement;
using framework::ReplaceFileContent;

namespace {

using Names = std::vector<std::string>;

std::string NameOn(const std::string& host, const std::string& random)
{
    return ".tiltpole-" + host + "-" + random + ".new";
}

std::string NameHere(const std::string& random)
{
    struct utsname system
    {};
    ::uname(&system);
    return NameOn(system.nodename, random);
}

// A process that has replaced half of `path` when this returns, and goes no further.
class HalfDone
{
public:
    explicit HalfDone(const std::string& path, bool cleansUp = false, bool ignoresHangup = false)
    {
        std::array<int, 2> ready{};
        if (::pipe(ready.data()) != 0) throw std::runtime_error("no pipe");
        m_process = ::fork();
        if (m_process == 0) {
            if (ignoresHangup) std::signal(SIGHUP, SIG_IGN);
            if (cleansUp) framework::RemoveTemporaryFilesOnSignals();
            FileReplacement file(path);
            file.Write("part of a new cont");
            if (::write(ready[1], "x", 1) != 1) ::_exit(1);
            for (;;)
                ::pause();
        }
        char byte = 0;
        if (::read(ready[0], &byte, 1) != 1) throw std::runtime_error("the process failed");
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~HalfDone() { End(SIGKILL); }
    HalfDone(const HalfDone&) = delete;
    HalfDone& operator=(const HalfDone&) = delete;

    void Send(int signal) const { ::kill(m_process, signal); }

    // The signal that ended it.
    int End(int signal)
    {
        if (m_process <= 0) return 0;
        int status = 0;
        ::kill(m_process, signal);
        ::waitpid(m_process, &status, 0);
        m_process = 0;
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

private:
    pid_t m_process = 0;
};

class TemporaryFile : public testing::Test
{
protected:
    TestFolder m_folder;

    std::string Path(const std::string& name) const { return m_folder.Native() / name; }
    std::size_t Count() const { return m_folder.Names().size(); }

    void MakeOld(const std::string& name) const
    {
        const struct timespec longAgo[] = {
            {1000000000, 0},
            {1000000000, 0}
        };
        ASSERT_EQ(::utimensat(AT_FDCWD, Path(name).c_str(), longAgo, 0), 0);
    }
};

} // namespace

TEST_F(TemporaryFile, IsRemovedByASignalThatEndsTheProcess)
{
    m_folder.Write("file", "old content");
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        HalfDone save(Path("file"), true);
        EXPECT_EQ(Count(), 2u);
        EXPECT_EQ(save.End(signal), signal) << "the process ends as without the handler";
        EXPECT_EQ(m_folder.Names(), Names{"file"});
        EXPECT_EQ(m_folder.Read("file"), "old content");
    }
}

TEST_F(TemporaryFile, OutlivesASignalThatWasIgnoredBefore)
{
    HalfDone save(Path("file"), true, true);
    save.Send(SIGHUP);
    EXPECT_EQ(save.End(SIGTERM), SIGTERM);
    EXPECT_EQ(Count(), 0u);
}

TEST_F(TemporaryFile, IsTheOnlyOneOfAProcessThatASignalRemoves)
{
    HalfDone other(Path("other"), true);
    HalfDone save(Path("file"), true);
    EXPECT_EQ(save.End(SIGTERM), SIGTERM);
    EXPECT_EQ(Count(), 1u) << "that of the other process";
}

TEST_F(TemporaryFile, OfKilledProcessesIsRemovedByTheNextReplacement)
{
    m_folder.Write("file", "old content");
    {
        HalfDone first(Path("file"));
        HalfDone second(Path("file"));
        HalfDone third(Path("third"));
        EXPECT_EQ(Count(), 4u);
        EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "while they live"));
        EXPECT_EQ(Count(), 4u) << "a running replacement keeps its file";
    }
    EXPECT_EQ(Count(), 4u);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"other"), "after their end"));
    EXPECT_EQ(m_folder.Names(), (Names{"file", "other"}));
    EXPECT_EQ(m_folder.Read("file"), "while they live");
}

TEST_F(TemporaryFile, OfAnotherMachineIsRemovedOnlyAfterADay)
{
    const std::string name = NameOn("elsewhere", "0123456789abcdef");
    m_folder.Write(name, "part");
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(m_folder.Names(), (Names{name, "file"})) << "its lock may not reach this machine";
    MakeOld(name);
    const int writer = ::open(Path(name).c_str(), O_RDWR);
    ASSERT_EQ(::flock(writer, LOCK_EX), 0);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(m_folder.Names(), (Names{name, "file"})) << "its lock does";
    ::close(writer);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(TemporaryFile, IsNotTakenForWhatItCannotBe)
{
    const std::string folder = NameHere("0000000000000001");
    const std::string link = NameHere("0000000000000002");
    const std::string pipe = NameHere("0000000000000003");
    const Names alike = {NameHere("0"), NameHere("000000000000000G"),
                         NameHere("0000000000000004") + "er", ".tiltpole-0000000000000005.new",
                         NameHere("0000000000000006").substr(1)};
    m_folder.Write("neighbor", "its content");
    std::filesystem::create_directory(m_folder.Native() / folder);
    std::filesystem::create_symlink("neighbor", m_folder.Native() / link);
    ASSERT_EQ(::mkfifo(Path(pipe).c_str(), 0666), 0);
    for (const std::string& name : alike) {
        m_folder.Write(name, "another's");
        MakeOld(name);
    }
    const std::size_t before = Count();
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"neighbor"), "new"));
    EXPECT_EQ(m_folder.Read("neighbor"), "new");
    EXPECT_EQ(Count(), before);
    for (const std::string& name : alike)
        EXPECT_EQ(m_folder.Read(name), "another's") << name;
}

TEST_F(TemporaryFile, OfAnotherUserIsRemovedByRootAlone)
{
    if (::geteuid() != 0) GTEST_SKIP() << "needs a file of another user";
    ::chmod(m_folder.Native().c_str(), 0777);
    const std::string ofRoot = NameHere("0000000000000001");
    const std::string ofUser = NameHere("0000000000000002");
    for (const std::string& name : {ofRoot, ofUser}) {
        m_folder.Write(name, "part");
        ASSERT_EQ(::chmod(Path(name).c_str(), 0666), 0);
    }
    ASSERT_EQ(::chown(Path(ofUser).c_str(), OrdinaryUser::kNobody, 0), 0);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(m_folder.Names(), Names{"file"}) << "root removes those of all";

    m_folder.Write(ofRoot, "part");
    ASSERT_EQ(::chmod(Path(ofRoot).c_str(), 0666), 0);
    {
        const OrdinaryUser user;
        EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"other"), "new"));
    }
    EXPECT_EQ(m_folder.Names(), (Names{ofRoot, "file", "other"}));
}

// A signal to a process that was forked while its parent saves ends that process alone.
TEST_F(TemporaryFile, IsNotRemovedByASignalToAChildOfItsProcess)
{
    const pid_t parent = ::fork();
    if (parent == 0) {
        framework::RemoveTemporaryFilesOnSignals();
        FileReplacement file(Path("file"));
        file.Write("content");
        const pid_t child = ::fork();
        if (child == 0)
            for (;;)
                ::pause();
        int status = 0;
        ::kill(child, SIGTERM);
        ::waitpid(child, &status, 0);
        ::_exit(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM && file.Commit() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(parent, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the file was there to be renamed";
    EXPECT_EQ(m_folder.Read("file"), "content");
}
