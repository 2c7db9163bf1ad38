// SPDX-License-Identifier: MIT
//
// tiltpole-gallery: the display controls, live on a recorded pole or as pictures.
#include "apps/cli/CommandLine.h"
#include "apps/cli/ExitCode.h"
#include "apps/gallery/Frame.h"
#include "apps/gallery/Scenes.h"
#include "apps/tables/Errors.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace {

struct Arguments
{
    std::string log = "examples/pole-replay.csv";
    std::string folder;
};

// A temporary folder that is removed with the object.
class ScratchFolder
{
public:
    ScratchFolder() : m_path((std::filesystem::temp_directory_path() / "galleryXXXXXX").string())
    {
        if (!mkdtemp(m_path.data()))
            throw tables::InputError(m_path, "cannot create a temporary folder");
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

int Show(int& argc, char** argv, const Arguments& arguments)
{
    std::vector<gallery::ReplaySample> replay = gallery::ReadReplay(arguments.log);
    framework::Application application(argc, argv);
    gallery::Frame frame(std::move(replay));
    if (!frame.Open()) throw tables::InputError("no display to open a window on");
    return application.Run();
}

// The plots save their views beside the module. A temporary module path keeps earlier views out of
// the pictures.
int Render(int& argc, char** argv, const Arguments& arguments)
{
    const std::vector<gallery::ReplaySample> replay = gallery::ReadReplay(arguments.log);
    std::filesystem::create_directories(arguments.folder);
    const ScratchFolder scratch;
    framework::SetModulePath(CString((scratch.Path() + "/tiltpole-gallery").c_str()));
    const framework::Application application(argc, argv, framework::Display::None);
    const std::vector<std::string> names = gallery::RenderScenes(arguments.folder, replay);
    for (const std::string& name : names)
        fmt::print("{}\n", name);
    return cli::kDone;
}

int RunGallery(int argc, char** argv)
{
    CLI::App app("Shows every display control of tiltpole in one window, fed by a recorded pole:\n"
                 "dial and gauges follow it, the plots and the tilt graph fill.\n",
                 "tiltpole-gallery");
    Arguments arguments;
    app.add_option("LOG", arguments.log, "sample log with antenna positions (N, E, h in meters)")
        ->capture_default_str();
    app.add_option("--render", arguments.folder,
                   "draw every control in its documented states to PNG files in this folder "
                   "instead; needs no display")
        ->type_name("DIR");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::Explain(app, error);
    }
    return arguments.folder.empty() ? Show(argc, argv, arguments) : Render(argc, argv, arguments);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return RunGallery(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tiltpole-gallery: %s\n", error.what());
    }
    return cli::kUnreadable;
}
