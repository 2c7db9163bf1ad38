// SPDX-License-Identifier: MIT
/// @file
/// The program's connection to the windowing system, and pictures of windows.
///
///     framework::Application application(argc, argv);
///     MeasureDialog dialog; // a CWnd of the host
///     dialog.ShowWindow(SW_SHOW);
///     return application.Run();
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "framework/gui/Wnd.h"

#include <memory>

namespace framework {

/// Where windows are shown.
enum class Display {
    Automatic, ///< on the screen; in memory only where no screen is named or it does not answer
    Memory,    ///< in memory only
};

/// Whether the display that the environment names accepts a connection of this program: the X
/// server of DISPLAY, or a Wayland compositor. True where a platform of the toolkit is chosen that
/// needs neither (QT_QPA_PLATFORM). Ask before the first Application.
TILTPOLE_API bool ScreenAnswers();

/// Owns the connection to the windowing system for its lifetime. Create one before the first
/// window, in the thread that uses windows; its destructor destroys the remaining windows that were
/// made while it existed. A host's own connection of the same toolkit is reused; windows end with
/// it. While an Application exists, message boxes are modal windows, where there is a screen to
/// show them on.
class TILTPOLE_API Application
{
public:
    Application(int& argc, char** argv, Display display = Display::Automatic);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Dispatches until the last top-level window closes. Returns 0, or the argument of Quit.
    int Run();
    /// Makes Run return `result`.
    void Quit(int result = 0);
    /// Dispatches all pending events without waiting.
    void DispatchPending();

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

/// Saves the current contents of the window's client area, including its children, as a PNG file
/// without triggering a paint. The file is replaced in one step (framework/core/AtomicFile.h).
/// Returns false without a window, short of memory or if the file cannot be written; errno then
/// holds the reason.
TILTPOLE_API bool SaveWindowImage(CWnd& window, const CString& pngPath);

} // namespace framework
