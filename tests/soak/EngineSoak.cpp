// SPDX-License-Identifier: MIT
//
// Drives the library with samples of a working day and prints what it measured, as JSON; engine.py
// calls it and judges. One line a round of 80 s, one for all calls at the end.
//
// usage: engine_soak SAMPLES [paced | cold]
//   paced  a sample every 20 ms
//   cold   at once, and before each the caches are filled with something else
#include "tests/soak/Host.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

void PrintHeld(long samples)
{
    const soak::Held held = soak::HeldNow();
    std::printf("{\"samples\": %ld, \"blocks\": %ld, \"resident\": %ld, \"descriptors\": %d}\n",
                samples, held.blocks, held.resident, held.descriptors);
    std::fflush(stdout);
}

void PrintTimes(const char* name, const soak::Histogram& times)
{
    std::printf("\"%s\": {\"count\": %lld, \"p50\": %.3f, \"p99\": %.3f, \"p99.9\": %.3f, "
                "\"most\": %.3f}",
                name, static_cast<long long>(times.Count()), times.Percentile(0.5),
                times.Percentile(0.99), times.Percentile(0.999), times.Most());
}

void PrintAll(const soak::Host& host)
{
    const soak::Outcome& seen = host.Seen();
    std::printf(
        "{\"outcome\": {\"samples\": %ld, \"tips\": %ld, \"reports\": %ld, \"live\": %ld, "
        "\"stored\": %ld, \"byOccupation\": %ld, \"estimates\": %ld, \"calibrations\": %ld, "
        "\"refused\": %ld, \"disturbed\": %ld}, \"calls\": {",
        seen.samples, seen.tips, seen.reports, seen.live, seen.stored, seen.byOccupation,
        seen.estimates, seen.calibrations, seen.refused, seen.disturbed);
    const char* separator = "";
    for (const soak::Call* call : host.Calls()) {
        std::printf("%s\"%s\": {", separator, call->name);
        PrintTimes("clock", call->times);
        std::printf(", ");
        PrintTimes("processor", call->processor);
        std::printf("}");
        separator = ", ";
    }
    std::printf("%s\"sample, quickest of its place\": {", separator);
    PrintTimes("clock", host.Quickest());
    std::printf(", ");
    PrintTimes("processor", {});
    std::printf("}}}\n");
}

// Reads and writes more than the caches of a core and its table of pages hold. What other cores hold,
// too, and instructions of the first level may stay.
class OtherWork
{
public:
    void Run()
    {
        for (std::size_t i = 0; i < m_bytes.size(); i += kLine)
            m_bytes[i] = static_cast<unsigned char>(m_bytes[i] + 1);
    }

private:
    static constexpr std::size_t kLine = 64;
    std::vector<unsigned char> m_bytes = std::vector<unsigned char>(std::size_t{64} << 20);
};

} // namespace

int main(int argc, char** argv)
{
    const long samples = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    const std::string_view mode = argc > 2 ? argv[2] : "";
    const bool paced = mode == "paced";
    const bool cold = mode == "cold";
    if (samples < 1 || argc > 3 || (argc == 3 && !paced && !cold)) {
        std::fprintf(stderr, "usage: engine_soak SAMPLES [paced | cold]\n");
        return 2;
    }
    const auto day = std::make_unique<soak::WorkingDay>();
    const auto host = std::make_unique<soak::Host>();
    std::optional<OtherWork> otherWork;
    if (cold) otherWork.emplace();
    const auto start = soak::Clock::now();
    constexpr std::chrono::milliseconds kBetween(1000 / soak::WorkingDay::kRate);
    for (long i = 0; i < samples; ++i) {
        if (paced) std::this_thread::sleep_until(start + i * kBetween);
        if (otherWork) otherWork->Run();
        host->Take(*day, i);
        if (i % soak::WorkingDay::kRound == soak::WorkingDay::kRound - 1) PrintHeld(i + 1);
    }
    PrintAll(*host);
}
