// SPDX-License-Identifier: MIT
//
// All that a windowing toolkit must provide: text, native windows, timers, message box, PNG files.
// A port to another toolkit implements these two classes and CurrentToolkit().
#pragma once

#include "framework/gui/detail/Raster.h"

#include <cstdint>
#include <memory>
#include <optional>
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

/// Width as the sum of the characters' advances, height of the cell and of its part above the
/// baseline, in pixels.
struct TextExtent
{
    int width = 0;
    int height = 0;
    int ascent = 0;
};

/// A rectangle of one color in a window's frame, in the window's own pixels.
struct FramePiece
{
    raster::Box box;
    raster::Color color = 0;
};

/// What the mouse did, in the window's own pixels.
struct MouseEvent
{
    enum class Kind { Move, Down, Up, DoubleClick, Wheel, Leave };
    enum class Button { Left, Right, Middle };

    Kind kind = Kind::Move;
    Button button = Button::Left;
    unsigned held = 0; // MK_LBUTTON ...
    int turned = 0;    // of the wheel
    raster::Point at;
};

/// A key that went down or up, and the characters it typed.
struct KeyEvent
{
    bool isDown = true;
    bool isRepeat = false;
    bool isExtended = false; // bit 24 of its messages
    bool isWithAlt = false;
    unsigned key = 0; // VK_TAB ..., 0 if it has no number
    std::wstring typed;
};

/// Events that a native window reports to the window it shows. Sizes include the frame. Any of them
/// may end the native window.
class WindowEvents
{
public:
    virtual ~WindowEvents() = default;
    virtual void OnNativePaint() = 0; ///< ClientPicture() is about to be shown: time to paint
    virtual void OnNativeResize(int width, int height) = 0;
    /// The position in the parent's client area, or on the screen.
    virtual void OnNativeMove(int x, int y) = 0;
    virtual void OnNativeShown(bool visible) = 0; ///< shown or hidden by the toolkit
    virtual void OnNativeClose() = 0;
    virtual void OnNativeGone() = 0; ///< the toolkit has destroyed its window
    virtual void OnNativeTimer(std::uintptr_t id) = 0;
    /// @{ False: nobody answered; the event is the surrounding program's.
    virtual bool OnNativeMouse(const MouseEvent& event) = 0;
    virtual bool OnNativeKey(const KeyEvent& event) = 0;
    /// @}
    virtual void OnNativeFocus(bool has) = 0;
    /// A message that was posted.
    virtual void OnNativePosted(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) = 0;
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
    virtual void Resize(int width, int height) = 0; ///< the position stays
    virtual void Show(bool visible) = 0;
    /// The corner on the screen, where the window lies inside one that is not ours.
    virtual std::optional<raster::Point> PlaceInForeignParent() const = 0;
    /// Null: onto the screen. Place and Show follow.
    virtual void SetParent(NativeWindow* parent) = 0;
    virtual void TakeFocus() = 0;
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

    /// On failure errno holds the reason.
    virtual bool SavePng(const raster::Canvas& canvas, const std::string& utf8Path) = 0;
};

/// Has OnNativePosted called from the event loop, in order, unless the window ends before. False
/// for one that does not exist. From any thread.
bool PostTo(const WindowEvents* window, unsigned message, std::uintptr_t wParam,
            std::intptr_t lParam);

/// The toolkit, or null without a connection to a windowing system. Closing the connection destroys
/// all windows; window classes stay registered until the process ends.
Toolkit* CurrentToolkit();

} // namespace framework
