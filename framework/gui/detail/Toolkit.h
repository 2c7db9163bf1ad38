// SPDX-License-Identifier: MIT
//
// All that a windowing toolkit must provide: text, native windows, timers, message box, PNG files.
// A port to another toolkit implements these two classes and CurrentToolkit().
#pragma once

#include "framework/gui/detail/Raster.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace framework {

/// The font that text is drawn in.
struct FontRequest
{
    int height = 0; // of the character cell; negative: of the characters; 0: the default size
    int weight = 400;
    bool italic = false;
    std::wstring face;

    bool operator==(const FontRequest&) const = default;
};

/// Width as the sum of the characters' advances and height of the cell, in pixels.
struct TextExtent
{
    int width = 0;
    int height = 0;
};

/// A rectangle of one color in a window's frame, in the window's own pixels.
struct FramePiece
{
    raster::Box box;
    raster::Color color = 0;
};

/// Events that a native window reports to the window it shows. Sizes include the frame.
class WindowEvents
{
public:
    enum class Mouse { Down, Up, Move };

    virtual ~WindowEvents() = default;
    virtual void OnNativePaint() = 0; ///< ClientPicture() is about to be shown: time to paint
    virtual void OnNativeResize(int width, int height) = 0;
    virtual void OnNativeClose() = 0;
    virtual void OnNativeTimer(std::uintptr_t id) = 0;
    virtual void OnNativeMouse(Mouse what, int x, int y) = 0;
    virtual raster::Canvas ClientPicture() const = 0;
    virtual std::vector<FramePiece> Frame() const = 0;
    virtual int FrameWidth() const = 0;
};

/// A window on the screen that shows the picture of its WindowEvents. All units: device pixels.
class NativeWindow
{
public:
    virtual ~NativeWindow() = default;
    virtual void Place(int x, int y, int width, int height) = 0;
    virtual void Show(bool visible) = 0;
    virtual void SetTitle(const std::wstring& title) = 0;
    virtual void RequestPaint() = 0; ///< from the event loop: OnNativePaint, then ClientPicture()
    virtual void StartTimer(std::uintptr_t id, unsigned milliseconds) = 0;
    virtual bool StopTimer(std::uintptr_t id) = 0; ///< false if there is none
    virtual void* Handle() = 0;                    ///< the toolkit's object
};

class Toolkit
{
public:
    virtual ~Toolkit() = default;
    virtual std::unique_ptr<NativeWindow> MakeWindow(WindowEvents& events,
                                                     NativeWindow* parent) = 0;
    virtual TextExtent Measure(const FontRequest& font, std::wstring_view text) = 0;

    /// Draws one line of text with the upper left corner of its cell at `at`, clipped.
    virtual void DrawText(const raster::Canvas& canvas, const FontRequest& font,
                          raster::Color color, raster::Point at, std::wstring_view text) = 0;

    virtual bool SavePng(const raster::Canvas& canvas, const std::string& utf8Path) = 0;
};

/// The toolkit, or null without a connection to a windowing system. Closing the connection destroys
/// all windows; window classes stay registered until the process ends.
Toolkit* CurrentToolkit();

} // namespace framework
