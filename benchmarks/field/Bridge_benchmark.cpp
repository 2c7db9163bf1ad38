// SPDX-License-Identifier: MIT
//
// What a live pole costs the host: ten poses of 0.2 s and the epoch after them, from the bytes to the
// sentences; and the epoch alone, blocked for want of a pose.
#include "field/Bridge.h"
#include "field/Recording.h"
#include "tests/field/bridge/LivePole.h"

#include <benchmark/benchmark.h>

namespace {

// Plays a standing pole, an epoch and the poses before it at a time.
void PlayPole(benchmark::State& state, bool poses)
{
    live_pole::Options options;
    options.epochRate = 5.0;
    options.pose = [poses](live_pole::PoseFields& pose) { pose.send = poses; };
    const auto records =
        live_pole::RecordsOf(live_pole::StandingTrack(1000.0, 6.0, -4.0, 40.0, 50.0), options);
    field::Bridge bridge(live_pole::TrackSetup());
    std::size_t next = 0;
    std::size_t reports = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (next == records.size()) {
            state.SkipWithError("the recording is too short");
            break;
        }
        while (next < records.size() && records[next].channel == field::Channel::Pose)
            field::Play(bridge, records[next++]);
        field::Play(bridge, records[next++]);
        reports += bridge.Take().size();
    }
    state.counters["reports"] = static_cast<double>(reports);
}

void Epoch(benchmark::State& state)
{
    PlayPole(state, true);
}
BENCHMARK(Epoch)->Iterations(4000)->Unit(benchmark::kMicrosecond);

void EpochWithoutPoses(benchmark::State& state)
{
    PlayPole(state, false);
}
BENCHMARK(EpochWithoutPoses)->Iterations(4000)->Unit(benchmark::kMicrosecond);

} // namespace
