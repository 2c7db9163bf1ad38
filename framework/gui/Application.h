// SPDX-License-Identifier: MIT
//
// The program's connection to the windowing system, and pictures of windows.
//
//   framework::Application application(argc, argv);
//   MeasureDialog dialog; // a CWnd of the host
//   dialog.ShowWindow(SW_SHOW);
//   return application.Run();
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "framework/gui/Wnd.h"

#include <memory>

namespace framework {

/// Where windows are shown.
enum class Display {
    Automatic, ///< on the screen; in memory only where the environment names no screen
    None,      ///< in memory only
};

/// Owns the connection to the windowing system for its lifetime. Make one before the first window,
/// in the thread that uses windows; every window still there goes with it. While it lives, message
/// boxes are modal windows. A host that already has a connection of the same toolkit keeps it.
class TILTPOLE_API Application
{
public:
    Application(int& argc, char** argv, Display display = Display::Automatic);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Dispatches until the last top-level window closes. Returns 0, or what Quit was given.
    int Run();
    /// Lets Run return.
    void Quit(int result = 0);
    /// Dispatches what has arrived, without waiting.
    void DispatchPending();

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

/// Writes what the window's client area shows now, children included, as a PNG file; nothing is
/// painted for it. False without a window or when the file cannot be written.
TILTPOLE_API bool SaveWindowImage(CWnd& window, const CString& pngPath);

} // namespace framework
