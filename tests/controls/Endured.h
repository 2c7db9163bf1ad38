// SPDX-License-Identifier: MIT
//
// Each kind of control through a whole life, and painted again and again with other values: what the
// tests do some times ./dev soak --controls does ten thousand and a million times.
#pragma once

#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "controls/TiltPositionGraph.h"
#include "framework/gui/gui.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <ostream>

namespace tiltpole::controls::test {

inline constexpr DWORD kInHost = WS_CHILD | WS_VISIBLE;
inline const CRect kSmall(0, 0, 64, 96);
inline const CRect kLarge(0, 0, 240, 180);

/// A host's window on the (offscreen) screen.
class HostWindow : public CWnd
{
public:
    HostWindow()
    {
        CreateEx(0, AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW), L"host", WS_OVERLAPPED, 0, 0, 320,
                 320, nullptr, 0);
        ShowWindow(SW_SHOW);
    }
};

/// A number of the pixels that a window shows.
inline std::uint64_t PictureOf(CWnd& window)
{
    CRect client;
    window.GetClientRect(&client);
    CClientDC dc(&window);
    std::uint64_t number = 14695981039346656037U;
    for (int y = 0; y < client.Height(); ++y)
        for (int x = 0; x < client.Width(); ++x)
            number = (number ^ dc.GetPixel(x, y)) * 1099511628211U;
    return number;
}

/// A control in a host's window that is painted with one value after another.
class Painted
{
public:
    Painted() = default;
    Painted(const Painted&) = delete;
    Painted& operator=(const Painted&) = delete;
    virtual ~Painted() = default;
    /// Shows value n; the pictures repeat with `Period`.
    virtual void Paint(long n) = 0;
    virtual long Period() const = 0;
    virtual CWnd& Window() = 0;

protected:
    HostWindow m_host;
};

template <class Meter>
class PaintedMeter : public Painted
{
public:
    PaintedMeter() { m_meter.Create(L"", kInHost, kLarge, &m_host, 1); }
    void Paint(long n) override
    {
        m_meter.SetValue(kFirst + static_cast<double>(n % Period()));
        if (n % Period() == 0) m_meter.ClearFix();
        if (n % Period() % 36 == 18) m_meter.SetFix(kFirst + static_cast<int>(n % Period()));
        m_meter.Invalidate();
        m_meter.UpdateWindow();
    }
    long Period() const override { return 180; }
    CWnd& Window() override { return m_meter; }

private:
    static constexpr int kFirst = std::is_same_v<Meter, CGraphIncline_Right> ? 180 : 0; // [degrees]
    Meter m_meter;
};

/// A turn of 120 samples, which is then cleared.
template <class Plot>
class PaintedPlot : public Painted
{
public:
    PaintedPlot() { m_plot.Create(nullptr, nullptr, kInHost, kLarge, &m_host, 1); }
    void Paint(long n) override
    {
        const long at = n % Period();
        if (at == 0) m_plot.Clear();
        const double angle =
            2.0 * 3.14159265358979 * static_cast<double>(at) / static_cast<double>(Period());
        const int a = static_cast<int>(300.0 * std::cos(angle));
        const int b = static_cast<int>(200.0 * std::sin(angle));
        m_plot.AddTrackPoint(a, b, b);
        if (at % 30 == 29) m_plot.AddCenterPoint(a / 10, b / 10, b / 10);
        m_plot.UpdateWindow();
    }
    long Period() const override { return 120; }
    CWnd& Window() override { return m_plot; }

private:
    Plot m_plot;
};

/// A view whose paint is that of the graph on it.
class GraphView : public CView
{
public:
    CTiltPositionGraph graph;

protected:
    void OnDraw(CDC*) override { graph.ReDraw(); }
};

/// 40 observations and three centers, which are then cleared.
class PaintedGraph : public Painted
{
public:
    PaintedGraph()
    {
        m_view.Create(nullptr, nullptr, kInHost, kLarge, &m_host, 1);
        m_view.graph.SetView(&m_view);
        m_view.graph.InvalidateCtrl();
    }
    void Paint(long n) override
    {
        const long at = n % Period();
        if (at == 0) m_view.graph.Clear();
        const double angle = 0.7 * static_cast<double>(at);
        TiltPoint_Sensor point;
        point.nSet = point.nConfirmed = 1;
        point.dX = std::cos(angle);
        point.dY = std::sin(angle);
        m_view.graph.AddPoint(point);
        if (at % 10 == 5 && at < 30)
            m_view.graph.SetCenterPoint(static_cast<int>(at / 10) + 1, point);
        m_view.graph.DrawCurrentPt(nullptr, point);
        m_view.Invalidate();
        m_view.UpdateWindow();
    }
    long Period() const override { return 40; }
    CWnd& Window() override { return m_view; }

private:
    GraphView m_view;
};

// Lives: window, size, show, paint, hide, end. A control is destroyed by its window here and by its
// destructor there.

/// What happens to every window of its own.
inline void Resize(CWnd& window)
{
    window.MoveWindow(&kLarge);
    window.ShowWindow(SW_HIDE);
    window.ShowWindow(SW_SHOW);
    window.Invalidate();
    window.UpdateWindow();
}

template <class Meter>
void LiveAsMeter()
{
    HostWindow host;
    Meter meter;
    meter.Create(L"", kInHost, kSmall, &host, 1);
    meter.UpdateWindow();
    meter.SetValue(180);
    meter.SetFix(180);
    meter.ReconstructControl();
    Resize(meter);
    meter.DestroyWindow();
}

/// A static control of the host that a dial takes over.
inline void LiveTakenOver()
{
    HostWindow host;
    auto* const item =
        CreateWindowExW(0, L"STATIC", L"", kInHost, 0, 0, 64, 96, host.GetSafeHwnd(), 2);
    CGraphCompass dial;
    dial.SubclassWindow(item);
    dial.SetFix(20);
    Resize(dial);
}

template <class Plot>
void LiveAsPlot()
{
    HostWindow host;
    Plot plot;
    plot.Create(nullptr, nullptr, kInHost, kSmall, &host, 3);
    plot.AddTrackPoint(0, 0, 0);
    plot.AddCenterPoint(5, 5, 5);
    Resize(plot);
    plot.Clear();
    plot.UpdateWindow();
}

inline void LiveAsGraph()
{
    HostWindow host;
    GraphView view;
    view.Create(nullptr, nullptr, kInHost, kSmall, &host, 4);
    view.graph.SetView(&view);
    view.graph.InvalidateCtrl();
    TiltPoint_Sensor point;
    point.nSet = point.nConfirmed = 1;
    view.graph.AddPoint(point);
    view.graph.SetCenterPoint(1, point);
    view.graph.DrawCurrentPt(nullptr, point);
    Resize(view);
    view.graph.Clear();
}

/// One kind of control.
struct Kind
{
    const char* name;
    void (*live)();
    std::unique_ptr<Painted> (*make)(); ///< null: painted as another kind is

    friend std::ostream& operator<<(std::ostream& out, const Kind& kind)
    {
        return out << kind.name;
    }
};

template <class Made>
std::unique_ptr<Painted> Make()
{
    return std::make_unique<Made>();
}

inline constexpr std::array kKinds{
    Kind{"Compass",      LiveAsMeter<CGraphCompass>,       Make<PaintedMeter<CGraphCompass>>      },
    Kind{"InclineLeft",  LiveAsMeter<CGraphIncline_Left>,  Make<PaintedMeter<CGraphIncline_Left>> },
    Kind{"InclineRight", LiveAsMeter<CGraphIncline_Right>, Make<PaintedMeter<CGraphIncline_Right>>},
    Kind{"Subclassed",   LiveTakenOver,                    nullptr                                },
    Kind{"MagneticXY",   LiveAsPlot<CGraphMagnetic_XY>,    Make<PaintedPlot<CGraphMagnetic_XY>>   },
    Kind{"MagneticXZ",   LiveAsPlot<CGraphMagnetic_XZ>,    Make<PaintedPlot<CGraphMagnetic_XZ>>   },
    Kind{"TiltGraph",    LiveAsGraph,                      Make<PaintedGraph>                     },
};

} // namespace tiltpole::controls::test
