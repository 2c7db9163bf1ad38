// SPDX-License-Identifier: MIT
#include "field/occupation/Track.h"

#include "field/occupation/Model.h"
#include "field/occupation/Rotations.h"

#include <algorithm>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Quaterniond;
using Eigen::Vector3d;

namespace {

// Keeps the entries 0, 2, 4, ...
template <class Entry>
void DropEverySecond(std::vector<Entry>& entries)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < entries.size(); i += 2)
        entries[kept++] = entries[i];
    entries.resize(kept);
}

// Whether entry number `seen` is kept at this stride.
bool IsDue(std::size_t& seen, std::size_t stride)
{
    return seen++ % stride == 0;
}

Vector3d MagneticOf(const Reading6& reading)
{
    return reading.disturbed ? Vector3d(Vector3d::Zero()) : reading.magnetic;
}

// The turn of the sensor between two readings: mean rate, and the first term of coning.
// J. E. Bortz, A new mathematical formulation for strapdown inertial navigation, 1971.
Vector3d TurnBetween(const Reading6& a, const Reading6& b)
{
    const double dt = b.time - a.time;
    return 0.5 * dt * (a.rate + b.rate) + dt * dt / 12.0 * a.rate.cross(b.rate);
}

} // namespace

Track::Track(std::size_t nodes, std::size_t epochs)
{
    m_nodes.reserve(nodes);
    m_epochs.reserve(epochs);
    m_gaps.reserve(kGaps + 1);
}

void Track::Clear()
{
    m_nodes.clear();
    m_epochs.clear();
    m_gaps.clear();
    m_gapCount = 0;
    m_shortest = kGap;
    m_disturbedTime = 0.0;
    m_nodeStride = m_epochStride = 1;
    m_nodesSeen = m_epochsSeen = 0;
    m_end = {};
}

void Track::Keep(const Node& node)
{
    if (!IsDue(m_nodesSeen, m_nodeStride)) return;
    if (m_nodes.size() == m_nodes.capacity()) {
        DropEverySecond(m_nodes);
        m_nodeStride *= 2;
        if ((m_nodesSeen - 1) % m_nodeStride != 0) return;
    }
    m_nodes.push_back(node);
}

// Between the readings the rate may have been anything of the size of those at both ends.
void Track::KeepGap(const Reading6& after)
{
    constexpr double kLeastRate = 0.05; // [rad/s]
    const double length = after.time - m_last.time;
    const double rate = std::max(kLeastRate, 0.5 * (after.rate.norm() + m_last.rate.norm()));
    ++m_gapCount;
    m_gaps.push_back({after.time, length, 0.5 * rate * length});
    if (m_gaps.size() <= kGaps) return;
    const auto shorter = [](const Gap& a, const Gap& b) { return a.length < b.length; };
    m_gaps.erase(std::min_element(m_gaps.begin(), m_gaps.end(), shorter));
}

void Track::Add(const Reading6& reading, const Quaterniond& first)
{
    if (m_nodesSeen == 0) {
        m_end.time = reading.time;
        m_end.attitude = first;
    } else {
        const double dt = reading.time - m_last.time;
        m_shortest = std::min(m_shortest, dt);
        if (dt > std::max(kGap, 1.5 * m_shortest)) KeepGap(reading);
        const Quaterniond after = (m_end.attitude * Exp(TurnBetween(m_last, reading))).normalized();
        const Matrix3d r0 = m_end.attitude.toRotationMatrix();
        const Matrix3d r1 = after.toRotationMatrix();
        m_end.time = reading.time;
        m_end.attitude = after;
        m_end.turning += 0.5 * dt * (r0 + r1);
        m_end.force += 0.5 * dt * (r0 * m_last.force + r1 * reading.force);
        m_end.magnetic += 0.5 * dt * (r0 * MagneticOf(m_last) + r1 * MagneticOf(reading));
        if (m_last.disturbed) m_disturbedTime += 0.5 * dt;
        if (reading.disturbed) m_disturbedTime += 0.5 * dt;
    }
    m_last = reading;
    Keep(m_end);
}

void Track::Add(const Epoch& epoch)
{
    if (!IsDue(m_epochsSeen, m_epochStride)) return;
    if (m_epochs.size() == m_epochs.capacity()) {
        DropEverySecond(m_epochs);
        m_epochStride *= 2;
        if ((m_epochsSeen - 1) % m_epochStride != 0) return;
    }
    m_epochs.push_back(epoch);
}

bool Track::Covers(double time) const
{
    return !m_nodes.empty() && m_nodes.front().time <= time && time <= m_end.time;
}

Pose3 Track::At(double time) const
{
    const auto later = [](double t, const Node& node) { return t < node.time; };
    auto next = std::upper_bound(m_nodes.begin(), m_nodes.end(), time, later);
    if (next == m_nodes.begin() && next != m_nodes.end()) ++next;
    // Behind the last node that was kept lies the end of the integration.
    const bool behind = next == m_nodes.end();
    const bool endIsKept = m_nodes.back().time == m_end.time;
    const Node& b = behind ? m_end : *next;
    const Node& a = behind && endIsKept && m_nodes.size() > 1 ? *(m_nodes.end() - 2) : *(next - 1);
    const double span = b.time - a.time;
    int gaps = 0;
    for (const Gap& gap : m_gaps)
        gaps += gap.end <= time ? 1 : 0;
    if (span <= 0.0)
        return {b.attitude.toRotationMatrix(), b.turning, Matrix3d::Zero(), Vector3d::Zero(), gaps};
    const double part = (time - a.time) / span;
    const Vector3d turn = Log(b.attitude * a.attitude.conjugate());
    return {(Exp(part * turn) * a.attitude).toRotationMatrix(),
            (1.0 - part) * a.turning + part * b.turning, (b.turning - a.turning) / span,
            turn / span, gaps};
}

} // namespace tiltpole::field
