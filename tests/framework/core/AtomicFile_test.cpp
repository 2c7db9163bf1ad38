// SPDX-License-Identifier: MIT
#include "framework/core/AtomicFile.h"

#include "tests/framework/core/Folder.h"
#include "tests/framework/core/OrdinaryUser.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using framework::ReplaceFileContent;

namespace {

using Names = std::vector<std::string>;

class AtomicFile : public testing::Test
{
protected:
    TestFolder m_folder;

    mode_t ModeOf(const char* name) const
    {
        struct stat status
        {};
        ::stat((m_folder.Native() / name).c_str(), &status);
        return status.st_mode & 07777;
    }
};

} // namespace

TEST_F(AtomicFile, IsMadeWhereThereWasNone)
{
    const mode_t mask = ::umask(027);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"new"), "content"));
    ::umask(mask);
    EXPECT_EQ(m_folder.Read("new"), "content");
    EXPECT_EQ(ModeOf("new"), 0640u);
    EXPECT_EQ(m_folder.Names(), Names{"new"});
}

TEST_F(AtomicFile, ReplacesTheWholeContentAndKeepsPermissions)
{
    m_folder.Write("old", "a longer old content");
    ::chmod((m_folder.Native() / "old").c_str(), 0604);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"old"), "new"));
    EXPECT_EQ(m_folder.Read("old"), "new");
    EXPECT_EQ(ModeOf("old"), 0604u);
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"old"), ""));
    EXPECT_EQ(m_folder.Read("old"), "");
    EXPECT_EQ(m_folder.Names(), Names{"old"});
}

TEST_F(AtomicFile, IsAnotherFileThanTheOneAReaderHolds)
{
    m_folder.Write("old", "old content");
    std::ifstream reader(m_folder.Native() / "old");
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"old"), "new"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "old content");
}

TEST_F(AtomicFile, StaysWholeOnAFullDisk)
{
    m_folder.Write("old", "old content");
    {
        const FileSizeLimit limit(100);
        EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"old"), std::string(1000, 'x')));
        EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"new"), std::string(1000, 'x')));
    }
    EXPECT_EQ(m_folder.Read("old"), "old content");
    EXPECT_EQ(m_folder.Names(), Names{"old"});
}

TEST_F(AtomicFile, LeavesAFolderAndAMissingFolderAlone)
{
    EXPECT_FALSE(ReplaceFileContent(m_folder.Path(), "x"));
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"new/"), "x"));
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"none/new"), "x"));
    EXPECT_FALSE(ReplaceFileContent(L"", "x"));
    m_folder.Write("file", "y");
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"file/new"), "x"));
    EXPECT_EQ(m_folder.Names(), Names{"file"});
}

TEST_F(AtomicFile, FollowsLinksAndKeepsThem)
{
    std::filesystem::create_directory(m_folder.Native() / "data");
    m_folder.Write("data/file", "old");
    std::filesystem::create_symlink("data/file", m_folder.Native() / "link");
    std::filesystem::create_symlink(m_folder.Native() / "link", m_folder.Native() / "second");
    std::filesystem::create_symlink("data/made", m_folder.Native() / "dangling");
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"second"), "new"));
    EXPECT_EQ(m_folder.Read("data/file"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Native() / "link"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Native() / "second"));
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"dangling"), "made"));
    EXPECT_EQ(m_folder.Read("data/made"), "made");
}

TEST_F(AtomicFile, GivesUpOnLinksInACircle)
{
    std::filesystem::create_symlink("b", m_folder.Native() / "a");
    std::filesystem::create_symlink("a", m_folder.Native() / "b");
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"a"), "x"));
    EXPECT_EQ(m_folder.Names(), (Names{"a", "b"}));
}

TEST_F(AtomicFile, WritesIntoADeviceInPlace)
{
    EXPECT_TRUE(ReplaceFileContent(L"/dev/null", "x"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_FALSE(ReplaceFileContent(L"/dev/full", "x"));
}

TEST_F(AtomicFile, LeavesAFileAloneThatMayNotBeWritten)
{
    m_folder.Write("locked", "old");
    ::chmod((m_folder.Native() / "locked").c_str(), 0444);
    ::chmod(m_folder.Native().c_str(), 0777);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"locked"), "new"));
    }
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"locked"), "new")) << "not by root either";
    EXPECT_EQ(m_folder.Read("locked"), "old");
}

TEST_F(AtomicFile, IsReplacedTogetherWithAnother)
{
    m_folder.Write("a", "old a");
    framework::FileReplacement a((m_folder.Native() / "a").string());
    framework::FileReplacement b((m_folder.Native() / "b").string());
    EXPECT_TRUE(a.Write("new a"));
    EXPECT_TRUE(b.Write("new b"));
    EXPECT_EQ(m_folder.Read("a"), "old a");
    framework::FileReplacement* const both[] = {&a, &b};
    EXPECT_TRUE(framework::CommitTogether(both));
    EXPECT_EQ(m_folder.Read("a"), "new a");
    EXPECT_EQ(m_folder.Read("b"), "new b");
    EXPECT_EQ(m_folder.Names(), (Names{"a", "b"}));
}

TEST_F(AtomicFile, IsNotReplacedWhereOneOfThemCannotBe)
{
    m_folder.Write("a", "old a");
    framework::FileReplacement a((m_folder.Native() / "a").string());
    framework::FileReplacement full("/dev/full");
    EXPECT_TRUE(a.Write("new a"));
    EXPECT_FALSE(full.Write("new"));
    framework::FileReplacement* const both[] = {&a, &full};
    EXPECT_FALSE(framework::CommitTogether(both));
    EXPECT_EQ(full.Error(), ENOSPC);
    EXPECT_EQ(a.Error(), 0);
    EXPECT_EQ(m_folder.Read("a"), "old a");
}

TEST_F(AtomicFile, IsNotReplacedOnceARenamingFailed)
{
    m_folder.Write("a", "old a");
    framework::FileReplacement a((m_folder.Native() / "a").string());
    framework::FileReplacement gone((m_folder.Native() / "b").string());
    EXPECT_TRUE(a.Write("new a"));
    EXPECT_TRUE(gone.Write("new b"));
    std::filesystem::create_directory(m_folder.Native() / "b"); // which no file can replace
    framework::FileReplacement* const both[] = {&gone, &a};
    EXPECT_FALSE(framework::CommitTogether(both));
    EXPECT_EQ(gone.Error(), EISDIR);
    EXPECT_EQ(m_folder.Read("a"), "old a");
}

TEST_F(AtomicFile, LeavesNoDescriptorOpen)
{
    const int before = OpenDescriptors();
    EXPECT_TRUE(ReplaceFileContent(m_folder.File(L"file"), "x"));
    EXPECT_FALSE(ReplaceFileContent(m_folder.File(L"none/file"), "x"));
    EXPECT_EQ(OpenDescriptors(), before);
}
