// SPDX-License-Identifier: MIT
#include "apps/cli/live/PointKeeper.h"

#include "apps/tables/Errors.h"
#include "apps/tables/Numbers.h"
#include "field/job/JobRecord.h"
#include "field/job/OccupationRecord.h"
#include <chrono>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace cli {

namespace {

using field::State;

std::string Refused(const std::string& why)
{
    return "refused: " + why;
}

// The first word of a text, which then begins after it.
std::string TakeWord(std::string_view& text)
{
    text = tables::Trim(text);
    const std::size_t end = text.find_first_of(" \t");
    const std::string word(text.substr(0, end));
    text.remove_prefix(end == text.npos ? text.size() : end);
    return word;
}

} // namespace

field::JobTime HostTime()
{
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

PointKeeper::PointKeeper(const std::string& job, const field::Setup& setup, std::string program,
                         std::function<field::JobTime()> now)
    : m_setup(setup), m_program(std::move(program)), m_now(std::move(now))
{
    if (job.empty()) return;
    auto opened = field::JobStore::Open(job, field::JobAccess::Write);
    if (!opened) throw tables::InputError(opened.error);
    m_job = std::move(*opened);
}

void PointKeeper::Add(const field::Report& report)
{
    m_recent.push_back(report);
    if (m_recent.size() > kMostEpochs) m_recent.pop_front();
}

std::string PointKeeper::Do(std::string_view request, const std::function<void()>& acknowledge)
{
    const std::string verb = TakeWord(request);
    if (verb == "ack") {
        acknowledge();
        return "acknowledged: base and datum are taken as right";
    }
    if (verb == "undo") return Undo();
    if (verb != "store" && verb != "store!")
        return Refused(fmt::format("'{:.40}' is not store, store!, undo or ack", verb));
    Request wanted;
    wanted.isForced = verb == "store!";
    wanted.name = TakeWord(request);
    wanted.code = TakeWord(request);
    wanted.note = tables::Trim(request);
    if (wanted.name.empty()) return Refused("a point needs a name: store NAME [CODE] [NOTE]");
    return Store(wanted);
}

// Why the newest epoch cannot be stored; empty where it can.
std::string PointKeeper::Obstacle(bool isForced) const
{
    if (!m_job) return "there is no job; start the program with --job FILE";
    if (m_recent.empty()) return "there is no epoch yet";
    const field::Report& last = m_recent.back();
    const auto& reasons = last.verdict.reasons;
    const std::string reason = reasons.empty() ? "the tip is not known" : reasons.front().text;
    if (!last.tip) return reason;
    return last.verdict.state == State::Store || isForced ? std::string() : reason;
}

// Back from the newest one, as far as all may be stored and none only by its occupation.
std::vector<field::Report> PointKeeper::LastEpochs() const
{
    std::vector<field::Report> epochs;
    for (auto it = m_recent.rbegin(); it != m_recent.rend(); ++it) {
        const bool mayBeStored = it->verdict.state == State::Store && it->tip && !it->byOccupation;
        if (!mayBeStored && !epochs.empty()) break;
        epochs.insert(epochs.begin(), *it);
        if (!mayBeStored) break;
    }
    return epochs;
}

std::string PointKeeper::Store(const Request& request)
{
    const std::string obstacle = Obstacle(request.isForced);
    if (!obstacle.empty()) return Refused(obstacle);
    field::JobRecord record = m_recent.back().byOccupation
                                  ? field::OccupationRecordOf(m_recent.back(), m_now())
                                  : field::JobRecordOf(LastEpochs(), m_now());
    if (!record.error.empty()) return Refused(record.error);
    record.point.name = request.name;
    record.point.code = request.code;
    record.point.note = request.note;
    const auto setup = m_job->AddSetup(field::JobSetupOf(m_setup, m_program, m_now()));
    if (!setup) return Refused(setup.error);
    record.point.setup = *setup;
    const auto id = m_job->AddPoint(record.point, record.epochs);
    if (!id) return Refused(id.error);
    m_stored.push_back({*id, request.name});
    const auto& sigma = record.point.sigma;
    return fmt::format("stored {}: {}{} epochs, {} left out, sd {:.0f} {:.0f} {:.0f} mm (N E h){}",
                       request.name, record.point.byOccupation ? "by the occupation, " : "",
                       record.point.epochs, record.point.leftOut, 1000.0 * std::sqrt(sigma.nn),
                       1000.0 * std::sqrt(sigma.ee), 1000.0 * std::sqrt(sigma.hh),
                       record.point.forced ? ", FORCED" : "");
}

std::string PointKeeper::Undo()
{
    if (!m_job || m_stored.empty()) return Refused("no point was stored in this run");
    const StoredPoint last = m_stored.back();
    const auto done = m_job->VoidPoint(last.id, "undone by the surveyor");
    if (!done) return Refused(done.error);
    m_stored.pop_back();
    return fmt::format("{} is void; its row stays in the job", last.name);
}

} // namespace cli
