// SPDX-License-Identifier: MIT
//
// A frame with the controls, in the window framework's own words.
#pragma once

#include "Controls.h"

class MainFrame : public CFrameWnd
{
public:
    explicit MainFrame(std::vector<replay::Sample> samples);

    /// Shows the next sample; FALSE at the end of the recording.
    BOOL Next();

protected:
    BOOL PreCreateWindow(CREATESTRUCT& created) override;

    afx_msg int OnCreate(LPCREATESTRUCT created);
    afx_msg void OnSize(UINT type, int width, int height);
    afx_msg void OnTimer(UINT_PTR id);
    afx_msg void OnKeyDown(UINT key, UINT repeated, UINT flags);
    afx_msg void OnDestroy();

    DECLARE_MESSAGE_MAP()

private:
    std::vector<replay::Sample> m_samples;
    std::size_t m_next = 0;
    bool m_playing = false;
    Controls m_controls;
    CStatic m_caption;
};
