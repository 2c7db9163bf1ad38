// SPDX-License-Identifier: MIT
//
// Makes and destroys each control many times and paints each many times, and prints what the process held
// before and after, as JSON, a line each; controls.py calls it and judges.
//
// usage: controls_soak LIFETIMES PAINTS [KIND]
#include "framework/core/Paths.h"
#include "framework/gui/detail/WindowRegistry.h"
#include "tests/ScratchFolder.h"
#include "tests/controls/Endured.h"
#include "tests/soak/Measured.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <vector>

namespace {

using namespace tiltpole::controls::test;

constexpr long kOnScreen = 10; // paints that the screen shows at once

struct Everything
{
    soak::Held held = soak::HeldNow();
    long windows = static_cast<long>(framework::Windows().windows.size());
};

void Print(const char* control, const char* what, long count, const Everything& before,
           const Everything& after, long wrong, double seconds)
{
    std::printf("{\"control\": \"%s\", \"what\": \"%s\", \"count\": %ld, \"blocks\": %ld, "
                "\"resident\": %ld, \"descriptors\": %d, \"windows\": %ld, \"wrong\": %ld, "
                "\"held\": %ld, \"seconds\": %.3f}\n",
                control, what, count, after.held.blocks - before.held.blocks,
                after.held.resident - before.held.resident,
                after.held.descriptors - before.held.descriptors, after.windows - before.windows,
                wrong, after.held.blocks, seconds);
    std::fflush(stdout);
}

double ProcessorSeconds()
{
    return std::chrono::duration<double>(soak::ProcessorTime()).count();
}

void Live(const Kind& kind, long lifetimes, framework::Application& events)
{
    const auto run = [&](long rounds) {
        for (long i = 0; i < rounds; ++i) {
            kind.live();
            events.DispatchPending();
        }
    };
    run(20 + lifetimes / 20);
    const Everything before;
    const double begin = ProcessorSeconds();
    run(lifetimes);
    const double seconds = ProcessorSeconds() - begin;
    Print(kind.name, "lifetimes", lifetimes, before, {}, 0, seconds);
}

// The pictures of one period, which all later ones have to repeat. About a thousand are looked at.
class Pictures
{
public:
    Pictures(long period, long paints)
        : m_first(static_cast<std::size_t>(period)), m_every(std::max(1L, paints / 1000) | 1L)
    {}

    void Keep(Painted& painted, long n) { m_first[Place(n)] = PictureOf(painted.Window()); }
    void Compare(Painted& painted, long n)
    {
        if (n % m_every == 0) m_wrong += m_first[Place(n)] != PictureOf(painted.Window());
    }
    long Wrong() const { return m_wrong; }

private:
    std::size_t Place(long n) const { return static_cast<std::size_t>(n) % m_first.size(); }

    std::vector<std::uint64_t> m_first;
    long m_every;
    long m_wrong = 0;
};

void Paint(const Kind& kind, long paints, framework::Application& events)
{
    const std::unique_ptr<Painted> painted = kind.make();
    const long period = painted->Period();
    const long warm = (2 + paints / 20 / period) * period;
    const long last = warm + (paints + period - 1) / period * period;
    Pictures pictures(period, paints);
    const auto run = [&](long from, long to, auto look) {
        for (long n = from; n < to; ++n) {
            painted->Paint(n);
            if (n % kOnScreen == 0) events.DispatchPending();
            look(n);
        }
    };
    const auto keep = [&](long n) { pictures.Keep(*painted, n); };
    const auto compare = [&](long n) { pictures.Compare(*painted, n); };
    run(0, period, [](long) {}); // a view is fitted to the first points
    run(period, 2 * period, keep);
    run(2 * period, warm, compare);
    const Everything before;
    const double begin = ProcessorSeconds();
    run(warm, last, compare);
    const double seconds = ProcessorSeconds() - begin;
    Print(kind.name, "paints", last - warm, before, {}, pictures.Wrong(), seconds);
}

} // namespace

int main(int argc, char** argv)
try {
    const long lifetimes = argc > 2 ? std::strtol(argv[1], nullptr, 10) : 0;
    const long paints = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 0;
    if (lifetimes < 1 || paints < 1 || argc > 4) {
        std::fprintf(stderr, "usage: controls_soak LIFETIMES PAINTS [KIND]\n");
        return 2;
    }
    const std::string_view only = argc > 3 ? argv[3] : "";
    const ScratchFolder folder; // where plots keep their views
    framework::SetModulePath(CString(folder.Path("host").c_str()));
    framework::Application events(argc, argv, framework::Display::Memory);
    for (const Kind& kind : kKinds) {
        if (!only.empty() && only != kind.name) continue;
        Live(kind, lifetimes, events);
        if (kind.make) Paint(kind, paints, events);
    }
} catch (const std::exception& error) {
    std::fprintf(stderr, "controls_soak: %s\n", error.what());
    return 2;
}
