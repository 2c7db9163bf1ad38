// SPDX-License-Identifier: MIT
//
// Any bytes of a receiver, or any bodies of sentences under right checksums. Cut in two at any place they give the same epochs, and what is given is in its
// range.
#include "field/nmea/EpochReader.h"
#include "field/nmea/Sentence.h"

#include <algorithm>
#include <cmath>
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

void CheckRanges(const field::Epoch& epoch)
{
    const bool fixed = epoch.fix != field::Fix::Invalid;
    const field::Geodetic& antenna = epoch.antenna;
    Demand(fixed == (std::fabs(antenna.latitude) <= 90.0 && std::fabs(antenna.longitude) <= 180.0));
    Demand(fixed == std::isfinite(antenna.ellipsoidalHeight));
    const field::Covariance3& sigma = epoch.sigma;
    Demand(sigma.nn >= 0.0 && sigma.ee >= 0.0 && sigma.hh >= 0.0);
    Demand(sigma.ne * sigma.ne <= sigma.nn * sigma.ee * (1.0 + 1e-9));
    Demand(epoch.lines.size() < 5000 && epoch.gsa.size() < 2000);
}

std::vector<field::Epoch> EpochsOf(std::string_view head, std::string_view tail)
{
    tiltpole::field::EpochReader reader;
    reader.Feed(head, {});
    reader.Feed(tail, {});
    reader.Tick(std::chrono::seconds(1));
    Demand(reader.Lines().bad <= reader.Lines().lines);
    return reader.Take();
}

// Each line under its right checksum, without which few texts come far.
std::string Sentences(std::string_view lines)
{
    std::string text;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        text += tiltpole::field::Framed(lines.substr(0, end));
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    if (data[0] % 2 == 0) bytes = Sentences(bytes);
    const std::size_t cut = bytes.size() * data[0] / 256;
    const auto whole = EpochsOf(bytes, {});
    const auto pieces =
        EpochsOf(std::string_view(bytes).substr(0, cut), std::string_view(bytes).substr(cut));
    Demand(whole.size() == pieces.size());
    for (std::size_t i = 0; i < whole.size(); ++i) {
        CheckRanges(whole[i]);
        Demand(whole[i].lines == pieces[i].lines && whole[i].gsa == pieces[i].gsa);
    }
    return 0;
}
