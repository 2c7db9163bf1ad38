// SPDX-License-Identifier: MIT
#include "simulation/trials/TipTrials.h"

#include "survey/Angle.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace simulation {
namespace {

using tiltpole::survey::Deg2Rad;

constexpr double kPole = 2.0;    // [m]
constexpr double kLeastTilt = 5; // [degrees]

} // namespace

AntennaErrorList ErrorsAsStated(std::size_t count, std::mt19937& random)
{
    std::normal_distribution<double> normal;
    constexpr quality::AntennaErrors kStated;
    const std::array<double, 3> own = {kStated.plan, kStated.plan, kStated.height};
    const std::array<double, 3> shared = {kStated.sharedPlan, kStated.sharedPlan,
                                          kStated.sharedHeight};
    std::array<double, 3> common{};
    for (std::size_t c = 0; c < 3; ++c)
        common[c] = shared[c] * normal(random);
    AntennaErrorList errors(count);
    for (auto& error : errors)
        for (std::size_t c = 0; c < 3; ++c)
            error[c] = common[c] + own[c] * normal(random);
    return errors;
}

AntennaErrorList SlowErrors(std::size_t count, std::mt19937& random)
{
    constexpr double kInterval = 4.0;     // [s]
    constexpr double kCorrelation = 30.0; // [s]
    std::normal_distribution<double> normal;
    const double keep = std::exp(-kInterval / kCorrelation);
    const double renew = std::sqrt(1.0 - keep * keep);
    std::array<double, 3> state{};
    for (double& s : state)
        s = normal(random);
    AntennaErrorList errors(count);
    for (auto& error : errors) {
        for (std::size_t c = 0; c < 3; ++c) {
            error[c] =
                (c < 2 ? 0.0025 : 0.010) * state[c] + (c < 2 ? 0.0015 : 0.0035) * normal(random);
            state[c] = keep * state[c] + renew * normal(random);
        }
    }
    return errors;
}

RecordedErrors::RecordedErrors(const std::string& path)
{
    std::ifstream file(path);
    std::string time;
    for (double e = 0.0, n = 0.0, h = 0.0; file >> e >> n >> h >> time;)
        m_errors.push_back({n, e, h});
    std::array<double, 3> mean{};
    for (const auto& p : m_errors)
        for (std::size_t c = 0; c < 3; ++c)
            mean[c] += p[c] / static_cast<double>(m_errors.size());
    for (auto& p : m_errors)
        for (std::size_t c = 0; c < 3; ++c)
            p[c] -= mean[c];
}

AntennaErrorList RecordedErrors::Draw(std::size_t count, std::size_t seconds,
                                      std::mt19937& random) const
{
    const std::size_t last = m_errors.size() - 1 - seconds * (count - 1);
    const std::size_t from = std::uniform_int_distribution<std::size_t>(0, last)(random);
    AntennaErrorList errors;
    for (std::size_t k = 0; k < count; ++k)
        errors.push_back(m_errors[from + seconds * k]);
    return errors;
}

std::vector<xyhCoord> AntennasOf(const AntennaCone& cone, const AntennaErrorList& errors,
                                 std::mt19937& random)
{
    std::uniform_real_distribution<double> share(0.0, 1.0);
    const double least = std::cos(Deg2Rad(cone.tilt));
    const double most = std::cos(Deg2Rad(kLeastTilt));
    const double middle = 360.0 * share(random);
    std::vector<xyhCoord> antennas;
    for (const auto& [n, e, h] : errors) {
        const double up = least + (most - least) * share(random);
        const double out = kPole * std::sqrt(1.0 - up * up);
        const double azimuth = Deg2Rad(middle + cone.width * (share(random) - 0.5));
        antennas.push_back(
            {out * std::cos(azimuth) + n, out * std::sin(azimuth) + e, kPole * up + h});
    }
    return antennas;
}

void TipCoverage::Count(const quality::TipEstimate& e)
{
    ++sets;
    if (e.verdict != quality::TipVerdict::Store) return;
    ++stored;
    const double c = std::cos(Deg2Rad(e.ellipseAzimuth));
    const double s = std::sin(Deg2Rad(e.ellipseAzimuth));
    const double alongMajor = (e.tip.x * c + e.tip.y * s) / e.ellipseMajor;
    const double alongMinor = (e.tip.y * c - e.tip.x * s) / e.ellipseMinor;
    if (alongMajor * alongMajor + alongMinor * alongMinor <= 1.0) ++plan;
    if (std::fabs(e.tip.h) <= e.heightHalfInterval) ++height;
    worst = std::max(worst, std::hypot(e.tip.x, e.tip.y, e.tip.h));
    major += (e.ellipseMajor - major) / stored;
}

} // namespace simulation
