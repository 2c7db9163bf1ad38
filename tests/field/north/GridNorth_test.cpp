// SPDX-License-Identifier: MIT
#include "field/north/GridNorth.h"

#include <GeographicLib/TransverseMercator.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using field::GridNorth;

struct PlaceCase
{
    const char* system;
    double latitude, longitude;
    double expected; // [degrees]
    double within;
};

constexpr double kRadian = 57.29577951308232;

} // namespace

// Another implementation's series for the same ellipsoid; the scale does not matter.
TEST(GridNorth, AgreesWithTheSeriesOfUtm)
{
    const auto grid = GridNorth::Of("EPSG:32634"); // UTM 34 north
    ASSERT_TRUE(grid);
    for (const double latitude : {5.0, 47.5, 70.0}) {
        for (const double longitude : {18.1, 20.9, 21.0, 23.9}) {
            double x = 0.0, y = 0.0, convergence = 0.0, scale = 0.0;
            GeographicLib::TransverseMercator::UTM().Forward(21.0, latitude, longitude, x, y,
                                                             convergence, scale);
            EXPECT_NEAR(grid->Convergence(latitude, longitude), convergence, 1e-7)
                << latitude << ' ' << longitude;
        }
    }
}

// East of a central meridian of the north, grid north lies east of true north, to the west west of it. The
// figures are (longitude − central meridian)·sin latitude, the first term of every such projection.
TEST(GridNorth, HasTheSignOfTheSideOfItsCentralMeridian)
{
    constexpr PlaceCase cases[] = {
        {"EPSG:32634", 47.5,  19.05, -1.95 * 0.7373,  0.01}, // UTM 34 north, 21 east
        {"EPSG:32755", -33.0, 149.0, -2.0 * 0.5446,   0.01}, // UTM 55 south, 147 east
        {"EPSG:3006",  62.0,  18.0,  3.0 * 0.8829,    0.01}, // SWEREF 99 TM, 15 east, northing first
        {"EPSG:23700", 47.5,  20.0,  0.9514 * 0.7341, 0.02}, // EOV, 19.0486 east of the map
        {"EPSG:2056",  46.8,  9.0,   1.5614 * 0.7311, 0.02}, // LV95, 7.4386 east
        {"EPSG:3857",  60.0,  25.0,  0.0,             1e-7}, // web maps: meridians are straight
    };
    for (const PlaceCase& c : cases) {
        const auto grid = GridNorth::Of(c.system);
        ASSERT_TRUE(grid) << c.system;
        EXPECT_NEAR(grid->Convergence(c.latitude, c.longitude), c.expected, c.within) << c.system;
    }
}

// A transverse Mercator on its own with axes to south and west: the grid stays that of the map.
TEST(GridNorth, HeedsTheDirectionsOfItsAxes)
{
    const auto southWest = GridNorth::Of("EPSG:2053"); // Hartebeesthoek94, 29 east, west and south
    ASSERT_TRUE(southWest);
    EXPECT_NEAR(southWest->Convergence(-29.0, 30.0), std::sin(-29.0 / kRadian), 0.01);
}

TEST(GridNorth, IsNoneOfWhatIsNoGrid)
{
    EXPECT_FALSE(GridNorth::Of(""));
    EXPECT_FALSE(GridNorth::Of("EPSG:0"));
    EXPECT_FALSE(GridNorth::Of("EPSG:4326"));          // latitude and longitude
    EXPECT_FALSE(GridNorth::Of("EPSG:5703"));          // heights
    EXPECT_FALSE(GridNorth::Of("EPSG:32661"));         // polar: both axes lead south
    EXPECT_FALSE(GridNorth::Of("+proj=utm +zone=34")); // an operation, no system
}

// UTM 34 with the directions of its axes named.
std::string WithAxes(const std::string& first, const std::string& second)
{
    return R"(PROJCRS["one of its own",
        BASEGEOGCRS["WGS 84",
            DATUM["World Geodetic System 1984", ELLIPSOID["WGS 84", 6378137, 298.257223563]]],
        CONVERSION["UTM zone 34N", METHOD["Transverse Mercator"],
            PARAMETER["Latitude of natural origin", 0, ANGLEUNIT["degree", 0.0174532925199433]],
            PARAMETER["Longitude of natural origin", 21, ANGLEUNIT["degree", 0.0174532925199433]],
            PARAMETER["Scale factor at natural origin", 0.9996, SCALEUNIT["unity", 1]],
            PARAMETER["False easting", 500000, LENGTHUNIT["metre", 1]],
            PARAMETER["False northing", 0, LENGTHUNIT["metre", 1]]],
        CS[Cartesian, 2], AXIS["first", )"
           + first + R"(], AXIS["second", )" + second + R"(], LENGTHUNIT["metre", 1]])";
}

TEST(GridNorth, NeedsAnAxisAlongTheMeridianAndOneAcrossIt)
{
    EXPECT_TRUE(GridNorth::Of(WithAxes("east", "north")));
    EXPECT_TRUE(GridNorth::Of(WithAxes("north", "east")));
    EXPECT_FALSE(GridNorth::Of(WithAxes("north", "northEast")));
    EXPECT_FALSE(GridNorth::Of(WithAxes("northEast", "east")));
    EXPECT_FALSE(GridNorth::Of(WithAxes("northEast", "southEast")));
}

TEST(GridNorth, IsUnknownWhereThereAreNoCoordinates)
{
    const auto grid = GridNorth::Of("EPSG:32634");
    ASSERT_TRUE(grid);
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(grid->Convergence(kNaN, 19.0)));
    EXPECT_TRUE(std::isnan(grid->Convergence(47.0, kNaN)));
    EXPECT_TRUE(std::isnan(grid->Convergence(89.95, 19.0)));
    EXPECT_TRUE(std::isnan(grid->Convergence(0.0, 111.0))) << "a quarter of a turn beside it";
}
