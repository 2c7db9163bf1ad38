// SPDX-License-Identifier: MIT
//
// Drawing objects and contexts in memory.
#include "tests/memory/Drawn.h"
#include "tests/memory/Rows.h"

#include <array>
#include <memory>

namespace sweep {

namespace {

// Objects.

struct Objects
{
    CPen pen;
    CBrush brush;
    CFont font;
    CBitmap bitmap;
    CDC dc;
    std::unique_ptr<CObject> made;
    Bare<CPen> barePen{PS_SOLID, 1, RGB(1, 2, 3)};
    Bare<CBrush> bareBrush{RGB(1, 2, 3)};
    int result = 0;

    Objects() { dc.CreateCompatibleDC(nullptr); }
};

std::string DescribeObjects(const Objects& o)
{
    const auto there = [](const CGdiObject& object) { return object.GetSafeHandle() ? 'y' : 'n'; };
    const CSize size = o.bitmap.GetSize();
    return std::string{there(o.pen), there(o.brush), there(o.font), there(o.bitmap)} + ' '
           + std::to_string(size.cx) + 'x' + std::to_string(size.cy)
           + (o.made ? " made " : " none ") + std::to_string(o.result);
}

Row Making(const char* covers, std::function<void(Objects&)> run)
{
    return Operation<Objects>(covers, Shortage::Throws, std::move(run), DescribeObjects);
}

LOGFONT LongFace()
{
    LOGFONT font;
    for (int i = 0; i < LF_FACESIZE - 1; ++i)
        font.lfFaceName[i] = L'x';
    return font;
}

// Handles without objects of the host's.
struct Handles
{
    Bare<CPen> pen{PS_SOLID, 1, RGB(1, 2, 3)};
    Bare<CBrush> brush{RGB(1, 2, 3)};
    HGDIOBJ font = nullptr;
    HGDIOBJ bitmap = nullptr;
    HDC dc = nullptr;
    bool isFound = false;

    Handles()
    {
        CDC context;
        context.CreateCompatibleDC(nullptr);
        CFont made;
        made.CreatePointFont(100, L"");
        font = made.Detach();
        CBitmap picture;
        picture.CreateCompatibleBitmap(&context, 3, 2);
        bitmap = picture.Detach();
        dc = context.Detach();
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    ~Handles()
    {
        CDC context;
        context.Attach(dc);
        CFont made;
        made.Attach(font);
        CBitmap picture;
        picture.Attach(bitmap);
    }
};

Row Finding(const char* covers, std::function<void(Handles&)> run)
{
    return Operation<Handles>(covers, Shortage::Throws, std::move(run), [](const Handles& h) {
        return std::string(h.isFound ? "found" : "not found");
    });
}

struct ReachObject : CGdiObject
{
    using CGdiObject::Hold;
};

void AddObjectRows(std::vector<Row>& rows)
{
    rows.push_back(Making("CPen::CreatePen", [](Objects& o) {
        o.result = o.pen.CreatePen(PS_SOLID, 2, RGB(4, 5, 6));
    }));
    rows.push_back(Making("CPen::CPen", [](Objects& o) {
        o.result = CPen(PS_SOLID, 2, RGB(4, 5, 6)).GetSafeHandle() != nullptr;
    }));
    rows.push_back(Making("CBrush::CreateSolidBrush CBrush::CBrush",
                          [](Objects& o) { o.result = o.brush.CreateSolidBrush(RGB(4, 5, 6)); }));
    rows.push_back(Making("CFont::CreateFontIndirect", [](Objects& o) {
        const LOGFONT font = LongFace();
        o.result = o.font.CreateFontIndirect(&font);
    }));
    rows.push_back(Making("CFont::CreateFont", [](Objects& o) {
        o.result = o.font.CreateFont(20, 0, 0, 0, FW_BOLD, 0, 0, 0, 0, 0, 0, 0, 0, L"a long face");
    }));
    rows.push_back(Making("CFont::CreatePointFont CFont::CFont", [](Objects& o) {
        o.result = o.font.CreatePointFont(120, L"another long face");
    }));
    rows.push_back(Operation<Objects>(
        "CBitmap::CreateCompatibleBitmap CBitmap::CBitmap", Shortage::Reports,
        [](Objects& o) { o.result = o.bitmap.CreateCompatibleBitmap(&o.dc, 30, 20); },
        DescribeObjects));
    rows.push_back(Making("CGdiObject::CreateObject",
                          [](Objects& o) { o.made.reset(CGdiObject::CreateObject()); }));
    rows.push_back(
        Making("CDC::CreateObject", [](Objects& o) { o.made.reset(CDC::CreateObject()); }));
    rows.push_back(Making("CDC::CreateCompatibleDC CDC::DeleteDC CDC::CDC", [](Objects& o) {
        CDC dc;
        o.result = dc.CreateCompatibleDC(nullptr);
        dc.DeleteDC();
    }));
    rows.push_back(Finding("CGdiObject::FromHandle", [](Handles& h) {
        h.isFound = CGdiObject::FromHandle(h.pen.handle) != nullptr;
    }));
    rows.push_back(Finding("CPen::FromHandle",
                           [](Handles& h) { h.isFound = CPen::FromHandle(h.pen.handle); }));
    rows.push_back(Finding("CBrush::FromHandle",
                           [](Handles& h) { h.isFound = CBrush::FromHandle(h.brush.handle); }));
    rows.push_back(
        Finding("CFont::FromHandle", [](Handles& h) { h.isFound = CFont::FromHandle(h.font); }));
    rows.push_back(Finding("CBitmap::FromHandle",
                           [](Handles& h) { h.isFound = CBitmap::FromHandle(h.bitmap); }));
    rows.push_back(
        Finding("CDC::FromHandle", [](Handles& h) { h.isFound = CDC::FromHandle(h.dc); }));
    rows.push_back(WithoutMemory<Objects>(
        "CGdiObject::Attach CGdiObject::Detach CGdiObject::DeleteObject CGdiObject::Hold"
        " CGdiObject::CreateStockObject CGdiObject::GetRuntimeClass CPen::GetRuntimeClass"
        " CBrush::GetRuntimeClass CFont::GetRuntimeClass CBitmap::GetRuntimeClass CBitmap::GetSize"
        " GetStockObject GetSysColor",
        [](Objects& o) {
            CPen pen;
            EXPECT_TRUE(pen.Attach(o.barePen.handle));
            EXPECT_EQ(pen.Detach(), o.barePen.handle);
            ReachObject held;
            EXPECT_TRUE(held.Hold(o.bareBrush.handle));
            held.Detach();
            EXPECT_TRUE(held.CreateStockObject(GRAY_BRUSH));
            EXPECT_TRUE(held.DeleteObject());
            EXPECT_NE(GetStockObject(BLACK_PEN), nullptr);
            EXPECT_EQ(GetSysColor(COLOR_WINDOW), RGB(255, 255, 255));
            EXPECT_EQ(o.bitmap.GetSize(), CSize(0, 0));
            for (const CGdiObject* const object : std::initializer_list<const CGdiObject*>{
                     &held, &o.pen, &o.brush, &o.font, &o.bitmap})
                EXPECT_NE(object->GetRuntimeClass(), nullptr);
        }));
}

// Selecting.

// A state to return to; font and picture are deleted, selected still, and have no wrappers.
struct SavedPaper : Paper
{
    SavedPaper()
    {
        dc.SaveDC();
        dc.SelectObject(&pen);
        dc.SetTextColor(RGB(9, 9, 9));
        CFont unknown;
        unknown.CreatePointFont(90, L"");
        dc.SelectObject(&unknown);
        CBitmap unseen;
        unseen.CreateCompatibleBitmap(&dc, 4, 4);
        dc.SelectObject(&unseen);
        dc.FillSolidRect(0, 0, 4, 4, RGB(9, 8, 7));
    }
};

Row OnPaper(const char* covers, std::function<void(Paper&)> run)
{
    return Operation<Paper>(covers, Shortage::Throws, std::move(run),
                            [](const Paper& p) { return Describe(p); });
}

void AddSelectionRows(std::vector<Row>& rows)
{
    rows.push_back(OnPaper("CDC::SelectObject",
                           [](Paper& p) { p.result = p.dc.SelectObject(&p.pen) != nullptr; }));
    rows.push_back(OnPaper("CDC::SelectObject",
                           [](Paper& p) { p.result = p.dc.SelectObject(&p.brush) != nullptr; }));
    rows.push_back(OnPaper("CDC::SelectObject", [](Paper& p) {
        CGdiObject& pen = p.pen;
        p.result = p.dc.SelectObject(&pen) != nullptr;
    }));
    const auto select = [&](std::function<bool(SavedPaper&)> selects) {
        rows.push_back(Operation<SavedPaper>(
            "CDC::SelectObject", Shortage::Throws,
            [selects](SavedPaper& p) { p.result = selects(p); },
            [](const SavedPaper& p) { return Describe(p); }));
    };
    select([](SavedPaper& p) { return p.dc.SelectObject(&p.font); });
    select([](SavedPaper& p) { return p.dc.SelectObject(&p.picture); });
    rows.push_back(OnPaper("CDC::SelectStockObject", [](Paper& p) {
        p.result = p.dc.SelectStockObject(WHITE_PEN) != nullptr;
    }));
    rows.push_back(OnPaper("CDC::GetCurrentPen",
                           [](Paper& p) { p.result = p.dc.GetCurrentPen() != nullptr; }));
    rows.push_back(OnPaper("CDC::GetCurrentBrush",
                           [](Paper& p) { p.result = p.dc.GetCurrentBrush() != nullptr; }));
    const auto ask = [&](const char* covers, std::function<bool(SavedPaper&)> found) {
        rows.push_back(Operation<SavedPaper>(
            covers, Shortage::Throws, [found](SavedPaper& p) { p.result = found(p); },
            [](const SavedPaper& p) { return std::to_string(p.result); }));
    };
    ask("CDC::GetCurrentFont", [](SavedPaper& p) { return p.dc.GetCurrentFont(); });
    ask("CDC::GetCurrentBitmap", [](SavedPaper& p) { return p.dc.GetCurrentBitmap(); });
    rows.push_back(OnPaper("CDC::SaveDC", [](Paper& p) { p.result += p.dc.SaveDC(); }));
}

void AddDrawingRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<SavedPaper>(
        "CDC::RestoreDC", Shortage::Throws, [](SavedPaper& p) { p.result += p.dc.RestoreDC(1); },
        [](const SavedPaper& p) { return Describe(p); }));
    // What is drawn before memory runs out stays; the rest of the context is as it was.
    struct Wide : Paper
    {
        Wide() { dc.SelectObject(&widePen); }
    };
    const AfterFailure<Wide> half{[](const Wide& w) { return w.result == 0; }, {}};
    const auto add = [&](const char* covers, std::function<void(Wide&)> run) {
        rows.push_back(Operation<Wide>(
            covers, Shortage::Throws, std::move(run), [](const Wide& w) { return Describe(w); },
            half));
    };
    add("CDC::Polygon", [](Wide& w) {
        std::array<POINT, 12> points{};
        for (int i = 0; i < 12; ++i)
            points.at(static_cast<std::size_t>(i)) = {4 * i, i % 2 ? 4 : 28};
        w.result = w.dc.Polygon(points.data(), 12);
    });
}

void AddQuietRows(std::vector<Row>& rows)
{
    rows.push_back(WithoutMemory<Paper>(
        "CDC::Attach CDC::Detach CDC::SetTextColor CDC::GetTextColor CDC::SetBkColor"
        " CDC::GetBkColor CDC::SetBkMode CDC::GetBkMode CDC::SetTextAlign CDC::GetTextAlign"
        " CDC::GetCurrentPosition CDC::MoveTo CDC::IntersectClipRect CDC::GetClipBox"
        " CDC::GetWindow CDC::GetRuntimeClass",
        [](Paper& p) {
            CDC other;
            EXPECT_TRUE(other.Attach(p.dc.Detach()));
            EXPECT_TRUE(p.dc.Attach(other.Detach()));
            p.dc.SetTextColor(p.dc.GetTextColor() + 1);
            p.dc.SetBkColor(p.dc.GetBkColor() - 1);
            p.dc.SetBkMode(TRANSPARENT);
            EXPECT_EQ(p.dc.GetBkMode(), TRANSPARENT);
            p.dc.SetTextAlign(TA_CENTER);
            EXPECT_EQ(p.dc.GetTextAlign(), TA_CENTER);
            p.dc.MoveTo(3, 4);
            EXPECT_EQ(p.dc.GetCurrentPosition(), CPoint(3, 4));
            CRect box;
            EXPECT_EQ(p.dc.IntersectClipRect(0, 0, 40, 30), SIMPLEREGION);
            EXPECT_EQ(p.dc.GetClipBox(&box), SIMPLEREGION);
            EXPECT_EQ(p.dc.IntersectClipRect(&box), SIMPLEREGION);
            EXPECT_EQ(p.dc.GetWindow(), nullptr);
            EXPECT_EQ(p.dc.GetRuntimeClass(), RUNTIME_CLASS(CDC));
        }));
    rows.push_back(WithoutMemory<Paper>(
        "CDC::FillRect CDC::FillSolidRect CDC::SetPixel CDC::GetPixel CDC::PatBlt CDC::BitBlt"
        " CDC::Rectangle CDC::Ellipse CDC::LineTo CDC::Polyline",
        [](Paper& p) {
            const CRect box(2, 3, 20, 21);
            p.dc.FillRect(&box, &p.brush);
            p.dc.FillSolidRect(&box, RGB(1, 1, 1));
            p.dc.FillSolidRect(4, 5, 6, 7, RGB(2, 2, 2));
            p.dc.SetPixel(1, 1, RGB(3, 3, 3));
            EXPECT_EQ(p.dc.GetPixel(1, 1), RGB(3, 3, 3));
            constexpr POINT points[] = {
                {1,  1 },
                {20, 5 },
                {40, 30}
            };
            EXPECT_TRUE(p.dc.Polyline(points, 3));
            EXPECT_TRUE(p.dc.LineTo(30, 20));
            EXPECT_TRUE(p.dc.PatBlt(0, 0, 9, 9, PATCOPY));
            EXPECT_TRUE(p.dc.PatBlt(0, 0, 9, 9, DSTINVERT));
            EXPECT_TRUE(p.dc.BitBlt(20, 0, 9, 9, &p.dc, 0, 0, SRCCOPY));
            EXPECT_TRUE(p.dc.Rectangle(&box));
            EXPECT_TRUE(p.dc.Rectangle(9, 9, 30, 30));
            EXPECT_TRUE(p.dc.Ellipse(&box));
            EXPECT_TRUE(p.dc.Ellipse(9, 9, 30, 30));
        }));
}

} // namespace

std::vector<Row> DrawingRows()
{
    std::vector<Row> rows;
    AddObjectRows(rows);
    AddSelectionRows(rows);
    AddDrawingRows(rows);
    AddQuietRows(rows);
    return rows;
}

} // namespace sweep
