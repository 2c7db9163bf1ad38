// SPDX-License-Identifier: MIT
#include "MainFrame.h"

#include <utility>

namespace {

constexpr UINT_PTR kReplayTimer = 1;
constexpr int kMargin = 10; // pixels
constexpr int kCaptionHeight = 20;
constexpr DWORD kChild = WS_CHILD | WS_VISIBLE;

enum : UINT {
    IDC_DIAL = 100,
    IDC_LEFT,
    IDC_RIGHT,
    IDC_HORIZONTAL,
    IDC_VERTICAL,
    IDC_GROUND,
    IDC_CAPTION,
};

} // namespace

BEGIN_MESSAGE_MAP(MainFrame, CFrameWnd)
ON_WM_CREATE()
ON_WM_SIZE()
ON_WM_TIMER()
ON_WM_KEYDOWN()
ON_WM_DESTROY()
END_MESSAGE_MAP()

MainFrame::MainFrame(std::vector<replay::Sample> samples) : m_samples(std::move(samples)) {}

// The frame has the color of its static controls.
BOOL MainFrame::PreCreateWindow(CREATESTRUCT& created)
{
    if (!CFrameWnd::PreCreateWindow(created)) return FALSE;
    created.lpszClass =
        AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW, nullptr, CBrush(GetSysColor(COLOR_BTNFACE)));
    return TRUE;
}

// The size of the controls comes with the first WM_SIZE. Plots and view are made as large as they
// may ever be, for their pictures in memory.
int MainFrame::OnCreate(LPCREATESTRUCT created)
{
    if (CFrameWnd::OnCreate(created) == -1) return -1;
    const CRect none(0, 0, 0, 0);
    m_controls.dial.Create(L"", kChild, none, this, IDC_DIAL);
    m_controls.left.Create(L"", kChild, none, this, IDC_LEFT);
    m_controls.right.Create(L"", kChild, none, this, IDC_RIGHT);
    m_controls.horizontal.Create(nullptr, nullptr, kChild, kLargest, this, IDC_HORIZONTAL);
    m_controls.vertical.Create(nullptr, nullptr, kChild, kLargest, this, IDC_VERTICAL);
    m_controls.ground.Create(nullptr, nullptr, kChild | WS_BORDER, kLargest, this, IDC_GROUND);
    m_caption.Create(L"space pauses, Esc closes", kChild, none, this, IDC_CAPTION);
    m_playing = SetTimer(kReplayTimer, replay::kMilliseconds, nullptr) != 0;
    return 0;
}

// Dial and gauges above the plots on the left, the tilt graph on the right, the caption below.
void MainFrame::OnSize(UINT type, int width, int height)
{
    CFrameWnd::OnSize(type, width, height);
    if (!m_caption.GetSafeHwnd()) return;
    const int third = (width - 4 * kMargin) / 3;
    const int gauge = (third - kMargin) / 2;
    const int row = (height - 4 * kMargin - kCaptionHeight) / 2;
    const int second = kMargin + third + kMargin;
    const int below = kMargin + row + kMargin;
    m_controls.dial.MoveWindow(kMargin, kMargin, third, row);
    m_controls.left.MoveWindow(second, kMargin, gauge, row);
    m_controls.right.MoveWindow(second + gauge + kMargin, kMargin, gauge, row);
    m_controls.horizontal.MoveWindow(kMargin, below, third, row);
    m_controls.vertical.MoveWindow(second, below, third, row);
    m_controls.ground.MoveWindow(second + third + kMargin, kMargin, third, 2 * row + kMargin);
    m_caption.MoveWindow(kMargin, below + row + kMargin, width - 2 * kMargin, kCaptionHeight);
}

BOOL MainFrame::Next()
{
    if (m_next == m_samples.size()) return FALSE;
    const replay::Sample& sample = m_samples[m_next++];
    m_controls.Show(sample);
    CString text;
    text.Format(L"sample %d   heading %.1f degrees", static_cast<int>(m_next), sample.pose.dYaw);
    m_caption.SetWindowText(text);
    return TRUE;
}

void MainFrame::OnTimer(UINT_PTR id)
{
    if (id != kReplayTimer) CFrameWnd::OnTimer(id);
    if (id == kReplayTimer && !Next()) KillTimer(kReplayTimer);
}

void MainFrame::OnKeyDown(UINT key, UINT repeated, UINT flags)
{
    if (key == VK_ESCAPE) {
        PostMessage(WM_CLOSE);
    } else if (key == VK_SPACE) {
        m_playing = !m_playing;
        if (m_playing)
            SetTimer(kReplayTimer, replay::kMilliseconds, nullptr);
        else
            KillTimer(kReplayTimer);
    } else {
        CFrameWnd::OnKeyDown(key, repeated, flags);
    }
}

void MainFrame::OnDestroy()
{
    KillTimer(kReplayTimer);
    CFrameWnd::OnDestroy();
}
