// SPDX-License-Identifier: MIT
//
// The object behind the handle of a device context.
#pragma once

#include "framework/gui/Types.h"
#include "framework/gui/detail/GdiRecord.h"
#include "framework/gui/detail/Image.h"

#include <memory>
#include <vector>

class CDC;
class CWnd;

namespace framework {

// The window a context was obtained from, as seen by the context.
class DcOwner
{
public:
    virtual ~DcOwner() = default;
    virtual void OnPictureChanged() = 0;
    virtual bool TakeBack(const DcRecord* context) = 0; // ends the context; false for a foreign one
    virtual CWnd* Window() = 0;
};

// What SaveDC keeps.
struct DcState
{
    GdiReference bitmap; // null where the picture is a window's
    GdiReference pen;
    GdiReference brush;
    GdiReference font;
    COLORREF textColor;
    COLORREF backColor;
    int backMode;
    UINT textAlign;
    POINT position;
    raster::Box clip;
};

// A device context: where it draws and with what.
struct DcRecord
{
    DcRecord();
    DcRecord(const DcRecord&) = delete;
    DcRecord& operator=(const DcRecord&) = delete;
    ~DcRecord();

    raster::Canvas Whole() const;  // also outside the clip
    raster::Canvas Target() const; // empty without a picture
    void Touched() const;          // notifies the owner that its picture changed

    std::shared_ptr<Image> image; // the bitmap's or the window's
    raster::Point origin;         // of the picture, in the context's coordinates
    raster::Box clip;             // what may be drawn on, in the context's coordinates
    DcOwner* owner = nullptr;     // null for a memory context
    GdiReference bitmap;
    GdiReference pen;
    GdiReference brush;
    GdiReference font;
    GdiReference retired; // the last deselected object: SelectObject's result outlives its deletion
    COLORREF textColor = RGB(0, 0, 0);
    COLORREF backColor = RGB(255, 255, 255);
    int backMode = OPAQUE;
    UINT textAlign = TA_LEFT | TA_TOP;
    POINT position{0, 0};
    std::vector<DcState> saved;
    CDC* attached = nullptr;
    std::unique_ptr<CDC> temporary;
};

} // namespace framework
