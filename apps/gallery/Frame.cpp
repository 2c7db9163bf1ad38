// SPDX-License-Identifier: MIT
#include "apps/gallery/Frame.h"

#include <cmath>

namespace gallery {
namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kPeriod = 42;        // milliseconds; two samples of the recording
constexpr int kSamplesPerTick = 2;  // 48 samples a second as recorded
constexpr int kSamplesPerCross = 5; // every fifth reading becomes a cross
constexpr double kSpacing = 0.15;   // distance between observations in plan [m]
constexpr int kWidth = 980;         // pixels
constexpr int kHeight = 610;
constexpr DWORD kChild = WS_CHILD | WS_VISIBLE;

double PlanDistance(const xyhCoordinate& a, const xyhCoordinate& b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

int Counts(double reading)
{
    return static_cast<int>(std::lround(reading));
}

} // namespace

void GroundView::OnDraw(CDC*)
{
    graph.ReDraw();
}

BEGIN_MESSAGE_MAP(Frame, CWnd)
ON_WM_PAINT()
ON_WM_TIMER()
END_MESSAGE_MAP()

Frame::Frame(std::vector<ReplaySample> replay) : m_replay(std::move(replay)) {}

bool Frame::Open()
{
    const LPCTSTR windowClass =
        AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW, nullptr, CBrush(GetSysColor(COLOR_BTNFACE)));
    if (!CreateEx(0, windowClass, L"tiltpole: the controls on a recorded pole", WS_OVERLAPPEDWINDOW,
                  40, 40, kWidth, kHeight, nullptr, 0))
        return false;
    m_dial.Create(L"", kChild, CRect(10, 10, 270, 270), this, 1);
    m_left.Create(L"", kChild, CRect(280, 10, 390, 270), this, 2);
    m_right.Create(L"", kChild, CRect(400, 10, 510, 270), this, 3);
    m_horizontal.Create(nullptr, nullptr, kChild, CRect(10, 280, 255, 570), this, 4);
    m_vertical.Create(nullptr, nullptr, kChild, CRect(265, 280, 510, 570), this, 5);
    m_ground.Create(nullptr, nullptr, kChild | WS_BORDER, CRect(520, 10, 970, 570), this, 6);
    m_caption.Create(L"", kChild, CRect(12, 580, 970, 602), this, 7);
    m_ground.graph.SetView(&m_ground);
    m_ground.graph.InvalidateCtrl();
    ShowWindow(SW_SHOW);
    SetTimer(kTimer, kPeriod, nullptr);
    return true;
}

bool Frame::Step(int samples)
{
    for (; samples > 0 && m_next < m_replay.size(); --samples, ++m_next)
        Show(m_replay[m_next]);
    return m_next < m_replay.size();
}

void Frame::Show(const ReplaySample& sample)
{
    const PoseSensorData& pose = sample.pose;
    m_dial.SetValue(pose.dYaw);
    m_left.SetValue(90.0 + pose.dPitch);
    m_right.SetValue(270.0 + pose.dRoll);
    if (m_next % kSamplesPerCross == 0) {
        const int a = Counts(pose.dMag_x);
        const int b = Counts(pose.dMag_y);
        const int c = Counts(pose.dMag_z);
        m_horizontal.AddTrackPoint(a, b, c);
        m_vertical.AddTrackPoint(a, b, c);
    }
    AddObservation(sample);
    CString text;
    text.Format(L"sample %d   heading %.1f   pitch %.1f   roll %.1f degrees",
                static_cast<int>(m_next + 1), pose.dYaw, pose.dPitch, pose.dRoll);
    m_caption.SetWindowText(text);
    m_caption.Invalidate();
}

// Observations keep the distance that the multi-position solution requires; the current one is
// always shown.
void Frame::AddObservation(const ReplaySample& sample)
{
    TiltPoint_Sensor point;
    point.nSet = 1;
    point.dX = sample.antenna.x;
    point.dY = sample.antenna.y;
    point.dH = sample.antenna.h;
    bool isApart = true;
    for (const xyhCoordinate& known : m_observed)
        isApart = isApart && PlanDistance(known, sample.antenna) >= kSpacing;
    if (isApart) {
        m_observed.push_back(sample.antenna);
        m_ground.graph.AddPoint(point);
    }
    m_ground.graph.DrawCurrentPt(nullptr, point);
    m_ground.graph.InvalidateCtrl(); // removes the previous mark
    m_ground.graph.ReDraw();
}

void Frame::OnTimer(UINT_PTR)
{
    if (!Step(kSamplesPerTick)) KillTimer(kTimer);
}

void Frame::OnPaint()
{
    CPaintDC dc(this);
}

} // namespace gallery
