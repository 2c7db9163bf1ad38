// SPDX-License-Identifier: MIT
#include "field/job/PointBlob.h"

#include <gtest/gtest.h>

namespace tiltpole::field {
namespace {

std::string Bytes(std::string_view hex)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    return bytes;
}

// As GDAL 3.6.2 writes longitude 19, latitude 47, height 100 in EPSG:4979.
constexpr const char* kByGdal =
    "475000017313000001E9030000000000000000334000000000008047400000000000005940";

TEST(PointBlob, HasTheBytesOfAnotherProgram)
{
    EXPECT_EQ(PointBlob({47.0, 19.0, 100.0}), Bytes(kByGdal));
}

void ExpectPoint(std::string_view hex)
{
    const auto point = PointOf(Bytes(hex));
    ASSERT_TRUE(point) << hex;
    EXPECT_EQ(point->latitude, 47.0) << hex;
    EXPECT_EQ(point->longitude, 19.0) << hex;
    EXPECT_EQ(point->ellipsoidalHeight, 100.0) << hex;
}

TEST(PointBlob, ReadsWhatOtherProgramsWrite)
{
    ExpectPoint(kByGdal);
    // Big-endian; with an envelope of x and y; the type of older programs.
    ExpectPoint("47500000000013730000"
                "0003E9"
                "403300000000000040478000000000004059000000000000");
    ExpectPoint("4750000373130000"
                "0000000000003340000000000000334000000000008047400000000000804740"
                "01E9030000000000000000334000000000008047400000000000005940");
    ExpectPoint("475000017313000001010000800000000000003340000000000080474000000000000059"
                "40");
}

TEST(PointBlob, RefusesWhatIsNoPointWithAHeight)
{
    const std::string good = Bytes(kByGdal);
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_FALSE(PointOf(good.substr(0, size))) << size;
    std::string changed = good;
    changed[3] = 0x11; // empty
    EXPECT_FALSE(PointOf(changed));
    changed = good;
    changed[3] = 0x03; // an envelope of x and y, where the point stands
    EXPECT_FALSE(PointOf(changed));
    EXPECT_FALSE(PointOf(changed + std::string(31, '\0')));
    changed = good;
    changed[3] = 0x0B; // an envelope that there is not
    EXPECT_FALSE(PointOf(changed));
    changed = good;
    changed[9] = 1; // a plane point
    changed[10] = 0;
    EXPECT_FALSE(PointOf(changed));
    changed = good;
    changed[0] = 'X';
    EXPECT_FALSE(PointOf(changed));
}

} // namespace
} // namespace tiltpole::field
