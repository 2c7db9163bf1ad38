// SPDX-License-Identifier: MIT
//
// Tracks of a pole whose tip stays planted while it moves, with gyros, for tests of occupations.
#pragma once

#include "tests/field/SimulatedPole.h"
#include "tests/field/bridge/LivePole.h"

namespace live_pole {

/// A pole at 100 Hz; without errors of the antenna, which AntennaErrors adds.
inline Track TrackOf(const field_tests::SimulatedPole::Lean& lean, double seconds,
                     double headingError, unsigned seed = 1)
{
    field_tests::PoleErrors errors;
    errors.heading = headingError;
    field_tests::SimulatedPole pole(lean, 40.0, errors, seed);
    std::mt19937 random(seed + 4);
    std::normal_distribution<double> noise(0.0, 0.3);
    Track track;
    for (int i = 0; i < static_cast<int>(100.0 * seconds); ++i) {
        const double t = 0.01 * i;
        const field::InertialSample s = pole.Sample(t);
        const Eigen::Vector3d up = 2.0 * pole.Attitude(t).col(2);
        TrackRow row;
        row.seconds = t;
        row.pitch = s.tilt.pitch;
        row.roll = s.tilt.roll;
        row.readings = {0, 0, 0, 0, 0, 0, s.rate.x, s.rate.y, s.rate.z, 0, 0, 0};
        const std::array<double, 3> a{10.0 * s.magnetic.x + noise(random),
                                      10.0 * s.magnetic.y + noise(random),
                                      10.0 * s.magnetic.z + noise(random)};
        const std::array<double, 3> force{s.acceleration.x, s.acceleration.y, s.acceleration.z};
        for (std::size_t k = 0; k < 3; ++k) {
            row.readings[k] = a[k];
            row.readings[3 + k] = k < 2 ? -a[k] : a[k];
            row.readings[9 + k] = force[k];
        }
        row.antenna = {up.x(), -up.y(), up.z()};
        track.push_back(row);
    }
    return track;
}

/// Led from upright to a lean of 20 degrees, and held.
inline Track LeanInTrack(double seconds, double headingError)
{
    return TrackOf(field_tests::LeanIn(20.0), seconds, headingError);
}

/// Led in to 12 degrees, then rocked on to 28 and back, until 10 s.
inline Track RockedTrack(double headingError = 1.0, unsigned seed = 1)
{
    const auto lean = [](double t) {
        return field_tests::LeanIn(12.0)(t)
               + (t > 4.0 ? 8.0 - 8.0 * std::cos(1.5 * (t - 4.0)) : 0.0);
    };
    return TrackOf(lean, 10.0, headingError, seed);
}

/// Errors of a receiver as an occupation takes them: common to all positions, and independent from one
/// second to the next.
class AntennaErrors
{
public:
    explicit AntennaErrors(unsigned seed) : m_random(seed) { m_shared = Draw(0.003, 0.0105); }

    void operator()(EpochFields& epoch)
    {
        const int second = static_cast<int>(epoch.seconds);
        while (m_seconds.size() <= static_cast<std::size_t>(second))
            m_seconds.push_back(Draw(0.004, 0.011));
        const xyhCoordinate& own = m_seconds[static_cast<std::size_t>(second)];
        epoch.antenna = field::Offset(epoch.antenna, m_shared.x + own.x, m_shared.y + own.y,
                                      m_shared.h + own.h);
        epoch.sigma = {0.004, 0.004, 0.011};
    }

private:
    xyhCoordinate Draw(double plan, double height)
    {
        std::normal_distribution<double> normal;
        const double x = plan * normal(m_random);
        const double y = plan * normal(m_random);
        return {x, y, height * normal(m_random)};
    }

    std::mt19937 m_random;
    xyhCoordinate m_shared;
    std::vector<xyhCoordinate> m_seconds;
};

/// The first report whose verdict is Store for the occupation's tip only.
inline std::optional<Report> ByOccupation(const std::vector<Report>& reports)
{
    for (const Report& report : reports)
        if (report.byOccupation) return report;
    return std::nullopt;
}

} // namespace live_pole
