// SPDX-License-Identifier: MIT
#include "apps/tables/Output.h"

#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using apps::test::ReadAll;
using apps::test::ScratchFolder;
using tables::Output;
namespace fs = std::filesystem;

TEST(Output, TheOldFileRemainsUntilTheNewOneIsComplete)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("tips.csv", "old");
    Output output(path);
    output.Write(std::string(300000, 'n'));
    EXPECT_EQ(ReadAll(path), "old");
    output.Finish();
    EXPECT_EQ(ReadAll(path), std::string(300000, 'n'));
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(Output, AnUnfinishedFileLeavesNothingBehind)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("tips.csv", "old");
    {
        Output output(path);
        output.Write(std::string(300000, 'n'));
    }
    EXPECT_EQ(ReadAll(path), "old");
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(Output, KeepsTheModeAndTheLinkOfTheOldFile)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("tips.csv", "old");
    const std::string link = folder.Path("latest.csv");
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(path, link);
    tables::WriteFile(link, "new");
    EXPECT_EQ(ReadAll(path), "new");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(Output, AnInputFileIsProtected)
{
    const ScratchFolder folder;
    const std::string log = folder.Write("log.csv", "readings");
    const std::string link = folder.Path("latest.csv");
    fs::create_symlink(log, link);
    EXPECT_THROW(tables::KeepInputs({"", log}, {"other.csv", log}), tables::InputError);
    EXPECT_THROW(tables::KeepInputs({link}, {log}), tables::InputError) << "by another name";
    EXPECT_NO_THROW(tables::KeepInputs({"", "-", folder.Path("new.csv")}, {log, "-", ""}));
}

TEST(Output, AFullDeviceIsAnError)
{
    EXPECT_THROW(tables::WriteFile("/dev/full", "content"), tables::InputError);
}

TEST(Output, AMissingFolderIsReported)
{
    const ScratchFolder folder;
    try {
        tables::WriteFile(folder.Path("none/tips.csv"), "content");
        FAIL() << "written";
    } catch (const tables::InputError& error) {
        EXPECT_THAT(error.what(),
                    testing::EndsWith("tips.csv: cannot be written: No such file or directory"));
    }
}

} // namespace
