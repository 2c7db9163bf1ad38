// SPDX-License-Identifier: MIT
#include "field/job/Recompute.h"

#include "field/North.h"
#include "field/job/RecomputeOccupation.h"
#include "field/pose/PoseRing.h"
#include "field/tip/Covariance.h"
#include "field/tip/TipSolver.h"

#include <cmath>
#include <optional>

namespace field {

namespace inner = tiltpole::field;
namespace survey = tiltpole::survey;

namespace {

constexpr Instant kSameMoment = std::chrono::microseconds{2}; // lines have whole microseconds
constexpr double kLongestStep = 1.0; // between poses that a speed is taken from [s]
// Solves the epochs of one point.
class Replay
{
public:
    Replay(const JobPoint& stored, const Setup& setup, double delayChange)
        : m_solver(setup), m_change(delayChange), m_year(YearOf(stored.utc)),
          m_ring(std::chrono::minutes{10})
    {}

    // Poses of an epoch, in the order of time.
    void Add(const std::vector<PoseSample>& poses)
    {
        for (const PoseSample& pose : poses)
            m_ring.Add(pose);
    }

    Report Solve(const JobEpoch& stored) const
    {
        Report report;
        const std::optional<Epoch> epoch = inner::StoredEpoch(stored);
        if (!epoch) return Without(Reason::Code::NoReceiver, "the receiver's lines are unreadable");
        report.epoch = *epoch;
        report.epoch.moment -= inner::InstantOf(m_change);
        const std::optional<PoseSample> pose = PoseAt(stored, report.epoch.moment);
        if (!pose) return Without(Reason::Code::PoseGap, "there is no pose at its moment", *epoch);
        inner::TipSolution solution = m_solver.Solve(report.epoch, *pose, m_year);
        report.verdict.reasons = std::move(solution.reasons);
        report.tip = std::move(solution.tip);
        if (!report.tip) return report;
        const survey::Point3 velocity = VelocityAt(report.epoch.moment, solution.model.declination);
        report.tip->antennaSpeed = std::hypot(velocity.x, velocity.y, velocity.z);
        report.tip->sigma = inner::TipCovariance(
            m_solver, *report.tip,
            inner::ErrorsOf(m_solver.GetSetup(), solution.model, 0.0, velocity));
        report.verdict.state = State::Store;
        report.verdict.reasons.clear();
        return report;
    }

private:
    static double YearOf(JobTime time)
    {
        const auto day = std::chrono::floor<std::chrono::days>(time);
        return DecimalYear(day, std::chrono::duration<double>(time - day).count());
    }

    static Report Without(Reason::Code code, const char* why, Epoch epoch = {})
    {
        Report report;
        report.epoch = std::move(epoch);
        report.verdict.reasons.push_back({code, why});
        return report;
    }

    std::optional<PoseSample> PoseAt(const JobEpoch& stored, Instant moment) const
    {
        for (const PoseSample& pose : inner::StoredPoses(stored))
            if (std::chrono::abs(pose.moment - moment) <= kSameMoment) return pose;
        const PoseLookup at = m_ring.At(moment);
        if (at.state != PoseLookup::State::Found) return std::nullopt;
        return at.pose;
    }

    // Of the antenna relative to the tip, by the poses around a moment; 0 where there are none.
    survey::Point3 VelocityAt(Instant moment, double declination) const
    {
        std::size_t later = 0;
        while (later < m_ring.Size() && m_ring.Sample(later).moment <= moment)
            ++later;
        const std::size_t last =
            std::min(later, m_ring.Size() - std::min<std::size_t>(1, m_ring.Size()));
        const std::size_t first = last < 2 ? 0 : last - 2;
        if (first >= last) return {};
        const PoseSample& from = m_ring.Sample(first);
        const PoseSample& to = m_ring.Sample(last);
        const double seconds = std::chrono::duration<double>(to.moment - from.moment).count();
        if (!(seconds > 0.0 && seconds <= kLongestStep)) return {};
        const survey::Point3 a = m_solver.Step(from, declination);
        const survey::Point3 b = m_solver.Step(to, declination);
        return {(a.x - b.x) / seconds, (a.y - b.y) / seconds, (a.z - b.z) / seconds};
    }

    inner::TipSolver m_solver;
    double m_change;
    double m_year;
    PoseRing m_ring;
};

// What a new point takes from the one that it replaces.
void Inherit(JobPoint& point, const JobPoint& stored)
{
    point.name = stored.name;
    point.code = stored.code;
    point.note = stored.note;
    point.gate = stored.gate;
    point.forced = stored.forced;
    point.replaces = stored.id;
}

} // namespace

JobRecord Recomputed(const JobPoint& stored, std::span<const JobEpoch> epochs, const Setup& setup,
                     double delayChange)
{
    if (stored.byOccupation) {
        JobRecord record = inner::RecomputedOccupation(stored, epochs, setup, delayChange);
        Inherit(record.point, stored);
        return record;
    }
    Replay replay(stored, setup, delayChange);
    for (const JobEpoch& epoch : epochs)
        replay.Add(inner::StoredPoses(epoch));
    std::vector<Report> reports;
    for (const JobEpoch& epoch : epochs)
        if (epoch.used) reports.push_back(replay.Solve(epoch));

    JobRecord record = JobRecordOf(reports, stored.utc);
    // Lines and order stay as they were stored, and so do the epochs that were left out.
    std::vector<JobEpoch> all(epochs.begin(), epochs.end());
    std::size_t solved = 0;
    for (JobEpoch& epoch : all) {
        epoch.seconds -= delayChange;
        if (!epoch.used) continue;
        epoch.used = record.epochs[solved].used; // by the new mean
        epoch.why = record.epochs[solved].why;
        ++solved;
    }
    record.epochs = std::move(all);
    record.point.leftOut = static_cast<int>(epochs.size()) - record.point.epochs;
    Inherit(record.point, stored);
    return record;
}

} // namespace field
