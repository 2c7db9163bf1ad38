// SPDX-License-Identifier: MIT
#include "field/North.h"

#include "field/north/Ellipsoid.h"
#include "field/north/Wmm2025.h"
#include "survey/Angle.h"
#include "survey/Point.h"

#include <GeographicLib/SphericalHarmonic1.hpp>

#include <cmath>
#include <cstddef>
#include <exception>
#include <limits>
#include <vector>

namespace field {

namespace survey = tiltpole::survey;

using survey::Point3;
using tiltpole::field::kExcess;
using tiltpole::field::kWmmDegree;
using tiltpole::field::kWmmEpoch;
using tiltpole::field::kWmmRadius;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kLowest = -1000.0; // heights at which the model is valid [m]
constexpr double kHighest = 850000.0;
constexpr double kLeftOut = 0.26;      // sigma of the declination [degrees] ...
constexpr double kLeftOutByH = 5417.0; // ... and, divided by H, [degrees·nT]

// The place of a coefficient in the columns of the harmonic sum, order by order.
std::size_t PlaceOf(int n, int m)
{
    const int place = m * kWmmDegree - m * (m - 1) / 2 + n;
    return static_cast<std::size_t>(place);
}

// The sum refers to the columns, so that it cannot be moved.
class HarmonicSum
{
public:
    HarmonicSum()
        : m_c(PlaceOf(kWmmDegree, kWmmDegree) + 1), m_s(m_c.size()), m_cChange(m_c.size()),
          m_sChange(m_c.size())
    {
        for (const tiltpole::field::GaussTerm& term : tiltpole::field::Wmm2025Terms()) {
            const std::size_t place = PlaceOf(term.n, term.m);
            m_c[place] = term.g;
            m_cChange[place] = term.gChange;
            m_s[place] = term.h;
            m_sChange[place] = term.hChange;
        }
        // Sines begin with order 1.
        m_s.erase(m_s.begin(), m_s.begin() + kWmmDegree + 1);
        m_sChange.erase(m_sChange.begin(), m_sChange.begin() + kWmmDegree + 1);
        m_sum = GeographicLib::SphericalHarmonic1(m_c, m_s, kWmmDegree, m_cChange, m_sChange,
                                                  kWmmDegree, kWmmRadius,
                                                  GeographicLib::SphericalHarmonic1::SCHMIDT);
    }
    HarmonicSum(const HarmonicSum&) = delete;
    HarmonicSum& operator=(const HarmonicSum&) = delete;

    // The field −grad V at a place in axes of the Earth [nT].
    Point3 FieldAt(const Point3& place, double years) const
    {
        Point3 slope;
        m_sum(years, place.x, place.y, place.z, slope.x, slope.y, slope.z);
        return -kWmmRadius * slope;
    }

private:
    std::vector<double> m_c, m_s, m_cChange, m_sChange;
    GeographicLib::SphericalHarmonic1 m_sum;
};

Field FieldOf(double north, double east, double down)
{
    Field field;
    field.horizontal = std::hypot(north, east);
    field.strength = std::hypot(field.horizontal, down);
    field.declination = survey::Rad2Deg(std::atan2(east, north));
    field.dip = survey::Rad2Deg(std::atan2(down, field.horizontal));
    field.declinationSigma = std::hypot(kLeftOut, kLeftOutByH / field.horizontal);
    return field;
}

bool IsCovered(const Geodetic& place, double decimalYear)
{
    return std::fabs(place.latitude) <= 90.0 && std::isfinite(place.longitude)
           && place.ellipsoidalHeight >= kLowest && place.ellipsoidalHeight <= kHighest
           && decimalYear >= kFieldModelBegins && decimalYear <= kFieldModelEnds;
}

Field ModelAt(const Geodetic& place, double decimalYear)
{
    static const HarmonicSum sum;
    const double latitude = survey::Deg2Rad(place.latitude);
    const double longitude = survey::Deg2Rad(place.longitude);
    const double sinLat = std::sin(latitude);
    const double cosLat = std::cos(latitude);
    const double sinLon = std::sin(longitude);
    const double cosLon = std::cos(longitude);
    const double across = tiltpole::field::RadiiAt(sinLat).across;
    const double toAxis = (across + place.ellipsoidalHeight) * cosLat;
    const Point3 b = sum.FieldAt({toAxis * cosLon, toAxis * sinLon,
                                  ((1.0 - kExcess) * across + place.ellipsoidalHeight) * sinLat},
                                 decimalYear - kWmmEpoch);
    const double outward = b.x * cosLon + b.y * sinLon;
    return FieldOf(cosLat * b.z - sinLat * outward, b.y * cosLon - b.x * sinLon,
                   -(sinLat * b.z + cosLat * outward));
}

} // namespace

Field MagneticFieldAt(const Geodetic& place, double decimalYear)
{
    constexpr Field none{kNaN, kNaN, kNaN, kNaN, kNaN};
    if (!IsCovered(place, decimalYear)) return none;
    try {
        return ModelAt(place, decimalYear);
    } catch (const std::exception&) { // no memory for the coefficients
        return none;
    }
}

double DecimalYear(std::chrono::sys_days day, double secondsOfDay)
{
    using std::chrono::January;
    constexpr std::chrono::sys_days kFirst = std::chrono::year::min() / January / 1;
    constexpr std::chrono::sys_days kEnd = std::chrono::year::max() / January / 1;
    if (day < kFirst || day >= kEnd) return kNaN;
    const std::chrono::year year = std::chrono::year_month_day(day).year();
    const std::chrono::sys_days begin = year / January / 1;
    const std::chrono::sys_days end = (year + std::chrono::years(1)) / January / 1;
    constexpr double kSecondsOfDay = 86400.0;
    const double passed = static_cast<double>((day - begin).count()) + secondsOfDay / kSecondsOfDay;
    return static_cast<int>(year) + passed / static_cast<double>((end - begin).count());
}

} // namespace field
