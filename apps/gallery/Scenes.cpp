// SPDX-License-Identifier: MIT
#include "apps/gallery/Scenes.h"

#include "apps/gallery/Frame.h"
#include "apps/tables/Errors.h"
#include "survey/Angle.h"

#include <cerrno>
#include <cmath>
#include <functional>
#include <system_error>

namespace gallery {
namespace {

namespace survey = tiltpole::survey;

constexpr DWORD kChild = WS_CHILD | WS_VISIBLE;

class Host : public CWnd
{
public:
    Host()
    {
        CreateEx(0, AfxRegisterWndClass(0), L"", WS_OVERLAPPED, 0, 0, 1000, 1000, nullptr, 0);
        ShowWindow(SW_SHOW);
    }
};

// Collects pictures under their names.
class Album
{
public:
    explicit Album(std::string folder) : m_folder(std::move(folder))
    {
        if (!framework::MakeFolder(CString(m_folder.c_str())))
            throw tables::InputError(m_folder, "the folder cannot be created");
    }

    void Add(CWnd& window, const std::string& name)
    {
        const std::string path = m_folder + "/" + name + ".png";
        if (!framework::SaveWindowImage(window, CString(path.c_str()))) {
            const int reason = errno;
            throw tables::InputError(path, "cannot be written: "
                                               + std::generic_category().message(reason));
        }
        m_names.push_back(path);
    }

    std::vector<std::string> Names() const { return m_names; }

private:
    std::string m_folder;
    std::vector<std::string> m_names;
};

template <class Control>
void AddMeter(Album& album, const std::string& name, CSize size,
              const std::function<void(Control&)>& prepare)
{
    Host host;
    Control control;
    control.Create(L"", kChild, CRect(CPoint(0, 0), size), &host, 1);
    control.UpdateWindow();
    prepare(control);
    control.UpdateWindow();
    album.Add(control, name);
}

void AddDials(Album& album)
{
    const auto heading = [](double value) {
        return [value](CGraphCompass& dial) { dial.SetValue(value); };
    };
    AddMeter<CGraphCompass>(album, "compass-000", {240, 240}, heading(0));
    AddMeter<CGraphCompass>(album, "compass-090-light-above", {240, 240}, heading(90));
    AddMeter<CGraphCompass>(album, "compass-090-light-below", {240, 240}, heading(90.000001));
    AddMeter<CGraphCompass>(album, "compass-212", {240, 240}, heading(212));
    AddMeter<CGraphCompass>(album, "compass-small", {64, 64}, heading(45));
    AddMeter<CGraphCompass>(album, "compass-wide", {320, 160}, heading(300));
    AddMeter<CGraphCompass>(album, "compass-fixes", {240, 240}, [](CGraphCompass& dial) {
        for (const int fix : {15, 120, 235, 340})
            dial.SetFix(fix);
        dial.SetValue(340);
    });
    AddMeter<CGraphCompass>(album, "compass-back-color", {240, 240}, [](CGraphCompass& dial) {
        dial.SetMeterBackColor(RGB(240, 240, 240));
        dial.SetValue(123);
    });
}

template <class Gauge>
void AddGauges(Album& album, const std::string& side, int low)
{
    const CSize size{110, 260};
    AddMeter<Gauge>(album, side + "-start", size, [](Gauge&) {});
    for (const int value : {0, 60, 90, 180})
        AddMeter<Gauge>(album, side + "-" + std::to_string(low + value), size,
                        [=](Gauge& gauge) { gauge.SetValue(low + value); });
    AddMeter<Gauge>(album, side + "-fixes", size, [=](Gauge& gauge) {
        for (const int fix : {20, 75, 150})
            gauge.SetFix(low + fix);
        gauge.SetValue(low + 75);
    });
}

// An ellipse of readings about a center, as a turn with hard iron produces it.
template <class Plot>
void AddPlots(Album& album, const std::string& name)
{
    Host host;
    Plot plot;
    plot.Create(nullptr, nullptr, kChild, CRect(0, 0, 306, 306), &host, 1);
    plot.UpdateWindow();
    album.Add(plot, name + "-empty");
    for (int degrees = 0; degrees < 330; degrees += 3) {
        const double a = survey::Deg2Rad(degrees);
        const int across = 120 + static_cast<int>(std::lround(420 * std::cos(a)));
        const int up = -80 + static_cast<int>(std::lround(380 * std::sin(a)));
        plot.AddTrackPoint(across, up, up);
        if (degrees % 60 == 0) plot.AddCenterPoint(118 + degrees / 60, -78, -78);
    }
    plot.UpdateWindow();
    album.Add(plot, name + "-samples");
    plot.ZoomAll();
    plot.UpdateWindow();
    album.Add(plot, name + "-zoomed");
}

TiltPoint_Sensor Observation(double x, double y, bool confirmed)
{
    TiltPoint_Sensor point;
    point.nSet = 1;
    point.nConfirmed = confirmed;
    point.dX = x;
    point.dY = y;
    return point;
}

void AddTiltGraphs(Album& album)
{
    Host host;
    GroundView view;
    view.Create(nullptr, nullptr, kChild, CRect(0, 0, 320, 320), &host, 1);
    view.Renew();
    CTiltPositionGraph& graph = *view.graph;
    view.UpdateWindow();
    album.Add(view, "tilt-empty");
    for (int i = 0; i < 12; ++i) {
        const double a = i * survey::kPi / 6.0;
        const double reach = 0.5 + 0.05 * i;
        graph.AddPoint(
            Observation(4500000 + reach * std::cos(a), 500000 + reach * std::sin(a), false));
    }
    graph.ZoomAll();
    graph.ReDraw();
    album.Add(view, "tilt-observations");
    graph.SetCenterPoint(1, Observation(4500000.4, 499999.7, true));
    graph.SetCenterPoint(2, Observation(4500000.1, 500000.5, true));
    graph.DrawCurrentPt(nullptr, Observation(4499999.6, 500000.2, true));
    graph.InvalidateCtrl();
    graph.ReDraw();
    album.Add(view, "tilt-two-centres");
    graph.SetCenterPoint(3, Observation(4499999.7, 499999.8, true));
    graph.InvalidateCtrl();
    graph.ReDraw();
    album.Add(view, "tilt-three-centres");
}

void AddWholeWindow(Album& album, const std::vector<ReplaySample>& replay)
{
    Frame frame(replay);
    if (!frame.Open()) return;
    frame.UpdateWindow();
    while (frame.Step(1))
        ;
    for (int id = 1; id <= 7; ++id) {
        if (CWnd* const child = frame.GetDlgItem(id)) child->UpdateWindow();
    }
    album.Add(frame, "gallery");
}

} // namespace

std::vector<std::string> RenderScenes(const std::string& folder,
                                      const std::vector<ReplaySample>& replay)
{
    Album album(folder);
    AddWholeWindow(album, replay); // first: the plots below save views that its plots would load
    AddDials(album);
    AddGauges<CGraphIncline_Left>(album, "incline-left", 0);
    AddGauges<CGraphIncline_Right>(album, "incline-right", 180);
    AddPlots<CGraphMagnetic_XY>(album, "magnetic-xy");
    AddPlots<CGraphMagnetic_XZ>(album, "magnetic-xz");
    AddTiltGraphs(album);
    return album.Names();
}

} // namespace gallery
