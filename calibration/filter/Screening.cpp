// SPDX-License-Identifier: MIT
#include "calibration/filter/Screening.h"

namespace tiltpole::calibration {
namespace {

constexpr int kWindow = 10;    // samples
constexpr int kTurnedBack = 5; // a window is rejected when more than one in so many turned back

// A window of consecutive samples. After another window its first sample is scanned once more, and
// so counts twice.
struct Window
{
    std::size_t first = 0;
    int samples = 0;
    int turnedBack = 0;

    bool IsRejected() const { return turnedBack * kTurnedBack > samples; }
};

bool TurnedBack(const Candidate& candidate)
{
    return candidate.turnFlag == 0;
}

// Counts samples from the start of the window; returns the index that closes it.
std::size_t CloseWindow(Candidates candidates, Window& window)
{
    const std::size_t last = candidates.size() - 1;
    for (std::size_t i = window.first;; ++i) {
        if (candidates[i].sample != nullptr) ++window.samples;
        if (TurnedBack(candidates[i])) ++window.turnedBack;
        if (window.samples == kWindow || i == last) return i;
    }
}

} // namespace

SampleArray* FilterByAzimuth(const SampleArray* samples)
{
    if (samples == nullptr) return nullptr;
    std::vector<Candidate> candidates = CandidatesOf(*samples);
    return FilterByAzimuth(candidates);
}

SampleArray* FilterByAzimuth(Candidates candidates)
{
    auto kept = std::make_unique<SampleArray>();
    kept->SetSize(static_cast<INT_PTR>(candidates.size()));
    PoseSensorData** next = kept->GetData();
    Window window;
    while (window.first + 1 < candidates.size()) {
        const std::size_t end = CloseWindow(candidates, window);
        if (window.IsRejected()) {
            window = {window.first + 1, 1, 0};
            continue;
        }
        for (std::size_t i = window.first; i < end; ++i)
            if (candidates[i].sample != nullptr) *next++ = candidates[i].sample;
        window = {end, 1, TurnedBack(candidates[end]) ? 1 : 0};
    }
    kept->SetSize(next - kept->GetData());
    return ReleaseUnlessEmpty(std::move(kept));
}

} // namespace tiltpole::calibration
