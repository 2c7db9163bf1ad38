// SPDX-License-Identifier: MIT
#include "field/occupation/Gravity.h"

#include "field/occupation/Rotations.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Vector3d;

namespace {

constexpr double kPiece = 1.0; // length of the windows that show own motion [s]
constexpr std::size_t kMostPieces = 64;

// Half the second derivative of t²·(T − t)².
double SecondSlope(double t, double span)
{
    return span * span - 6.0 * span * t + 6.0 * t * t;
}

Vector3d UpThePole(const Node& node)
{
    return node.attitude.toRotationMatrix().col(2);
}

} // namespace

MeanForce MeanForceOf(const Track& track, double from, double to)
{
    MeanForce mean;
    const auto& nodes = track.Nodes();
    const double span = to - from;
    const double scale = 30.0 / (span * span * span * span * span);
    double sum = 0.0;
    const auto before = [](const Node& node, double t) { return node.time < t; };
    auto next = std::lower_bound(nodes.begin(), nodes.end(), from, before);
    if (next == nodes.end()) return mean;
    if (next != nodes.begin() && next->time > from) --next;
    const Vector3d first = UpThePole(*next);
    for (; next + 1 != nodes.end() && next->time < to; ++next) {
        const Node& a = *next;
        const Node& b = *(next + 1);
        // w'' does not vanish at the ends: a part of an interval that were left out there would
        // look like an acceleration of the whole pole.
        const double begin = std::max(a.time, from);
        const double end = std::min(b.time, to);
        const double dt = end - begin;
        const double part = dt / (b.time - a.time);
        const double t = 0.5 * (begin + end) - from;
        const double weight = scale * t * t * (span - t) * (span - t);
        const Vector3d force = weight * part * (b.force - a.force);
        mean.force += force;
        mean.attitude +=
            0.5 * weight * dt * (a.attitude.toRotationMatrix() + b.attitude.toRotationMatrix());
        mean.byBias.noalias() += Skew(force).lazyProduct(0.5 * (a.turning + b.turning));
        for (std::size_t i = 0; i < track.Gaps().size(); ++i)
            if (b.time >= track.Gaps()[i].end) mean.byGap[i] -= Skew(force);
        const double later = (0.5 * (begin + end) - a.time) / (b.time - a.time);
        const Vector3d pole = (1.0 - later) * UpThePole(a) + later * UpThePole(b) - first;
        mean.ownMotion += 2.0 * dt * scale * SecondSlope(t, span) / kGravity * pole;
        sum += weight * dt;
    }
    if (sum > 0.0) {
        mean.force /= sum;
        mean.attitude /= sum;
        mean.byBias /= sum;
        for (Matrix3d& byGap : mean.byGap)
            byGap /= sum;
    }
    return mean;
}

OwnMotion OwnMotionOf(const Track& track)
{
    std::array<MeanForce, kMostPieces> pieces;
    OwnMotion result;
    if (track.Nodes().empty()) return result;
    const double begin = track.Nodes().front().time;
    const double end = track.Nodes().back().time;
    const double hop = std::max(0.5 * kPiece, (end - begin) / (kMostPieces - 2.0));
    std::size_t n = 0;
    Vector3d meanForce = Vector3d::Zero();
    Vector3d meanMotion = Vector3d::Zero();
    for (double from = begin; from + kPiece <= end && n < kMostPieces; from += hop) {
        pieces[n] = MeanForceOf(track, from, from + kPiece);
        if (pieces[n].force.isZero(0.0)) continue; // no two nodes within it
        meanForce += pieces[n].force;
        meanMotion += pieces[n].ownMotion;
        ++n;
    }
    result.windows = static_cast<int>(n);
    if (n < 3) return result;
    meanForce /= static_cast<double>(n);
    meanMotion /= static_cast<double>(n);
    double ff = 0.0;
    double fm = 0.0;
    double mm = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const Vector3d f = pieces[i].force - meanForce;
        const Vector3d m = pieces[i].ownMotion - meanMotion;
        ff += f.squaredNorm();
        fm += f.dot(m);
        mm += m.squaredNorm();
    }
    // Windows that overlap by half are half as many, and the mean takes one of these.
    const double freedom = 3.0 * std::max(1.0, static_cast<double>(n) - 2.0);
    result.swing = std::sqrt(mm / freedom);
    result.all = std::sqrt(ff / freedom);
    if (mm > 0.0) result.lever = fm / mm;
    if (ff > 0.0 && mm > 0.0) result.explained = fm * fm / (ff * mm);
    result.rest = std::sqrt(ff * std::max(0.0, 1.0 - result.explained) / freedom);
    return result;
}

} // namespace tiltpole::field
