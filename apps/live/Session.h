// SPDX-License-Identifier: MIT
//
// A pole at work: sources, the engine, sinks, the recorder, and what the surveyor is told.
#pragma once

#include "apps/live/Banner.h"
#include "apps/live/Feed.h"
#include "apps/live/Recorder.h"
#include "apps/live/Sink.h"
#include "apps/live/Source.h"
#include "field/Bridge.h"
#include "field/Occupation.h"
#include <functional>
#include <optional>
#include <vector>

namespace live {

struct SessionSetup
{
    field::Setup pole; ///< `started` is set by the session
    Endpoint receiver;
    Endpoint pose;
    std::vector<Endpoint> sinks;
    std::vector<Endpoint> status; ///< sinks that get one JSON object an epoch
    std::vector<AddressRange> allowed;
    /// After how much silence the receiver's serial port is opened again; 0: never.
    Instant reopen = Source::kSilence;
    bool corrections = false; ///< RTCM frames of clients go to the receiver
    std::string record;       ///< file; empty: none
    std::string config;       ///< name of the parameter file, for the banner
    std::string poseFormat;   ///< likewise
};

class Session
{
public:
    /// Who else wants to know; each may be missing.
    struct Listeners
    {
        std::function<void(const field::Report&)> onReport;
        std::function<void(const field::Record&)> onRecord; ///< before its reports
    };

    /// @param setup  outlives the session
    /// @throws InputError where a sink or the recording cannot be opened
    Session(Loop& loop, const SessionSetup& setup, Listeners listeners);

    /// Begins to read; the loop is stopped when the receiver's input has ended.
    void Start();

    /// What the surveyor asks for goes into the recording.
    void Key(std::string_view request);

    /// The surveyor confirms another base or a step of the datum.
    void Acknowledge();

    /// Where is served, as the banner says it: "tcp 127.0.0.1:10110 (...)".
    std::vector<std::string> Serving() const;

    /// Counters, for the end.
    std::string Counters() const;
    bool HasEpochs() const { return m_bridge.Count().epochs > 0; }

private:
    Server::Setup ServerSetup();
    std::unique_ptr<Source> MakeSource(const Endpoint& endpoint, field::Channel channel);
    void Arrive(field::Channel channel, std::string_view bytes);
    void Connected(field::Channel channel);
    void Correct(std::string_view frames);
    void EndSoon();
    void Send(const std::string& sentences);
    void Deliver();
    void Deliver(const field::Report& report);
    void TellState(const field::Report& report);
    void CountClients();

    Loop& m_loop;
    const SessionSetup& m_setup;
    Listeners m_listeners;
    field::Setup m_pole;
    field::Bridge m_bridge;
    Feed m_feed;
    Recorder m_recorder;
    Banner m_banner;
    std::unique_ptr<Source> m_receiver;
    std::unique_ptr<Source> m_pose;
    std::vector<std::unique_ptr<Sink>> m_sinks;
    std::vector<std::unique_ptr<Sink>> m_status;
    std::unique_ptr<Timer> m_ticks;
    std::unique_ptr<Timer> m_end;
    std::optional<std::pair<field::State, int>> m_told; // state and code of the first reason
    std::uint64_t m_corrections = 0;                    // bytes
    std::size_t m_clients = 0;                          // as the engine knows
};

} // namespace live
