// SPDX-License-Identifier: MIT
//
// Lines of gpsd, any bytes or objects of drawn members: what comes out are sentences with right checksums,
// and a fix that a receiver can have comes back as the epoch that gpsd told.
#include "apps/live/GpsdJson.h"
#include "field/nmea/EpochReader.h"
#include "field/nmea/Sentence.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

void Demand(bool condition)
{
    if (!condition) std::abort();
}

void CheckSentences(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t end = text.find("\r\n");
        Demand(end != std::string_view::npos);
        Demand(tiltpole::field::ReadSentence(text.substr(0, end)).has_value());
        text.remove_prefix(end + 2);
    }
}

void FeedLines(std::string_view lines)
{
    GpsdJson gpsd;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size() - 1) + 1;
        CheckSentences(gpsd.Feed(lines.substr(0, end)));
        lines.remove_prefix(end);
    }
}

// Values from the front of the data; zeros once it is used up.
class Source
{
public:
    Source(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    std::uint32_t Bits()
    {
        std::uint32_t value = 0;
        const std::size_t size = std::min(sizeof value, m_size);
        std::memcpy(&value, m_data, size);
        m_data += size;
        m_size -= size;
        return value;
    }
    double Within(double low, double high)
    {
        return low + (high - low) * static_cast<double>(Bits()) / 4294967295.0;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

// As a receiver could stand anywhere below 84 degrees: the epoch has what gpsd said.
void CheckRoundTrip(Source source)
{
    const double latitude = source.Within(-84.0, 84.0);
    const double longitude = source.Within(-180.0, 180.0);
    const double height = source.Within(-400.0, 9000.0);
    const double separation = source.Within(-110.0, 90.0);
    const unsigned seconds = source.Bits() % 86400;
    const unsigned status = source.Bits() % 9;
    char line[512];
    std::snprintf(line, sizeof line,
                  "{\"class\":\"TPV\",\"mode\":3,\"status\":%u,"
                  "\"time\":\"2026-11-22T%02u:%02u:%02u.000Z\",\"lat\":%.9f,\"lon\":%.9f,"
                  "\"altHAE\":%.4f,\"altMSL\":%.4f,\"geoidSep\":%.3f}",
                  status, seconds / 3600, seconds / 60 % 60, seconds % 60, latitude, longitude,
                  height + separation, height, separation);
    GpsdJson gpsd;
    const std::string text = gpsd.Feed(line);
    CheckSentences(text);
    tiltpole::field::EpochReader reader;
    reader.Feed(text, {});
    reader.Tick(std::chrono::seconds(1));
    const auto epochs = reader.Take();
    Demand(epochs.size() == 1 && epochs[0].fix != field::Fix::Invalid);
    constexpr double kDigit = 0.51e-7 / 60.0 + 0.5e-9; // of GGA and of gpsd [degrees]
    const field::Geodetic& read = epochs[0].antenna;
    Demand(std::fabs(read.latitude - latitude) <= kDigit);
    const double turn = std::fabs(read.longitude - longitude);
    Demand(std::min(turn, 360.0 - turn) <= kDigit);
    Demand(std::fabs(read.ellipsoidalHeight - height - separation) < 0.002);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FeedLines({reinterpret_cast<const char*>(data), size});
    CheckRoundTrip({data, size});
    return 0;
}
