// SPDX-License-Identifier: MIT
#include "apps/tables/ReadFile.h"

#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using apps::test::ScratchFolder;
using tables::ReadFile;
using testing::EndsWith;

// What ReadFile says about the file; empty where it reads it.
std::string Complaint(const std::string& path, std::uint64_t mostBytes)
{
    try {
        ReadFile(path, mostBytes);
    } catch (const tables::InputError& error) {
        return error.what();
    }
    return {};
}

TEST(ReadFile, ReturnsEveryByte)
{
    const ScratchFolder folder;
    const std::string content = std::string(10000, 'x') + std::string("\0\r\n", 3);
    EXPECT_EQ(ReadFile(folder.Write("file", content)), content);
}

TEST(ReadFile, RejectsFilesAboveTheLimit)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("file", std::string((1 << 20) + 1, 'x'));
    EXPECT_EQ(Complaint(path, (1 << 20) + 1), "");
    EXPECT_THAT(Complaint(path, 1 << 20), EndsWith("file: is larger than 1 MiB"));
}

TEST(ReadFile, RejectsADeviceWithoutEnd)
{
    EXPECT_EQ(Complaint("/dev/zero", 2 << 20), "/dev/zero: is larger than 2 MiB");
}

TEST(ReadFile, NamesAMissingFile)
{
    const ScratchFolder folder;
    EXPECT_THAT(Complaint(folder.Path("none"), 1), EndsWith("none: No such file or directory"));
}

} // namespace
