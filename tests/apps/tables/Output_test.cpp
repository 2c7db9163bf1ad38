// SPDX-License-Identifier: MIT
#include "apps/tables/Output.h"

#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(OutputFiles, AreReplacedTogether)
{
    const ScratchFolder folder;
    const std::string tips = folder.Write("tips.csv", "old");
    const std::string plot = folder.Path("plot.svg");
    tables::OutputFiles files;
    files.Write("", "nothing");
    files.Write(plot, "new plot");
    files.Open(tips).Write(std::string(300000, 'n'));
    EXPECT_EQ(ReadAll(tips), "old");
    EXPECT_FALSE(fs::exists(plot));
    files.Finish();
    EXPECT_EQ(ReadAll(tips), std::string(300000, 'n'));
    EXPECT_EQ(ReadAll(plot), "new plot");
}

TEST(OutputFiles, StayOldWhereOneCannotBeWritten)
{
    const ScratchFolder folder;
    const std::string tips = folder.Write("tips.csv", "old");
    tables::OutputFiles files;
    files.Write(tips, "new");
    files.Write("/dev/full", "new");
    EXPECT_THROW(files.Finish(), tables::InputError);
    EXPECT_EQ(ReadAll(tips), "old");
    EXPECT_THROW(files.Open(folder.Path("nowhere/plot.svg")), tables::InputError);
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

std::string Refusal(std::initializer_list<std::string> outputs,
                    std::initializer_list<std::string> inputs)
{
    try {
        tables::KeepApart(outputs, inputs);
    } catch (const tables::InputError& error) {
        return error.what();
    }
    return "";
}

TEST(Output, IsNotAnInputUnderAnyName)
{
    const ScratchFolder folder;
    const std::string log = folder.Write("log.csv", "readings");
    const std::string link = folder.Path("latest.csv");
    fs::create_symlink(log, link);
    const std::string hardLink = folder.Path("same.csv");
    fs::create_hard_link(log, hardLink);
    const std::string reason = ": is an input of this command; choose another output file";
    EXPECT_EQ(Refusal({"", log}, {"other.csv", log}), log + reason);
    EXPECT_EQ(Refusal({link}, {log}), link + reason);
    EXPECT_EQ(Refusal({log}, {link}), log + reason);
    EXPECT_EQ(Refusal({hardLink}, {log}), hardLink + reason);
    EXPECT_EQ(Refusal({"", "-", folder.Path("new.csv")}, {log, "-", ""}), "");
}

TEST(Output, IsNotAnotherOutputUnderAnyName)
{
    const ScratchFolder folder;
    const std::string made = folder.Path("made.csv");
    const std::string dangling = folder.Path("latest.csv");
    fs::create_symlink("made.csv", dangling);
    const std::string roundabout = folder.Path("./sub/../made.csv");
    fs::create_directory(folder.Path("sub"));
    for (const std::string& other : {made, dangling, roundabout}) {
        EXPECT_EQ(Refusal({made, "", other}, {}), other + ": is the same file as the output " + made
                                                      + "; choose another name for one of them");
    }
    folder.Write("made.csv", "there already");
    EXPECT_NE(Refusal({made, dangling}, {}), "");
    EXPECT_EQ(Refusal({made, folder.Path("sub/made.csv"), folder.Path("none/made.csv")}, {}), "");
}

TEST(Output, MayBeADeviceMoreThanOnce)
{
    EXPECT_EQ(Refusal({"/dev/null", "/dev/null"}, {"/dev/null"}), "");
}

TEST(Output, IsNotAPipeTwice)
{
    const ScratchFolder folder;
    const std::string pipe = folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_NE(Refusal({pipe, pipe}, {}), "");
    EXPECT_NE(Refusal({pipe}, {pipe}), "");
}

TEST(Output, LeavesAReadOnlyFileAlone)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("tips.csv", "old");
    fs::permissions(path, fs::perms::owner_read);
    try {
        tables::WriteFile(path, "new");
        FAIL() << "written";
    } catch (const tables::InputError& error) {
        EXPECT_EQ(error.what(), path
                                    + ": is a read-only file and was left as it is; choose another "
                                      "output file, or allow writing with chmod u+w");
    }
    EXPECT_EQ(ReadAll(path), "old");
}

TEST(Output, AFullDeviceIsAnError)
{
    try {
        tables::WriteFile("/dev/full", "content");
        FAIL() << "written";
    } catch (const tables::InputError& error) {
        EXPECT_STREQ(error.what(), "/dev/full: cannot be written: No space left on device");
    }
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

TEST(Output, AFolderThatTakesNoFilesIsReported)
{
    try {
        tables::WriteFile("/dev/pts/tips.csv", "content"); // not even of the superuser
        FAIL() << "written";
    } catch (const tables::InputError& error) {
        EXPECT_STREQ(error.what(), "/dev/pts/tips.csv: cannot be written: Permission denied");
    }
}

TEST(Output, AFolderThatIsGoneAtTheEndIsReported)
{
    const ScratchFolder folder;
    fs::create_directory(folder.Path("sub"));
    Output output(folder.Path("sub/tips.csv"));
    output.Write("content");
    fs::remove_all(folder.Path("sub"));
    EXPECT_THROW(output.Finish(), tables::InputError);
    EXPECT_TRUE(folder.Names().empty());
}

TEST(OutputFiles, NameTheOneThatCannotBePutInItsPlace)
{
    const ScratchFolder folder;
    const std::string tips = folder.Write("tips.csv", "old");
    fs::create_directory(folder.Path("sub"));
    tables::OutputFiles files;
    files.Write("-", "");
    files.Write(tips, "new");
    files.Write(folder.Path("sub/plot.svg"), "new");
    fs::remove_all(folder.Path("sub"));
    try {
        files.Finish();
        FAIL() << "written";
    } catch (const tables::InputError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith(folder.Path("sub/plot.svg: cannot be ")));
    }
    EXPECT_THAT(ReadAll(tips), testing::AnyOf("old", "new")) << "it is whole";
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(Output, ThatIsAClosedStreamIsNoOtherFile)
{
    const int kept = dup(STDOUT_FILENO);
    close(STDOUT_FILENO);
    const std::string refusal = Refusal({"-", "-"}, {});
    dup2(kept, STDOUT_FILENO);
    close(kept);
    EXPECT_EQ(refusal, "");
}

} // namespace
