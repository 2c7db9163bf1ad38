// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/PointInWork.h"

#include "survey/Correction.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace survey = tiltpole::survey;

namespace {

constexpr std::size_t kMostWaiting = 131072; // rows: 260 s of 500 Hz
constexpr double kMostFromTrack = 60.0;      // of a magnetometer's heading [degrees]

// Of a stored point.
std::optional<std::string> MagnetometerProblem(const field::OccupationEstimate& estimate)
{
    const double difference = std::fabs(estimate.magneticDifference);
    if (!(difference > kMostFromTrack)) return std::nullopt;
    return fmt::format("the headings of magnetometer and track differ by {:.0f} degrees: is a "
                       "magnet near, or are axes exchanged?",
                       difference);
}

} // namespace

PointInWork::PointInWork(const OccupySetup& setup)
    : m_setup(setup), m_position(setup.position), m_occupation(setup.occupation)
{}

void PointInWork::Begin(std::string name)
{
    m_point.emplace();
    m_point->name = std::move(name);
    m_occupation.Clear();
    m_axes.Clear();
    m_rows.Clear();
    m_waiting.clear();
    m_watches = m_setup.field.has_value();
}

void PointInWork::Add(const LogRow& row)
{
    if (m_point->samples++ == 0) m_point->from = m_last = row.sample.seconds;
    if (!m_setup.gyroFree) m_axes.Add(row.sample);
    m_rows.Add(row);
    m_last = std::max(m_last, row.sample.seconds);
    if (row.repeatsEpoch) ++m_point->repeatedEpochs;
    if (row.epoch) {
        ++m_point->epochs;
        AddSingleTip(row);
    }
    WaitingRow waiting{row.sample, std::nullopt, row.epoch};
    if (!m_watches) return Take(waiting);
    if (m_setup.fieldByB) waiting.b = ReadingOfB(row.pose);
    m_waiting.push_back(waiting);
    // Longer than any occupation that is estimated: it need not be watched.
    if (m_waiting.size() < kMostWaiting) return;
    m_watches = false;
    TakeWaiting();
}

// Corrected, along the axes of A; none without a reading.
std::optional<field::SensorVector> PointInWork::ReadingOfB(const PoseSensorData& pose) const
{
    const survey::Reading raw = ReadingOf(pose, survey::Magnetometer::B);
    if (raw.x == 0.0 && raw.y == 0.0 && raw.z == 0.0) return std::nullopt;
    const survey::Reading b = survey::Corrected(m_setup.position.GetMagneticCorrectPar_B(), raw);
    return field::SensorVector{-b.x, -b.y, b.z}; // x and y of B are opposed
}

void PointInWork::Take(const WaitingRow& row)
{
    if (!m_occupation.Add(row.sample)) ++m_point->lateSamples;
    if (!row.epoch) return;
    if (m_occupation.Add(*row.epoch)) {
        m_point->track.push_back({row.epoch->seconds, row.epoch->position});
        if (m_setup.gyroFree && row.sample.disturbed) ++m_point->disturbedEpochs;
    } else {
        ++m_point->lateEpochs;
    }
}

void PointInWork::TakeWaiting()
{
    for (const WaitingRow& row : m_waiting)
        Take(row);
    m_waiting.clear();
}

void PointInWork::AddSingleTip(const LogRow& row)
{
    if (!m_setup.occupation.useMagnetometer) return;
    PoseSensorData pose = row.pose;
    xyhCoordinate tip = row.epoch->position;
    m_position.Position(pose, m_setup.occupation.poleLength, tip);
    if (std::isfinite(tip.x) && std::isfinite(tip.y) && std::isfinite(tip.h))
        m_point->singleTips.push_back(tip);
}

// Of units and columns, the truer reason first; some make the estimate see no more than a gap.
std::optional<std::string> PointInWork::UnitProblem() const
{
    using Reason = field::OccupationReason;
    const field::OccupationEstimate& estimate = m_point->estimate;
    if (!m_setup.gyroFree && estimate.reason != Reason::TimeRanBack) {
        if (auto problem = m_rows.TimeProblem()) return problem;
    }
    if (m_point->LacksRows()) return std::nullopt;
    if (!m_setup.gyroFree) {
        if (auto problem = m_rows.AccelerationProblem()) return problem;
    }
    if (auto problem = m_rows.HeightProblem()) return problem;
    if (!m_point->IsRefused()) return std::nullopt;
    return m_rows.ExtentProblem(m_setup.occupation.poleLength);
}

// Of the sensors against each other.
std::optional<std::string> PointInWork::SensorProblem() const
{
    if (auto problem = m_point->axes.Problem()) return problem;
    const bool stored = m_point->estimate.advice == field::OccupationAdvice::Store;
    if (!stored || !m_setup.occupation.useMagnetometer) return std::nullopt;
    return MagnetometerProblem(m_point->estimate);
}

void PointInWork::Judge()
{
    if (const auto problem = UnitProblem()) return m_point->Contradict(*problem);
    if (m_point->LacksRows()) return;
    if (!m_setup.gyroFree) m_point->axes = m_axes.Evidence();
    const field::OccupationReason reason = m_point->estimate.reason;
    m_point->doubtsSensors = reason == field::OccupationReason::SensorsContradict
                             || reason == field::OccupationReason::GyrosStill
                             || m_point->axes.Problem().has_value();
    if (const auto problem = SensorProblem()) m_point->Contradict(*problem);
}

OccupiedPoint PointInWork::End()
{
    if (m_watches)
        m_point->field = MarkDisturbed(m_waiting, *m_setup.field, m_setup.occupation.sensorType,
                                       !m_setup.gyroFree);
    TakeWaiting();
    m_point->estimate =
        m_setup.gyroFree ? m_occupation.EstimateWithoutGyros() : m_occupation.Estimate();
    Judge();
    m_point->outsideEpochs = static_cast<std::uint64_t>(
        std::count_if(m_point->track.begin(), m_point->track.end(), [this](const AntennaFix& fix) {
            return fix.seconds < m_point->from || fix.seconds > m_last;
        }));
    OccupiedPoint point = std::move(*m_point);
    m_point.reset();
    return point;
}

} // namespace cli
