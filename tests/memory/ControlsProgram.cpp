// SPDX-License-Identifier: MIT
#include "tests/memory/Program.h"
#include "tests/memory/Rows.h"

namespace sweep {

namespace {

std::vector<Exception> Exceptions()
{
    struct Group
    {
        const char* reason;
        std::vector<const char*> covers;
    };
    const Group groups[] = {
        {"text is measured and drawn by the toolkit",
         {"CDC::DrawText",
          "CDC::TextOut",
          "CDC::ExtTextOut",
          "CDC::GetTextMetrics",
          "CStatic::OnPaint",
          "CGraphCompass::OnPaint",
          "CGraphCompass::DrawBackground",
          "CGraphIncline_Left::OnPaint",
          "CGraphIncline_Left::DrawBackground",
          "CGraphIncline_Right::OnPaint",
          "CGraphIncline_Right::DrawBackground",
          "CGraphMagnetic_XY::Clear",
          "CGraphMagnetic_XY::ZoomAll",
          "CGraphMagnetic_XY::InvalidateCtrl",
          "CGraphMagnetic_XZ::Clear",
          "CGraphMagnetic_XZ::ZoomAll",
          "CGraphMagnetic_XZ::InvalidateCtrl",
          "CTiltPositionGraph::AddPoint",
          "CTiltPositionGraph::Clear",
          "CTiltPositionGraph::ZoomAll",
          "CTiltPositionGraph::InvalidateCtrl"}                                                                               },
        {"the toolkit makes its own window",
         {"CWnd::CreateEx", "CWnd::Create", "CreateWindowExW", "CStatic::Create",
          "CFrameWnd::Create", "CView::PreCreateWindow", "CGraphMagnetic_XY::Create",
          "CGraphMagnetic_XZ::Create"}                                                                                        },
        {"the toolkit's window is placed, moved to another parent, named, or given the focus",
         {"CWnd::SetParent", "CWnd::SetWindowPos", "CWnd::MoveWindow", "CFrameWnd::RecalcLayout",
          "CFrameWnd::OnSize", "SendMessage", "CWnd::SetFocus"}                                                               },
        {"the toolkit loses blocks of a timer that it could not start",                        {"CWnd::SetTimer"}             },
        {"the toolkit's event loop",                                                           {"framework::Application::Run"}},
        {"the toolkit compresses the picture",                                                 {"framework::SaveWindowImage"} },
    };
    std::vector<Exception> all;
    for (const Group& group : groups)
        for (const char* const covers : group.covers)
            all.push_back({covers, group.reason});
    return all;
}

} // namespace

Program TheProgram()
{
    Program program;
    program.libraries = {
        {"controls", 20}
    };
    program.rows =
        AllOf({DrawingRows(), TextRows(), WindowRows(), MessageRows(), ControlRows(), PlotRows()});
    program.exceptions = Exceptions();
    program.internal = {
        "CGraphCompass::Compose",
        "CGraphCompass::DrawRings",
        "CGraphCompass::DrawTicks",
        "CTiltPositionGraph::DrawCenter",
        "CTiltPositionGraph::DrawLine",
        "CTiltPositionGraph::DrawPointsLayer",
        "CTiltPositionGraph::PixelOf",
        "CTiltPositionGraph::ShowLast",
        "CWnd::HandleByMap",
    };
    return program;
}

} // namespace sweep
