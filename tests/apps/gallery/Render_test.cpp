// SPDX-License-Identifier: MIT
//
// The gallery's pictures, drawn without a display.
#include "tests/ScratchFolder.h"
#include "tests/apps/RunProgram.h"

#include <cairo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using apps::test::Outcome;
using apps::test::RunProgram;
using apps::test::RunProgramAndSignal;

constexpr const char* kLog = TILTPOLE_SOURCE_DIR "/examples/pole-replay.csv";

// Colors of the picture in the file; empty if it is not a picture.
std::set<std::uint32_t> ColorsOf(const std::string& path)
{
    cairo_surface_t* const picture = cairo_image_surface_create_from_png(path.c_str());
    std::set<std::uint32_t> colors;
    const unsigned char* const bytes = cairo_image_surface_get_data(picture);
    for (int y = 0; y < cairo_image_surface_get_height(picture); ++y)
        for (int x = 0; x < cairo_image_surface_get_width(picture); ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, bytes + y * cairo_image_surface_get_stride(picture) + 4 * x,
                        sizeof pixel);
            colors.insert(pixel);
        }
    cairo_surface_destroy(picture);
    return colors;
}

// An environment of the program's own: temporary files go to `temporary`.
struct Surroundings
{
    Surroundings()
    {
        ::setenv("TMPDIR", temporary.Native().c_str(), 1);
        ::setenv("XDG_RUNTIME_DIR", runtime.Native().c_str(), 1); // the toolkit's
    }
    ~Surroundings()
    {
        ::unsetenv("TMPDIR");
        ::unsetenv("XDG_RUNTIME_DIR");
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    ScratchFolder temporary;
    ScratchFolder runtime;
};

TEST(Render, DrawsEveryPictureThatItNames)
{
    const ScratchFolder pictures;
    const Surroundings surroundings;
    const Outcome outcome = RunProgram({kLog, "--render", pictures.Path("new")});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    std::istringstream lines(outcome.out);
    std::set<std::string> contents;
    std::size_t named = 0;
    for (std::string path; std::getline(lines, path); ++named) {
        ASSERT_THAT(path, testing::StartsWith(pictures.Path("new/")));
        EXPECT_GT(ColorsOf(path).size(), 1U) << path;
        contents.insert(pictures.Read(path.substr(pictures.Path("").size())));
    }
    // The gauges have the same face; only the row of the pointer counts.
    const std::vector<std::vector<std::string>> sameRow = {
        {"left-0", "left-start", "right-360"},
        {"left-90",        "right-270"           },
        {"left-180",        "right-180"}
    };
    std::size_t again = 0;
    for (const std::vector<std::string>& row : sameRow)
        for (const std::string& gauge : row) {
            again += gauge != row.front();
            EXPECT_EQ(pictures.Read("new/incline-" + gauge + ".png"),
                      pictures.Read("new/incline-" + row.front() + ".png"))
                << gauge;
        }
    EXPECT_EQ(contents.size() + again, named) << "no others are the same";
    for (const char* control : {"compass", "incline", "magnetic", "tilt"})
        EXPECT_THAT(outcome.out, testing::HasSubstr(control));
}

TEST(Render, DrawsTheSamePixelsAtEveryScaleOfTheScreen)
{
    const ScratchFolder pictures;
    const Surroundings surroundings;
    for (const std::string scale : {"1", "1.5", "2"}) {
        ::setenv("QT_SCALE_FACTOR", scale.c_str(), 1);
        const Outcome outcome = RunProgram({kLog, "--render", pictures.Path(scale)});
        ::unsetenv("QT_SCALE_FACTOR");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        for (const auto& file : std::filesystem::directory_iterator(pictures.Path("1"))) {
            const std::string name = file.path().filename().string();
            EXPECT_EQ(pictures.Read(scale + '/' + name), pictures.Read("1/" + name))
                << name << " at " << scale;
        }
    }
}

TEST(Render, LeavesNothingBesideItsPictures)
{
    const ScratchFolder pictures;
    const Surroundings surroundings;
    EXPECT_EQ(RunProgram({kLog, "--render", pictures.Path("new")}).exitCode, 0);
    EXPECT_THAT(surroundings.temporary.Names(), testing::IsEmpty());

    std::filesystem::create_directories(pictures.Path("taken/compass-000.png"));
    const Outcome failed = RunProgram({kLog, "--render", pictures.Path("taken")});
    EXPECT_EQ(failed.exitCode, 2);
    EXPECT_EQ(std::count(failed.err.begin(), failed.err.end(), '\n'), 1) << failed.err;
    EXPECT_THAT(surroundings.temporary.Names(), testing::IsEmpty());
}

// Between two of its pictures, or in the middle of one.
TEST(Render, LeavesOnlyWholePicturesWhenItIsEnded)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const ScratchFolder pictures;
        const Surroundings surroundings;
        const Outcome outcome = RunProgramAndSignal(
            {kLog, "--render", pictures.Path("new")}, "",
            [&] { return std::filesystem::exists(pictures.Path("new/gallery.png")); }, signal);
        EXPECT_EQ(outcome.exitCode, -signal);
        EXPECT_THAT(surroundings.temporary.Names(), testing::IsEmpty());
        for (const auto& file : std::filesystem::directory_iterator(pictures.Path("new")))
            EXPECT_GT(ColorsOf(file.path().string()).size(), 1U) << file.path();
    }
}

TEST(Render, ReportsAnUnreadableLog)
{
    const ScratchFolder folder;
    const Surroundings surroundings;
    const Outcome outcome = RunProgram({folder.Path("none.csv"), "--render", folder.Path("new")});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.err,
              "tiltpole-gallery: " + folder.Path("none.csv") + ": No such file or directory\n");
    EXPECT_THAT(folder.Names(), testing::IsEmpty());
}

TEST(Render, NamesAFolderThatCannotBeMade)
{
    const ScratchFolder folder;
    const Surroundings surroundings;
    const std::string file = folder.Write("file", "content");
    const Outcome outcome = RunProgram({kLog, "--render", file + "/new"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.err, "tiltpole-gallery: " + file + "/new: the folder cannot be created\n");
    EXPECT_THAT(surroundings.temporary.Names(), testing::IsEmpty());
}

TEST(Render, GoesOnAfterASignalThatIsIgnored)
{
    const ScratchFolder pictures;
    const Surroundings surroundings;
    auto* const before = std::signal(SIGHUP, SIG_IGN); // as under nohup
    const Outcome outcome = RunProgramAndSignal(
        {kLog, "--render", pictures.Path("new")}, "",
        [&] { return std::filesystem::exists(pictures.Path("new/compass-000.png")); }, SIGHUP);
    std::signal(SIGHUP, before);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists(pictures.Path("new/gallery.png")));
    EXPECT_THAT(surroundings.temporary.Names(), testing::IsEmpty());
}

} // namespace
