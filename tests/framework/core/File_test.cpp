// SPDX-License-Identifier: MIT
#include "framework/core/File.h"

#include "tests/framework/core/Folder.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

class File : public testing::Test
{
protected:
    TestFolder m_folder;
    CString m_path = m_folder.File(L"sample \u00E4\u6D4B.bin");

    void Write(const std::string& bytes)
    {
        CFile file;
        ASSERT_TRUE(file.Open(m_path, CFile::modeCreate | CFile::modeWrite));
        ASSERT_EQ(file.Write(bytes.data(), static_cast<UINT>(bytes.size())), bytes.size());
        ASSERT_TRUE(file.Close());
    }
};

} // namespace

TEST_F(File, WritesAndReadsBytesUnderAnyName)
{
    Write("a\r\nb");
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeRead | CFile::typeBinary | CFile::shareDenyNone));
    EXPECT_EQ(file.GetLength(), 4u);
    std::array<char, 16> buffer{};
    EXPECT_EQ(file.Read(buffer.data(), 16), 4u) << "all there is";
    EXPECT_STREQ(buffer.data(), "a\r\nb");
    EXPECT_EQ(file.Read(buffer.data(), 16), 0u) << "at the end";
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"sample \xC3\xA4\xE6\xB5\x8B.bin"});
}

TEST_F(File, IsNotOpenedWhereItCannotBe)
{
    CFile file;
    EXPECT_FALSE(file.Open(m_path, CFile::modeRead)) << "missing";
    EXPECT_FALSE(file.Open(m_path, CFile::modeWrite)) << "missing, not created";
    EXPECT_FALSE(file.Open(m_folder.Path(), CFile::modeRead)) << "a folder";
    EXPECT_FALSE(file.Open(m_folder.File(L"none/x"), CFile::modeCreate | CFile::modeWrite));
    EXPECT_FALSE(file.Open(L"", CFile::modeRead));
    EXPECT_FALSE(file.Open(nullptr, CFile::modeRead));
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(File, CreateEmptiesAnOldFileUnlessNoTruncateIsSet)
{
    Write("old content");
    CFile file;
    ASSERT_TRUE(
        file.Open(m_path, CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite));
    EXPECT_EQ(file.GetLength(), 11u);
    ASSERT_TRUE(file.Open(m_path, CFile::modeCreate | CFile::modeWrite));
    EXPECT_EQ(file.GetLength(), 0u);
}

TEST_F(File, SeeksFromStartHereAndEnd)
{
    Write("0123456789");
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeReadWrite));
    EXPECT_EQ(file.Seek(4, CFile::begin), 4u);
    EXPECT_EQ(file.Seek(2, CFile::current), 6u);
    EXPECT_EQ(file.Seek(-1, CFile::end), 9u);
    EXPECT_EQ(file.SeekToEnd(), 10u);
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(file.Seek(-11, CFile::end), CFile::kNoPosition);
    EXPECT_EQ(file.GetPosition(), 10u) << "a failed seek does not move";
    file.SeekToBegin();
    EXPECT_EQ(file.Write("ab", 2), 2u);
    EXPECT_EQ(file.GetPosition(), 2u);
    EXPECT_EQ(file.GetLength(), 10u);
}

TEST_F(File, ReportsAFailedWriteOnClose)
{
    Write("x");
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeRead));
    EXPECT_EQ(file.Write("y", 1), 0u);
    EXPECT_FALSE(file.Close());
    ASSERT_TRUE(file.Open(m_path, CFile::modeRead));
    EXPECT_TRUE(file.Close()) << "the failure belonged to the file before";
}

TEST_F(File, WritesWhatFitsOnAFullDisk)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeCreate | CFile::modeWrite));
    {
        const FileSizeLimit limit(5);
        EXPECT_EQ(file.Write("0123456789", 10), 5u);
    }
    EXPECT_FALSE(file.Close());
}

TEST_F(File, DoesNothingWhileNotOpen)
{
    CFile file;
    char byte = 0;
    EXPECT_EQ(file.Read(&byte, 1), 0u);
    EXPECT_EQ(file.Write(&byte, 1), 0u);
    EXPECT_FALSE(file.Flush());
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_EQ(file.GetPosition(), CFile::kNoPosition);
    EXPECT_EQ(file.SeekToEnd(), CFile::kNoPosition);
    EXPECT_FALSE(file.Close());
    file.Abort();
}

TEST_F(File, FlushesWhatWasWritten)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path, CFile::modeCreate | CFile::modeWrite));
    EXPECT_EQ(file.Write("abc", 3), 3u);
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(m_folder.Read("sample \xC3\xA4\xE6\xB5\x8B.bin"), "abc");
}

TEST_F(File, IsClosedByItsDestructor)
{
    const int before = OpenDescriptors();
    {
        CFile file;
        ASSERT_TRUE(file.Open(m_path, CFile::modeCreate | CFile::modeWrite));
        ASSERT_TRUE(file.Open(m_path, CFile::modeRead));
        EXPECT_EQ(OpenDescriptors(), before + 1);
    }
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(File, IsRemovedAndRenamed)
{
    Write("x");
    const CString other = m_folder.File(L"other");
    EXPECT_TRUE(CFile::Rename(m_path, other));
    EXPECT_FALSE(CFile::Rename(m_path, other));
    EXPECT_TRUE(CFile::Remove(other));
    EXPECT_FALSE(CFile::Remove(other));
    EXPECT_FALSE(CFile::Remove(nullptr));
}
