// SPDX-License-Identifier: MIT
#include "field/nmea/EpochSigma.h"

#include "survey/Angle.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr double kMinute = 1852.0;   // of latitude [m]
constexpr double kUnknownHdop = 5.0; //
constexpr double kHeightRatio = 1.8; // of the height's sigma to that of the plan
constexpr int kFineMinutes = 6;      // decimals
constexpr int kFineMeters = 3;       // decimals

double PlanSigmaPerHdop(int quality)
{
    switch (quality) {
    case 4:
        return 0.012;
    case 5:
        return 0.4;
    case 2:
        return 0.8;
    case 1:
        return 3.0;
    default:
        return 10.0;
    }
}

// Variance of a text whose last digit is worth `unit`·10^-decimals.
double Resolution(double unit, int decimals, int fine)
{
    const double q = unit * std::pow(10.0, -decimals);
    return decimals < fine ? q * q / 12.0 : 0.0;
}

::field::Covariance3 Stated(const Gst& gst)
{
    ::field::Covariance3 sigma;
    sigma.nn = gst.latitude * gst.latitude;
    sigma.ee = gst.longitude * gst.longitude;
    sigma.hh = gst.height * gst.height;
    if (gst.major && gst.minor && gst.orientation) {
        const double a = *gst.major;
        const double b = *gst.minor;
        const double o = survey::Deg2Rad(*gst.orientation);
        const double most = gst.latitude * gst.longitude;
        sigma.ne = std::clamp((a * a - b * b) * std::sin(o) * std::cos(o), -most, most);
    }
    return sigma;
}

::field::Covariance3 Assumed(double plan)
{
    ::field::Covariance3 sigma;
    sigma.nn = plan * plan;
    sigma.ee = plan * plan;
    sigma.hh = sigma.nn * kHeightRatio * kHeightRatio;
    return sigma;
}

// What is stated of some axes only, where it is more than what is assumed.
void Widen(::field::Covariance3& sigma, const Gst& gst)
{
    const double plan = std::max(gst.latitude, gst.longitude);
    sigma.nn = std::max(sigma.nn, plan * plan);
    sigma.ee = std::max(sigma.ee, plan * plan);
    sigma.hh = std::max(sigma.hh, gst.height * gst.height);
}

} // namespace

::field::Covariance3 SigmaOf(const Gga& gga, const std::optional<Gst>& gst)
{
    constexpr double kWide = kNoFixSigma * kNoFixSigma;
    if (gga.quality == 0 || !gga.position) return {kWide, 0.0, kWide, 0.0, 0.0, kWide};
    const double hdop = gga.hdop.value_or(kUnknownHdop);
    ::field::Covariance3 sigma =
        gst && gst->Stated() ? Stated(*gst) : Assumed(hdop * PlanSigmaPerHdop(gga.quality));
    if (gst && !gst->Stated()) Widen(sigma, *gst);
    const double parallel = kMinute * std::cos(survey::Deg2Rad(gga.position->latitude));
    sigma.nn += Resolution(kMinute, gga.position->latitudeDecimals, kFineMinutes);
    sigma.ee += Resolution(parallel, gga.position->longitudeDecimals, kFineMinutes);
    sigma.hh += Resolution(1.0, gga.heightDecimals, kFineMeters);
    return sigma;
}

} // namespace tiltpole::field
