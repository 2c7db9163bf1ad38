// SPDX-License-Identifier: MIT
/// @class CTiltPosition_Geometry
/// The ground point below a tilted pole without any heading: the tip stays on one point, the
/// antenna is observed at many tilts, and all antenna positions lie on a sphere about the tip.
///
///     CTiltPosition_Geometry geometry;
///     geometry.SetAntennaHeight(2.0);
///     while (!geometry.IsOK()) geometry.AddPoint(NextObservation());
///     xyhCoord tip;
///     TiltPoint_State state;
///     geometry.Calculate(tip, state);
///
///     coordinates   plane x, y and height h, meters; as large as survey grids have them
///     angles        degrees
///     memory        AddPoint, Calculate, Adjustment and ReProcess throw std::bad_alloc when it
///                   runs out; the observations stay as they are then
#pragma once

#include "framework/core/core.h"
#include "geometry/TiltPoint.h"
#include "matrix/TiltMatrix.h"

#include <functional>
#include <utility>

class TILTPOLE_API CTiltPosition_Geometry
{
public:
    /// Called with the share of the search that is done, 0 to 1; returning false cancels it.
    using ProgressObserver = std::function<bool(double fraction)>;

    void SetAntennaHeight(double height) { m_dAntennaHeight = height; }    ///< antenna to tip [m]
    double GetAntennaHeight() const { return m_dAntennaHeight; }           ///< at first 0 [m]
    void SetCutoffInclineAngle(double angle) { m_dCutoffIncline = angle; } ///< [degrees]
    double GetCutoffInclineAngle() const { return m_dCutoffIncline; } ///< at first 45 [degrees]

    /// Appends a copy of the observation, unless its incline is above the cut-off angle or its
    /// antenna stands closer than 0.15 antenna heights (see IsConform) to a held one.
    /// @return 1 when appended, 0 when refused
    int AddPoint(TiltPoint_Sensor point);

    /// Whether the antenna is at least `spacing` away, in plan, from every held one; heights do not
    /// count. A spacing below 0.1 m counts as 0.5 m.
    /// @return 1 or 0
    int IsConform(TiltPoint_Sensor point, double spacing);

    /// @return 1 when at least 15 observations are held, else 0
    int IsOK() const;

    /// Removes all observations; antenna height and cut-off angle stay.
    void Clear();

    /// Searches and grades the tip; does not check IsOK. The outcome is `state.nStatus`, a
    /// TiltPointStatus; without a solution the tip is (0, 0, 0).
    /// @return 1; 0 when the progress observer cancelled: `tip` is then unchanged and `state` zero
    int Calculate(xyhCoord& tip, TiltPoint_State& state);

    /// The center of the sphere through four antenna positions, each a 3 × 1 matrix [m].
    /// Coplanar positions give elements that are not finite or of any size.
    CTiltMatrix ProbableCoor(CTiltMatrix P1, CTiltMatrix P2, CTiltMatrix P3, CTiltMatrix P4);

    /// The whole search over `count` antenna positions, each a 3 × 1 matrix [m].
    ///
    /// Every combination of four positions gives a starting sphere; one with a radius within 0.05 m
    /// of the antenna height is refined by ReProcess, and the smallest point error wins, unless it
    /// gains less than 0.5 mm over an earlier one of better geometry. While the best point error is
    /// below 1e-6 m every later start replaces it. The height of the winner's tip is raised by
    /// radius − antenna height.
    ///
    /// Positions that are not finite are left out, and so are starts whose four positions lie in
    /// one plane up to rounding. Coordinates are reduced to the first position before anything
    /// else.
    /// @param state  cleared first; graded as TiltPointStatus says
    /// @return the tip, 3 × 1; zero without a solution or when cancelled (status 0)
    CTiltMatrix Adjustment(CTiltMatrix* obs, int count, TiltPoint_State& state);

    /// One least-squares step of the sphere |P − T| = r over all positions, the correction added
    /// with the sign of the misclosure |P − T| − r. The radius grows by the sum of the three
    /// elements of Aᵀl divided by the number of positions, and the point error comes from the
    /// diagonal of the normal matrix itself.
    /// With four positions the point error is not finite.
    /// @param tip     in: start, out: after the step, 3 × 1 [m]
    /// @param radius  in: of the start, out: after the step [m]
    /// @return radius, point error, geometry figure and height cofactor; the rest 0
    TiltPoint_State ReProcess(CTiltMatrix* obs, int count, CTiltMatrix& tip, double& radius);

    /// An observer for long searches (80 observations: 1.6 million combinations); none by default,
    /// and an empty function removes it. It changes no result. Called on the calling thread.
    void SetProgressObserver(ProgressObserver observer) { m_observer = std::move(observer); }

private:
    CArray<TiltPoint_Sensor> m_points;
    double m_dAntennaHeight = 0.0;
    double m_dCutoffIncline = 45.0;
    ProgressObserver m_observer;
};
