// SPDX-License-Identifier: MIT
#include "quality/calibration/Agreement.h"

#include "survey/Angle.h"

#include <Eigen/Cholesky>
#include <Eigen/Core>

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr int kWaves = 5; // a constant, one and two waves over the heading

using Wave = Eigen::Matrix<double, kWaves, 1>;

Wave WaveAt(double heading)
{
    const double h = survey::Deg2Rad(heading);
    Wave wave;
    wave << 1.0, std::cos(h), std::sin(h), std::cos(2.0 * h), std::sin(2.0 * h);
    return wave;
}

// RMS of the waves that fit the differences best, less what noise alone would leave in them.
double SystematicPart(const std::vector<double>& headings, const std::vector<double>& differences)
{
    Eigen::Matrix<double, kWaves, kWaves> normal = Eigen::Matrix<double, kWaves, kWaves>::Zero();
    Wave right = Wave::Zero();
    for (std::size_t i = 0; i < headings.size(); ++i) {
        const Wave wave = WaveAt(headings[i]);
        normal += wave * wave.transpose();
        right += differences[i] * wave;
    }
    const Wave waves = normal.ldlt().solve(right);
    double squares = 0.0;
    double residuals = 0.0;
    for (std::size_t i = 0; i < headings.size(); ++i) {
        const double fitted = waves.dot(WaveAt(headings[i]));
        squares += fitted * fitted;
        residuals += std::pow(differences[i] - fitted, 2);
    }
    const double count = static_cast<double>(headings.size());
    const double noise = kWaves * residuals / std::max(count - kWaves, 1.0);
    return std::sqrt(std::max(squares - noise, 0.0) / count);
}

} // namespace

std::optional<::quality::HeadingAgreement> AgreementOf(const std::vector<double>& a,
                                                       const std::vector<double>& b)
{
    if (a.empty()) return {};
    double sine = 0.0;
    double cosine = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sine += std::sin(survey::Deg2Rad(b[i] - a[i] - 180.0));
        cosine += std::cos(survey::Deg2Rad(b[i] - a[i] - 180.0));
    }
    // About their own middle: differences near 180 degrees must not wrap.
    const double middle = survey::Rad2Deg(std::atan2(sine, cosine));
    if (!std::isfinite(middle)) return {};
    ::quality::HeadingAgreement agreement;
    std::vector<double> differences;
    double sum = 0.0;
    double squares = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double off = survey::Wrapped(b[i] - a[i] - 180.0 - middle);
        sum += off;
        squares += off * off;
        agreement.largest = std::max(agreement.largest, std::fabs(survey::Wrapped(middle + off)));
        differences.push_back(middle + off);
    }
    const double count = static_cast<double>(a.size());
    const double beside = sum / count;
    agreement.mean = middle + beside;
    agreement.deviation = std::sqrt(std::max(squares / count - beside * beside, 0.0));
    agreement.systematic = SystematicPart(a, differences);
    return agreement;
}

} // namespace tiltpole::quality
