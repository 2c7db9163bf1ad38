// SPDX-License-Identifier: MIT
//
// Any tip, verdict and setup: what is written are sentences with right checksums, and what has coordinates
// reads back as the tip, or as quality 6.
#include "field/nmea/EpochReader.h"
#include "field/nmea/NmeaWriter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace {

void Demand(bool condition)
{
    if (!condition) std::abort();
}

// Takes values from the front of the data; zeros once it is used up.
class Source
{
public:
    Source(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    double Number()
    {
        double value = 0.0;
        const std::size_t size = std::min(sizeof value, m_size);
        std::memcpy(&value, m_data, size);
        m_data += size;
        m_size -= size;
        return value;
    }
    unsigned Choice(unsigned choices)
    {
        if (m_size == 0) return 0;
        --m_size;
        return *m_data++ % choices;
    }
    field::Geodetic Place() { return {Number(), Number(), Number()}; }
    double Variance() { return std::fmin(std::fabs(Number()), 1e6); }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Source source(data, size);
    field::Setup setup;
    setup.profile = source.Choice(2) == 0 ? field::Profile::Strict : field::Profile::QField;
    setup.enforce = source.Choice(2) == 0;
    field::Epoch epoch;
    epoch.utc = "130758.00";
    epoch.text = {"12", "0.72", "39.429", "1.0", "0207"};
    epoch.geoidSeparation = 39.429;
    constexpr field::Fix kFixes[] = {field::Fix::Invalid,      field::Fix::Single,
                                     field::Fix::Differential, field::Fix::Fixed,
                                     field::Fix::Float,        field::Fix::Estimated};
    epoch.fix = kFixes[source.Choice(std::size(kFixes))];
    epoch.antenna = source.Place();
    epoch.sigma = {source.Variance(), 0.0, source.Variance(), 0.0, 0.0, source.Variance()};
    if (source.Choice(2) == 0) epoch.speed = source.Number();
    epoch.course = source.Number();
    std::optional<field::Tip> tip;
    if (source.Choice(2) == 0) {
        tip.emplace();
        tip->epoch = epoch;
        tip->position = source.Place();
        tip->sigma = epoch.sigma;
        tip->tilt = source.Number();
        tip->declination = source.Number();
        tip->antennaSpeed = source.Number();
    }
    field::Verdict verdict;
    verdict.state = static_cast<field::State>(source.Choice(3));
    verdict.reasons = {
        {static_cast<field::Reason::Code>(source.Choice(34)), {}}
    };
    const tiltpole::field::PoleState pole{source.Number(), source.Number()};

    const std::string text = tiltpole::field::WriteEpoch(epoch, tip, verdict, setup, pole, 3);
    tiltpole::field::EpochReader reader;
    reader.Feed(text, {});
    reader.Tick(std::chrono::seconds(1));
    Demand(reader.Lines().lines >= 4 && reader.Lines().bad == 0);
    const auto epochs = reader.Take();
    if (epochs.empty()) return 0; // a height, speed or sigma that no receiver has
    const field::Epoch& read = epochs.front();
    if (read.fix == field::Fix::Invalid) return 0;
    const bool isTip = tiltpole::field::IsSent(tip, verdict, setup.enforce);
    Demand(isTip || (read.fix == field::Fix::Estimated && read.sigma.nn >= 0.0899));
    const field::Geodetic& sent = isTip ? tip->position : epoch.antenna;
    constexpr double kDigit = 1.0e-7 / 60.0;
    Demand(std::fabs(read.antenna.latitude - sent.latitude) < kDigit);
    Demand(std::fabs(read.antenna.longitude - sent.longitude) < kDigit);
    return 0;
}
