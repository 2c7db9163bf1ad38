// SPDX-License-Identifier: MIT
//
// What a new heading costs on a dial of 240 x 240 pixels, beside the same drawing with the
// toolkit's painter, Qwt's compass, and two plain copies of the picture.
#include "controls/GraphCompass.h"
#include "controls/dial/DialGeometry.h"
#include "framework/gui/gui.h"

#include <benchmark/benchmark.h>

#include <QImage>
#include <QPainter>
#include <QPolygon>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr int kSide = 240; // pixels
constexpr int kDiameter = kSide - 5;
constexpr int kUnit = kDiameter / 60;

struct ShownDial
{
    CWnd host;
    CGraphCompass dial;

    ShownDial()
    {
        host.CreateEx(0, AfxRegisterWndClass(0), L"", WS_OVERLAPPED, 0, 0, kSide, kSide, nullptr,
                      0);
        host.ShowWindow(SW_SHOW);
        dial.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, kSide, kSide), &host, 1);
        dial.UpdateWindow();
    }
};

// The window keeps the picture: the screen follows with the next event.
void SetValue(benchmark::State& state)
{
    ShownDial shown;
    int heading = 0;
    for (auto _ : state)
        shown.dial.SetValue(heading++ % 360);
}
BENCHMARK(SetValue);

// The event that puts each picture on the (offscreen) screen included.
void SetValueAndShow(benchmark::State& state)
{
    int argc = 1;
    char name[] = "benchmark";
    char* argv[] = {name, nullptr};
    framework::Application events(argc, argv, framework::Display::Memory);
    ShownDial shown;
    events.DispatchPending();
    int heading = 0;
    for (auto _ : state) {
        shown.dial.SetValue(heading++ % 360);
        events.DispatchPending();
    }
}
BENCHMARK(SetValueAndShow);

QPolygon PolygonOf(const tiltpole::controls::NeedleShape& needle)
{
    QPolygon corners;
    for (const POINT& corner : needle.corners)
        corners << QPoint(corner.x, corner.y);
    return corners;
}

// The needle over a background drawn before, then all of it onto the target.
void PaintWithToolkit(QImage& target, const QImage& background, int heading)
{
    const QPolygon corners = PolygonOf(
        tiltpole::controls::NeedleShape::Of({kSide / 2, kSide / 2}, kDiameter, kUnit, heading));
    QImage memory(kSide, kSide, QImage::Format_RGB32);
    {
        QPainter painter(&memory);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(0, 0, background);
        painter.setPen(QPen(Qt::red, 1));
        painter.setBrush(Qt::red);
        painter.drawPolygon(corners);
        const QPoint dark[] = {corners[1], corners[2], corners[3]};
        painter.setPen(QPen(Qt::gray, 2));
        painter.drawPolyline(dark, 3);
        const QPoint light[] = {corners[1], corners[0], corners[3]};
        painter.setPen(QPen(QColor(233, 87, 50), 1));
        painter.drawPolyline(light, 3);
        painter.setPen(Qt::black);
        painter.setBrush(Qt::black);
        painter.drawEllipse(kSide / 2 - 2, kSide / 2 - 2, 4, 4);
    }
    QPainter painter(&target);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(0, 0, memory);
}

void ToolkitPainter(benchmark::State& state)
{
    QImage background(kSide, kSide, QImage::Format_RGB32);
    background.fill(QColor(204, 255, 102));
    QImage target(kSide, kSide, QImage::Format_RGB32);
    int heading = 0;
    for (auto _ : state) {
        PaintWithToolkit(target, background, heading++ % 360);
        benchmark::DoNotOptimize(target.constBits());
    }
}
BENCHMARK(ToolkitPainter);

void TwoCopies(benchmark::State& state)
{
    const std::vector<std::uint32_t> background(kSide * kSide, 0xCCFF66);
    std::vector<std::uint32_t> memory(kSide * kSide);
    std::vector<std::uint32_t> target(kSide * kSide);
    const std::size_t bytes = background.size() * sizeof background[0];
    for (auto _ : state) {
        std::memcpy(memory.data(), background.data(), bytes);
        benchmark::ClobberMemory();
        std::memcpy(target.data(), memory.data(), bytes);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(TwoCopies);

#ifdef TILTPOLE_QWT_PEER
// Measured by a program of its own in the middle of this run; the time column is its processor
// time for one repaint.
void QwtCompassRepaint(benchmark::State& state)
{
    for (auto _ : state) {
        double nanoseconds = 0;
        FILE* const peer = popen(TILTPOLE_QWT_PEER, "r");
        const bool measured = peer && std::fscanf(peer, "%lf", &nanoseconds) == 1;
        if ((peer && pclose(peer) != 0) || !measured) {
            state.SkipWithError("the peer did not run");
            return;
        }
        state.SetIterationTime(nanoseconds * 1e-9);
    }
}
BENCHMARK(QwtCompassRepaint)->UseManualTime()->Iterations(1);
#endif

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const framework::Application application(argc, argv, framework::Display::Memory);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
