// SPDX-License-Identifier: MIT
#include "tests/soak/Host.h"

#include "matrix/SZMatrix.h"
#include "tests/reference/Turns.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace soak {

namespace {

constexpr int kReadings = 6;
constexpr int kTurn = 1000;      // samples
constexpr double kLevel = 200.0; // of the field of the day [counts]
constexpr double kDown = 450.0;

PoseSensorData DataOf(const live_pole::TrackRow& row)
{
    PoseSensorData data;
    data.dPitch = row.pitch;
    data.dRoll = row.roll;
    const auto& r = row.readings;
    data.dMag_x = r[0];
    data.dMag_y = r[1];
    data.dMag_z = r[2];
    data.dMag_x_2 = r[3];
    data.dMag_y_2 = r[4];
    data.dMag_z_2 = r[5];
    data.dGyro_x = r[6];
    data.dGyro_y = r[7];
    data.dGyro_z = r[8];
    data.dAcc_x = r[9];
    data.dAcc_y = r[10];
    data.dAcc_z = r[11];
    return data;
}

CSZMatrix Diagonal(double value)
{
    CSZMatrix matrix(kReadings, kReadings);
    for (int i = 0; i < kReadings; ++i)
        matrix.SetData(i, i, value);
    return matrix;
}

CSZMatrix Column(const PoseSensorData& pose)
{
    const double readings[kReadings] = {pose.dMag_x,   pose.dMag_y,   pose.dMag_z,
                                        pose.dMag_x_2, pose.dMag_y_2, pose.dMag_z_2};
    CSZMatrix column(kReadings, 1);
    for (int i = 0; i < kReadings; ++i)
        column.SetData(i, 0, readings[i]);
    return column;
}

// Runs `work` and adds its time to the times of a call.
template <class Work>
void Timed(Call& call, Work work)
{
    const Clock::time_point begin = Clock::now();
    work();
    call.times.Add(Clock::now() - begin);
}

} // namespace

Host::Host()
    : m_monitor({.strength = std::hypot(kLevel, kDown),
                 .dip = std::atan2(kDown, kLevel) * field_tests::kRadian}),
      m_bridge([] {
          field::Setup setup = live_pole::TrackSetup();
          setup.headingSigma = 2.5;
          return setup;
      }())
{
    m_places.resize(WorkingDay::kRound);
    m_kalman.SetMatrixOrder(kReadings, kReadings);
    m_kalman.SetSystemMatrix(Diagonal(1.0), Diagonal(0.0), Diagonal(1.0), Diagonal(1.0),
                             Diagonal(0.0));
    m_kalman.SetNoise(Diagonal(16.0), Diagonal(16.0));
    m_kalman.SetInitialData(CSZMatrix(kReadings, 1), Diagonal(25.0));
    const turns::Shape shape{.samples = kTurn, .perSecond = WorkingDay::kRate};
    m_turns[0] = turns::Make(shape, turns::TurnAxis::Horizontal);
    m_turns[1] = turns::Make(shape, turns::TurnAxis::Vertical);
    m_bridge.OnSentences(
        [this](const std::string&) { m_sentences.times.Add(Clock::now() - m_fed); });
}

void Host::Take(const WorkingDay& day, long sample)
{
    const live_pole::TrackRow& row = day.Row(sample);
    const PoseSensorData pose = DataOf(row);
    const std::string poseText = day.PoseText(sample);
    const std::optional<std::string> epochText = day.EpochText(sample);
    const field::Instant arrival = WorkingDay::ArrivalOf(sample);
    m_extra = Extra::Nothing;
    ++m_outcome.samples;

    const auto used = ProcessorTime();
    const Clock::time_point begin = Clock::now();
    Timed(m_position, [&] { Position(pose, row.antenna); });
    Timed(m_smoothing, [&] { Smooth(pose); });
    Turn(sample);
    Timed(m_watch, [&] { Watch(pose, WorkingDay::Seconds(sample)); });
    Live(epochText ? &*epochText : nullptr, poseText, arrival);
    const auto taken = Clock::now() - begin;
    const auto usedUp = ProcessorTime() - used;

    Call& call = m_extra == Extra::Nothing    ? m_plain
                 : m_extra == Extra::Estimate ? m_estimate
                                              : m_calibration;
    call.times.Add(taken);
    call.processor.Add(usedUp);
    if (m_extra != Extra::Nothing) return;
    Place& place = m_places[static_cast<std::size_t>(sample % WorkingDay::kRound)];
    place.quickest = std::min<std::chrono::nanoseconds>(place.quickest, taken);
    ++place.samples;
}

void Host::Position(const PoseSensorData& pose, const xyhCoordinate& antenna)
{
    PoseSensorData sample = pose;
    xyhCoordinate point = antenna;
    const int measured = m_pole.Position(sample, 2.0, point);
    m_outcome.tips += measured == 1 && std::isfinite(point.x + point.y + point.h);
}

void Host::Smooth(const PoseSensorData& pose)
{
    m_kalman.Filter(Column(pose), CSZMatrix(kReadings, 1));
}

// A turn is recorded sample by sample; when both are there they are solved.
void Host::Turn(long sample)
{
    const auto at = static_cast<std::size_t>(sample % kTurn);
    const bool vertical = sample / kTurn % 2 == 1;
    Timed(m_turn, [&] {
        if (vertical)
            m_vertical.Add(new PoseSensorData(m_turns[1][at]));
        else
            m_horizontal.Add(new PoseSensorData(m_turns[0][at]));
        m_recorded = vertical ? m_vertical.GetRecordRate() : m_horizontal.GetRecordRate();
    });
    if (vertical && sample % kTurn == kTurn - 1) Calibrate();
}

void Host::Calibrate()
{
    m_extra = Extra::Calibration;
    CInclineSensor_MagneticAdjust adjust;
    const std::unique_ptr<CInclineSensor_Filter_XY::Samples> horizontal(m_horizontal.Filter());
    const std::unique_ptr<CInclineSensor_Filter_XZ::Samples> vertical(m_vertical.Filter());
    for (int i = 0; horizontal && i < horizontal->GetSize(); ++i)
        adjust.Horizontal_Add(horizontal->GetAt(i));
    for (int i = 0; vertical && i < vertical->GetSize(); ++i)
        adjust.Vertical_Add(vertical->GetAt(i));
    m_outcome.calibrations += m_recorded == 100 && adjust.Adjust() == 1;
    m_horizontal.Clear();
    m_vertical.Clear();
}

void Host::Watch(const PoseSensorData& pose, double seconds)
{
    field::MonitorSample sample;
    sample.seconds = seconds;
    sample.tilt.pitch = pose.dPitch;
    sample.tilt.roll = pose.dRoll;
    sample.a = {pose.dMag_x, pose.dMag_y, pose.dMag_z};
    sample.b = field::SensorVector{-pose.dMag_x_2, -pose.dMag_y_2, pose.dMag_z_2};
    m_outcome.disturbed += m_monitor.Add(sample).disturbed;
}

void Host::Live(const std::string* epoch, const std::string& pose, field::Instant arrival)
{
    std::vector<field::Report> reports;
    m_fed = Clock::now();
    if (epoch != nullptr) m_bridge.FeedReceiver(*epoch, arrival);
    const Clock::time_point fedPose = Clock::now();
    m_bridge.FeedPose(pose, arrival);
    m_bridge.Tick(arrival);
    reports = m_bridge.Take();
    if (epoch == nullptr && reports.empty()) m_live.times.Add(Clock::now() - fedPose);
    for (const field::Report& report : reports)
        Receive(report);
    const field::Counters& counters = m_bridge.Count();
    m_outcome.stored = static_cast<long>(counters.stored);
    m_outcome.refused = static_cast<long>(counters.receiverBad + counters.receiverRefused
                                          + counters.posesBad + counters.posesRefused);
}

void Host::Receive(const field::Report& report)
{
    ++m_outcome.reports;
    m_outcome.live += report.tip.has_value();
    m_outcome.byOccupation += report.byOccupation;
    const double occupied = report.occupation ? report.occupation->seconds : 0.0;
    if (occupied != m_occupied && report.occupation) {
        ++m_outcome.estimates;
        if (m_extra == Extra::Nothing) m_extra = Extra::Estimate;
    }
    m_occupied = occupied;
}

std::vector<const Call*> Host::Calls() const
{
    return {&m_position,  &m_smoothing, &m_turn,     &m_watch,      &m_live,
            &m_sentences, &m_plain,     &m_estimate, &m_calibration};
}

Histogram Host::Quickest() const
{
    const long rounds = (m_outcome.samples + WorkingDay::kRound - 1) / WorkingDay::kRound;
    Histogram times;
    for (const Place& place : m_places)
        if (place.samples > 0 && 2 * place.samples >= rounds) times.Add(place.quickest);
    return times;
}

} // namespace soak
