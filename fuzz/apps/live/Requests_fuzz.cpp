// SPDX-License-Identifier: MIT
//
// Requests of any bytes, in any pieces: the same lines come out, none longer than allowed, each is answered
// with one sentence, and the job has the points that were said to be stored.
#include "apps/cli/live/PointKeeper.h"
#include "apps/live/Control.h"
#include "field/job/JobStore.h"
#include "fuzz/field/MemoryFiles.h"
#include "tests/field/job/SomeReports.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

void Demand(bool condition)
{
    if (!condition) std::abort();
}

std::vector<std::string> LinesOf(std::string_view bytes, std::size_t piece)
{
    std::vector<std::string> lines;
    live::LineCutter cutter;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
        cutter.Feed(bytes.substr(0, piece),
                    [&](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

// Taken for a job that is there already; what is opened is the memory file.
constexpr const char* kJob = "/proc/self/exe";

// A job without points.
void MakeJob()
{
    static const std::string bytes = [] {
        fuzz::MemoryFiles::Use();
        Demand(bool(field::JobStore::Open("fuzzed.gpkg", field::JobAccess::Write)));
        return fuzz::MemoryFiles::Content();
    }();
    fuzz::MemoryFiles::Content() = bytes;
}

// The last epochs of a still pole, some of which may not be stored.
void AddReports(cli::PointKeeper& keeper, unsigned count, unsigned wrong)
{
    using field::test::SomeReport;
    for (unsigned i = 0; i < count; ++i) {
        field::Report report = SomeReport(field::test::SomeTip(0.001 * i, 0.002 * (i % 3)));
        if (i + 1 == wrong) {
            report.verdict.state = field::State::Wait;
            report.verdict.reasons = {
                {field::Reason::Code::Moving, "antenna moves"}
            };
        } else if (i + 2 == wrong) {
            report.tip.reset();
        } else if (i + 3 == wrong) {
            report.byOccupation = true; // of which nothing is known
        }
        keeper.Add(report);
    }
}

struct Told
{
    std::size_t stored = 0;
    std::size_t undone = 0;
};

void CheckJob(const Told& told)
{
    const auto job = field::JobStore::Open(kJob, field::JobAccess::Read);
    Demand(bool(job));
    const auto points = job->Points();
    Demand(points && points->size() == told.stored);
    const auto isVoid = [](const field::JobPoint& point) { return point.voidReason.has_value(); };
    Demand(static_cast<std::size_t>(std::ranges::count_if(*points, isVoid)) == told.undone);
}

Told CheckAnswers(cli::PointKeeper& keeper, const std::vector<std::string>& lines)
{
    Told told;
    for (const std::string& line : lines) {
        Demand(line.size() <= live::LineCutter::kRequest);
        Demand(line.find('\n') == std::string::npos);
        int acknowledged = 0;
        const std::string answer = keeper.Do(line, [&] { ++acknowledged; });
        const bool isStored = answer.starts_with("stored ");
        const bool isUndone = answer.ends_with(" is void; its row stays in the job");
        told.stored += isStored ? 1U : 0U;
        told.undone += isUndone ? 1U : 0U;
        Demand(acknowledged == 1 ? answer.starts_with("acknowledged: ")
                                 : isStored || isUndone || answer.starts_with("refused: "));
        Demand(answer.find('\n') == std::string::npos);
    }
    return told;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 2), size - 2);
    const auto whole = LinesOf(bytes, bytes.size() + 1);
    Demand(LinesOf(bytes, data[0] % 64 + std::size_t{1}) == whole);

    const auto asks = [](const std::string& line) {
        return line.find("store") != std::string::npos;
    };
    const bool hasJob = data[0] >= 64 && std::ranges::any_of(whole, asks);
    if (hasJob) MakeJob();
    cli::PointKeeper keeper(hasJob ? kJob : "", field::Setup(), "fuzzer",
                            [] { return field::JobTime(std::chrono::milliseconds(0)); });
    AddReports(keeper, data[1] % 12, data[1] / 12);
    const Told told = CheckAnswers(keeper, whole);
    Demand(told.stored - told.undone == keeper.Stored());
    if (told.stored > 0) CheckJob(told);
    return 0;
}
