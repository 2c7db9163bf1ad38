// SPDX-License-Identifier: MIT
//
// What running out of memory does to files, paths and texts.
#include "framework/core/File.h"
#include "framework/core/Paths.h"
#include "framework/core/String.h"
#include "tests/framework/core/Folder.h"
#include "tests/reference/FailingAllocations.h"

#include <array>
#include <gtest/gtest.h>
#include <new>

using reference::ForEveryFailingAllocation;

namespace {

class OutOfMemory : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!reference::CanFailAllocations())
            GTEST_SKIP() << "another tool's allocator is in place";
    }

    TestFolder m_folder;
    CString m_path = m_folder.File(L"a name too long to be stored within a string object");
};

} // namespace

TEST_F(OutOfMemory, IsAFailureOfAFile)
{
    const CString other = m_folder.File(L"another name too long to be stored within one");
    const long failures = ForEveryFailingAllocation([&](auto& round) {
        bool done = false;
        EXPECT_NO_THROW(done = round.Run([&] {
            CFile file;
            return file.Open(m_path, CFile::modeCreate | CFile::modeWrite)
                   && file.Write("x", 1) == 1 && file.Flush() && file.Close()
                   && CFile::Rename(m_path, other) && CFile::Remove(other);
        }));
        EXPECT_EQ(done, !round.HasFailed());
        CFile::Remove(m_path);
        CFile::Remove(other);
    });
    EXPECT_GE(failures, 2 * 4) << "every path is converted";
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(OutOfMemory, IsAFailureOfPathFunctions)
{
    const long failures = ForEveryFailingAllocation([&](auto& round) {
        bool done = false;
        std::array<wchar_t, 4096> buffer;
        EXPECT_NO_THROW(done = round.Run([&] {
            const bool made = framework::MakeFolder(m_path);
            const bool found = GetFileAttributesW(m_path) == FILE_ATTRIBUTE_DIRECTORY;
            const DWORD length =
                GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
            return made && found && length != 0;
        }));
        if (!round.HasFailed()) {
            EXPECT_TRUE(done);
        }
    });
    EXPECT_GE(failures, 2 * 3);
}

TEST_F(OutOfMemory, LeavesATextAsItWas)
{
    const wchar_t* const kBefore = L"a text that is too long to be stored within the object";
    const long failures = ForEveryFailingAllocation([&](auto& round) {
        CString text = kBefore;
        try {
            round.Run([&] { text.Format(L"%s%s%s%s", text, text, text, text); });
            EXPECT_FALSE(round.HasFailed());
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(text, kBefore);
        }
        text = kBefore;
        try {
            round.Run([&] { text += CString(L'x', 300); });
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(text, kBefore);
        }
        text = kBefore;
        try {
            round.Run([&] { text.Replace(L"o", L"a much longer part of a text"); });
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(text, kBefore);
        }
    });
    EXPECT_GT(failures, 0);
}
