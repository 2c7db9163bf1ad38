// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/PointsByMotion.h"

#include <algorithm>
#include <fmt/format.h>

namespace cli {

namespace {

constexpr double kStepBack = 1.0;     // a row that is less late is a late row of its point [s]
constexpr double kGyroPause = 0.5;    // [s]
constexpr double kAntennaPause = 3.0; // [s]
constexpr double kLanding = 1.0;      // left out after a walk [s]
constexpr double kLeaving = 1.0;      // and before one [s]
constexpr double kShortest = 2.0;     // [s]

} // namespace

PointsByMotion::PointsByMotion(const OccupySetup& setup, OccupyResult& result)
    : m_result(result), m_watch(setup.occupation), m_point(setup)
{}

bool PointsByMotion::BreaksOff(const LogRow& row) const
{
    if (!m_last) return false;
    const double now = row.sample.seconds;
    return now < *m_last - kStepBack || now > *m_last + kGyroPause
           || (row.epoch && AntennaPauses(now));
}

// What happened meanwhile nobody knows.
bool PointsByMotion::AntennaPauses(double now) const
{
    if (m_waiting.empty()) return false;
    return now - m_sure.value_or(m_waiting.front().sample.seconds) > kAntennaPause;
}

void PointsByMotion::Add(const LogRow& row)
{
    if (BreaksOff(row)) {
        if (m_sure) ReleaseUntil(*m_sure);
        End();
        m_watch.Clear();
        m_sure.reset();
        m_from.reset();
        m_last.reset();
    }
    const double now = row.sample.seconds;
    const bool late = m_last && now <= *m_last;
    if (!late) {
        m_watch.Turn(row.sample);
        m_last = now;
    }
    const auto& epoch = row.epoch;
    if (!epoch && AntennaPauses(now)) return LeaveOut(row);
    m_waiting.push_back(row);
    if (!epoch || late) return;
    const TipWatch::Finding finding = m_watch.Look(*epoch);
    if (finding == TipWatch::Finding::Doubtful) return;
    m_sure = now;
    if (finding == TipWatch::Finding::Stays) return ReleaseUntil(now - kLeaving);
    End();
    m_from = now + kLanding;
}

void PointsByMotion::Finish()
{
    if (m_sure) ReleaseUntil(*m_sure);
    End();
}

void PointsByMotion::ReleaseUntil(double seconds)
{
    while (!m_waiting.empty() && m_waiting.front().sample.seconds <= seconds) {
        Release(m_waiting.front());
        m_waiting.pop_front();
    }
}

void PointsByMotion::Release(const LogRow& row)
{
    if (m_from && row.sample.seconds < *m_from) return LeaveOut(row);
    if (!m_point.HasBegun()) {
        m_point.Begin(fmt::format("{}", m_result.points.size() + 1));
        m_first = row.sample.seconds;
    }
    m_end = row.sample.seconds;
    m_point.Add(row);
}

// What waits is left out.
void PointsByMotion::End()
{
    for (const LogRow& row : m_waiting)
        LeaveOut(row);
    m_waiting.clear();
    if (!m_point.HasBegun()) return;
    if (m_end - m_first >= kShortest) {
        m_result.points.push_back(m_point.End());
        return;
    }
    ++m_result.shortStops;
    m_result.longestStop = std::max(m_result.longestStop, m_end - m_first);
    m_result.otherRows += m_point.Point().samples;
    m_result.otherEpochs += m_point.Point().epochs;
    m_point.Drop();
}

void PointsByMotion::LeaveOut(const LogRow& row)
{
    ++m_result.otherRows;
    m_result.otherEpochs += row.epoch ? 1 : 0;
}

} // namespace cli
