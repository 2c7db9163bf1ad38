// SPDX-License-Identifier: MIT
#include "apps/live/Banner.h"

#include "field/North.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <string_view>
#include <utility>

namespace live {

namespace {

std::string Line(std::string_view label, const std::string& text)
{
    return fmt::format("{:<10} {}\n", label, text);
}

double Seconds(field::Instant span)
{
    return std::chrono::duration<double>(span).count();
}

// GGA of "$GNGGA,..."; empty for other text.
std::string_view TypeOf(std::string_view line)
{
    constexpr std::size_t kAt = 3, kLength = 3;
    const std::size_t comma = line.find(',');
    return comma == kAt + kLength && line.front() == '$' ? line.substr(kAt, kLength)
                                                         : std::string_view();
}

} // namespace

Banner::Banner(const field::Setup& setup, std::string config, std::string poseFormat)
    : m_setup(setup), m_config(std::move(config)), m_poseFormat(std::move(poseFormat))
{}

std::string Banner::Opening(const std::vector<std::string>& serving) const
{
    const double length = m_setup.poleLength + m_setup.phaseCenter;
    const std::string height =
        m_setup.appHeight == 0.0
            ? "SET THE ANTENNA HEIGHT OF THE APP TO 0"
            : fmt::format("SET THE ANTENNA HEIGHT OF THE APP TO {:.4f} m, which it takes off again",
                          m_setup.appHeight);
    std::string text =
        Line("height", fmt::format("antenna {:.4f} m above the tip; {}", length, height));
    for (const std::string& place : serving)
        text += Line("serving", place);
    if (m_setup.profile == field::Profile::QField)
        text += Line("app", "switch on its limit on accuracy: a tip that is not known is sent as "
                            "quality 6 with a sd of 0.3 m or more");
    return text;
}

void Banner::Add(const field::Report& report, const field::Counters& counters)
{
    if (m_isTaken || report.epoch.utc.empty()) return;
    if (m_epochs++ == 0) m_first = report.epoch.arrival;
    // The first epochs are complete only after a while: until the receiver's order is known.
    constexpr std::uint64_t kUnknown = 6;
    if (m_epochs <= kUnknown && report.epoch.arrival - m_first < std::chrono::seconds(1)) {
        m_posesSince = report.epoch.arrival;
        m_posesBefore = counters.poses;
    }
    m_poses = counters.poses;
    std::string_view rest = report.epoch.lines;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        const std::string type(TypeOf(rest.substr(0, end)));
        if (!type.empty() && std::find(m_types.begin(), m_types.end(), type) == m_types.end())
            m_types.push_back(type);
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    }
    m_last = report;
    if (report.tip) m_tip = report.tip;
}

std::optional<std::string> Banner::Take()
{
    if (m_isTaken || !m_last || m_last->epoch.arrival - m_first < kListens) return std::nullopt;
    m_isTaken = true;
    return Line("receiver", ReceiverText()) + Line("pose", PoseText()) + Line("north", NorthText())
           + Warnings();
}

std::string Banner::ReceiverText() const
{
    const field::Epoch& epoch = m_last->epoch;
    const double rate =
        static_cast<double>(m_epochs - 1) / std::max(Seconds(epoch.arrival - m_first), 1e-3);
    const std::string station =
        epoch.station.empty() ? std::string() : ", station " + epoch.station;
    return fmt::format("{} at {:.3g} Hz, {} decimals{}", fmt::join(m_types, " "),
                       rate < 1.0 ? rate : std::round(rate), epoch.minuteDecimals, station);
}

std::string Banner::PoseText() const
{
    const double span = std::max(Seconds(m_last->epoch.arrival - m_posesSince), 1e-3);
    if (m_poses == m_posesBefore) return "nothing yet";
    std::string text = fmt::format("{} at {:.0f} Hz", m_poseFormat,
                                   static_cast<double>(m_poses - m_posesBefore) / span);
    if (!m_tip) return text;
    text += m_tip->pose.deviceSeconds ? ", device clock" : ", without a clock of its own";
    if (m_setup.oneMagnetometer) text += ", ONE magnetometer: no comparison of A and B";
    return text;
}

std::string Banner::NorthText() const
{
    const double offset = m_setup.calibration.sensor.GetMagneticBiasAngle_A();
    const std::string source = m_config.empty() ? "no parameter file" : "bias A of " + m_config;
    if (m_setup.north == field::NorthSource::File)
        return fmt::format("as the file says: true = magnetic - {:+.2f} ({}); the model is off",
                           offset, source);
    if (!m_tip) return fmt::format("true, axis offset {:+.2f} ({})", offset, source);
    std::string sigma;
    if (const auto& date = m_tip->epoch.date) {
        const field::Field model =
            field::MagneticFieldAt(m_tip->position, field::DecimalYear(*date));
        if (std::isfinite(model.declinationSigma))
            sigma = fmt::format(" sd {:.2f}", model.declinationSigma);
    }
    return fmt::format(
        "true, declination {:+.2f}{} (WMM2025, valid to {:.1f}), axis offset {:+.2f} "
        "({})",
        m_tip->declination, sigma, field::kFieldModelEnds, offset, source);
}

std::string Banner::Warnings() const
{
    if (m_setup.north == field::NorthSource::File || !m_tip) return {};
    constexpr double kSuspicious = 2.0, kNear = 1.0; // degrees
    const double offset = m_setup.calibration.sensor.GetMagneticBiasAngle_A();
    if (std::fabs(offset) > 0.5 && std::fabs(offset + m_tip->declination) < kNear)
        return Line("warning", "the axis offset is the declination with the other sign: does the "
                               "file hold it already? Then use --north file");
    if (std::fabs(offset) > kSuspicious)
        return Line("warning", "an axis offset beyond 2 degrees is not usual: calibrate again, or "
                               "use --north file where the file holds the declination");
    return {};
}

} // namespace live
