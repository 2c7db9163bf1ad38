// SPDX-License-Identifier: MIT
//
// The magnetic model at any place and time: no value outside its domain; inside, a field as strong as the
// Earth's, whose elements belong together, that repeats every 360 degrees of longitude and changes
// little over a kilometer and a day; and dates of any kind.
#include "field/North.h"
#include "fuzz/Input.h"

namespace {

using fuzz::Input;
using fuzz::Require;

constexpr double kDegrees = 57.29577951308232;

bool IsInside(const field::Geodetic& p, double year)
{
    return std::isfinite(p.longitude) && p.latitude >= -90.0 && p.latitude <= 90.0
           && p.ellipsoidalHeight >= -1000.0 && p.ellipsoidalHeight <= 850000.0
           && year >= field::kFieldModelBegins && year <= field::kFieldModelEnds;
}

bool HasNoValue(const field::Field& f)
{
    return std::isnan(f.declination) && std::isnan(f.dip) && std::isnan(f.strength)
           && std::isnan(f.horizontal) && std::isnan(f.declinationSigma);
}

void CheckElements(const field::Field& f)
{
    Require(f.strength > 10000.0 && f.strength < 80000.0);
    Require(f.horizontal >= 0.0 && f.horizontal <= f.strength);
    Require(std::fabs(f.dip) <= 90.0 && std::fabs(f.declination) <= 180.0);
    Require(std::fabs(f.horizontal - f.strength * std::cos(f.dip / kDegrees)) < 0.01);
    if (f.horizontal > 1.0)
        Require(std::fabs(f.declinationSigma - std::hypot(0.26, 5417.0 / f.horizontal)) < 1e-6);
}

struct Components
{
    double north, east, down;
};

Components ComponentsOf(const field::Field& f)
{
    return {f.horizontal * std::cos(f.declination / kDegrees),
            f.horizontal * std::sin(f.declination / kDegrees),
            f.strength * std::sin(f.dip / kDegrees)};
}

double Difference(const field::Field& f, const field::Field& g)
{
    const Components a = ComponentsOf(f);
    const Components b = ComponentsOf(g);
    return std::hypot(a.north - b.north, a.east - b.east, a.down - b.down);
}

void CheckNeighbors(const field::Geodetic& p, double year, const field::Field& f)
{
    // Its axes turn with the meridian, quickly beside a pole.
    const bool isByAPole = std::fabs(p.latitude) > 89.0;
    const double away = p.latitude > 0.0 ? -0.009 : 0.009; // a kilometer
    if (!isByAPole) {
        Require(Difference(f, field::MagneticFieldAt(
                                  {p.latitude + away, p.longitude, p.ellipsoidalHeight}, year))
                < 50.0);
        Require(Difference(f, field::MagneticFieldAt(
                                  {p.latitude, p.longitude + 360.0, p.ellipsoidalHeight}, year))
                < 0.01);
    }
    const double other = year > 2027.5 ? year - 1.0 / 365.0 : year + 1.0 / 365.0;
    Require(Difference(f, field::MagneticFieldAt(p, other)) < 2.0);
    const double higher = p.ellipsoidalHeight > 400000.0 ? p.ellipsoidalHeight - 1000.0
                                                         : p.ellipsoidalHeight + 1000.0;
    Require(Difference(f, field::MagneticFieldAt({p.latitude, p.longitude, higher}, year)) < 60.0);
}

// The day that begins a year, counted from 1970-01-01.
std::int64_t FirstDayOf(std::int64_t year)
{
    const std::int64_t before = year - 1;
    const auto floorOf = [](std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); };
    return 365 * before + floorOf(before, 4) - floorOf(before, 100) + floorOf(before, 400) - 719162;
}

// A date of the calendar has a year that is in it; other days have none.
void CheckDate(Input& input)
{
    const bool isNear = input.Below(4) != 0;
    unsigned code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8U | input.Byte();
    const auto days = static_cast<std::int32_t>(code);
    const std::int32_t day = isNear ? days >> 12 : days;
    const double seconds = input.Between(0.0, 86399.0);
    const double year = field::DecimalYear(std::chrono::sys_days(std::chrono::days(day)), seconds);
    if (std::isnan(year)) {
        Require(day < FirstDayOf(-32767) || day >= FirstDayOf(32767));
        return;
    }
    const auto whole = static_cast<std::int64_t>(std::floor(year));
    Require(FirstDayOf(whole) <= day && day < FirstDayOf(whole + 1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const bool any = input.Below(4) == 0;
    field::Geodetic place;
    place.latitude = any ? input.Bits() : input.Between(-90.0, 90.0);
    place.longitude = any ? input.Number() : input.Between(-180.0, 360.0);
    place.ellipsoidalHeight = any ? input.Bits() : input.Between(-1000.0, 850000.0);
    if (std::isfinite(place.longitude)) place.longitude = std::fmod(place.longitude, 1e6);
    const double year = any ? input.Number() + 2025.0 : input.Between(2025.0, 2030.0);
    const field::Field f = field::MagneticFieldAt(place, year);
    if (!IsInside(place, year)) {
        Require(HasNoValue(f));
        return 0;
    }
    CheckElements(f);
    if (std::fabs(place.longitude) <= 360.0) CheckNeighbors(place, year, f);
    CheckDate(input);
    return 0;
}
