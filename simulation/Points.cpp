// SPDX-License-Identifier: MIT
#include "simulation/Points.h"

#include "simulation/PortableMath.h"
#include "survey/TurnAngle.h"
#include <algorithm>

namespace simulation {

namespace {

constexpr int kMostPoints = 1'000'000;
constexpr int kTriesPerPoint = 2000;

// A direction uniform over the sphere: its height is uniform in [-1, 1].
Point3 RandomDirection(Generator& random)
{
    const double h = random.Uniform(-1.0, 1.0);
    const auto [s, c] = SineCosineOf(random.Uniform(0.0, 360.0));
    const double across = std::sqrt(1.0 - h * h);
    return {across * c, across * s, h};
}

class PointPlacement
{
public:
    PointPlacement(const PointsPlan& plan, std::uint64_t seed)
        : m_plan(plan), m_least(SineCosineOf(plan.leastLean).cosine),
          m_most(SineCosineOf(plan.mostLean).cosine), m_place(seed, Stream::Placement),
          m_noise(seed, Stream::Antenna), m_incline(seed, Stream::Incline),
          m_outliers(seed, Stream::Outliers)
    {}

    // Uniform over the zone of the sphere: the cosine of the lean is uniform between its bounds.
    AntennaPosition Next(bool outlier)
    {
        const double cosine = m_place.Uniform(m_most, m_least);
        const double sine = std::sqrt(1.0 - cosine * cosine);
        const double azimuth = m_plan.azimuth + m_plan.width * (m_place.Uniform() - 0.5);
        const auto [s, c] = SineCosineOf(azimuth);
        const double length = m_plan.poleLength;

        AntennaPosition position;
        position.lean = ArcTangent(sine, cosine);
        position.azimuth = tiltpole::survey::InTurn(azimuth);
        position.truth = m_plan.tip + Point3{length * sine * c, length * sine * s, length * cosine};
        position.antenna = position.truth + Noise();
        position.outlier = outlier;
        if (outlier) position.antenna = position.antenna + Blunder();
        position.incline = std::fabs(position.lean + m_plan.inclineNoise * m_incline.Normal());
        return position;
    }

private:
    Point3 Noise()
    {
        const double x = m_plan.planNoise * m_noise.Normal();
        const double y = m_plan.planNoise * m_noise.Normal();
        return {x, y, m_plan.heightNoise * m_noise.Normal()};
    }

    Point3 Blunder()
    {
        const Point3 direction = RandomDirection(m_outliers);
        const double size = m_plan.outlierSize;
        return {size * direction.x, size * direction.y, size * direction.z};
    }

    const PointsPlan& m_plan;
    double m_least;
    double m_most;
    Generator m_place;
    Generator m_noise;
    Generator m_incline;
    Generator m_outliers;
};

bool StandsApart(const AntennaPosition& next, const std::vector<AntennaPosition>& held,
                 double spacing)
{
    return std::ranges::none_of(held, [&next, spacing](const AntennaPosition& other) {
        const Point3 d = next.antenna - other.antenna;
        return d.x * d.x + d.y * d.y < spacing * spacing;
    });
}

} // namespace

std::string ProblemOf(const PointsPlan& plan)
{
    if (plan.points < 1 || plan.points > kMostPoints) return "there are from 1 to 1000000 points";
    if (!(plan.poleLength > 0.0)) return "the pole must be longer than 0 m";
    if (!(plan.leastLean >= 0.0 && plan.leastLean <= plan.mostLean && plan.mostLean < 90.0))
        return "the lean must lie from 0 to below 90 degrees, the least one first";
    if (!(plan.width >= 0.0 && plan.width <= 360.0))
        return "the range of azimuths must lie from 0 to 360 degrees";
    if (plan.outliers < 0 || plan.outliers > plan.points)
        return "there cannot be fewer than 0 outliers nor more outliers than points";
    return {};
}

// The outliers are spread evenly over the list.
std::vector<AntennaPosition> SimulatePoints(const PointsPlan& plan, std::uint64_t seed)
{
    std::vector<AntennaPosition> positions;
    if (!ProblemOf(plan).empty()) return positions;

    PointPlacement placement(plan, seed);
    for (int i = 0; i < plan.points; ++i) {
        const std::int64_t share = plan.outliers;
        const bool outlier = (i + 1) * share / plan.points > i * share / plan.points;
        bool placed = false;
        for (int tries = 0; tries < kTriesPerPoint && !placed; ++tries) {
            AntennaPosition next = placement.Next(outlier);
            if (!StandsApart(next, positions, plan.spacing)) continue;
            positions.push_back(next);
            placed = true;
        }
        if (!placed) break;
    }
    return positions;
}

} // namespace simulation
