// SPDX-License-Identifier: MIT
//
// Replacing a file where the system does not grant everything: fixed permissions, folders and files
// of other users, mount points, processes that were killed, memory that runs out.
#include "framework/core/AtomicFile.h"
#include "tests/framework/core/Folder.h"
#include "tests/framework/core/OrdinaryUser.h"
#include "tests/reference/FailingAllocations.h"
#include "tests/reference/RefusedCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using framework::FileReplacement;
using framework::ReplaceFileContent;
using reference::Call;
using reference::Refused;

namespace {

using Names = std::vector<std::string>;

class Replacement : public testing::Test
{
protected:
    TestFolder m_folder;

    std::string PathOf(const std::string& name) const
    {
        return (m_folder.Native() / name).string();
    }

    struct stat StatusOf(const std::string& name) const
    {
        struct stat status
        {};
        EXPECT_EQ(::stat(PathOf(name).c_str(), &status), 0) << name;
        return status;
    }

    void Make(const char* name, mode_t mode) const
    {
        m_folder.Write(name, "old content");
        EXPECT_EQ(::chmod(PathOf(name).c_str(), mode), 0);
    }

    // Replaces the file, which must stay the same file, as the content is written into it.
    void ExpectWrittenInPlace(const char* name) const
    {
        const struct stat before = StatusOf(name);
        EXPECT_TRUE(ReplaceFileContent(CString(PathOf(name).c_str()), "new"));
        const struct stat after = StatusOf(name);
        EXPECT_EQ(m_folder.Read(name), "new");
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_uid, before.st_uid);
        EXPECT_EQ(after.st_gid, before.st_gid);
        EXPECT_EQ(m_folder.Names(), Names{name}) << "nothing beside it";
    }
};

bool IsRoot()
{
    return ::geteuid() == 0;
}

} // namespace

TEST_F(Replacement, DoesNotChangePermissionsThatAreRightAlready)
{
    Make("file", 0600);
    const Refused refused(Call::ChangeMode, EPERM);
    const ino_t before = StatusOf("file").st_ino;
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"made"), "new"));
    EXPECT_EQ(refused.Count(), 0);
    EXPECT_NE(StatusOf("file").st_ino, before) << "replaced, not written in place";
}

TEST_F(Replacement, WritesInPlaceWherePermissionsCannotBeKept)
{
    Make("file", 0644);
    const Refused refused(Call::ChangeMode, EPERM);
    ExpectWrittenInPlace("file");
    ExpectWrittenInPlace("file");
    EXPECT_EQ(refused.Count(), 2);
}

TEST_F(Replacement, WritesInPlaceWhereTheFileIsAMountPoint)
{
    for (const int error : {EBUSY, EXDEV, EPERM, EACCES}) {
        Make("file", 0644);
        const Refused refused(Call::Rename, error);
        ExpectWrittenInPlace("file");
        EXPECT_EQ(refused.Count(), 1);
    }
}

TEST_F(Replacement, CopiesEveryByteWhereTheFileIsAMountPoint)
{
    Make("file", 0644);
    std::string content;
    while (content.size() < 200000)
        content += std::to_string(content.size()) + ' ';
    const Refused refused(Call::Rename, EBUSY);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), content));
    EXPECT_EQ(m_folder.Read("file"), content);
}

TEST_F(Replacement, HasNothingBesideAFileThatItWillWriteInPlace)
{
    Make("file", 0644);
    const Refused refused(Call::ChangeMode, EPERM);
    FileReplacement file(PathOf("file"));
    EXPECT_TRUE(file.Write("new"));
    EXPECT_EQ(m_folder.Names(), Names{"file"});
    EXPECT_EQ(m_folder.Read("file"), "old content");
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(m_folder.Read("file"), "new");
}

TEST_F(Replacement, IsNotCommittedAfterAWriteThatFailed)
{
    Make("file", 0644);
    FileReplacement file(PathOf("file"));
    {
        const FileSizeLimit limit(100);
        EXPECT_FALSE(file.Write(std::string(1000, 'x')));
    }
    EXPECT_FALSE(file.Write("y")) << "nor does a later one succeed";
    EXPECT_FALSE(file.Commit());
    EXPECT_EQ(file.Error(), EFBIG);
    EXPECT_EQ(m_folder.Read("file"), "old content");
}

TEST_F(Replacement, FailsWhereTheNewNameIsNotWritten)
{
    Make("file", 0644);
    const Refused refused(Call::Rename, EIO);
    FileReplacement file(PathOf("file"));
    EXPECT_TRUE(file.Write("new"));
    EXPECT_FALSE(file.Commit());
    EXPECT_EQ(file.Error(), EIO);
    EXPECT_EQ(m_folder.Read("file"), "old content");
}

TEST_F(Replacement, NeedsNoFlushWhereTheFileSystemHasNone)
{
    for (const int error : {EINVAL, ENOSYS, EOPNOTSUPP}) {
        const Refused refused(Call::Flush, error);
        EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), std::to_string(error)));
        EXPECT_EQ(m_folder.Read("file"), std::to_string(error));
    }
    const Refused refused(Call::Flush, EIO);
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(m_folder.Read("file"), std::to_string(EOPNOTSUPP));
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(Replacement, WritesInPlaceInAFolderThatTakesNoNewFile)
{
    Make("file", 0666);
    ::chmod(m_folder.Native().c_str(), 0555);
    {
        const OrdinaryUser user;
        ExpectWrittenInPlace("file");
        EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"made"), "new"));
    }
    ::chmod(m_folder.Native().c_str(), 0755);
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(Replacement, LeavesAColleaguesFileToItsOwner)
{
    if (!IsRoot()) GTEST_SKIP() << "needs a file of another user";
    for (const mode_t folderMode : {01777u, 0777u}) {
        Make("file", 0666);
        ::chmod(m_folder.Native().c_str(), folderMode);
        const OrdinaryUser user;
        ExpectWrittenInPlace("file");
    }
}

TEST_F(Replacement, KeepsTheOwnerWhereTheSystemLetsIt)
{
    if (!IsRoot()) GTEST_SKIP() << "only root may give files away";
    Make("file", 0640);
    ASSERT_EQ(::chown(PathOf("file").c_str(), OrdinaryUser::kNobody, 12345), 0);
    const struct stat before = StatusOf("file");
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    const struct stat after = StatusOf("file");
    EXPECT_NE(after.st_ino, before.st_ino) << "replaced";
    EXPECT_EQ(after.st_uid, OrdinaryUser::kNobody);
    EXPECT_EQ(after.st_gid, 12345u);
    EXPECT_EQ(after.st_mode, before.st_mode);
}

TEST_F(Replacement, KeepsTheOldContentWhereThereIsNoSpaceToWriteInPlace)
{
    Make("file", 0644);
    const Refused refused(Call::ChangeMode, EPERM);
    const FileSizeLimit limit(100);
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"file"), std::string(1000, 'x')));
    EXPECT_EQ(m_folder.Read("file"), "old content");
}

TEST_F(Replacement, TakesEveryByteOfAName)
{
    const std::string name = "a\xff\x01 \xc3\n.cfg";
    FileReplacement file(PathOf(name));
    EXPECT_TRUE(file.Write("content"));
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(m_folder.Names(), Names{name});

    FileReplacement cut(PathOf(name) + std::string(1, '\0') + "x");
    EXPECT_FALSE(cut.Commit()) << "the file of the name before the zero byte is another";
    EXPECT_EQ(cut.Error(), EINVAL);
    EXPECT_EQ(m_folder.Read(name), "content");
}

TEST_F(Replacement, TakesTheLongestNameAndPath)
{
    const std::string longest(255, 'n');
    EXPECT_TRUE(ReplaceFileContent(CString(PathOf(longest).c_str()), "first"));
    EXPECT_TRUE(ReplaceFileContent(CString(PathOf(longest).c_str()), "second"));
    EXPECT_EQ(m_folder.Read(longest), "second");
    EXPECT_EQ(m_folder.Names(), Names{longest});

    constexpr std::size_t kLongestPath = 4095;
    std::string deep = m_folder.Native().string();
    while (deep.size() + 210 < kLongestPath)
        deep += '/' + std::string(200, 'd');
    std::filesystem::create_directories(deep);
    const std::string file = deep + '/' + std::string(kLongestPath - deep.size() - 1, 'f');
    for (int i = 0; i < 2; ++i) {
        FileReplacement replacement(file);
        EXPECT_TRUE(replacement.Write("content"));
        EXPECT_TRUE(replacement.Commit()) << replacement.Error();
    }
    EXPECT_EQ(std::filesystem::file_size(file), 7u);
}

TEST_F(Replacement, TouchesNoFileOfAnotherName)
{
    for (const char* name : {"pole.cfg", "pole.cfg.new", "pole.cfg.part", "pole.cfg~"})
        m_folder.Write(name, "old");
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"pole.cfg"), "new"));
    EXPECT_EQ(m_folder.Read("pole.cfg"), "new");
    for (const char* name : {"pole.cfg.new", "pole.cfg.part", "pole.cfg~"})
        EXPECT_EQ(m_folder.Read(name), "old") << name;
    EXPECT_EQ(m_folder.Names().size(), 4u);
}

TEST_F(Replacement, OfOneFileTwiceAtATimeSucceedsTwice)
{
    FileReplacement first(PathOf("file"));
    FileReplacement second(PathOf("file"));
    EXPECT_TRUE(second.Write("second"));
    EXPECT_TRUE(first.Write("first"));
    EXPECT_TRUE(second.Commit());
    EXPECT_EQ(m_folder.Read("file"), "second");
    EXPECT_TRUE(first.Commit());
    EXPECT_EQ(m_folder.Read("file"), "first") << "the last one stays";
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(Replacement, LeavesADeviceADevice)
{
    constexpr dev_t kNull = 0x103; // as /dev/null
    if (::mknod(PathOf("null").c_str(), S_IFCHR | 0666, kNull) != 0)
        GTEST_SKIP() << "devices may not be made here";
    const int opened = ::open(PathOf("null").c_str(), O_WRONLY);
    if (opened < 0) GTEST_SKIP() << "devices may not be used here";
    ::close(opened);
    const ino_t before = StatusOf("null").st_ino;
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"null"), "content"));
    EXPECT_EQ(StatusOf("null").st_ino, before);
    EXPECT_TRUE(S_ISCHR(StatusOf("null").st_mode));
    EXPECT_EQ(m_folder.Names(), Names{"null"});
}

TEST_F(Replacement, WritesIntoPipesAndIntoWhatALinkBelowProcNames)
{
    ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0666), 0);
    std::string received;
    std::thread reader([&] { received = m_folder.Read("pipe"); });
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"pipe"), "through it"));
    reader.join();
    EXPECT_EQ(received, "through it");
    EXPECT_TRUE(std::filesystem::is_fifo(m_folder.Native() / "pipe"));

    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const std::string link = "/proc/self/fd/" + std::to_string(ends[1]);
    EXPECT_TRUE(ReplaceFileContent(CString(link.c_str()), "abc"));
    std::string bytes(3, '\0');
    EXPECT_EQ(::read(ends[0], bytes.data(), 3), 3);
    EXPECT_EQ(bytes, "abc");
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Replacement, MakesNoNeighborOfAFileWhoseNameIsGone)
{
    m_folder.Write("file", "old content");
    std::ofstream stillOpen(m_folder.Native() / "file", std::ios::app);
    std::string link;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (std::filesystem::read_symlink(entry, ignored) == m_folder.Native() / "file")
            link = entry.path().string();
    }
    ASSERT_FALSE(link.empty());
    std::filesystem::remove(m_folder.Native() / "file");
    EXPECT_TRUE(ReplaceFileContent(CString(link.c_str()), "new"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(std::ifstream(link).rdbuf()), {}), "new");
    EXPECT_TRUE(m_folder.Names().empty());
}

// The link of such a file reads "file (deleted)", which can be the name of another.
TEST_F(Replacement, TakesNoOtherFileForOneWhoseNameIsGone)
{
    m_folder.Write("file", "old content");
    const int stillOpen = ::open(PathOf("file").c_str(), O_RDWR | O_CLOEXEC);
    std::filesystem::remove(m_folder.Native() / "file");
    m_folder.Write("file (deleted)", "other");
    const std::string link = "/proc/self/fd/" + std::to_string(stillOpen);
    EXPECT_TRUE(ReplaceFileContent(CString(link.c_str()), "new"));
    EXPECT_EQ(m_folder.Read("file (deleted)"), "other");
    std::string bytes(4, '\0');
    EXPECT_EQ(::pread(stillOpen, bytes.data(), 4, 0), 3);
    EXPECT_EQ(bytes.substr(0, 3), "new");
    ::close(stillOpen);
}

// The new name is on the device when the folder is.
TEST_F(Replacement, FlushesTheFileAndThenItsFolder)
{
    m_folder.Write("file", "old content");
    const Refused refused(Call::Flush, EINVAL); // as file systems answer that cannot flush
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(refused.Count(), 2);
}

TEST_F(Replacement, DropsWhatIsNotCommitted)
{
    m_folder.Write("file", "old content");
    {
        FileReplacement file(PathOf("file"));
        EXPECT_TRUE(file.Write("new"));
        EXPECT_EQ(file.Error(), 0);
    }
    EXPECT_EQ(m_folder.Read("file"), "old content");
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(Replacement, IsDoneWithTheFileOnceItIsCommitted)
{
    FileReplacement file(PathOf("file"));
    EXPECT_TRUE(file.Write("first "));
    EXPECT_TRUE(file.Write("second"));
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(m_folder.Read("file"), "first second");
    const int other = ::open(PathOf("file").c_str(), O_RDWR);
    EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0) << "no lock is left on it";
    ::close(other);
}

TEST_F(Replacement, LosesNothingWhereMemoryRunsOut)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    const CString path = m_folder.File(L"file");
    const int before = OpenDescriptors();
    for (const bool inPlace : {false, true}) {
        const long failures = reference::ForEveryFailingAllocation([&](auto& round) {
            Make("file", 0644);
            bool replaced = false;
            if (inPlace) {
                const Refused refused(Call::Rename, EBUSY);
                replaced = round.Run([&] { return ReplaceFileContent(path, "new content"); });
            } else {
                replaced = round.Run([&] { return ReplaceFileContent(path, "new content"); });
            }
            // Without memory for the list of the folder only left-over files stay.
            EXPECT_TRUE(replaced || round.HasFailed());
            EXPECT_EQ(m_folder.Read("file"), replaced ? "new content" : "old content");
            EXPECT_EQ(m_folder.Names(), Names{"file"});
        });
        EXPECT_GT(failures, 0);
    }
    EXPECT_EQ(OpenDescriptors(), before);
}
