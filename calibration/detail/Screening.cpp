#include "calibration/detail/Screening.h"

namespace detail {
namespace {

constexpr int kWindow = 10;              // samples
constexpr double kTurnedBackShare = 0.2; // above it a window is rejected

// A window of consecutive samples. The first one is scanned again where a window closed or was
// rejected before it, and so counts twice.
struct Window
{
    int first = 0;
    int samples = 0;
    int turnedBack = 0;

    bool IsRejected() const { return static_cast<double>(turnedBack) / samples > kTurnedBackShare; }
};

bool TurnedBack(const PoseSensorData* sample)
{
    return sample != nullptr && sample->GetTurnFlag() == 0;
}

// Counts samples from the window's start on; returns the index that closes it.
int CloseWindow(const SampleArray& samples, Window& window)
{
    const int last = CountOf(samples) - 1;
    int i = window.first;
    for (;; ++i) {
        if (samples.GetAt(i) != nullptr) ++window.samples;
        if (TurnedBack(samples.GetAt(i))) ++window.turnedBack;
        if (window.samples == kWindow || i == last) return i;
    }
}

} // namespace

SampleArray* FilterByAzimuth(const SampleArray* samples)
{
    if (samples == nullptr) return nullptr;
    std::unique_ptr<SampleArray> kept = NewSampleArray();
    if (!kept) return nullptr;

    Window window;
    while (window.first < CountOf(*samples) - 1) {
        const int end = CloseWindow(*samples, window);
        if (window.IsRejected()) {
            window = {window.first + 1, 1, 0};
            continue;
        }
        for (int i = window.first; i < end; ++i)
            if (samples->GetAt(i) != nullptr) kept->Add(samples->GetAt(i));
        window = {end, 1, TurnedBack(samples->GetAt(end)) ? 1 : 0};
    }
    return ReleaseUnlessEmpty(std::move(kept));
}

} // namespace detail
