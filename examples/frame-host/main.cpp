// SPDX-License-Identifier: MIT
//
// The controls in a frame, fed by a recorded motion.
//
//   frame-host LOG                     shows them as the pole moves
//   frame-host LOG --screenshot FILE   saves a picture of the whole motion and ends; needs no screen
#include "MainFrame.h"

#include <cstdio>
#include <cstring>
#include <utility>

int main(int argc, char** argv)
{
    const bool takesPicture = argc == 4 && std::strcmp(argv[2], "--screenshot") == 0;
    if (argc != 2 && !takesPicture) {
        std::fprintf(stderr, "usage: frame-host LOG [--screenshot FILE]\n");
        return 2;
    }
    std::vector<replay::Sample> samples = replay::Read(argv[1]);
    if (samples.empty()) {
        std::fprintf(stderr, "frame-host: there are no samples in %s\n", argv[1]);
        return 2;
    }
    if (!takesPicture && !framework::ScreenAnswers()) {
        std::fprintf(stderr, "frame-host: there is no screen\n");
        return 2;
    }
    framework::Application application(
        argc, argv, takesPicture ? framework::Display::Memory : framework::Display::Automatic);
    auto* const frame = new MainFrame(std::move(samples)); // deletes itself after its window
    if (!frame->Create(nullptr, L"tiltpole in a frame", WS_OVERLAPPEDWINDOW,
                       CRect(40, 40, 1040, 680)))
        return 1;
    frame->ShowWindow(SW_SHOW);
    if (!takesPicture) return application.Run();

    application.DispatchPending();
    while (frame->Next()) {
    }
    frame->RedrawWindow(nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    const bool saved = framework::SaveWindowImage(*frame, CString(argv[3])) != FALSE;
    frame->DestroyWindow();
    return saved ? 0 : 1;
}
