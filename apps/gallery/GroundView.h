// SPDX-License-Identifier: MIT
//
// The tilt graph in a view of its own, which answers a hover with the observation under it.
#pragma once

#include "controls/TiltPositionGraph.h"
#include "framework/gui/gui.h"

#include <optional>

namespace gallery {

/// A tilt graph that tells its observations by their crosses.
class HoverGraph : public CTiltPositionGraph
{
public:
    /// The number, from 1, of the observation whose cross is nearest to a pixel of the view; 0 if
    /// none is within the size of a cross.
    int ObservationAt(CPoint at);
    /// Number and coordinates [m]; empty for a number that does not exist.
    CString Describe(int observation) const;
};

/// A view that shows the tilt graph when it is painted.
class GroundView : public CView
{
public:
    std::optional<HoverGraph> graph;

    /// Replaces the graph by an empty one of the view's present size.
    void Renew();
    /// Shows the graph and the observation under the pointer.
    void Show();
    /// The number of the observation under the pointer, 0 for none.
    int Hovered() const { return m_hovered; }

protected:
    void OnDraw(CDC* dc) override;

    afx_msg void OnMouseMove(UINT flags, CPoint point);
    afx_msg void OnMouseLeave();

    DECLARE_MESSAGE_MAP()

private:
    void Hover(int observation);

    int m_hovered = 0;
};

} // namespace gallery
