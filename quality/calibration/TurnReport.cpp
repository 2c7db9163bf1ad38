// SPDX-License-Identifier: MIT
#include "quality/calibration/TurnReport.h"

#include "quality/calibration/JointModel.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

using ::quality::MissingSector;

constexpr int kSector = 5;         // degrees, the sectors of the sample filters
constexpr double kBackwards = 5.0; // [degrees] behind the furthest sample; less is noise

// The whole sectors that lie inside a gap.
MissingSector SectorOf(const Gap& gap)
{
    if (gap.Width() >= 360.0) return {0, 360};
    const int from = static_cast<int>(std::ceil(gap.from / kSector)) * kSector;
    const int to = static_cast<int>(std::floor(gap.to / kSector)) * kSector;
    return {from % 360, to == 0 ? 360 : to};
}

double TurningBackShare(const std::vector<double>& azimuths)
{
    std::vector<double> turned = {0.0};
    for (std::size_t i = 1; i < azimuths.size(); ++i) {
        turned.push_back(turned.back() + Wrapped(azimuths[i] - azimuths[i - 1]));
    }
    const double direction = turned.back() < 0.0 ? -1.0 : 1.0;
    double furthest = 0.0;
    int behind = 0;
    for (const double t : turned) {
        furthest = std::max(furthest, direction * t);
        if (direction * t < furthest - kBackwards) ++behind;
    }
    return static_cast<double>(behind) / static_cast<double>(turned.size());
}

} // namespace

TurnFigures FiguresOf(const TurnSamples& samples)
{
    TurnFigures figures;
    figures.recorded = static_cast<int>(samples.recorded.size());
    figures.used = static_cast<int>(samples.used.size());
    const Turn used = TurnOf(samples.used, samples.sensorType, Magnetometer::A);
    const std::vector<Gap> gaps = GapsOfTurn(used, samples.axis);
    figures.covered = CoveredBy(gaps);
    for (const Gap& gap : gaps)
        figures.missing.push_back(SectorOf(gap));

    const Turn recorded = TurnOf(samples.recorded, samples.sensorType, Magnetometer::A);
    const std::vector<Eigen::Vector2d> points = InPlane(recorded, samples.axis);
    const Circle circle = CircleThrough(points);
    figures.circle = {circle.u, circle.v, circle.radius};
    const std::vector<double> azimuths = AzimuthsAbout(circle, points);
    if (!azimuths.empty()) figures.turningBack = TurningBackShare(azimuths);
    return figures;
}

double CircleResidual(const Turn& turn, TurnAxis axis, const FullCorrection& correction)
{
    if (turn.size() < 3) return 0.0;
    Turn corrected = turn;
    for (Observation& o : corrected)
        o.reading = correction(o.reading);
    const std::vector<Eigen::Vector2d> points = InPlane(corrected, axis);
    const Circle circle = CircleThrough(points);
    double squares = 0.0;
    for (const Eigen::Vector2d& p : points) {
        const double off = (p - Eigen::Vector2d(circle.u, circle.v)).norm() - circle.radius;
        squares += off * off;
    }
    return std::sqrt(squares / static_cast<double>(points.size())) / circle.radius;
}

void DescribeAxis(const Turn& turn, TurnAxis axis, const FullCorrection& correction, Tilt tilt,
                  TurnFigures& figures)
{
    if (turn.size() < 3) return;
    std::vector<Eigen::Vector3d> fields;
    fields.reserve(turn.size());
    double strength = 0.0;
    double rise = 0.0;
    for (const Observation& o : turn) {
        fields.push_back(correction(o.reading));
        strength += fields.back().norm();
    }
    strength /= static_cast<double>(turn.size());
    Plane plane = PlaneThrough(fields);
    const Eigen::Vector3d own =
        axis == TurnAxis::Vertical ? Eigen::Vector3d::UnitY() : Eigen::Vector3d::UnitZ();
    if (plane.normal.dot(own) < 0.0) plane.normal = -plane.normal;
    figures.axisError = std::acos(std::min(plane.normal.dot(own), 1.0)) * kDegreesPerRadian;

    // The fields lie on a cone about the axis; its half angle varies as the axis wobbles.
    const double along = std::min(std::fabs(plane.distance) / strength, 1.0);
    const double across = std::sqrt(1.0 - along * along);
    figures.wobble = plane.spread / strength / across * kDegreesPerRadian;

    if (tilt == Tilt::Unusable) return;
    for (const Observation& o : turn) {
        rise += plane.normal.dot(o.up);
    }
    const double mean = rise / static_cast<double>(turn.size());
    const double angle =
        axis == TurnAxis::Vertical ? survey::ArcSine(mean) : survey::ArcCosine(mean);
    figures.levelError = std::fabs(angle) * kDegreesPerRadian;
}

} // namespace tiltpole::quality
