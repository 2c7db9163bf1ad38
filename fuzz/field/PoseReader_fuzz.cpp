// SPDX-License-Identifier: MIT
//
// Poses out of any bytes, cut anywhere: every reader gives the same samples as with one piece, within its
// bounds, and what the samples hold passes through plausibility and ring.
#include "field/pose/Plausibility.h"
#include "field/pose/PoseReader.h"
#include "field/pose/PoseRing.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using field::PoseFormat;
using field::PoseSample;

std::vector<PoseSample> Read(PoseFormat format, std::string_view bytes, std::size_t piece)
{
    const auto reader = field::MakePoseReader(format);
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        reader->Feed(bytes.substr(at, piece), {});
    return reader->Take();
}

void Demand(bool holds)
{
    if (!holds) std::abort();
}

void Pass(const std::vector<PoseSample>& samples)
{
    tiltpole::field::Plausibility plausibility;
    static field::PoseRing ring(std::chrono::seconds(1));
    ring.Clear();
    field::Instant moment{};
    for (PoseSample sample : samples) {
        if (plausibility.Judge(sample) != tiltpole::field::PoseFault::None) continue;
        moment += std::chrono::milliseconds(10);
        sample.moment = moment;
        Demand(ring.Add(sample));
        ring.At(moment - std::chrono::milliseconds(5));
        ring.IsStill(moment);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) return 0;
    const auto format = static_cast<PoseFormat>(data[0] % 3);
    const std::size_t piece = data[1] + std::size_t{1};
    const std::string_view bytes(reinterpret_cast<const char*>(data + 2), size - 2);
    const std::vector<PoseSample> whole = Read(format, bytes, bytes.size() + 1);
    const std::vector<PoseSample> cut = Read(format, bytes, piece);
    Demand(whole.size() == cut.size() && whole.size() <= 4096);
    Pass(cut);
    return 0;
}
