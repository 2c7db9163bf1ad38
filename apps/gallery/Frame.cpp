// SPDX-License-Identifier: MIT
#include "apps/gallery/Frame.h"

#include <array>
#include <cmath>

namespace gallery {
namespace {

constexpr UINT_PTR kReplayTimer = 1;
constexpr UINT_PTR kSizeTimer = 2;
constexpr UINT kPeriod = 42;        // milliseconds; two samples of the recording
constexpr UINT kSettling = 120;     // milliseconds that a size lasts before plots are made for it
constexpr int kSamplesPerTick = 2;  // 48 samples a second as recorded
constexpr int kSamplesPerCross = 5; // every fifth reading becomes a cross
constexpr double kSpacing = 0.15;   // distance between observations in plan [m]
constexpr DWORD kChild = WS_CHILD | WS_VISIBLE;

struct Slot
{
    Frame::Id id;
    RECT place; // in a window of the usual size
};

constexpr std::array<Slot, 7> kSlots = {
    {
     {Frame::kDial, {10, 10, 270, 270}},
     {Frame::kLeft, {280, 10, 390, 270}},
     {Frame::kRight, {400, 10, 510, 270}},
     {Frame::kHorizontal, {10, 280, 255, 570}},
     {Frame::kVertical, {265, 280, 510, 570}},
     {Frame::kGround, {520, 10, 970, 570}},
     {Frame::kCaption, {12, 580, 970, 602}},
     }
};

// The place of a control in the window's present size.
CRect PlaceOf(Frame::Id id, CSize client)
{
    for (const Slot& slot : kSlots)
        if (slot.id == id)
            return {slot.place.left * client.cx / Frame::kWidth,
                    slot.place.top * client.cy / Frame::kHeight,
                    slot.place.right * client.cx / Frame::kWidth,
                    slot.place.bottom * client.cy / Frame::kHeight};
    return {};
}

CSize ClientSize(const CWnd& window)
{
    CRect client;
    window.GetClientRect(&client);
    return client.Size();
}

double PlanDistance(const xyhCoordinate& a, const xyhCoordinate& b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

int Counts(double reading)
{
    return static_cast<int>(std::lround(reading));
}

TiltPoint_Sensor PointOf(const xyhCoordinate& antenna)
{
    TiltPoint_Sensor point;
    point.nSet = 1;
    point.dX = antenna.x;
    point.dY = antenna.y;
    point.dH = antenna.h;
    return point;
}

} // namespace

BEGIN_MESSAGE_MAP(Frame, CWnd)
ON_WM_PAINT()
ON_WM_TIMER()
ON_WM_SIZE()
END_MESSAGE_MAP()

Frame::Frame(std::vector<ReplaySample> replay) : m_replay(std::move(replay)) {}

bool Frame::Open(double scale)
{
    const LPCTSTR windowClass =
        AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW, nullptr, CBrush(GetSysColor(COLOR_BTNFACE)));
    if (!CreateEx(0, windowClass, L"tiltpole: the controls on a moving pole", WS_OVERLAPPEDWINDOW,
                  40, 40, static_cast<int>(std::lround(kWidth * scale)),
                  static_cast<int>(std::lround(kHeight * scale)), nullptr, 0))
        return false;
    const CSize client = ClientSize(*this);
    m_dial.Create(L"", kChild, PlaceOf(kDial, client), this, kDial);
    m_left.Create(L"", kChild, PlaceOf(kLeft, client), this, kLeft);
    m_right.Create(L"", kChild, PlaceOf(kRight, client), this, kRight);
    m_ground.Create(nullptr, nullptr, kChild | WS_BORDER, PlaceOf(kGround, client), this, kGround);
    m_caption.Create(L"", kChild, PlaceOf(kCaption, client), this, kCaption);
    MakePlots();
    ShowWindow(SW_SHOW);
    Pause(false);
    return true;
}

bool Frame::Step(int samples)
{
    if (m_next == m_replay.size()) return false;
    for (; samples > 0 && m_next < m_replay.size(); --samples)
        Collect(m_next++);
    ShowCurrent();
    return m_next < m_replay.size();
}

void Frame::Press(Key key)
{
    switch (key) {
    case Key::Pause:
        Pause(!m_paused);
        break;
    case Key::Back:
        Pause(true);
        Back();
        break;
    case Key::Forward:
        Pause(true);
        Step(1);
        break;
    case Key::Close:
        DestroyWindow();
        break;
    }
}

void Frame::Pause(bool paused)
{
    m_paused = paused;
    if (paused)
        KillTimer(kReplayTimer);
    else
        SetTimer(kReplayTimer, kPeriod, nullptr);
    ShowCurrent();
}

// Crosses cannot be taken back one by one.
void Frame::Back()
{
    if (m_next < 2) return;
    --m_next;
    Rebuild();
}

void Frame::Place()
{
    const CSize client = ClientSize(*this);
    for (const Slot& slot : kSlots)
        if (CWnd* const control = GetDlgItem(static_cast<int>(slot.id)))
            control->MoveWindow(PlaceOf(slot.id, client));
}

// The pictures of a plot and of the tilt graph keep the size of their first use.
void Frame::MakePlots()
{
    const CSize client = ClientSize(*this);
    m_horizontal.emplace();
    m_vertical.emplace();
    m_horizontal->Create(nullptr, nullptr, kChild, PlaceOf(kHorizontal, client), this, kHorizontal);
    m_vertical->Create(nullptr, nullptr, kChild, PlaceOf(kVertical, client), this, kVertical);
    m_ground.Renew();
    m_observed.clear();
    for (std::size_t i = 0; i < m_next; ++i)
        Collect(i);
    if (m_next == 0) return;
    m_horizontal->ZoomAll();
    m_vertical->ZoomAll();
    m_ground.graph->ZoomAll();
}

void Frame::Rebuild()
{
    Place();
    m_dial.ReconstructControl();
    m_left.ReconstructControl();
    m_right.ReconstructControl();
    MakePlots();
    ShowCurrent();
}

void Frame::Collect(std::size_t index)
{
    const ReplaySample& sample = m_replay[index];
    if (index % kSamplesPerCross == 0) {
        const int a = Counts(sample.pose.dMag_x);
        const int b = Counts(sample.pose.dMag_y);
        const int c = Counts(sample.pose.dMag_z);
        m_horizontal->AddTrackPoint(a, b, c);
        m_vertical->AddTrackPoint(a, b, c);
    }
    AddObservation(sample);
}

// Observations keep the distance that the multi-position solution requires.
void Frame::AddObservation(const ReplaySample& sample)
{
    for (const xyhCoordinate& known : m_observed)
        if (PlanDistance(known, sample.antenna) < kSpacing) return;
    m_observed.push_back(sample.antenna);
    m_ground.graph->AddPoint(PointOf(sample.antenna));
}

void Frame::ShowCurrent()
{
    if (m_next == 0) return;
    const ReplaySample& sample = m_replay[m_next - 1];
    const PoseSensorData& pose = sample.pose;
    m_dial.SetValue(pose.dYaw);
    m_left.SetValue(90.0 + pose.dPitch);
    m_right.SetValue(270.0 + pose.dRoll);
    CTiltPositionGraph& graph = *m_ground.graph;
    graph.DrawCurrentPt(nullptr, PointOf(sample.antenna));
    graph.InvalidateCtrl(); // removes the previous mark
    m_ground.Show();
    CString text;
    text.Format(L"sample %d   heading %.1f   pitch %.1f   roll %.1f degrees%s",
                static_cast<int>(m_next), pose.dYaw, pose.dPitch, pose.dRoll,
                m_paused ? L"   paused: space goes on, arrows step" : L"");
    m_caption.SetWindowText(text);
}

void Frame::OnTimer(UINT_PTR id)
{
    if (id == kSizeTimer) {
        KillTimer(kSizeTimer);
        Rebuild();
    } else if (!Step(kSamplesPerTick)) {
        KillTimer(kReplayTimer);
    }
}

// Sizes come in quick succession while a user drags an edge.
void Frame::OnSize(UINT, int, int)
{
    if (!m_horizontal) return;
    Place();
    SetTimer(kSizeTimer, kSettling, nullptr);
}

void Frame::OnPaint()
{
    CPaintDC dc(this);
}

} // namespace gallery
