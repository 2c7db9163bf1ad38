// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/AxesCheck.h"

#include "survey/Angle.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace survey = tiltpole::survey;

namespace {

constexpr double kClear =
    0.003; // of the variance must vanish with other axes [g²]: a turn of 3 degrees
constexpr double kPause = 0.2;  // [s]
constexpr double kSecond = 1.0; // of a mean [s]
constexpr double kTenth = 0.1;  // of a mean that a rock shows in [s]
constexpr double kTall = 5.0;   // no sensor sits higher on a pole [m]
constexpr double kFewest = 4.0; // means of a second
constexpr double kFewestTenths = 25.0;
constexpr double kShare = 0.35; // of the variance may be left with them

// The components of P v are those of v in another order and with other signs.
struct Reading
{
    std::array<int, 3> from;
    std::array<double, 3> sign;

    int Changes() const
    {
        int changes = 0;
        for (int i = 0; i < 3; ++i)
            changes += (from[static_cast<std::size_t>(i)] != i ? 1 : 0)
                       + (sign[static_cast<std::size_t>(i)] < 0.0 ? 1 : 0);
        return changes;
    }
    std::string Text() const
    {
        std::string text;
        for (std::size_t i = 0; i < 3; ++i)
            text +=
                fmt::format("{}{}{}", i == 0 ? "" : ", ", sign[i] < 0.0 ? "-" : "", "xyz"[from[i]]);
        return text;
    }
};

// The first one changes nothing.
Reading ReadingOf(std::size_t index)
{
    constexpr std::array<std::array<int, 3>, 6> kOrders{
        {{0, 1, 2}, {1, 0, 2}, {0, 2, 1}, {2, 1, 0}, {1, 2, 0}, {2, 0, 1}}
    };
    const std::size_t signs = index % 8;
    return {
        kOrders[index / 8],
        {(signs & 1U) != 0 ? -1.0 : 1.0, (signs & 2U) != 0 ? -1.0 : 1.0,
                     (signs & 4U) != 0 ? -1.0 : 1.0}
    };
}

using Vector = std::array<double, 3>;

// row + row x turn + ..., the row of R Exp([turn]).
Vector TurnedRow(const Vector& v, const Vector& turn)
{
    const double angle = std::hypot(turn[0], turn[1], turn[2]);
    if (angle == 0.0) return v;
    const Vector k{turn[0] / angle, turn[1] / angle, turn[2] / angle};
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double along = (1.0 - c) * (k[0] * v[0] + k[1] * v[1] + k[2] * v[2]);
    return {c * v[0] + s * (v[1] * k[2] - v[2] * k[1]) + along * k[0],
            c * v[1] + s * (v[2] * k[0] - v[0] * k[2]) + along * k[1],
            c * v[2] + s * (v[0] * k[1] - v[1] * k[0]) + along * k[2]};
}

} // namespace

void AxesCheck::Clear()
{
    m_before = {};
    m_seconds.reset();
    m_means = 0.0;
    m_samples = 0.0;
    m_tenths = 0.0;
    m_tenthSamples = 0.0;
    for (Turned& turned : m_turned)
        turned = {{{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}}, {}};
}

void AxesCheck::Add(const field::InertialSample& sample)
{
    if (m_seconds && sample.seconds <= *m_seconds) return;
    if (m_seconds && sample.seconds > *m_seconds + kPause) {
        const AxesEvidence before = Evidence();
        Clear();
        m_before = before;
    }
    const Vector rate{sample.rate.x, sample.rate.y, sample.rate.z};
    const Vector force{sample.acceleration.x, sample.acceleration.y, sample.acceleration.z};
    const double half =
        m_seconds ? 0.5 * survey::Deg2Rad(sample.seconds - *m_seconds) : 0.0; // [rad per degree/s]
    Vector turn{};
    for (std::size_t i = 0; i < 3; ++i)
        turn[i] = half * (m_rate[i] + rate[i]);
    for (std::size_t k = 0; k < kAxesReadings; ++k) {
        const Reading reading = ReadingOf(k);
        Vector read{};
        for (std::size_t i = 0; i < 3; ++i)
            read[i] = reading.sign[i] * turn[static_cast<std::size_t>(reading.from[i])];
        for (std::size_t row = 0; row < 3; ++row) {
            Vector& axis = m_turned[k].attitude[row];
            axis = TurnedRow(axis, read);
            const double level = axis[0] * force[0] + axis[1] * force[1] + axis[2] * force[2];
            m_turned[k].second[row] += level;
            m_turned[k].swayed.force[row] += level;
            m_turned[k].swayed.up[row] += axis[2];
        }
    }
    if (m_samples == 0.0) m_begin = sample.seconds;
    m_samples += 1.0;
    if (sample.seconds - m_begin >= kSecond) EndSecond();
    if (m_tenthSamples == 0.0) m_tenthBegin = sample.seconds;
    m_tenthSamples += 1.0;
    if (sample.seconds - m_tenthBegin >= kTenth) EndTenth(sample.seconds);
    m_seconds = sample.seconds;
    m_rate = rate;
}

void AxesCheck::EndSecond()
{
    for (Turned& turned : m_turned) {
        for (std::size_t i = 0; i < 3; ++i) {
            const double mean = turned.second[i] / m_samples;
            turned.sum[i] += mean;
            turned.squares += mean * mean;
            turned.second[i] = 0.0;
        }
    }
    m_means += 1.0;
    m_samples = 0.0;
}

// The acceleration of the middle one of three tenths, by the directions of all three.
void AxesCheck::EndTenth(double seconds)
{
    constexpr double kGravity = 9.80665; // [m/s²]
    const double length = (seconds - m_tenthBegin) * m_tenthSamples / (m_tenthSamples - 1.0);
    m_tenths += 1.0;
    for (Turned& turned : m_turned) {
        Swayed& s = turned.swayed;
        for (std::size_t i = 0; i < 3; ++i) {
            const double up = s.up[i] / m_tenthSamples;
            if (m_tenths > 2.0) {
                const double f = s.forces[0][i];
                const double a =
                    (up - 2.0 * s.ups[0][i] + s.ups[1][i]) / (length * length * kGravity);
                s.sumF[i] += f;
                s.sumA[i] += a;
                s.ff += f * f;
                s.fa += f * a;
                s.aa += a * a;
            }
            s.forces[1][i] = s.forces[0][i];
            s.ups[1][i] = s.ups[0][i];
            s.forces[0][i] = s.force[i] / m_tenthSamples;
            s.ups[0][i] = up;
            s.force[i] = s.up[i] = 0.0;
        }
    }
    m_tenthSamples = 0.0;
}

double AxesCheck::Swayed::Left(double count) const
{
    double sff = ff;
    double sfa = fa;
    double saa = aa;
    for (std::size_t i = 0; i < 3; ++i) {
        sff -= sumF[i] * sumF[i] / count;
        sfa -= sumF[i] * sumA[i] / count;
        saa -= sumA[i] * sumA[i] / count;
    }
    const double height = saa > 0.0 ? std::clamp(sfa / saa, 0.0, kTall) : 0.0;
    return sff - 2.0 * height * sfa + height * height * saa;
}

AxesEvidence AxesCheck::Evidence() const
{
    AxesEvidence evidence;
    evidence.slow.count = m_means;
    evidence.fast.count = std::max(0.0, m_tenths - 2.0);
    for (std::size_t k = 0; k < kAxesReadings; ++k) {
        const Vector& sum = m_turned[k].sum;
        const double length = std::hypot(sum[0], sum[1], sum[2]);
        if (m_means > 0.0) evidence.slow.left[k] = m_turned[k].squares - length * length / m_means;
        if (evidence.fast.count > 0.0)
            evidence.fast.left[k] = m_turned[k].swayed.Left(evidence.fast.count);
    }
    evidence.Add(m_before);
    return evidence;
}

void AxesEvidence::Means::Add(const Means& other)
{
    for (std::size_t k = 0; k < kAxesReadings; ++k)
        left[k] += other.left[k];
    count += other.count;
}

void AxesEvidence::Add(const AxesEvidence& other)
{
    slow.Add(other.slow);
    fast.Add(other.fast);
}

namespace {

// That leaves far less than the reading as it is.
std::optional<Reading> OtherReading(const AxesEvidence::Means& means, double fewest)
{
    if (means.count < fewest) return std::nullopt;
    const auto& left = means.left;
    const double asRead = left[0];
    const double least = *std::min_element(left.begin(), left.end());
    if (!(asRead - least > kClear * means.count && least < kShare * asRead)) return std::nullopt;
    // Readings that differ by an axis about which gravity hardly turned leave about the same.
    std::size_t simplest = 0;
    for (std::size_t k = 1; k < kAxesReadings; ++k) {
        const bool fits = left[k] < least + 0.1 * (asRead - least);
        const bool simpler =
            simplest == 0 || ReadingOf(k).Changes() < ReadingOf(simplest).Changes();
        if (fits && simpler) simplest = k;
    }
    return ReadingOf(simplest);
}

} // namespace

std::optional<std::string> AxesEvidence::Problem() const
{
    auto other = OtherReading(slow, kFewest);
    if (!other) other = OtherReading(fast, kFewestTenths);
    if (!other) return std::nullopt;
    return fmt::format("gyros and accelerometers do not have the same axes: they agree where the "
                       "rates are read as {}",
                       other->Text());
}

} // namespace cli
