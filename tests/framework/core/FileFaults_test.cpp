// SPDX-License-Identifier: MIT
//
// Calls of the system that fail while a file is replaced or read: the old content stays until the
// new one is whole, and what failed is reported.
#include "framework/core/AtomicFile.h"
#include "framework/core/File.h"
#include "tests/framework/core/Folder.h"
#include "tests/framework/core/OrdinaryUser.h"
#include "tests/reference/RefusedCalls.h"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using framework::FileReplacement;
using framework::ReplaceFileContent;
using reference::Call;
using reference::Refused;

namespace {

using Names = std::vector<std::string>;
constexpr const char* kNote = "user.note";

class FileFaults : public testing::Test
{
protected:
    TestFolder m_folder;
    CString m_path = m_folder.File(L"file");

    FileFaults() { m_folder.Write("file", "old content"); }

    std::string Path() const { return m_folder.Native() / "file"; }
    bool SetNote() const { return ::setxattr(Path().c_str(), kNote, "mine", 4, 0) == 0; }
    std::string Note() const
    {
        std::array<char, 64> value{};
        const ssize_t size = ::getxattr(Path().c_str(), kNote, value.data(), value.size());
        return size < 0 ? "" : std::string(value.data(), static_cast<std::size_t>(size));
    }
    ino_t Node() const
    {
        struct stat status
        {};
        EXPECT_EQ(::stat(Path().c_str(), &status), 0);
        return status.st_ino;
    }

    // A replacement that is written in place fails with `error`.
    void ExpectInPlaceFails(Call call, int error, int first = 1) const
    {
        const Refused mountPoint(Call::Rename, EBUSY);
        const Refused refused(call, error, first);
        FileReplacement file(Path());
        EXPECT_TRUE(file.Write("new"));
        EXPECT_FALSE(file.Commit());
        EXPECT_EQ(file.Error(), error);
        EXPECT_GE(refused.Count(), 1);
    }
};

class WorkingFolder
{
public:
    explicit WorkingFolder(const std::filesystem::path& folder)
        : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~WorkingFolder() { std::filesystem::current_path(m_before); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    std::filesystem::path m_before;
};

} // namespace

TEST_F(FileFaults, LeaveTheOldContentOrTheNewOneWhicheverCallFails)
{
    for (const Call call : {Call::ChangeMode, Call::Rename, Call::Flush, Call::Status, Call::Lock,
                            Call::Write, Call::Close, Call::ListAttributes, Call::Entropy}) {
        for (const int error : {EIO, EINTR, ENOSPC}) {
            for (int number = 1; number < 100; ++number) {
                m_folder.Write("file", "old content");
                const Refused refused(call, error, number, number);
                const bool replaced = ReplaceFileContent(m_path, "new");
                EXPECT_EQ(m_folder.Read("file"), replaced ? "new" : "old content")
                    << static_cast<int>(call) << ' ' << error << ' ' << number;
                EXPECT_EQ(m_folder.Names(), Names{"file"});
                if (refused.Count() == 0) break;
            }
        }
    }
}

TEST_F(FileFaults, AreReportedWhereTheFileIsWrittenInPlace)
{
    ExpectInPlaceFails(Call::ReadAt, EIO);
    EXPECT_EQ(m_folder.Read("file"), "old content");
    ExpectInPlaceFails(Call::Write, EIO, 2);
    EXPECT_EQ(m_folder.Read("file"), "old content");
    ExpectInPlaceFails(Call::Flush, EIO, 2);
    ExpectInPlaceFails(Call::Truncate, EIO);
    ExpectInPlaceFails(Call::Close, EIO);
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(FileFaults, InterruptedCallsAreRepeated)
{
    const Refused mountPoint(Call::Rename, EBUSY);
    const Refused write(Call::Write, EINTR, 1, 1);
    const Refused read(Call::ReadAt, EINTR, 1, 1);
    EXPECT_TRUE(ReplaceFileContent(m_path, "new"));
    EXPECT_EQ(m_folder.Read("file"), "new");
    EXPECT_EQ(write.Count(), 1);
    EXPECT_EQ(read.Count(), 1);
}

TEST_F(FileFaults, WithoutRoomNothingIsWrittenInPlace)
{
    const Refused mountPoint(Call::Rename, EBUSY);
    for (const int error : {ENOSPC, EDQUOT, EFBIG, EIO}) {
        const Refused refused(Call::Reserve, error);
        FileReplacement file(Path());
        EXPECT_TRUE(file.Write("longer than the old content"));
        EXPECT_FALSE(file.Commit());
        EXPECT_EQ(file.Error(), error);
        EXPECT_EQ(m_folder.Read("file"), "old content");
    }
}

TEST_F(FileFaults, AFileSystemThatReservesNothingIsWrittenWithout)
{
    const Refused mountPoint(Call::Rename, EBUSY);
    const Refused refused(Call::Reserve, EOPNOTSUPP);
    EXPECT_TRUE(ReplaceFileContent(m_path, "longer than the old content"));
    EXPECT_EQ(m_folder.Read("file"), "longer than the old content");
    EXPECT_EQ(refused.Count(), 1);
}

TEST_F(FileFaults, WithoutADescriptorTheOldContentStays)
{
    const auto path = Path(); // a sanitizer that looks at a member call needs descriptors
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    FileReplacement file(path);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(file.Write("new"));
    EXPECT_FALSE(file.Commit());
    EXPECT_EQ(file.Error(), EMFILE);
    EXPECT_EQ(m_folder.Read("file"), "old content");
}

TEST_F(FileFaults, WithoutRandomBytesNamesComeFromTheClock)
{
    const Refused refused(Call::Entropy, ENOSYS);
    FileReplacement first(Path());
    FileReplacement second(m_folder.Native() / "other");
    EXPECT_TRUE(first.Write("first") && second.Write("second"));
    EXPECT_EQ(m_folder.Names().size(), 3u);
    EXPECT_TRUE(first.Commit() && second.Commit());
    EXPECT_EQ(m_folder.Read("file"), "first");
    EXPECT_EQ(m_folder.Read("other"), "second");
    EXPECT_EQ(m_folder.Names(), (Names{"file", "other"}));
}

// One that another process locked first is taken for a left-over one, and removed by it.
TEST_F(FileFaults, ATemporaryFileThatAnotherLockedIsNotUsed)
{
    const Refused refused(Call::Lock, EWOULDBLOCK, 1, 3);
    EXPECT_TRUE(ReplaceFileContent(m_path, "new"));
    EXPECT_EQ(refused.Count(), 3);
    EXPECT_EQ(m_folder.Read("file"), "new");
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(FileFaults, ReplacementOfARelativeNameIsInTheWorkingFolder)
{
    const WorkingFolder here(m_folder.Native());
    EXPECT_TRUE(ReplaceFileContent(L"file", "new"));
    EXPECT_EQ(m_folder.Read("file"), "new");
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(FileFaults, ANameInTheRootFolderIsMadeThere)
{
    const WorkingFolder here(m_folder.Native());
    ::chmod(m_folder.Native().c_str(), 0777);
    const OrdinaryUser user;
    FileReplacement file("/tiltpole-makes-nothing-here");
    EXPECT_FALSE(file.Commit());
    EXPECT_TRUE(file.Error() == EACCES || file.Error() == EROFS) << "not of an ordinary user";
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(FileFaults, AnAttributeThatGrowsWhileItIsReadIsKept)
{
    if (!SetNote()) GTEST_SKIP() << "a file system without attributes";
    const Refused grew(Call::GetAttribute, ERANGE, 2, 2);
    const ino_t before = Node();
    EXPECT_TRUE(ReplaceFileContent(m_path, "new"));
    EXPECT_EQ(grew.Count(), 1);
    EXPECT_NE(Node(), before) << "replaced";
    EXPECT_EQ(Note(), "mine");
}

TEST_F(FileFaults, AnAttributeThatIsGoneMeanwhileIsLeftOut)
{
    if (!SetNote()) GTEST_SKIP() << "a file system without attributes";
    const ino_t before = Node();
    {
        const Refused gone(Call::GetAttribute, ENODATA);
        EXPECT_TRUE(ReplaceFileContent(m_path, "new"));
    }
    EXPECT_NE(Node(), before) << "replaced";
    EXPECT_EQ(Note(), "");
}

TEST_F(FileFaults, AnAttributeThatCannotBeReadIsKeptByWritingInPlace)
{
    if (!SetNote()) GTEST_SKIP() << "a file system without attributes";
    const ino_t before = Node();
    for (const auto& [error, first] : {
             std::pair{EIO,    1},
             std::pair{EIO,    2},
             std::pair{ERANGE, 2}
    }) {
        {
            const Refused refused(Call::GetAttribute, error, first);
            EXPECT_TRUE(ReplaceFileContent(m_path, "new"));
        }
        EXPECT_EQ(Node(), before) << "written in place";
        EXPECT_EQ(Note(), "mine");
        EXPECT_EQ(m_folder.Names(), Names{"file"});
    }
}

TEST_F(FileFaults, FortyReplacementsAtOnceSucceed)
{
    std::vector<std::unique_ptr<FileReplacement>> files;
    for (int i = 100; i < 140; ++i) {
        files.push_back(std::make_unique<FileReplacement>(m_folder.Native() / std::to_string(i)));
        EXPECT_TRUE(files.back()->Write(std::to_string(i)));
    }
    for (const auto& file : files)
        EXPECT_TRUE(file->Commit());
    files.clear();
    EXPECT_EQ(m_folder.Names().size(), 41u) << "one each, and the one from before";
    for (int i = 100; i < 140; ++i)
        EXPECT_EQ(m_folder.Read(std::to_string(i)), std::to_string(i));
}

TEST_F(FileFaults, AnInterruptedReadIsRepeated)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeRead));
    std::array<char, 16> buffer{};
    const Refused refused(Call::Read, EINTR, 1, 1);
    EXPECT_EQ(file.Read(buffer.data(), 16), 11u);
    EXPECT_STREQ(buffer.data(), "old content");
    EXPECT_EQ(refused.Count(), 1);
    EXPECT_TRUE(file.Close());
}

TEST_F(FileFaults, AReadThatFailedIsReportedOnClose)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeRead));
    std::array<char, 16> buffer{};
    {
        const Refused refused(Call::Read, EIO);
        EXPECT_EQ(file.Read(buffer.data(), 16), 0u);
    }
    EXPECT_FALSE(file.Close());
}

TEST_F(FileFaults, AFileThatTellsNothingOfItselfIsNotOpened)
{
    const int before = OpenDescriptors();
    {
        const Refused refused(Call::Status, EIO);
        CFile file;
        EXPECT_FALSE(file.Open(m_path, CFile::modeRead));
    }
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(FileFaults, AFlushThatFailedIsReportedUnlessThereIsNothingToFlush)
{
    for (const auto& [error, flushed] : {
             std::pair{EINVAL, TRUE },
             std::pair{EIO,    FALSE}
    }) {
        CFile file;
        ASSERT_TRUE(file.Open(m_path, CFile::modeWrite));
        const Refused refused(Call::Flush, error);
        EXPECT_EQ(file.Flush(), flushed);
        EXPECT_EQ(file.Close(), flushed);
    }
}

TEST_F(FileFaults, ACloseThatFailedIsReported)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeWrite));
    const Refused refused(Call::Close, EIO);
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.IsOpen());
}
