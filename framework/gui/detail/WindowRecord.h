// SPDX-License-Identifier: MIT
//
// The object behind the handle of a window, and the class it was made from.
#pragma once

#include "framework/gui/Types.h"
#include "framework/gui/detail/DcRecord.h"
#include "framework/gui/detail/Raster.h"
#include "framework/gui/detail/Toolkit.h"

#include <memory>
#include <string>
#include <vector>

class CWnd;

namespace framework {

// The properties that all windows of one class share.
struct WindowClass
{
    std::wstring name;
    UINT style = 0;
    bool hasBackground = false;
    raster::Color background = 0;
    bool isStatic = false; // shows its text
};

// One window. Its picture covers the client area and keeps its content until the next paint.
//
// A handler of any message may destroy the window. Who sends one and goes on keeps a reference
// (shared_from_this) and looks at `isGone` afterwards.
struct WindowRecord : WindowEvents, DcOwner, std::enable_shared_from_this<WindowRecord>
{
    WindowRecord() = default;
    WindowRecord(const WindowRecord&) = delete;
    WindowRecord& operator=(const WindowRecord&) = delete;
    ~WindowRecord() override;

    // WindowEvents: reported by the toolkit.
    void OnNativePaint() override;
    void OnNativeResize(int width, int height) override;
    void OnNativeMove(int x, int y) override;
    void OnNativeShown(bool visible) override;
    void OnNativeClose() override;
    void OnNativeGone() override;
    void OnNativeTimer(std::uintptr_t id) override;
    bool OnNativeMouse(const MouseEvent& event) override;
    bool OnNativeKey(const KeyEvent& event) override;
    void OnNativeFocus(bool has) override;
    void OnNativePosted(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;
    raster::Canvas ClientPicture() const override;
    std::vector<FramePiece> Frame() const override;
    int FrameWidth() const override;

    bool IsStatic() const { return windowClass->isStatic; }
    int ClientWidth() const;
    int ClientHeight() const;
    bool IsShown() const; // with all its ancestors
    POINT CornerOnScreen() const;
    POINT ClientOnScreen() const;
    bool IsInside(const WindowRecord& other) const; // it or one of its descendants
    enum class Sized { Unchanged, Changed, NoMemory };

    // Gives the window a new picture where the client area changes, without a message. Short of
    // memory nothing changes. What is new becomes invalid if `redrawn`.
    Sized SetSize(int width, int height, bool redrawn = true);
    void SetShown(bool visible, bool redrawn); // with WM_SHOWWINDOW; nothing where it is already
    void ReportSize();                         // sends WM_SIZE
    void ReportMove();                         // sends WM_MOVE
    void Invalidate(raster::Box box, bool erase);
    bool StayInvalid(raster::Box box, bool erase); // no request; false: outside of the window
    void Paint();        // sends WM_PAINT if something is invalid and the window is shown
    void PaintInvalid(); // the same for a window that is not, where a picture of it is taken
    LRESULT AnswerInput(UINT message, WPARAM wParam, LPARAM lParam); // by default
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam);

    // Cuts the ties to the objects of the host, and tells the one that handled the messages
    // (PostNcDestroy).
    void LetGo();
    void DetachAll(); // the objects of the host, without telling them

    DcRecord* LendContext();

    // DcOwner: called by the contexts obtained from this window.
    void OnPictureChanged() override;
    bool TakeBack(const DcRecord* context) override;
    CWnd* Window() override;

    const WindowClass* windowClass = nullptr;
    int applications = 0;        // that existed when it was made
    std::vector<CWnd*> attached; // the last one handles messages
    std::unique_ptr<CWnd> temporary;
    WindowRecord* parent = nullptr;
    WindowRecord* owner = nullptr;   // notified instead of the parent
    WindowRecord* ownedBy = nullptr; // what a top-level window was created for, and ends with
    std::vector<WindowRecord*> children;
    UINT_PTR id = 0;
    DWORD style = 0;
    DWORD exStyle = 0;
    POINT origin{0, 0}; // in the parent's client area, or on the screen
    int width = 0;      // frame included
    int height = 0;
    std::wstring text;
    GdiReference font;
    std::shared_ptr<Image> image;
    raster::Box invalid;
    bool erase = false;
    bool isPainting = false;
    bool redraws = true;     // WM_SETREDRAW
    bool isLeftOpen = false; // the key or the wheel was answered by default
    bool paintRequested = false;
    bool isEnding = false;                       // WM_DESTROY has been sent
    bool isGone = false;                         // not among the windows any more
    std::vector<std::unique_ptr<DcRecord>> lent; // oldest first
    std::unique_ptr<NativeWindow> native;
};

} // namespace framework
