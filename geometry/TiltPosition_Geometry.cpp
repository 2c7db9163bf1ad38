// SPDX-License-Identifier: MIT
#include "geometry/TiltPosition_Geometry.h"

#include "geometry/detail/Grade.h"
#include "geometry/detail/SphereStep.h"
#include "geometry/detail/TipSearch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using tiltpole::geometry::Point3;

constexpr INT_PTR kEnough = 15;            // observations
constexpr double kSpacingPerHeight = 0.15; // of the antenna height
constexpr double kLeastSpacing = 0.1;      // [m]
constexpr double kDefaultSpacing = 0.5;    // [m]
constexpr std::size_t kFewest = 4;         // positions that fix a sphere
constexpr double kNoRadius = 1e-6;         // [m]

// Four positions whose volume is below this share of the product of their edges are one plane: the
// share that rounding of the arithmetic, or of the given coordinates over edges of decimeters,
// makes out of nothing.
constexpr double kFlatness = 1e-9;
constexpr double kFlatnessPerResolution = 64.0; // [1/m]

// A matrix that is no vector of three gives a point that is not finite.
Point3 ToPoint(const CTiltMatrix& vector)
{
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    if (vector.GetRow() < 3 || vector.GetCol() < 1) return {kNone, kNone, kNone};
    return {vector.GetData(0), vector.GetData(1), vector.GetData(2)};
}

CTiltMatrix ToVector(const Point3& point)
{
    CTiltMatrix vector(3);
    vector.SetData(0, point.x);
    vector.SetData(1, point.y);
    vector.SetData(2, point.z);
    return vector;
}

bool IsFinite(const Point3& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

std::vector<Point3> FinitePoints(const CTiltMatrix* obs, int count)
{
    std::vector<Point3> points;
    for (int k = 0; k < count; ++k) {
        const Point3 point = ToPoint(obs[k]);
        if (IsFinite(point)) points.push_back(point);
    }
    return points;
}

double Flatness(const std::vector<Point3>& points)
{
    double largest = 0.0;
    for (const Point3& p : points)
        largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    const double resolution = largest * std::numeric_limits<double>::epsilon();
    return std::max(kFlatness, kFlatnessPerResolution * resolution);
}

void SetFigures(TiltPoint_State& state, const tiltpole::geometry::SphereStep& step)
{
    state.dRadius = step.radius;
    state.dPointError = step.pointError;
    state.dGeometryFigure = step.geometryFigure;
    state.dHeightCofactor = step.heightCofactor;
}

// An implausible height overrides every grade but "no sphere".
void Grade(TiltPoint_State& state, double antennaHeight, double belowFirst)
{
    if (std::fabs(state.dRadius) < kNoRadius) {
        state.nStatus = kTiltPointNoSphere;
        return;
    }
    state.dRadiusExcess = state.dRadius - antennaHeight;
    state.nStatus = tiltpole::geometry::GradeFigures(state);
    if (belowFirst < 0.0 || belowFirst - antennaHeight > antennaHeight)
        state.nStatus = kTiltPointImplausible;
}

} // namespace

int CTiltPosition_Geometry::AddPoint(TiltPoint_Sensor point)
{
    if (point.dIncline > m_dCutoffIncline) return 0;
    if (!IsConform(point, m_dAntennaHeight * kSpacingPerHeight)) return 0;
    m_points.Add(point);
    return 1;
}

int CTiltPosition_Geometry::IsConform(TiltPoint_Sensor point, double spacing)
{
    if (spacing < kLeastSpacing) spacing = kDefaultSpacing;
    for (INT_PTR k = m_points.GetUpperBound(); k >= 0; --k) {
        const double dx = point.dX - m_points[k].dX;
        const double dy = point.dY - m_points[k].dY;
        if (std::sqrt(dx * dx + dy * dy) < spacing) return 0;
    }
    return 1;
}

int CTiltPosition_Geometry::IsOK() const
{
    return m_points.GetSize() >= kEnough ? 1 : 0;
}

void CTiltPosition_Geometry::Clear()
{
    m_points.RemoveAll();
}

int CTiltPosition_Geometry::Calculate(xyhCoord& tip, TiltPoint_State& state)
{
    std::vector<CTiltMatrix> antennas;
    antennas.reserve(static_cast<std::size_t>(m_points.GetSize()));
    for (INT_PTR k = 0; k < m_points.GetSize(); ++k)
        antennas.push_back(ToVector({m_points[k].dX, m_points[k].dY, m_points[k].dH}));

    const CTiltMatrix solved =
        Adjustment(antennas.data(), static_cast<int>(antennas.size()), state);
    if (state.nStatus == 0) return 0;

    const Point3 point = ToPoint(solved);
    tip = {point.x, point.y, point.z};
    return 1;
}

// Row i of the system: (Pi − Pi+1)·c = (|Pi|² − |Pi+1|²)/2, with P1 as origin, which keeps the
// squares small wherever the grid has its own.
CTiltMatrix CTiltPosition_Geometry::ProbableCoor(CTiltMatrix P1, CTiltMatrix P2, CTiltMatrix P3,
                                                 CTiltMatrix P4)
{
    const Point3 origin = ToPoint(P1);
    const Point3 local[] = {Point3{}, ToPoint(P2) - origin, ToPoint(P3) - origin,
                            ToPoint(P4) - origin};
    CTiltMatrix system(3, 3);
    CTiltMatrix right(3);
    for (unsigned row = 0; row < 3; ++row) {
        const Point3 edge = local[row] - local[row + 1];
        system.SetData(row, 0, edge.x);
        system.SetData(row, 1, edge.y);
        system.SetData(row, 2, edge.z);
        right.SetData(row,
                      0.5 * (Dot(local[row], local[row]) - Dot(local[row + 1], local[row + 1])));
    }
    return ToVector(origin + ToPoint(system.MatInv() * right));
}

CTiltMatrix CTiltPosition_Geometry::Adjustment(CTiltMatrix* obs, int count, TiltPoint_State& state)
{
    state = {};
    std::vector<Point3> points = FinitePoints(obs, count);
    if (points.size() < kFewest) {
        state.nStatus = kTiltPointTooFew;
        return CTiltMatrix(3);
    }
    const double flatness = Flatness(points);
    const Point3 origin = points.front();
    for (Point3& p : points)
        p = p - origin;

    const auto found =
        tiltpole::geometry::SearchTip(points, m_dAntennaHeight, flatness, m_observer);
    if (found.cancelled) return CTiltMatrix(3);
    Point3 tip; // about the first position
    if (found.best) {
        const auto& [i, j, k, l] = *found.best;
        const Point3 start = ToPoint(ProbableCoor(ToVector(points[i]), ToVector(points[j]),
                                                  ToVector(points[k]), ToVector(points[l])));
        const auto step = tiltpole::geometry::StepSphere(points.data(), points.size(), start,
                                                         Length(start - points[i]));
        SetFigures(state, step);
        tip = step.tip + Point3{0.0, 0.0, step.radius - m_dAntennaHeight};
    }
    Grade(state, m_dAntennaHeight, -tip.z);
    return found.best ? ToVector(origin + tip) : CTiltMatrix(3);
}

TiltPoint_State CTiltPosition_Geometry::ReProcess(CTiltMatrix* obs, int count, CTiltMatrix& tip,
                                                  double& radius)
{
    std::vector<Point3> points(static_cast<std::size_t>(std::max(count, 0)));
    std::transform(obs, obs + points.size(), points.begin(), ToPoint);
    const auto step =
        tiltpole::geometry::StepSphere(points.data(), points.size(), ToPoint(tip), radius);
    tip = ToVector(step.tip);
    radius = step.radius;

    TiltPoint_State state;
    SetFigures(state, step);
    return state;
}
