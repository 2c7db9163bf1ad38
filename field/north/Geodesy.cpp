// SPDX-License-Identifier: MIT
#include "field/Geodesy.h"

#include "field/north/Ellipsoid.h"
#include "survey/Angle.h"

#include <cmath>
#include <limits>

namespace field {

namespace survey = tiltpole::survey;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// What one radian of latitude and of longitude is long at a point [m].
struct RadianLengths
{
    double north;
    double east;
};

RadianLengths LengthsAt(const Geodetic& point)
{
    if (!(std::fabs(point.latitude) <= kLargestLatitude)) return {kNaN, kNaN};
    const double latitude = survey::Deg2Rad(point.latitude);
    const tiltpole::field::Radii radii = tiltpole::field::RadiiAt(std::sin(latitude));
    return {radii.meridian + point.ellipsoidalHeight,
            (radii.across + point.ellipsoidalHeight) * std::cos(latitude)};
}

} // namespace

Geodetic Offset(const Geodetic& from, double north, double east, double up)
{
    const RadianLengths radian = LengthsAt(from);
    const Geodetic to{from.latitude + survey::Rad2Deg(north / radian.north),
                      survey::Wrapped(from.longitude + survey::Rad2Deg(east / radian.east)),
                      from.ellipsoidalHeight + up};
    const bool known = std::isfinite(to.latitude + to.longitude + to.ellipsoidalHeight);
    return known ? to : Geodetic{kNaN, kNaN, kNaN};
}

xyhCoordinate Difference(const Geodetic& from, const Geodetic& to)
{
    const RadianLengths radian = LengthsAt(from);
    const xyhCoordinate step{survey::Deg2Rad(to.latitude - from.latitude) * radian.north,
                             survey::Deg2Rad(survey::Wrapped(to.longitude - from.longitude))
                                 * radian.east,
                             to.ellipsoidalHeight - from.ellipsoidalHeight};
    const bool known = std::isfinite(step.x + step.y + step.h);
    return known ? step : xyhCoordinate{kNaN, kNaN, kNaN};
}

} // namespace field
