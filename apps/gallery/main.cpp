// SPDX-License-Identifier: MIT
//
// tiltpole-gallery: the display controls, live on a moving pole or as pictures.
#include "apps/cli/CommandLine.h"
#include "apps/cli/ExitCode.h"
#include "apps/gallery/Gallery.h"
#include "apps/gallery/Scenes.h"
#include "apps/gallery/ScratchFolder.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include "framework/core/Version.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
#include <utility>
#include <vector>

namespace {

struct Arguments
{
    std::string log;
    std::string folder;
};

int Show(int& argc, char** argv, const Arguments& arguments)
{
    if (!framework::ScreenAnswers())
        throw tables::InputError("there is no screen; --render DIR draws the pictures without one");
    std::vector<gallery::ReplaySample> replay = gallery::ReadReplay(arguments.log);
    if (replay.empty()) throw tables::InputError(arguments.log, "there are no samples to show");
    if (!gallery::KeepViews())
        tables::Tell("tiltpole-gallery: the folder for views cannot be made: they are not kept\n");
    framework::Application application(argc, argv);
    return gallery::RunWindow(application, std::move(replay));
}

// The plots save their views beside the module. A temporary module path keeps earlier views out of
// the pictures.
int Render(int& argc, char** argv, const Arguments& arguments)
{
    const std::vector<gallery::ReplaySample> replay = gallery::ReadReplay(arguments.log);
    const gallery::ScratchFolder scratch;
    framework::SetModulePath(CString((scratch.Path() + "/tiltpole-gallery").c_str()));
    const framework::Application application(argc, argv, framework::Display::Memory);
    const std::vector<std::string> names = gallery::RenderScenes(arguments.folder, replay);
    tables::WriteFile("-", fmt::format("{}\n", fmt::join(names, "\n")));
    return cli::kDone;
}

int RunGallery(int argc, char** argv)
{
    CLI::App app("Shows every display control of tiltpole in one window, fed by a log:\n"
                 "dial and gauges follow the pole, the plots and the tilt graph fill.\n",
                 "tiltpole-gallery");
    app.set_version_flag("--version", "tiltpole-gallery " TILTPOLE_VERSION_STRING);
    app.footer(
        "Keys: space pauses and goes on, the arrows step one sample, Esc closes the window.\n"
        "The views of the plots are kept in $XDG_STATE_HOME/tiltpole, by default\n"
        "~/.local/state/tiltpole.");
    Arguments arguments;
    app.add_option(
        "LOG", arguments.log,
        "sample log with antenna positions (N, E, h in meters); without it, that of the "
        "examples, of which magnetometer A is recorded, tilt and antenna are computed from the "
        "tracked motion of the hand and magnetometer B is made from A");
    app.add_option("--render", arguments.folder,
                   "draw every control in its documented states to PNG files in this folder "
                   "instead; needs no display")
        ->type_name("DIR");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::Explain(app, error);
    }
    if (app.count("LOG") == 0) arguments.log = gallery::ExampleLog();
    return app.count("--render") == 0 ? Show(argc, argv, arguments) : Render(argc, argv, arguments);
}

} // namespace

int main(int argc, char** argv)
{
    return cli::RunMain("tiltpole-gallery: ", argc, argv, RunGallery);
}
