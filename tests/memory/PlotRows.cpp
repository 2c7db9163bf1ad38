// SPDX-License-Identifier: MIT
//
// Plots, and the graph of positions.
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "controls/TiltPositionGraph.h"
#include "framework/core/Paths.h"
#include "tests/ScratchFolder.h"
#include "tests/memory/Drawn.h"
#include "tests/memory/Rows.h"

#include <string>
#include <type_traits>

namespace sweep {

namespace {

// What a control shows once it has been painted: what failed before must not be seen in it.
std::string Repainted(CWnd& window)
{
    window.UpdateWindow();
    return Describe(window);
}

// Plots.

template <class Plot>
struct ReachPlot : Plot
{
    using Plot::ClientToWorld;
    using Plot::ConfigRead;
    using Plot::ConfigSave;
    using Plot::GetMessageMap;
    using Plot::GetThisMessageMap;
    using Plot::InvalidateCtrl;
    using Plot::WorldToClient;

    std::string View()
    {
        long x = 300;
        long y = 0;
        this->ClientToWorld(0, 40, x, y);
        return std::to_string(x) + ',' + std::to_string(y) + ' ';
    }
};

// The module is in a folder of its own: views are saved beside it.
struct Module
{
    ScratchFolder folder;
    int result = 0;
    Module() { framework::SetModulePath((folder.Path("module")).c_str()); }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module() { framework::SetModulePath(""); }

    std::string Saved() const
    {
        std::string all;
        for (const std::string& name : folder.Names())
            all += name + ' ' + folder.Read(name);
        return all;
    }
};

// The first component of a sample inside the first view [counts].
template <class Plot>
constexpr int kInView = std::is_same_v<Plot, CGraphMagnetic_XY> ? -450 : 60;

template <class Plot>
struct Plots
{
    Module module;
    Host host;
    ReachPlot<Plot> plot;
    int result = 0;

    Plots()
    {
        plot.Create(nullptr, nullptr, kInHost, CRect(0, 0, 100, 100), &host.window, 1);
        plot.AddTrackPoint(kInView<Plot>, -400, -400);
        plot.AddTrackPoint(kInView<Plot> + 30, -380, -380);
        plot.UpdateWindow();
    }
};

template <class Plot>
struct FarPlots : Plots<Plot>
{
    FarPlots()
    {
        for (int i = 0; i < 10; ++i)
            this->plot.AddTrackPoint(8000 + i, 8000, 8000);
    }
};

template <class Plot>
struct MadePlots
{
    Module module;
    Host host;
    ReachPlot<Plot> plot;
};

template <class Plot>
std::string DescribePlot(const Plots<Plot>& constant)
{
    auto& p = const_cast<Plots<Plot>&>(constant); // asking is not const
    const std::string shown = Repainted(p.plot);
    // All samples that there are, each once.
    Paper paper;
    paper.dc.IntersectClipRect(0, 0, 48, 32);
    p.plot.DrawTrackPoints(&paper.dc);
    p.plot.DrawCenterPoints(&paper.dc);
    return shown + p.plot.View() + Describe(paper) + std::to_string(p.result);
}

template <class Plot>
void AddPlotRows(std::vector<Row>& rows, const std::string& name)
{
    using State = Plots<Plot>;
    const auto add = [&](const std::string& covers, Shortage shortage,
                         std::function<void(State&)> run, AfterFailure<State> after = {}) {
        rows.push_back(Operation<State>(name + covers, shortage, std::move(run),
                                        [](const State& s) { return DescribePlot(s); },
                                        std::move(after), {12, 3}));
    };
    add("::AddTrackPoint", Shortage::Throws,
        [](State& s) { s.plot.AddTrackPoint(kInView<Plot> + 80, -350, -350); });
    add("::AddCenterPoint", Shortage::Throws,
        [](State& s) { s.plot.AddCenterPoint(kInView<Plot> + 70, -340, -340); });
    const AfterFailure<State> anything{[](const State&) { return true; }, {}};
    // The samples are gone; what is shown follows at the next paint.
    add(
        "::Clear", Shortage::Throws, [](State& s) { s.plot.Clear(); }, anything);
    add(
        "::ZoomAll", Shortage::Throws, [](State& s) { s.plot.ZoomAll(); }, anything);
    add("::InvalidateCtrl", Shortage::Throws, [](State& s) {
        s.plot.InvalidateCtrl();
        ++s.result;
    });
    add("::OnPaint", Shortage::Throws, [](State& s) {
        s.plot.Invalidate();
        s.plot.UpdateWindow();
        ++s.result;
    });
    // The eleventh sample outside zooms the view; where memory runs out behind that it stays zoomed.
    using Far = FarPlots<Plot>;
    rows.push_back(Operation<Far>(
        name + "::ZoomAll " + name + "::AddTrackPoint", Shortage::Throws,
        [](Far& s) { s.plot.AddTrackPoint(9000, 9000, 9000); },
        [](const Far& s) { return DescribePlot<Plot>(s); }, {[](const Far&) { return true; }, {}},
        {12, 3}));
    using Made = MadePlots<Plot>;
    rows.push_back(Operation<Made>(
        name + "::Create", Shortage::Reports,
        [](Made& m) {
            m.plot.Create(nullptr, nullptr, kInHost, CRect(0, 0, 40, 30), &m.host.window, 1);
        },
        [](const Made& m) { return Describe(const_cast<ReachPlot<Plot>&>(m.plot)); }));
    rows.push_back(Operation<Module>(
        name + "::" + name, Shortage::Throws,
        [](Module& m) {
            const Plot plot;
            m.result = 1;
        },
        [](const Module& m) { return std::to_string(m.result); }));
    rows.push_back(WithoutMemory<State>(
        name + "::GetDistance " + name + "::WorldToClient " + name + "::ClientToWorld " + name
            + "::GetMessageMap " + name + "::GetThisMessageMap " + name + "::GetRuntimeClass",
        [](State& s) {
            EXPECT_EQ(s.plot.GetDistance(CPoint(0, 0), CPoint(3, 4)), 5);
            long x = 0;
            long y = 0;
            s.plot.WorldToClient(10, 20, x, y);
            s.plot.ClientToWorld(0, y, x, y);
            EXPECT_EQ(s.plot.GetMessageMap(), ReachPlot<Plot>::GetThisMessageMap());
            EXPECT_TRUE(s.plot.IsKindOf(RUNTIME_CLASS(CWnd)));
        }));
    struct Crossed : Paper
    {
        State plots;
        Crossed() { plots.plot.AddCenterPoint(5, 6, 7); }
    };
    rows.push_back(Operation<Crossed>(
        name + "::DrawTrackPoints " + name + "::DrawCenterPoints", Shortage::Throws,
        [](Crossed& c) {
            c.plots.plot.DrawTrackPoints(&c.dc);
            c.plots.plot.DrawCenterPoints(&c.dc);
            c.result = 1;
        },
        [](const Crossed& c) { return Describe(static_cast<const Paper&>(c)); },
        {[](const Crossed& c) { return c.result == 0; }, {}}));
    rows.push_back(Operation<State>(
        name + "::ConfigSave", Shortage::Reports, [](State& s) { s.result = s.plot.ConfigSave(); },
        [](const State& s) { return s.module.Saved() + std::to_string(s.result); }, {}, {12, 3}));
    struct Kept : State
    {
        Kept()
        {
            for (const std::string plane : {"XY", "XZ"})
                this->module.folder.Write("GraphMagnetic_" + plane + ".cfg",
                                          "GRAPHMAGNETIC_" + plane + ":-100, -200, 7.500000,\r\n");
        }
    };
    rows.push_back(Operation<Kept>(
        name + "::ConfigRead", Shortage::Throws, [](Kept& k) { k.result = k.plot.ConfigRead(); },
        [](const Kept& k) { return const_cast<Kept&>(k).plot.View() + std::to_string(k.result); }));
}

// The graph of positions.

struct Graph : CTiltPositionGraph
{
    using CTiltPositionGraph::ClientToWorld;
    using CTiltPositionGraph::WorldToClient;
};

struct GraphView : CView
{
    Graph graph;
    void OnDraw(CDC*) override { graph.ReDraw(); }
};

TiltPoint_Sensor At(double x, double y)
{
    TiltPoint_Sensor point;
    point.nSet = point.nConfirmed = 1;
    point.strLabel = kName;
    point.dX = x;
    point.dY = y;
    return point;
}

struct Graphs : Paper
{
    Host host;
    GraphView view;
    TiltPoint_Sensor point = At(0.1, 0.2); // its text is copied without memory of the operation

    Graphs()
    {
        view.Create(nullptr, nullptr, kInHost, CRect(0, 0, 100, 100), &host.window, 1);
        view.graph.SetView(&view);
        view.graph.InvalidateCtrl();
        view.graph.AddPoint(At(-0.2, -0.2));
        view.graph.SetCenterPoint(1, At(0.05, 0.0));
        view.graph.SetCenterPoint(2, At(-0.05, 0.05));
        view.graph.InvalidateCtrl();
        view.UpdateWindow();
    }
};

std::string DescribeGraph(const Graphs& constant)
{
    auto& g = const_cast<Graphs&>(constant); // asking is not const
    double x = 0.0;
    double y = 0.0;
    g.view.graph.ClientToWorld(3, 4, x, y);
    g.view.Invalidate();
    const std::string shown = Repainted(g.view);
    Paper paper; // with all observations, each once
    g.view.graph.DrawPoints(&paper.dc);
    g.view.graph.DrawCircles(&paper.dc);
    return shown + Text(x) + Text(y) + Describe(paper) + Describe(static_cast<Paper&>(g));
}

void AddGraphRows(std::vector<Row>& rows)
{
    const AfterFailure<Graphs> anything{[](const Graphs&) { return true; }, {}};
    const auto add = [&](const std::string& name, std::function<void(Graphs&)> run,
                         const AfterFailure<Graphs>& after) {
        rows.push_back(Operation<Graphs>("CTiltPositionGraph::" + name, Shortage::Throws,
                                         std::move(run), DescribeGraph, after, {15, 7}));
    };
    add("AddPoint", [](Graphs& g) { g.view.graph.AddPoint(g.point); }, {});
    add("AddPoint", [](Graphs& g) { g.view.graph.AddPoint(At(30.0, 40.0)); }, {});
    add("SetCenterPoint", [](Graphs& g) { g.view.graph.SetCenterPoint(3, At(0.1, 0.1)); }, {});
    add(
        "Clear", [](Graphs& g) { g.view.graph.Clear(); }, anything);
    add(
        "ZoomAll",
        [](Graphs& g) {
            g.view.graph.ZoomAll();
            g.result = 1;
        },
        anything);
    add("InvalidateCtrl",
        [](Graphs& g) {
            g.view.graph.InvalidateCtrl();
            g.result = 1;
        },
        {});
    add("ReDraw CTiltPositionGraph::DrawAll",
        [](Graphs& g) {
            g.view.graph.ReDraw();
            g.result = 1;
        },
        {});
    // What a step has drawn before memory ran out stays.
    const AfterFailure<Graphs> half{[](const Graphs& g) { return g.result == 0; }, {}};
    const auto draw = [&](const std::string& name, std::function<void(Graphs&)> run) {
        add(
            name,
            [run](Graphs& g) {
                run(g);
                g.result = 1;
            },
            half);
    };
    draw("DrawPoints", [](Graphs& g) { g.view.graph.DrawPoints(&g.dc); });
    draw("DrawCircles", [](Graphs& g) { g.view.graph.DrawCircles(&g.dc); });
    draw("DrawLinkLine", [](Graphs& g) { g.view.graph.DrawLinkLine(&g.dc); });
    draw("DrawLinkDistance", [](Graphs& g) { g.view.graph.DrawLinkDistance(&g.dc, At(0.1, 0.1)); });
    draw("DrawCircle", [](Graphs& g) { g.view.graph.DrawCircle(&g.dc, At(0.1, 0.1)); });
    rows.push_back(Operation<Graphs>(
        "CTiltPositionGraph::DrawCurrentPt", Shortage::Throws,
        [](Graphs& g) { g.view.graph.DrawCurrentPt(nullptr, At(0.1, 0.1)); },
        [](const Graphs& g) { // the layers that it is in
            const_cast<Graphs&>(g).view.graph.InvalidateCtrl();
            return DescribeGraph(g);
        }));
    rows.push_back(
        WithoutMemory<Graphs>("CTiltPositionGraph::DrawCircle CTiltPositionGraph::WorldToClient"
                              " CTiltPositionGraph::ClientToWorld CTiltPositionGraph::SetView"
                              " CTiltPositionGraph::CTiltPositionGraph",
                              [](Graphs& g) {
                                  const Graph unused;
                                  g.view.graph.DrawCircle(&g.dc, CPoint(9, 9), 5);
                                  long column = 0;
                                  long row = 0;
                                  g.view.graph.WorldToClient(0.1, 0.1, column, row);
                                  double x = 0.0;
                                  double y = 0.0;
                                  g.view.graph.ClientToWorld(row, column, x, y);
                                  EXPECT_NEAR(x, 0.1, 0.02);
                                  g.view.graph.SetView(&g.view);
                              }));
}

} // namespace

std::vector<Row> PlotRows()
{
    std::vector<Row> rows;
    AddPlotRows<CGraphMagnetic_XY>(rows, "CGraphMagnetic_XY");
    AddPlotRows<CGraphMagnetic_XZ>(rows, "CGraphMagnetic_XZ");
    AddGraphRows(rows);
    return rows;
}

} // namespace sweep
