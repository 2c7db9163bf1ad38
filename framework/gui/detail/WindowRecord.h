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
};

// One window. Its picture covers the client area and keeps its content until the next paint.
struct WindowRecord : WindowEvents, DcOwner
{
    WindowRecord() = default;
    WindowRecord(const WindowRecord&) = delete;
    WindowRecord& operator=(const WindowRecord&) = delete;
    ~WindowRecord() override;

    // WindowEvents: reported by the toolkit.
    void OnNativePaint() override;
    void OnNativeResize(int width, int height) override;
    void OnNativeClose() override;
    void OnNativeTimer(std::uintptr_t id) override;
    void OnNativeMouse(Mouse what, int x, int y) override;
    raster::Canvas ClientPicture() const override;
    std::vector<FramePiece> Frame() const override;
    int FrameWidth() const override;

    int ClientWidth() const;
    int ClientHeight() const;
    bool IsShown() const; // with all its ancestors
    void Resize(int width, int height);
    void Invalidate(raster::Box box, bool erase);
    void Paint(); // sends WM_PAINT if something is invalid and the window is shown
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam);

    // Calls PostNcDestroy, after the record has been deleted.
    static void ReportGone(CWnd& window);

    DcRecord* LendContext();

    // DcOwner: called by the contexts obtained from this window.
    void OnPictureChanged() override;
    bool TakeBack(const DcRecord* context) override;
    CWnd* Window() override;

    const WindowClass* windowClass = nullptr;
    std::vector<CWnd*> attached; // the last one handles messages
    std::unique_ptr<CWnd> temporary;
    WindowRecord* parent = nullptr;
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
    bool paintRequested = false;
    std::vector<std::unique_ptr<DcRecord>> lent; // oldest first
    std::unique_ptr<NativeWindow> native;
};

} // namespace framework
