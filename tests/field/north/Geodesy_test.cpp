// SPDX-License-Identifier: MIT
#include "field/Geodesy.h"

#include <GeographicLib/LocalCartesian.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using field::Difference;
using field::Geodetic;
using field::Offset;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kRadian = 57.29577951308232;

// Where the offset of 2 m really lies, against where it should, over all directions and leans [m].
double LargestError(double latitude)
{
    double largest = 0.0;
    for (const double longitude : {-180.0, -179.9999999, -77.0, 0.0, 19.05, 180.0}) {
        const Geodetic from{latitude, longitude, 250.0};
        const GeographicLib::LocalCartesian local(latitude, longitude, 250.0);
        for (int direction = 0; direction < 360; direction += 10) {
            for (const double up : {-2.0, 0.0, 1.0}) {
                const double plan = std::sqrt(4.0 - up * up);
                const double n = plan * std::cos(direction / kRadian);
                const double e = plan * std::sin(direction / kRadian);
                const Geodetic to = Offset(from, n, e, up);
                double x = 0.0, y = 0.0, z = 0.0;
                local.Forward(to.latitude, to.longitude, to.ellipsoidalHeight, x, y, z);
                largest = std::max(largest, std::hypot(x - e, y - n, z - up));
            }
        }
    }
    return largest;
}

bool IsUnknown(const Geodetic& g)
{
    return std::isnan(g.latitude) && std::isnan(g.longitude) && std::isnan(g.ellipsoidalHeight);
}

} // namespace

TEST(Geodesy, AgreesWithTheTangentPlane)
{
    for (const double latitude : {-85.0, -60.0, -33.0, 0.0, 12.0, 47.5, 70.0, 85.0})
        EXPECT_LT(LargestError(latitude), 4.2e-6) << latitude;
    EXPECT_LT(LargestError(89.0), 2.1e-5);
    EXPECT_LT(LargestError(-89.9), 2.1e-4);
}

TEST(Geodesy, LeadsNorthEastAndUp)
{
    const Geodetic from{47.5, 19.05, 150.0};
    const Geodetic north = Offset(from, 1.0, 0.0, 0.0);
    EXPECT_GT(north.latitude, from.latitude);
    EXPECT_EQ(north.longitude, from.longitude);
    const Geodetic east = Offset(from, 0.0, 1.0, 0.0);
    EXPECT_GT(east.longitude, from.longitude);
    EXPECT_EQ(east.latitude, from.latitude);
    EXPECT_EQ(Offset(from, 0.0, 0.0, -1.5).ellipsoidalHeight, 148.5);
}

TEST(Geodesy, FindsItsWayBack)
{
    for (const Geodetic from : {
             Geodetic{47.5,  19.05,          150.0 },
             Geodetic{-84.9, -180.0,         -20.0 },
             Geodetic{0.0,   179.9999999999, 8000.0}
    }) {
        const xyhCoordinate back = Difference(from, Offset(from, -0.31, 1.22, -1.96));
        const double digits = 1e-8 * 4.0; // half a digit of a longitude of 180 degrees is 1.6e-9 m
        EXPECT_NEAR(back.x, -0.31, digits);
        EXPECT_NEAR(back.y, 1.22, digits);
        EXPECT_NEAR(back.h, -1.96, digits);
    }
}

TEST(Geodesy, CrossesTheAntimeridian)
{
    const Geodetic east = Offset({-17.0, 179.99999, 0.0}, 0.0, 2.0, 0.0);
    EXPECT_LT(east.longitude, -179.99998);
    EXPECT_GE(east.longitude, -180.0);
    const Geodetic west = Offset({-17.0, -179.99999, 0.0}, 0.0, -2.0, 0.0);
    EXPECT_GT(west.longitude, 179.99998);
    EXPECT_LE(west.longitude, 180.0);
    EXPECT_NEAR(Difference(west, {-17.0, -179.99999, 0.0}).y, 2.0, 1e-7);
    EXPECT_NEAR(Difference({-17.0, -179.99999, 0.0}, west).y, -2.0, 1e-7);
}

TEST(Geodesy, HasNoResultNearThePolesOrWithoutNumbers)
{
    EXPECT_TRUE(IsUnknown(Offset({89.91, 0.0, 0.0}, 1.0, 0.0, 0.0)));
    EXPECT_TRUE(IsUnknown(Offset({-89.91, 0.0, 0.0}, 0.0, 0.0, 0.0)));
    EXPECT_TRUE(IsUnknown(Offset({kNaN, 0.0, 0.0}, 1.0, 0.0, 0.0)));
    EXPECT_TRUE(IsUnknown(Offset({0.0, kNaN, 0.0}, 1.0, 0.0, 0.0)));
    EXPECT_TRUE(IsUnknown(Offset({0.0, 0.0, 0.0}, 1.0, 0.0, kNaN)));
    EXPECT_TRUE(std::isnan(Difference({89.91, 0.0, 0.0}, {89.91, 0.0, 0.0}).x));
    EXPECT_TRUE(std::isnan(Difference({1.0, 0.0, 0.0}, {1.0, 0.0, kNaN}).x));
    EXPECT_FALSE(IsUnknown(Offset({89.9, 0.0, 0.0}, 1.0, 0.0, 0.0)));
}
