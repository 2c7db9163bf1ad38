// SPDX-License-Identifier: MIT
//
// Access control lists and extended attributes of a file that is replaced.
#include "framework/core/AtomicFile.h"
#include "tests/framework/core/Folder.h"
#include "tests/reference/RefusedCalls.h"

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/xattr.h>

using framework::ReplaceFileContent;

namespace {

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr const char* kFolderList = "system.posix_acl_default";
constexpr const char* kNote = "user.note";

void AppendNumber(std::string& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xff);
}

// Read and write for the owner and one more user, nothing for others: in the form of the kernel,
// a version and entries of tag, rights and user.
std::string AccessListFor(std::uint32_t user)
{
    struct Entry
    {
        std::uint32_t tag, rights, who;
    };
    constexpr std::uint32_t kNobody = 0xffffffff;
    std::string bytes;
    AppendNumber(bytes, 2, 4);
    for (const Entry& entry : {
             Entry{0x01, 6, kNobody},
             Entry{0x02, 6, user   },
             Entry{0x04, 0, kNobody},
             Entry{0x10, 6, kNobody},
             Entry{0x20, 0, kNobody}
    }) {
        AppendNumber(bytes, entry.tag, 2);
        AppendNumber(bytes, entry.rights, 2);
        AppendNumber(bytes, entry.who, 4);
    }
    return bytes;
}

class FileAccess : public testing::Test
{
protected:
    TestFolder m_folder;

    FileAccess() { m_folder.Write("file", "old"); }

    std::string Path(const char* name) const { return m_folder.Native() / name; }
    bool Set(const char* file, const char* name, const std::string& value) const
    {
        return ::setxattr(Path(file).c_str(), name, value.data(), value.size(), 0) == 0;
    }
    std::string Get(const char* file, const char* name) const
    {
        std::string value(256, '\0');
        const ssize_t size = ::getxattr(Path(file).c_str(), name, value.data(), value.size());
        value.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        return value;
    }
    struct stat Status() const
    {
        struct stat status
        {};
        EXPECT_EQ(::stat(Path("file").c_str(), &status), 0);
        return status;
    }
};

} // namespace

TEST_F(FileAccess, KeepsExtendedAttributes)
{
    if (!Set("file", kNote, "of the owner")) GTEST_SKIP() << "a file system without attributes";
    const ino_t before = Status().st_ino;
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_NE(Status().st_ino, before) << "replaced";
    EXPECT_EQ(Get("file", kNote), "of the owner");
    EXPECT_EQ(m_folder.Read("file"), "new");
}

TEST_F(FileAccess, KeepsTheAccessListAndThePermissionsBesideIt)
{
    const std::string list = AccessListFor(4711);
    if (!Set("file", kAccessList, list)) GTEST_SKIP() << "a file system without access lists";
    const struct stat before = Status();
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_NE(Status().st_ino, before.st_ino) << "replaced";
    EXPECT_EQ(Get("file", kAccessList), list);
    EXPECT_EQ(Status().st_mode, before.st_mode);
}

// What others may not read is not copied, and what is copied stands beside it in any order.
TEST_F(FileAccess, LeavesAttributesOfTheSystemsOwnToTheSystem)
{
    const std::string list = AccessListFor(4711);
    if (!Set("file", "trusted.mark", "root's") || !Set("file", kAccessList, list)
        || !Set("file", kNote, "of the owner"))
        GTEST_SKIP() << "a file system without attributes, or no rights to set all";
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(Get("file", kNote), "of the owner");
    EXPECT_EQ(Get("file", kAccessList), list);
    EXPECT_EQ(Get("file", "trusted.mark"), "");
}

TEST_F(FileAccess, KeepsAGroupThatIsNotTheOwners)
{
    constexpr gid_t kOther = 4711;
    if (::chown(Path("file").c_str(), static_cast<uid_t>(-1), kOther) != 0)
        GTEST_SKIP() << "no rights to give a file to a group";
    ASSERT_EQ(::chmod(Path("file").c_str(), 0660), 0);
    const ino_t before = Status().st_ino;
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_NE(Status().st_ino, before) << "replaced";
    EXPECT_EQ(Status().st_gid, kOther);
    EXPECT_EQ(Status().st_mode & 07777u, 0660u);
}

TEST_F(FileAccess, IsNotWidenedByTheListThatTheFolderGivesNewFiles)
{
    ASSERT_EQ(::chmod(Path("file").c_str(), 0640), 0);
    if (!Set(".", kFolderList, AccessListFor(4711)))
        GTEST_SKIP() << "a file system without access lists";
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(Get("file", kAccessList), "");
    EXPECT_EQ(Status().st_mode & 07777u, 0640u);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"made"), "new"));
    EXPECT_NE(Get("made", kAccessList), "") << "a file that is made anew is the folder's";
}

TEST_F(FileAccess, IsKeptByWritingInPlaceWhereTheNewFileMayNotHaveIt)
{
    if (!Set("file", kNote, "of the owner")) GTEST_SKIP() << "a file system without attributes";
    const reference::Refused refused(reference::Call::SetAttribute, EPERM);
    const ino_t before = Status().st_ino;
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "new"));
    EXPECT_EQ(Status().st_ino, before);
    EXPECT_EQ(refused.Count(), 1);
    EXPECT_EQ(Get("file", kNote), "of the owner");
    EXPECT_EQ(m_folder.Read("file"), "new");
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"file"});
}
