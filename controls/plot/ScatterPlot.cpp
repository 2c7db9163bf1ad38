// SPDX-License-Identifier: MIT
#include "controls/plot/ScatterPlot.h"

#include "controls/drawing/Pixel.h"
#include "framework/core/AtomicFile.h"
#include "framework/core/File.h"
#include "framework/core/Paths.h"
#include "framework/core/TextConversion.h"
#include "framework/gui/Selected.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace tiltpole::controls {
namespace {

using framework::Selected;

constexpr COLORREF kBackColor = RGB(0, 0, 0);
constexpr COLORREF kAxisColor = RGB(0, 255, 255);
constexpr COLORREF kTextColor = RGB(255, 0, 255);
constexpr COLORREF kCenterColor = RGB(255, 0, 0);
constexpr int kAxisInset = 20;        // pixels from the left and bottom edges
constexpr int kOutsideLimit = 10;     // track points
constexpr double kLargestScale = 1e3; // counts per pixel
constexpr UINT kViewFileLimit = 999;  // bytes
constexpr DWORD kModulePathLimit = 260;

// The folder of the running module: its path up to the last separator, or all of it without one.
CString ModuleFolder()
{
    wchar_t name[kModulePathLimit] = {};
    GetModuleFileNameW(nullptr, name, kModulePathLimit);
    const CString full(name);
    int cut = full.ReverseFind(L'/');
#if defined(_WIN32) // elsewhere a backslash may be part of a folder's name
    cut = std::max(cut, full.ReverseFind(L'\\'));
#endif
    return cut < 0 ? full : full.Left(cut);
}

} // namespace

// clang-format off
const PlotPlane kPlaneXY{
    &MagneticPlotPoint::nSecond, L'Y', RGB(255, 255, 255), {-500, -500, 2.5},
    "GRAPHMAGNETIC_XY:", L"GRAPHMAGNETIC_XY:",
    L"GraphMagnetic_XY.cfg", L"tiltpole.GraphMagnetic_XY",
};
const PlotPlane kPlaneXZ{
    &MagneticPlotPoint::nThird,  L'Z', RGB(0, 255, 0),     {0, -500, 3.0},
    "GRAPHMAGNETIC_XZ:", L"GRAPHMAGNETIC_XZ:",
    L"GraphMagnetic_XZ.cfg", L"tiltpole.GraphMagnetic_XZ",
};
// clang-format on

ScatterPlot::ScatterPlot(CWnd& window, const PlotPlane& plane)
    : m_window(window), m_plane(plane), m_view(plane.view), m_moduleFolder(ModuleFolder())
{
    ReadView();
}

void ScatterPlot::CreateWindow(DWORD style, const RECT& rect, const CWnd* parent, UINT id)
{
    // Registered by the first control; for later ones the call fails harmlessly.
    WNDCLASS windowClass;
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpszClassName = m_plane.windowClass;
    BOOL created = FALSE;
    try {
        AfxRegisterClass(&windowClass);
        created =
            m_window.CreateEx(WS_EX_CLIENTEDGE | WS_EX_STATICEDGE, m_plane.windowClass, nullptr,
                              style, rect.left, rect.top, rect.right - rect.left,
                              rect.bottom - rect.top, parent ? parent->GetSafeHwnd() : nullptr, id);
        m_window.GetClientRect(&m_client);
        if (created) RebuildLayers();
    } catch (const std::bad_alloc&) { // no window rather than one without layers
        if (created) m_window.DestroyWindow();
    }
}

CPoint ScatterPlot::PixelOf(const MagneticPlotPoint& point) const
{
    long x = 0;
    long y = 0;
    m_view.ToClient(m_client, point.nFirst, point.*m_plane.vertical, x, y);
    return {static_cast<int>(x), static_cast<int>(y)};
}

// Returns false for a point outside the client rectangle.
bool ScatterPlot::DrawOnPoints(const MagneticPlotPoint& point, COLORREF color)
{
    if (m_layers.isUnfinished) RebuildLayers();
    const CPoint at = PixelOf(point);
    if (!m_client.PtInRect(at)) return false;
    CPen pen(PS_SOLID, 1, color);
    const Selected usePen(m_layers.points.dc, pen);
    DrawCross(m_layers.points.dc, at);
    m_window.Invalidate(FALSE);
    return true;
}

void ScatterPlot::AddTrackPoint(const MagneticPlotPoint& point)
{
    const INT_PTR added = m_track.Add(point);
    try {
        if (!DrawOnPoints(point, m_plane.trackColor) && ++m_outside > kOutsideLimit) {
            m_outside = 0;
            ZoomAll();
        }
    } catch (...) {
        m_track.RemoveAt(added);
        throw;
    }
    const double scale = std::fabs(m_view.scale);
    if (scale < kSmallestScale || scale > kLargestScale) ++m_outside;
}

void ScatterPlot::AddCenterPoint(const MagneticPlotPoint& point)
{
    const INT_PTR added = m_centers.Add(point);
    try {
        DrawOnPoints(point, kCenterColor);
    } catch (...) {
        m_centers.RemoveAt(added);
        throw;
    }
}

void ScatterPlot::Clear()
{
    m_track.RemoveAll();
    m_centers.RemoveAll();
    m_outside = 0;
    RebuildLayers();
    m_window.Invalidate();
}

// There is no view to fit while the client area is empty, as before creation.
void ScatterPlot::ZoomAll()
{
    if (m_track.GetSize() < 2 || m_client.IsRectEmpty()) return;
    const MagneticPlotPoint& first = m_track[0];
    PlotExtent extent{first.nFirst, first.nFirst, first.*m_plane.vertical, first.*m_plane.vertical};
    for (INT_PTR i = 1; i < m_track.GetSize(); ++i)
        extent.Include(m_track[i].nFirst, m_track[i].*m_plane.vertical);
    m_view = extent.FitInto(m_client);
    SaveView();
    RebuildLayers();
    m_window.Invalidate();
}

void ScatterPlot::DrawCrosses(CDC* dc, const CArray<MagneticPlotPoint>& points,
                              COLORREF color) const
{
    if (!dc) return;
    CPen pen(PS_SOLID, 1, color);
    const Selected usePen(*dc, pen);
    for (INT_PTR i = 0; i < points.GetSize(); ++i)
        DrawCross(*dc, PixelOf(points[i]));
}

void ScatterPlot::DrawTrackPoints(CDC* dc) const
{
    DrawCrosses(dc, m_track, m_plane.trackColor);
}

void ScatterPlot::DrawCenterPoints(CDC* dc) const
{
    DrawCrosses(dc, m_centers, kCenterColor);
}

void ScatterPlot::RebuildLayers()
{
    if (!m_window.GetSafeHwnd()) return;
    m_layers.isUnfinished = true;
    m_window.GetClientRect(&m_client);
    CClientDC screen(&m_window);
    m_layers.grid.Refill(screen, m_client, kBackColor);
    m_layers.points.Refill(screen, m_client, kBackColor);
    const AxisGlyph axes{
        {m_client.left + kAxisInset, m_client.bottom - kAxisInset},
        kAxisColor,
        kTextColor,
        m_plane.verticalLetter,
        L'X'
    };
    axes.Draw(m_layers.grid.dc);
    DrawTrackPoints(&m_layers.points.dc);
    DrawCenterPoints(&m_layers.points.dc);
    m_layers.isUnfinished = false;
}

// The crosses drawn after the last copy are never visible.
void ScatterPlot::Paint()
{
    if (m_layers.isUnfinished) RebuildLayers();
    CPaintDC dc(&m_window);
    if (!dc.GetSafeHdc()) return; // the window ended while it was erased
    CRect client;
    m_window.GetClientRect(&client);
    m_layers.Present(dc, client, [this](CDC& memory) {
        DrawTrackPoints(&memory);
        DrawCenterPoints(&memory);
    });
}

CString ScatterPlot::ViewPath() const
{
#if defined(_WIN32)
    const wchar_t* const separator = m_moduleFolder.Find(L"\\") >= 0 ? L"\\" : L"/";
#else
    const wchar_t* const separator = L"/";
#endif
    return m_moduleFolder + separator + m_plane.fileName;
}

bool ScatterPlot::SaveView() const
try {
    return framework::ReplaceFileContent(ViewPath(), m_view.ToLine(m_plane.key));
} catch (const std::bad_alloc&) {
    return false;
}

bool ScatterPlot::ReadView()
{
    CFile file;
    if (!file.Open(ViewPath(), CFile::modeRead)) return false;
    char bytes[kViewFileLimit + 1] = {};
    file.Read(bytes, kViewFileLimit);
    m_view.TakeFrom(framework::FromUtf8(bytes), m_plane.wideKey);
    return true;
}

int PixelDistance(CPoint p, CPoint q)
{
    const double dx = static_cast<double>(p.x) - q.x;
    const double dy = static_cast<double>(p.y) - q.y;
    return ToInt(std::sqrt(dx * dx + dy * dy));
}

} // namespace tiltpole::controls
