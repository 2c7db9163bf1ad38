// SPDX-License-Identifier: MIT
#include "apps/cli/Output.h"

#include "apps/cli/Errors.h"
#include "tests/apps/cli/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using cli::Output;
using cli::test::ReadAll;
using cli::test::ScratchFolder;
namespace fs = std::filesystem;

TEST(Output, TheOldFileStandsUntilTheNewOneIsWhole)
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

TEST(Output, WhatIsNotFinishedLeavesNothingBehind)
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
    cli::WriteFile(link, "new");
    EXPECT_EQ(ReadAll(path), "new");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(Output, AFileThatIsReadIsKept)
{
    const ScratchFolder folder;
    const std::string log = folder.Write("log.csv", "readings");
    const std::string link = folder.Path("latest.csv");
    fs::create_symlink(log, link);
    EXPECT_THROW(cli::KeepInputs({"", log}, {"other.csv", log}), cli::InputError);
    EXPECT_THROW(cli::KeepInputs({link}, {log}), cli::InputError) << "by another name";
    EXPECT_NO_THROW(cli::KeepInputs({"", "-", folder.Path("new.csv")}, {log, "-", ""}));
}

TEST(Output, AFullDeviceIsAnError)
{
    EXPECT_THROW(cli::WriteFile("/dev/full", "content"), cli::InputError);
}

TEST(Output, AFolderThatIsNotThereIsNamed)
{
    const ScratchFolder folder;
    try {
        cli::WriteFile(folder.Path("none/tips.csv"), "content");
        FAIL() << "written";
    } catch (const cli::InputError& error) {
        EXPECT_THAT(error.what(),
                    testing::EndsWith("tips.csv: cannot be written: No such file or directory"));
    }
}

} // namespace
