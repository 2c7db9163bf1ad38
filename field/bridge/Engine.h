// SPDX-License-Identifier: MIT
//
// The inside of field::Bridge: epochs wait for the poses around their moment, then become reports.
//
// What happens is decided by the instants of the bytes alone. Every call first brings the engine to
// its own instant: an epoch closes 60 ms after its GGA, and one that waits for a newer pose stops
// waiting 40 ms after its arrival, both with what had come by then, whenever that is noticed. Bytes
// are taken line by line and poses one by one, so that no call sees what a smaller piece would not
// have seen.
#pragma once

#include "field/Bridge.h"
#include "field/bridge/OccupationWatch.h"
#include "field/bridge/PoseInput.h"
#include "field/bridge/ReceiverInput.h"
#include "field/gate/Gate.h"
#include "field/tip/TipSolver.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tiltpole::field {

class Engine
{
public:
    static constexpr std::size_t kMostWaiting = 64;   // epochs; then the oldest waits no more
    static constexpr std::size_t kMostReports = 4096; // that nobody took; then the oldest go

    explicit Engine(const ::field::Setup& setup);

    // Where one of these throws, the engine has forgotten what was in progress.
    void FeedReceiver(std::string_view bytes, ::field::Instant arrival);
    void FeedPose(std::string_view bytes, ::field::Instant arrival);
    void FeedPose(const ::field::PoseSample& sample);
    void Tick(::field::Instant now);
    std::vector<::field::Report> Take();
    void OnSentences(std::function<void(const std::string&)> callback)
    {
        m_onSentences = std::move(callback);
    }
    void Acknowledge(::field::Reason::Code code) { m_gate.Acknowledge(code); }
    void RestartReceiver();
    void RestartPose();
    void SetClients(int clients) { m_clients = clients; }
    const ::field::Counters& Count() const { return m_counters; }

private:
    template <class Call>
    void WholeOrForgotten(const Call& call);
    void Forget();
    void Advance(::field::Instant now);
    void AddPose(const ::field::PoseSample& sample);
    void TakeEpochs();
    void Resolve();
    bool ResolveFirst(bool waitNoMore);
    void Complete(const TimedEpoch& timed, const ::field::PoseLookup& lookup);
    TipSolution Solved(const TimedEpoch& timed, const ::field::PoseSample& pose, Sight& sight);
    void CheckPlumb(::field::Instant moment, const ::field::PoseSample& pose, Sight& sight);
    FieldSight SeenField(const TipSolution& solution);
    void Finish(const TimedEpoch& timed, TipSolution&& solution, const Judgement& judgement);
    void AddOccupation(::field::Report& report, double declination);
    void EmitSilence(std::optional<::field::Reason> reason);
    void Emit(::field::Report&& report);
    void CountAll();

    ::field::Setup m_setup;
    ReceiverInput m_receiver;
    PoseInput m_poses;
    TipSolver m_solver;
    Gate m_gate;
    OccupationWatch m_occupation;
    bool m_disturbed = false;                // the field at the last epoch
    std::optional<::field::Instant> m_plumb; // moment at which gravity last bore out pitch and roll
    bool m_askew = false;                    // what it said last
    ::field::Instant m_now{};
    std::deque<TimedEpoch> m_waiting;
    std::deque<::field::Report> m_reports;
    std::optional<double> m_strengthAtStart; // of the model at the first place [nT]
    ::field::Counters m_counters;
    int m_clients = 0;
    std::function<void(const std::string&)> m_onSentences;
};

} // namespace tiltpole::field
