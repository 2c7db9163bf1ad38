// SPDX-License-Identifier: MIT
#include "apps/cli/live/FindDelay.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/live/Replay.h"
#include "apps/live/Feed.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include "field/pose/PoseReader.h"
#include "field/pose/PoseRing.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <memory>

namespace cli {

namespace {

field::Instant InstantOf(double seconds)
{
    return std::chrono::duration_cast<field::Instant>(std::chrono::duration<double>(seconds));
}

// Epochs and poses of one rocking, with moments from which no delay was taken off.
class Rocking
{
public:
    Rocking(const field::Setup& setup, field::Instant span)
        : m_setup(setup), m_span(span), m_reader(MakePoseReader(setup.poseFormat))
    {}

    void Add(const field::Record& record)
    {
        if (record.channel != field::Channel::Pose) return;
        m_reader->Feed(record.bytes, record.at);
        for (const field::PoseSample& sample : m_reader->Take())
            m_samples.push_back(sample);
    }

    /// @return false once the span is over
    bool Add(const field::Report& report)
    {
        if (report.epoch.utc.empty()) return true;
        if (report.tip) m_declination = report.tip->declination;
        if (m_epochs.empty()) m_first = report.epoch.moment;
        if (report.epoch.moment - m_first > m_span) return false;
        m_epochs.push_back(report.epoch);
        return true;
    }

    int Print() const
    {
        const double declination = m_setup.north == field::NorthSource::Model ? m_declination : 0.0;
        const field::DelayResult found = FindDelay(m_epochs, Poses(), m_setup, declination);
        if (found.outcome != field::DelayOutcome::Found) {
            tables::Tell("no delay was found in {} epochs: {}\n", m_epochs.size(),
                         TextOf(found.outcome));
            return kNegative;
        }
        tables::WriteFile("-", DelayText(found, m_setup));
        return kDone;
    }

private:
    // Device time to host time by the least delay of all: a minute at most, in which clocks hardly
    // drift.
    field::PoseRing Poses() const
    {
        using Seconds = std::chrono::duration<double>;
        double offset = std::numeric_limits<double>::infinity();
        for (const field::PoseSample& sample : m_samples)
            if (sample.deviceSeconds)
                offset = std::min(offset, Seconds(sample.arrival).count() - *sample.deviceSeconds);
        field::PoseRing ring(m_span + std::chrono::seconds(20));
        for (field::PoseSample sample : m_samples) {
            sample.moment =
                sample.deviceSeconds ? InstantOf(*sample.deviceSeconds + offset) : sample.arrival;
            ring.Add(sample);
        }
        return ring;
    }

    field::Setup m_setup;
    field::Instant m_span;
    std::unique_ptr<field::PoseReader> m_reader;
    std::vector<field::PoseSample> m_samples;
    std::vector<field::Epoch> m_epochs;
    field::Instant m_first{};
    double m_declination = 0.0;
};

constexpr double kLongest = 60.0; // s

} // namespace

std::string DelayText(const field::DelayResult& found, const field::Setup& setup)
{
    constexpr double kAsSet = 0.02; // m
    const double pole = found.length - setup.phaseCenter;
    const std::string length =
        std::fabs(pole - setup.poleLength) <= kAsSet
            ? fmt::format("pole {:.3f} m as set", pole)
            : fmt::format("pole {:.3f} m, BUT {:.3f} m ARE SET", pole, setup.poleLength);
    return fmt::format("delay {:.0f} ms, sd {:.0f} (rms {:.0f} mm; {:.0f} mm without); {}; heading "
                       "offset {:+.1f} deg, not applied\n",
                       1000.0 * found.delay, std::ceil(1000.0 * found.sigma), 1000.0 * found.rms,
                       1000.0 * found.rmsWithout, length, found.headingOffset);
}

int FindDelayInRecording(const LiveOptions& options)
{
    field::Setup setup = SetupOf(options.pole);
    setup.delay = 0.0;
    Rocking rocking(setup, InstantOf(options.seconds.value_or(kLongest)));
    std::optional<field::Bridge> bridge;
    std::optional<live::Feed> feed;
    bool isOver = false;
    const auto take = [&] {
        for (const field::Report& report : bridge->Take())
            isOver = isOver || !rocking.Add(report);
    };
    const field::Instant last =
        ReadRecording(options.replay, [&](double started, const field::Record& record) {
            if (isOver) return;
            if (!bridge) {
                setup.started = started;
                feed.emplace(bridge.emplace(setup));
            }
            rocking.Add(record);
            feed->Play(record);
            take();
        });
    if (bridge && !isOver) {
        feed->Advance(last + live::Feed::kLastEpoch);
        take();
    }
    return rocking.Print();
}

int FindDelayLive(live::SessionSetup& setup, const LiveOptions& options)
{
    constexpr double kUsual = 20.0; // s
    constexpr double kPatience = 10.0;
    const double seconds = options.seconds.value_or(kUsual);
    setup.pole.delay = 0.0;
    Rocking rocking(setup.pole, InstantOf(seconds));
    live::Loop loop;
    live::Session::Listeners listeners;
    listeners.onRecord = [&](const field::Record& record) { rocking.Add(record); };
    listeners.onReport = [&](const field::Report& report) {
        if (!rocking.Add(report)) loop.Stop();
    };
    live::Session session(loop, setup, listeners);
    loop.OnSignals([&](int) { loop.Stop(); });
    const auto end = loop.After(InstantOf(seconds + kPatience), [&] { loop.Stop(); });
    tables::Tell("rock the pole for {:.0f} s, the tip on a fixed mark\n", seconds);
    session.Start();
    loop.Run();
    return rocking.Print();
}

} // namespace cli
