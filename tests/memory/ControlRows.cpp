// SPDX-License-Identifier: MIT
//
// Labels, views, dial and gauges.
#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "tests/memory/Drawn.h"
#include "tests/memory/Rows.h"

#include <string>
#include <type_traits>

namespace sweep {

namespace {

// Labels and handlers that draw by themselves.

struct Label : CStatic
{
    using CStatic::GetMessageMap;
    using CStatic::GetThisMessageMap;
    using CStatic::OnPaint;
};

struct Labeled
{
    Host host;
    Label label;
    CFont font;
    bool isPainted = false;

    Labeled()
    {
        font.CreatePointFont(120, L"");
        label.Create(L"a label of several words && more", kInHost, CRect(0, 0, 60, 50),
                     &host.window, 1);
        label.SetFont(&font);
    }
};

struct Drawing : CView
{
    void OnDraw(CDC* dc) override
    {
        CPen pen(PS_SOLID, 4, RGB(1, 2, 3));
        dc->SelectObject(&pen);
        dc->MoveTo(1, 1);
        dc->LineTo(20, 20);
        dc->SelectStockObject(BLACK_PEN);
    }
    using CView::GetMessageMap;
    using CView::GetThisMessageMap;
    using CView::OnPaint;
};

struct Viewed
{
    Host host;
    Drawing view;
    Viewed() { view.Create(nullptr, nullptr, kInHost, CRect(0, 0, 40, 40), &host.window, 1); }
};

void AddPaintRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Labeled>(
        "CStatic::OnPaint", Shortage::Throws,
        [](Labeled& l) {
            l.label.UpdateWindow();
            l.isPainted = true;
        },
        [](const Labeled& l) {
            return (l.isPainted ? "painted " : "not ") + Describe(const_cast<Label&>(l.label));
        },
        {[](const Labeled& l) { return !l.isPainted; }, {}}));
    rows.push_back(Operation<Viewed>(
        "CView::OnPaint", Shortage::Throws, [](Viewed& v) { v.view.UpdateWindow(); },
        [](const Viewed& v) { return Describe(const_cast<Drawing&>(v.view)); },
        {[](const Viewed& v) {
             return const_cast<Drawing&>(v.view).GetUpdateRect(nullptr) != FALSE;
         },
         {}}));
    rows.push_back(WithoutMemory<Viewed>(
        "CView::GetMessageMap CView::GetThisMessageMap CFrameWnd::GetMessageMap"
        " CFrameWnd::GetThisMessageMap CStatic::GetMessageMap CStatic::GetThisMessageMap"
        " CStatic::GetRuntimeClass",
        [](Viewed& v) {
            struct Frame : CFrameWnd
            {
                using CFrameWnd::GetMessageMap;
                using CFrameWnd::GetThisMessageMap;
            } frame;
            Label label;
            EXPECT_EQ(v.view.GetMessageMap(), Drawing::GetThisMessageMap());
            EXPECT_EQ(frame.GetMessageMap(), Frame::GetThisMessageMap());
            EXPECT_EQ(label.GetMessageMap(), Label::GetThisMessageMap());
            EXPECT_TRUE(label.IsKindOf(RUNTIME_CLASS(CStatic)));
        }));
}

// Dial and gauges.

template <class Meter>
struct Reach : Meter
{
    using Meter::GetMessageMap;
    using Meter::GetThisMessageMap;
};

template <class Meter>
constexpr double kFirst = std::is_same_v<Meter, CGraphIncline_Right> ? 190.0 : 10.0; // degrees

template <class Meter>
struct Meters
{
    Host host;
    Reach<Meter> meter;

    Meters()
    {
        meter.Create(L"", kInHost, CRect(0, 0, 100, 100), &host.window, 1);
        meter.UpdateWindow();
        meter.SetValue(kFirst<Meter> + 20.0);
    }
};

template <class Meter>
struct FreshMeters : Meters<Meter>
{
    FreshMeters() { this->meter.ReconstructControl(); }
};

template <class Meter>
std::string DescribeMeter(const Meters<Meter>& constant)
{
    auto& m = const_cast<Meters<Meter>&>(constant); // asking is not const
    return Text(m.meter.GetValue()) + std::to_string(m.meter.GetMeterBackColor()) + ' '
           + Describe(m.meter);
}

template <class Meter>
struct MeterOnPaper : Paper
{
    Host host;
    Reach<Meter> meter;

    MeterOnPaper()
    {
        meter.Create(L"", kInHost, CRect(0, 0, 48, 32), &host.window, 1);
        meter.UpdateWindow();
        meter.SetFix(static_cast<int>(kFirst<Meter>) + 30);
    }
};

template <class Meter>
void AddMeterRows(std::vector<Row>& rows, const std::string& name)
{
    using State = Meters<Meter>;
    const auto describe = [](const State& s) { return DescribeMeter(s); };
    // The value is kept and drawn with the next one, or with the next paint.
    const AfterFailure<State> valueIsKept{
        [](const State& s) { return s.meter.GetValue() == kFirst<Meter>; }, {}};
    rows.push_back(Operation<State>(
        name + "::SetValue", Shortage::Throws, [](State& s) { s.meter.SetValue(kFirst<Meter>); },
        describe, valueIsKept));
    rows.push_back(Operation<State>(
        name + "::SetFix", Shortage::Throws,
        [](State& s) { s.meter.SetFix(static_cast<int>(kFirst<Meter>) + 60); }, describe));
    // A first paint: short of memory all of it is still to be painted.
    using Fresh = FreshMeters<Meter>;
    rows.push_back(Operation<Fresh>(
        name + "::OnPaint", Shortage::Throws, [](Fresh& s) { s.meter.UpdateWindow(); },
        [](const Fresh& s) { return DescribeMeter(s); }));
    using OnPaper = MeterOnPaper<Meter>;
    const auto draw = [&](const std::string& step, auto run) {
        rows.push_back(Operation<OnPaper>(
            name + step, Shortage::Throws,
            [run](OnPaper& p) {
                run(p);
                p.result = 1;
            },
            [](const OnPaper& p) { return Describe(static_cast<const Paper&>(p)); },
            {[](const OnPaper& p) { return p.result == 0; }, {}}));
    };
    draw("::DrawBackground", [](OnPaper& p) {
        CRect box(0, 0, 48, 32);
        p.meter.DrawBackground(&p.dc, box);
    });
    draw("::DrawPointer", [](OnPaper& p) { p.meter.DrawPointer(&p.dc, kFirst<Meter>); });
    draw("::DrawFixSign", [](OnPaper& p) { p.meter.DrawFixSign(&p.dc); });
    const std::string quiet = name + "::GetValue " + name + "::GetMeterBackColor " + name
                              + "::OnEraseBkgnd " + name + "::PreSubclassWindow " + name
                              + "::GetMessageMap " + name + "::GetThisMessageMap " + name
                              + "::GetRuntimeClass " + name + "::" + name;
    rows.push_back(WithoutMemory<State>(quiet, [](State& s) {
        const Meter unused;
        EXPECT_EQ(s.meter.GetValue(), kFirst<Meter> + 20.0);
        s.meter.GetMeterBackColor();
        EXPECT_FALSE(s.meter.OnEraseBkgnd(nullptr));
        s.meter.PreSubclassWindow();
        EXPECT_EQ(s.meter.GetMessageMap(), Reach<Meter>::GetThisMessageMap());
        EXPECT_TRUE(s.meter.IsKindOf(RUNTIME_CLASS(CStatic)));
    }));
    // These leave the drawing to the next paint, which the toolkit is asked for.
    rows.push_back(Operation<State>(
        name + "::SetMeterBackColor " + name + "::ReconstructControl " + name + "::ClearFix",
        Shortage::Never,
        [](State& s) {
            s.meter.SetMeterBackColor(RGB(4, 5, 6));
            s.meter.ReconstructControl();
            s.meter.ClearFix();
        },
        describe));
}

} // namespace

std::vector<Row> ControlRows()
{
    std::vector<Row> rows;
    AddPaintRows(rows);
    AddMeterRows<CGraphCompass>(rows, "CGraphCompass");
    AddMeterRows<CGraphIncline_Left>(rows, "CGraphIncline_Left");
    AddMeterRows<CGraphIncline_Right>(rows, "CGraphIncline_Right");
    return rows;
}

} // namespace sweep
