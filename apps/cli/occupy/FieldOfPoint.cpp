// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/FieldOfPoint.h"

#include "apps/cli/occupy/Turned.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace cli {

namespace {

using field::SensorVector;
using Verticals = std::vector<std::optional<SensorVector>>;

constexpr double kGrowing = 0.5;  // [s]
constexpr double kPause = 0.3;    // hides a turn [s]
constexpr double kLongest = 16.0; // of a piece: gyros drift [s]
constexpr double kShortest = 2.0; // [s]

double Dot(const SensorVector& a, const SensorVector& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

SensorVector Sum(const SensorVector& a, double factor, const SensorVector& b)
{
    return {a.x + factor * b.x, a.y + factor * b.y, a.z + factor * b.z};
}

// Of one piece without pauses.
void FindVerticals(std::span<const WaitingRow> rows, std::span<std::optional<SensorVector>> found)
{
    const double begin = rows.front().sample.seconds;
    const double length = rows.back().sample.seconds - begin;
    if (!(length >= kShortest)) return;
    using Axes = std::array<SensorVector, 3>; // of the world, in the sensor
    std::vector<Axes> attitudes;
    attitudes.reserve(rows.size());
    Axes axes{
        SensorVector{1.0, 0.0, 0.0},
        SensorVector{0.0, 1.0, 0.0},
        SensorVector{0.0, 0.0, 1.0}
    };
    std::array<double, 3> force{};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const field::InertialSample& now = rows[i].sample;
        const double s = (now.seconds - begin) / length;
        const double weight = s * s * (1.0 - s) * (1.0 - s);
        for (std::size_t k = 0; k < 3; ++k) {
            if (i > 0) {
                const field::InertialSample& before = rows[i - 1].sample;
                axes[k] = Turned(axes[k],
                                 TurnInSensor(before.rate, now.rate, now.seconds - before.seconds));
            }
            force[k] += weight * Dot(axes[k], now.acceleration);
        }
        attitudes.push_back(axes);
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SensorVector up;
        for (std::size_t k = 0; k < 3; ++k)
            up = Sum(up, force[k], attitudes[i][k]);
        found[i] = up;
    }
}

// Pieces of about the same length between pauses.
Verticals VerticalsOf(const std::vector<WaitingRow>& rows)
{
    Verticals found(rows.size());
    const std::span<const WaitingRow> all(rows);
    const std::span<std::optional<SensorVector>> verticals(found);
    std::size_t first = 0;
    const auto secondsAt = [&](std::size_t i) { return rows[i].sample.seconds; };
    while (first < rows.size()) {
        std::size_t end = first + 1;
        while (end < rows.size() && secondsAt(end) - secondsAt(end - 1) <= kPause
               && secondsAt(end) > secondsAt(end - 1))
            ++end;
        const double length = secondsAt(end - 1) - secondsAt(first);
        const auto pieces = static_cast<std::size_t>(std::max(1.0, std::ceil(length / kLongest)));
        for (std::size_t p = 0; p < pieces; ++p) {
            const std::size_t from = first + (end - first) * p / pieces;
            const std::size_t to = first + (end - first) * (p + 1) / pieces;
            FindVerticals(all.subspan(from, to - from), verticals.subspan(from, to - from));
        }
        first = end;
    }
    return found;
}

// A disturbance grows as the pole comes near: it is there before it exceeds a limit.
void MarkBefore(std::vector<WaitingRow>& rows, const std::vector<field::DisturbedSpan>& spans)
{
    for (const field::DisturbedSpan& span : spans)
        for (WaitingRow& row : rows)
            if (row.sample.seconds < span.from && row.sample.seconds >= span.from - kGrowing)
                row.sample.disturbed = true;
}

} // namespace

FieldOfPoint MarkDisturbed(std::vector<WaitingRow>& rows, const field::FieldShape& expected,
                           int sensorType, bool gyros)
{
    constexpr std::size_t kShapes = 1024;
    const std::size_t stride = rows.size() / kShapes + 1;
    FieldOfPoint found;
    const Verticals verticals = gyros ? VerticalsOf(rows) : Verticals(rows.size());
    field::DisturbanceMonitor monitor(expected);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        field::InertialSample& sample = rows[i].sample;
        const SensorVector& reading = sample.magnetic;
        if (reading.x == 0.0 && reading.y == 0.0 && reading.z == 0.0) continue;
        field::MonitorSample now;
        now.seconds = sample.seconds;
        now.tilt = sample.tilt;
        now.tilt.sensorType = sensorType;
        now.up = verticals[i];
        now.a = reading;
        now.b = rows[i].b;
        const field::MonitorVerdict verdict = monitor.Add(now);
        // A monitor speaks a moment after a disturbance began: what it suspects has no vote either.
        sample.disturbed = verdict.suspect || verdict.disturbed;
        if (i % stride == 0) found.shapes.push_back(verdict.shape);
    }
    found.disturbances = monitor.Spans();
    MarkBefore(rows, found.disturbances);
    return found;
}

} // namespace cli
