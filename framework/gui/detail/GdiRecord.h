// SPDX-License-Identifier: MIT
//
// The object behind the handle of a pen, brush, font or bitmap.
#pragma once

#include "framework/gui/Types.h"
#include "framework/gui/detail/Image.h"
#include "framework/gui/detail/Raster.h"
#include "framework/gui/detail/Toolkit.h"

#include <memory>
#include <utility>

class CGdiObject;

namespace framework {

enum class GdiKind { Pen, Brush, Font, Bitmap };

// One drawing object. Its handle counts as a reference, and so does every context that has it
// selected: a deleted object is freed when the last context deselects it.
struct GdiRecord
{
    explicit GdiRecord(GdiKind givenKind);
    GdiRecord(const GdiRecord&) = delete;
    GdiRecord& operator=(const GdiRecord&) = delete;
    ~GdiRecord();

    GdiKind kind;
    int references = 1;
    CGdiObject* attached = nullptr;        // the object the host made
    std::unique_ptr<CGdiObject> temporary; // made by FromHandle if the host has none
    DcRecord* selectedInto = nullptr;      // bitmaps: one context at a time

    bool isNull = false; // draws nothing
    raster::Stroke stroke;
    raster::Color fill = 0;
    FontRequest font;
    std::shared_ptr<Image> image;
};

// A counted reference to a drawing object.
class GdiReference
{
public:
    GdiReference() = default;
    explicit GdiReference(GdiRecord* record) : m_record(record)
    {
        if (m_record) ++m_record->references;
    }
    GdiReference(GdiReference&& other) noexcept : m_record(std::exchange(other.m_record, nullptr))
    {}
    GdiReference& operator=(GdiReference&& other) noexcept
    {
        std::swap(m_record, other.m_record);
        return *this;
    }
    ~GdiReference() { Release(m_record); }

    GdiRecord* Get() const { return m_record; }
    GdiRecord* operator->() const { return m_record; }

    static void Release(GdiRecord* record);

private:
    GdiRecord* m_record = nullptr;
};

GdiRecord* StockRecord(int index);

// The bitmap selected into every new memory context. It has no pixels and is shared by all
// contexts.
GdiRecord* EmptyBitmap();

} // namespace framework
