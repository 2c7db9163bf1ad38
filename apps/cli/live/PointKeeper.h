// SPDX-License-Identifier: MIT
//
// Points that are stored while the pole is at work: the epochs of the last moments, averaged, go
// into a job; while the pole moves, the tip of its occupation, where that may be stored. What the
// gate forbids is refused with its reason, unless it is forced.
//
//   store NAME [CODE] [NOTE]    the last epochs that may be stored, ten at most, become a point, or the
//                               occupation does
//   store! NAME [CODE] [NOTE]   the last epoch, whatever its verdict; the point says "forced"
//   undo                        the last point of this run is declared void; its row stays
//   ack                         another base, or a step of the datum, is right
#pragma once

#include "field/Bridge.h"
#include "field/job/JobStore.h"
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// UTC by the host's clock.
field::JobTime HostTime();

class PointKeeper
{
public:
    static constexpr std::size_t kMostEpochs = 10;

    /// @param job  file; empty: nothing is stored
    /// @param program  that writes the job, with its version
    /// @param now  the time of a request
    /// @throws InputError where the job cannot be opened
    PointKeeper(const std::string& job, const field::Setup& setup, std::string program,
                std::function<field::JobTime()> now = HostTime);

    void Add(const field::Report& report);

    /// Answers a request with one sentence: "stored P1: ..." or "refused: ...".
    /// @param acknowledge  is called for `ack`
    std::string Do(std::string_view request, const std::function<void()>& acknowledge);

    std::uint64_t Stored() const { return m_stored.size(); }

private:
    struct Request
    {
        std::string name, code, note;
        bool isForced = false;
    };

    std::string Store(const Request& request);
    std::string Undo();
    std::string Obstacle(bool isForced) const;
    std::vector<field::Report> LastEpochs() const;

    field::Setup m_setup;
    std::string m_program;
    std::function<field::JobTime()> m_now;
    std::optional<field::JobStore> m_job;
    std::deque<field::Report> m_recent; // the last is the newest
    struct StoredPoint
    {
        std::int64_t id = 0;
        std::string name;
    };
    std::vector<StoredPoint> m_stored;
};

} // namespace cli
