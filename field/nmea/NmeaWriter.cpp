// SPDX-License-Identifier: MIT
#include "field/nmea/NmeaWriter.h"

#include "field/nmea/EpochSigma.h"
#include "field/nmea/Numbers.h"
#include "field/nmea/ReasonName.h"
#include "field/nmea/SentenceText.h"
#include "field/nmea/StateName.h"
#include "field/tip/Covariance.h"
#include "survey/Angle.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace tiltpole::field {

namespace {

using ::field::Covariance3;
using ::field::Epoch;
using ::field::Fix;
using ::field::Geodetic;
using ::field::Reason;
using ::field::Setup;
using ::field::State;
using ::field::Tip;
using ::field::Verdict;

constexpr double kKnot = 1852.0 / 3600.0; // m/s

bool IsFinite(const Geodetic& point)
{
    return std::isfinite(point.latitude) && std::isfinite(point.longitude)
           && std::isfinite(point.ellipsoidalHeight);
}

// What an epoch says in all of its sentences.
struct Saying
{
    bool isTip = false;
    std::optional<Geodetic> point; // none: no coordinates go out
    Fix fix = Fix::Invalid;
    Covariance3 sigma;
    double lean = 0.0;        // [degrees], NaN: not known
    double declination = 0.0; // [degrees], NaN: not known
};

// Of the point under the antenna against the tip that is not known.
Covariance3 BlockedSigma(const Epoch& epoch, const Setup& setup, double lean)
{
    const double length = setup.poleLength + setup.phaseCenter;
    const double g = survey::Deg2Rad(std::isfinite(lean) ? lean : kAssumedLean);
    const double tilt = length * survey::Deg2Rad(setup.tiltSigma);
    const double reach = length * std::sin(g);
    const double plan = reach * reach / 2.0 + tilt * tilt;
    const double drop = std::isfinite(lean) ? reach * survey::Deg2Rad(setup.tiltSigma)
                                            : length * (1.0 - std::cos(g));
    constexpr double kLeast = kLeastBlockedSigma * kLeastBlockedSigma;
    Covariance3 sigma;
    sigma.nn = std::max(kLeast, epoch.sigma.nn + plan);
    sigma.ee = std::max(kLeast, epoch.sigma.ee + plan);
    sigma.hh = epoch.sigma.hh + drop * drop + setup.lengthSigma * setup.lengthSigma;
    return sigma;
}

Geodetic UnderAntenna(const Epoch& epoch, const Setup& setup, double lean)
{
    const double g = survey::Deg2Rad(std::isfinite(lean) ? lean : 0.0);
    Geodetic point = epoch.antenna;
    point.ellipsoidalHeight -= (setup.poleLength + setup.phaseCenter) * std::cos(g);
    return point;
}

bool IsDoubted(const Verdict& verdict)
{
    return std::any_of(verdict.reasons.begin(), verdict.reasons.end(),
                       [](const Reason& reason) { return reason.code == Reason::Code::Jump; });
}

Saying SayingOf(const Epoch& epoch, const std::optional<Tip>& tip, const Verdict& verdict,
                const Setup& setup, const PoleState& pole)
{
    Saying saying;
    saying.lean = tip ? tip->tilt : pole.lean;
    saying.declination = tip ? tip->declination : pole.declination;
    if (IsSent(tip, verdict, setup.enforce)) {
        saying.isTip = true;
        saying.point = tip->position;
        saying.fix = epoch.fix;
        saying.sigma = tip->sigma;
    } else if (epoch.fix == Fix::Invalid || !IsFinite(epoch.antenna) || IsDoubted(verdict)) {
        constexpr double kWide = kNoFixSigma * kNoFixSigma;
        saying.sigma = {kWide, 0.0, kWide, 0.0, 0.0, kWide};
    } else {
        saying.sigma = BlockedSigma(epoch, setup, saying.lean);
        if (setup.profile == ::field::Profile::QField) {
            saying.point = UnderAntenna(epoch, setup, saying.lean);
            saying.fix = Fix::Estimated;
        }
    }
    return saying;
}

std::string PointText(const std::optional<Geodetic>& point)
{
    return point ? PositionText(point->latitude, point->longitude) : ",,,";
}

std::string GgaText(const Epoch& epoch, const Setup& setup, const Saying& saying)
{
    std::optional<double> height;
    if (saying.point)
        height = saying.point->ellipsoidalHeight - epoch.geoidSeparation + setup.appHeight;
    const char quality = static_cast<char>('0' + static_cast<int>(saying.fix));
    return SentenceText("GNGGA")
        .Text(epoch.utc)
        .Text(PointText(saying.point))
        .Text(std::string_view(&quality, 1))
        .Text(epoch.text.satellites)
        .Text(epoch.text.hdop)
        .Number(height, 4)
        .Text("M")
        .Text(saying.point ? std::string_view(epoch.text.geoidSeparation) : std::string_view())
        .Text("M")
        .Text(epoch.text.correctionAge)
        .Text(epoch.text.station)
        .Framed();
}

std::string_view ModeOf(Fix fix)
{
    switch (fix) {
    case Fix::Fixed:
        return "R";
    case Fix::Float:
        return "F";
    case Fix::Differential:
        return "D";
    case Fix::Single:
        return "A";
    case Fix::Estimated:
        return "E";
    case Fix::Invalid:
        break;
    }
    return "N";
}

std::string DateText(const std::optional<std::chrono::sys_days>& date)
{
    if (!date) return {};
    const std::chrono::year_month_day day(*date);
    const int year = static_cast<int>(day.year()) % 100;
    std::string text;
    for (const unsigned part : {static_cast<unsigned>(day.day()),
                                static_cast<unsigned>(day.month()), static_cast<unsigned>(year)}) {
        text += static_cast<char>('0' + part / 10 % 10);
        text += static_cast<char>('0' + part % 10);
    }
    return text;
}

std::string RmcText(const Epoch& epoch, const Saying& saying)
{
    std::optional<double> knots;
    if (epoch.speed) knots = *epoch.speed / kKnot;
    std::optional<double> course;
    if (epoch.speed.value_or(0.0) >= kStandsBelow) course = epoch.course;
    const bool declined = std::isfinite(saying.declination);
    return SentenceText("GNRMC")
        .Text(epoch.utc)
        .Text(saying.fix == Fix::Invalid ? "V" : "A")
        .Text(PointText(saying.point))
        .Number(knots, 2)
        .Number(course, 2)
        .Text(DateText(epoch.date))
        .Number(std::fabs(saying.declination), 1)
        .Text(!declined                          ? ""
              : std::signbit(saying.declination) ? "W"
                                                 : "E")
        .Text(ModeOf(saying.fix))
        .Text("V")
        .Framed();
}

std::string GstText(const Epoch& epoch, const Covariance3& sigma)
{
    const PlanEllipse ellipse = EllipseOf(sigma);
    std::string orientation;
    AppendFixed(orientation, ellipse.orientation, 1);
    if (orientation == "180.0") orientation = "0.0";
    return SentenceText("GNGST")
        .Text(epoch.utc)
        .Text({})
        .Number(ellipse.major, 4)
        .Number(ellipse.minor, 4)
        .Text(orientation)
        .Number(std::sqrt(sigma.nn), 4)
        .Number(std::sqrt(sigma.ee), 4)
        .Number(std::sqrt(sigma.hh), 4)
        .Framed();
}

std::string StatusText(const Epoch& epoch, const std::optional<Tip>& tip, const Verdict& verdict,
                       const Saying& saying, int clients)
{
    std::array<char, 12> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), clients).ptr;
    std::optional<double> azimuth;
    std::optional<double> heading;
    std::optional<double> speed;
    if (saying.isTip) {
        azimuth = tip->azimuthTrue;
        heading = tip->headingTrue;
    }
    if (tip) speed = tip->antennaSpeed;
    return SentenceText("PTLTS,1")
        .Text(epoch.utc)
        .Text(StateName(verdict.state))
        .Text(verdict.reasons.empty() ? "" : ReasonName(verdict.reasons.front().code))
        .Number(saying.lean, 2)
        .Number(azimuth, 1)
        .Number(heading, 1)
        .Number(saying.declination, 2)
        .Number(speed, 3)
        .Text({digits.data(), static_cast<std::size_t>(end - digits.data())})
        .Framed();
}

std::string AntennaText(const Epoch& epoch, const Setup& setup)
{
    if (epoch.fix == Fix::Invalid || !IsFinite(epoch.antenna)) return {};
    return SentenceText("PTLTA,1")
        .Text(epoch.utc)
        .Text(PositionText(epoch.antenna.latitude, epoch.antenna.longitude))
        .Number(epoch.antenna.ellipsoidalHeight - epoch.geoidSeparation, 4)
        .Number(setup.poleLength + setup.phaseCenter, 4)
        .Framed();
}

} // namespace

bool IsSent(const std::optional<Tip>& tip, const Verdict& verdict, bool enforce)
{
    if (!tip || !IsFinite(tip->position) || tip->epoch.fix == Fix::Invalid) return false;
    return !IsDoubted(verdict) && !(enforce && verdict.state == State::Block);
}

std::string WriteEpoch(const Epoch& epoch, const std::optional<Tip>& tip, const Verdict& verdict,
                       const Setup& setup, const PoleState& pole, int clients)
{
    const Saying saying = SayingOf(epoch, tip, verdict, setup, pole);
    std::string text = GgaText(epoch, setup, saying);
    text += RmcText(epoch, saying);
    text += GstText(epoch, saying.sigma);
    if (saying.isTip) text += epoch.gsa;
    text += StatusText(epoch, tip, verdict, saying, clients);
    text += AntennaText(epoch, setup);
    return text;
}

} // namespace tiltpole::field
