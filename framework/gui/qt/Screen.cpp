// SPDX-License-Identifier: MIT
//
// Whether there is a screen to show windows on. Qt ends the program where there is none.
#include "framework/gui/Application.h"

#include <QByteArray>
#include <QFileInfo>
#include <QString>
#include <QtGlobal>

#if defined(__unix__)
#include <dlfcn.h>

#include <memory>
#endif

namespace framework {
namespace {

#if defined(__unix__)

// By the library that Qt's own port opens the display with. It is loaded here, not linked: programs
// that only draw into memory run without it.
bool XAnswers()
{
    struct Connection;
    using Connect = Connection* (*)(const char* display, int* screen);
    using HasError = int (*)(Connection*);
    using Disconnect = void (*)(Connection*);

    const std::unique_ptr<void, int (*)(void*)> library(dlopen("libxcb.so.1", RTLD_NOW), dlclose);
    if (!library) return false;
    const auto connect = reinterpret_cast<Connect>(dlsym(library.get(), "xcb_connect"));
    const auto hasError =
        reinterpret_cast<HasError>(dlsym(library.get(), "xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library.get(), "xcb_disconnect"));
    if (!connect || !hasError || !disconnect) return false;
    Connection* const connection = connect(nullptr, nullptr);
    const bool answers = hasError(connection) == 0;
    disconnect(connection);
    return answers;
}

#else

bool XAnswers()
{
    return qEnvironmentVariableIsSet("DISPLAY");
}

#endif

// A socket that something listens on can only be told from one left over by connecting; Qt then
// falls back to X by itself.
bool WaylandIsThere()
{
    const QString name = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (name.isEmpty()) return false;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return QFileInfo::exists(QFileInfo(name).isAbsolute() ? name
                                                          : folder + QLatin1Char('/') + name);
}

} // namespace

bool ScreenAnswers()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (platform.isEmpty()) return WaylandIsThere() || XAnswers();
    if (platform.startsWith("xcb")) return XAnswers();
    if (platform.startsWith("wayland")) return WaylandIsThere();
    return true;
}

} // namespace framework
