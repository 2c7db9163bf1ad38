// SPDX-License-Identifier: MIT
#include "field/North.h"
#include "field/north/Wmm2025.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

using field::Field;
using field::Geodetic;
using field::MagneticFieldAt;
using namespace std::chrono_literals;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The numbers of each line of a published file that does not begin with '#'. A text that is no number is
// NaN.
std::vector<std::vector<double>> NumbersOf(const std::string& name)
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/tests/data/" + name);
    std::vector<std::vector<double>> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        std::istringstream words(line);
        std::vector<double>& row = rows.emplace_back();
        for (std::string word; words >> word;) {
            std::istringstream text(word);
            double number = kNaN;
            text >> number;
            row.push_back(text.fail() ? kNaN : number);
        }
    }
    return rows;
}

bool IsUnknown(const Field& f)
{
    return std::isnan(f.declination) && std::isnan(f.dip) && std::isnan(f.strength)
           && std::isnan(f.horizontal) && std::isnan(f.declinationSigma);
}

constexpr Geodetic kBudapest{47.5, 19.05, 150.0};

} // namespace

TEST(MagneticField, AgreesWithTheOfficialTestValues)
{
    constexpr double kDegrees = 0.005 + 1e-9; // half of the last digit printed
    constexpr double kNanotesla = 0.05 + 1e-6;
    const auto rows = NumbersOf("wmm2025_test_values.txt");
    ASSERT_EQ(rows.size(), 12u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 19u);
        const Field f = MagneticFieldAt({row[2], row[3], 1000.0 * row[1]}, row[0]);
        EXPECT_NEAR(f.horizontal, row[7], kNanotesla) << row[0] << ' ' << row[2];
        EXPECT_NEAR(f.strength, row[8], kNanotesla) << row[0] << ' ' << row[2];
        EXPECT_NEAR(f.dip, row[9], kDegrees) << row[0] << ' ' << row[2];
        EXPECT_NEAR(f.declination, row[10], kDegrees) << row[0] << ' ' << row[2];
    }
}

// At 100 places, angles to half of their last digit; the components, printed to 1e-6 nT, agree to
// 0.4e-3 nT.
TEST(MagneticField, AgreesWithTheTestPlacesOfItsModel)
{
    constexpr double kDegrees = 0.005 + 1e-9;
    constexpr double kNanotesla = 1e-3;
    const auto rows = NumbersOf("wmm2025_places.txt");
    ASSERT_EQ(rows.size(), 100u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 11u);
        const Field f = MagneticFieldAt({row[2], row[3], 1000.0 * row[1]}, row[0]);
        EXPECT_NEAR(f.horizontal, row[7], kNanotesla) << row[0] << ' ' << row[2];
        EXPECT_NEAR(f.strength, row[8], kNanotesla) << row[0] << ' ' << row[2];
        EXPECT_NEAR(f.dip, row[9], kDegrees) << row[0] << ' ' << row[2];
        EXPECT_NEAR(f.declination, row[10], kDegrees) << row[0] << ' ' << row[2];
    }
}

TEST(MagneticField, HoldsThePublishedCoefficients)
{
    const auto& terms = tiltpole::field::Wmm2025Terms();
    const auto rows = NumbersOf("WMM2025.COF");
    ASSERT_GT(rows.size(), terms.size());
    for (std::size_t i = 0; i < terms.size(); ++i) {
        const auto& t = terms[i];
        const std::vector<double> ours{
            static_cast<double>(t.n), static_cast<double>(t.m), t.g, t.h, t.gChange, t.hChange};
        EXPECT_EQ(ours, rows[i + 1]) << "line " << i + 2;
    }
}

// Each end of its time belongs to it.
TEST(MagneticField, EndsWithItsModel)
{
    EXPECT_TRUE(IsUnknown(MagneticFieldAt(kBudapest, 2024.999)));
    EXPECT_FALSE(IsUnknown(MagneticFieldAt(kBudapest, 2025.0)));
    EXPECT_FALSE(IsUnknown(MagneticFieldAt(kBudapest, 2030.0)));
    EXPECT_TRUE(IsUnknown(MagneticFieldAt(kBudapest, 2030.001)));
    EXPECT_TRUE(IsUnknown(MagneticFieldAt(kBudapest, kNaN)));
}

TEST(MagneticField, IsUnknownAtPlacesThatAreNone)
{
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    constexpr Geodetic cases[] = {
        {kNaN,  19.0,      150.0  },
        {90.1,  19.0,      150.0  },
        {-90.1, 19.0,      150.0  },
        {47.5,  kNaN,      150.0  },
        {47.5,  kInfinite, 150.0  },
        {47.5,  19.0,      kNaN   },
        {47.5,  19.0,      -1001.0},
        {47.5,  19.0,      850001 },
    };
    for (const Geodetic& c : cases)
        EXPECT_TRUE(IsUnknown(MagneticFieldAt(c, 2026.0)))
            << c.latitude << ' ' << c.longitude << ' ' << c.ellipsoidalHeight;
}

TEST(MagneticField, IsKnownAtThePolesOfTheEarth)
{
    for (const double latitude : {90.0, -90.0}) {
        const Field f = MagneticFieldAt({latitude, 0.0, 0.0}, 2026.0);
        EXPECT_GT(f.strength, 50000.0);
        EXPECT_EQ(f.dip > 0.0, latitude > 0.0);
    }
}

// Longitudes that differ by a turn are one place.
TEST(MagneticField, GoesOnAcrossTheAntimeridian)
{
    const Field east = MagneticFieldAt({-17.0, 180.0, 0.0}, 2026.0);
    const Field west = MagneticFieldAt({-17.0, -180.0, 0.0}, 2026.0);
    EXPECT_NEAR(east.declination, west.declination, 1e-9);
    EXPECT_NEAR(east.strength, west.strength, 1e-6);
}

// The model's report: √(0.26² + (5417/H)²).
TEST(MagneticField, StatesWhatTheDeclinationLacks)
{
    const Field middle = MagneticFieldAt(kBudapest, 2026.9);
    EXPECT_NEAR(middle.declinationSigma,
                std::sqrt(0.26 * 0.26 + std::pow(5417.0 / middle.horizontal, 2.0)), 1e-12);
    EXPECT_NEAR(middle.declinationSigma, 0.365, 0.01); // H about 21,000 nT
    EXPECT_GT(MagneticFieldAt({80.0, 0.0, 0.0}, 2026.9).declinationSigma, 0.8);
}

TEST(DecimalYear, CountsTheDaysOfItsYear)
{
    using namespace std::chrono;
    EXPECT_EQ(field::DecimalYear(sys_days(2025y / January / 1)), 2025.0);
    EXPECT_EQ(field::DecimalYear(sys_days(2026y / July / 2), 43200.0), 2026.5);
    EXPECT_EQ(field::DecimalYear(sys_days(2028y / July / 2)), 2028.5); // a leap year
    EXPECT_EQ(field::DecimalYear(sys_days(2029y / December / 31), 86400.0), 2030.0);
    EXPECT_TRUE(std::isnan(field::DecimalYear(sys_days(2026y / July / 2), kNaN)));
}

// Years of the calendar library go from -32767 to 32767.
TEST(DecimalYear, IsNoneForADayBeyondTheCalendar)
{
    using namespace std::chrono;
    EXPECT_EQ(field::DecimalYear(sys_days(-32767y / January / 1)), -32767.0);
    EXPECT_EQ(field::DecimalYear(sys_days(32766y / January / 1)), 32766.0);
    for (const int day : {40'000'000, -40'000'000, INT_MAX, INT_MIN})
        EXPECT_TRUE(std::isnan(field::DecimalYear(sys_days(days(day))))) << day;
}
