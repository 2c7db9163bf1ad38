// SPDX-License-Identifier: MIT
#include "field/nmea/RtcmFilter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

using tiltpole::field::Crc24q;
using tiltpole::field::RtcmFilter;

namespace {

// CRC-24Q as long division, a bit at a time.
std::uint32_t DividedCrc(const std::string& bytes)
{
    std::uint32_t rest = 0;
    for (const char byte : bytes + std::string(3, '\0')) {
        for (int bit = 7; bit >= 0; --bit) {
            rest =
                rest << 1U | (static_cast<std::uint8_t>(byte) >> static_cast<unsigned>(bit) & 1U);
            if ((rest & 0x1000000U) != 0) rest ^= 0x1864CFBU;
        }
    }
    return rest;
}

std::string Frame(const std::string& payload)
{
    std::string frame = {'\xD3', static_cast<char>(payload.size() >> 8U),
                         static_cast<char>(payload.size() & 0xFFU)};
    frame += payload;
    const std::uint32_t crc = DividedCrc(frame);
    for (const unsigned shift : {16U, 8U, 0U})
        frame += static_cast<char>(crc >> shift & 0xFFU);
    return frame;
}

std::string Noise(std::mt19937& random, std::size_t size)
{
    std::string noise;
    while (noise.size() < size)
        noise += static_cast<char>(random() & 0xFFU);
    return noise;
}

// Fed in pieces of 1 to `longest` bytes.
std::string Filtered(RtcmFilter& filter, std::string_view bytes, std::mt19937& random,
                     std::size_t longest)
{
    std::string passed;
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), 1 + random() % longest);
        passed += filter.Feed(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
    return passed;
}

} // namespace

TEST(RtcmFilter, KnowsThePublishedChecksum)
{
    // The example of the standard: message 1005 of station 2003.
    const std::string frame(
        "\xD3\x00\x13\x3E\xD7\xD3\x02\x02\x98\x0E\xDE\xEF\x34\xB4\xBD\x62\xAC\x09"
        "\x41\x98\x6F\x33\x36\x0B\x98",
        25);
    EXPECT_EQ(Crc24q(frame.substr(0, 22)), 0x360B98U);
    EXPECT_EQ(RtcmFilter().Feed(frame), frame);
}

TEST(RtcmFilter, PassesEveryFrameOfAMixAndNothingElse)
{
    std::mt19937 random(7);
    const std::string watch = "?WATCH={\"enable\":true,\"json\":true};\r\n";
    const std::string probes[] = {std::string("\xB5\x62\x0A\x04\x00\x00\x0E\x34", 8),
                                  std::string("\xA0\xA2\x00\x02\x84\x00\x00\x84\xB0\xB3", 10),
                                  "$PMTK605*31\r\n", std::string("\xD3\x02\x10", 3),
                                  std::string("\xD3\x00\x00", 3)};
    std::string mix = watch;
    std::string frames;
    for (int i = 0; i < 600; ++i) {
        const std::string frame = Frame(Noise(random, i % 100 == 0 ? 1023 : random() % 400));
        frames += frame;
        mix += frame;
        if (i % 3 == 0) mix += probes[random() % std::size(probes)];
        if (i % 50 == 0) mix += watch;
        if (i % 7 == 0) mix += Noise(random, random() % 40);
    }
    for (const std::size_t longest : {1U, 16U, 1400U, 1000000U}) {
        RtcmFilter filter;
        EXPECT_EQ(Filtered(filter, mix, random, longest), frames) << longest;
        EXPECT_EQ(filter.Frames(), 600U);
        EXPECT_LE(filter.Dropped(), mix.size() - frames.size());
    }
}

TEST(RtcmFilter, PassesAFrameAtItsLastByteWithinAFalseBeginning)
{
    RtcmFilter filter;
    const std::string frame = Frame("corrections");
    EXPECT_EQ(filter.Feed(std::string("\xD3\x03\xFF", 3) + frame.substr(0, frame.size() - 1)), "");
    EXPECT_EQ(filter.Feed(frame.substr(frame.size() - 1)), frame);
    EXPECT_EQ(filter.Dropped(), 3U);
}

TEST(RtcmFilter, DropsAFrameWithAnyBitChanged)
{
    const std::string frame = Frame("1005");
    for (std::size_t bit = 0; bit < frame.size() * 8; ++bit) {
        std::string changed = frame;
        changed[bit / 8] =
            static_cast<char>(static_cast<unsigned char>(changed[bit / 8]) ^ 1U << bit % 8);
        EXPECT_EQ(RtcmFilter().Feed(changed + std::string(1029, '\0')), "") << bit;
    }
}

TEST(RtcmFilter, LetsNoTextThrough)
{
    RtcmFilter filter;
    const std::string text = "$PUBX,41,1,0007,0003,115200,0*18\r\n?DEVICES;\r\n";
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(filter.Feed(text), "");
    EXPECT_GE(filter.Dropped(), 100 * text.size() - 2);
}
