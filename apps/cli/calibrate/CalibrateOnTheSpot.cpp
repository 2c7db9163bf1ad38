// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrateOnTheSpot.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/SpotSidecar.h"
#include "apps/cli/SummaryLine.h"
#include "apps/cli/calibrate/CalibrationRecord.h"
#include "apps/cli/occupy/OccupationLog.h"
#include "apps/cli/occupy/RateSpikes.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/Output.h"
#include "apps/tables/ReadFile.h"
#include "apps/tables/SampleLog.h"
#include <fmt/format.h>
#include <optional>

namespace cli {

namespace {

field::SpotResult ResultOf(const SpotOptions& options)
{
    tables::SampleLog log(options.log, {.antenna = true,
                                        .blankAntenna = true,
                                        .inertial = true,
                                        .mostBytes = tables::kMostInMemory,
                                        .onBadRow = {},
                                        .columns = options.columns});
    const auto seconds = FindColumn(log.Rows(), kRowSeconds, options.columns);
    if (!seconds) throw log.Rows().MissingColumns({kRowSeconds.key});
    const auto point = FindColumn(log.Rows(), kPointName, options.columns);
    std::optional<std::string> name;
    RateSpikes rows(options.log, [&]() -> std::optional<ReadRow> {
        if (!log.Next()) return std::nullopt;
        if (point) {
            const std::string now(log.Rows().Field(*point));
            if (name && *name != now)
                throw tables::InputError(options.log, "has more than one point: the tip must stay "
                                                      "on one while the pole is calibrated");
            name = now;
        }
        const PoseSensorData& pose = log.Pose();
        field::InertialSample sample;
        sample.seconds = tables::NumberIn(log.Rows(), *seconds, tables::kSeconds);
        sample.rate = {pose.dGyro_x, pose.dGyro_y, pose.dGyro_z};
        sample.acceleration = {pose.dAcc_x, pose.dAcc_y, pose.dAcc_z};
        sample.magnetic = {pose.dMag_x, pose.dMag_y, pose.dMag_z};
        LogRow row{sample, pose, std::nullopt};
        if (log.HasAntenna())
            row.epoch = field::AntennaEpoch{sample.seconds, log.Antenna(), 0.0, 0.0};
        return ReadRow{{}, log.HasAntenna(), log.Rows().Line(), row};
    });
    field::SpotCalibration calibration(
        {.poleLength = options.poleLength, .sensorType = options.sensorType});
    while (const auto read = rows.Next()) {
        const LogRow& row = *read->row;
        calibration.Add(row.sample, {row.pose.dMag_x_2, row.pose.dMag_y_2, row.pose.dMag_z_2});
        if (row.epoch) calibration.Add(*row.epoch);
    }
    rows.Conclude();
    return calibration.Estimate();
}

std::string Row(const char* label, const field::SpotVector& v, double factor, int decimals,
                const char* unit)
{
    return Line(label,
                fmt::format("{:.{}f} {:.{}f} {:.{}f}, sd {:.{}f} {:.{}f} {:.{}f} {}",
                            factor * v.value.x, decimals, factor * v.value.y, decimals,
                            factor * v.value.z, decimals, factor * v.sigma.x, decimals,
                            factor * v.sigma.y, decimals, factor * v.sigma.z, decimals, unit));
}

std::string MagnetometerText(const char* name, const field::SpotMagnetometer& m)
{
    if (!m.found) return Line(name, "reads 0 throughout: it keeps its default correction");
    std::string text = Row(name, m.hardIron, 1.0, 2, "counts of hard iron");
    text += Line("", fmt::format("soft iron to {:.4f}; readings fit to {:.1f} counts",
                                 m.softIronSigma, m.residual));
    text += Line("", fmt::format("field {:.1f} counts, sd {:.1f}; dip {:.2f}, sd {:.2f} degrees",
                                 m.strength, m.strengthSigma, m.dip, m.dipSigma));
    return text
           + Line("", fmt::format("heading bias {:.2f}, sd {:.2f} degrees, by the track", m.bias,
                                  m.biasSigma));
}

// Why there is no calibration to write; empty where there is one.
std::string Refusal(const SpotOptions& options, const field::SpotResult& found)
{
    if (!found.IsUsable()) return SpotText(found);
    if (options.out.empty() || found.a.found) return {};
    return "magnetometer A reads 0 throughout: it is broken or not connected, and a parameter file "
           "needs it";
}

std::string TextOf(const SpotOptions& options, const field::SpotResult& found)
{
    const std::string refusal = Refusal(options, found);
    std::string text = Line("log", options.log);
    text += Line("calibration", refusal.empty() ? SpotText(found) : "not usable: " + refusal);
    text +=
        Line("recording", fmt::format("{:.1f} s, {} samples, {} epochs, {} left out", found.seconds,
                                      found.samples, found.epochs, found.rejected));
    if (!found.hasValues) return text;
    text += Line("motion", fmt::format("turned by {:.0f} degrees, directions spread by {:.1f}",
                                       found.turned, found.leanSpread));
    text +=
        Line("antenna", fmt::format("fits to {:.1f} mm in plan, {:.1f} mm in height",
                                    1000.0 * found.planResidual, 1000.0 * found.heightResidual));
    text += Line("pole",
                 fmt::format("{:.3f} m; the track says {:+.1f} mm, sd {:.1f}", options.poleLength,
                             1000.0 * found.lengthError, 1000.0 * found.lengthSigma));
    text += Line("place", fmt::format("N {:.3f}  E {:.3f}  h {:.3f} m", found.tip.x, found.tip.y,
                                      found.tip.h));
    text += Line("axis", fmt::format("{:.3f} to x, {:.3f} to y, sd {:.3f} degrees", found.axisX,
                                     found.axisY, found.axisSigma));
    text += Row("accelerometer bias", found.accelerometerBias, 1000.0, 2, "mg");
    text += Row("gyro bias", found.gyroBias, 1.0, 4, "degrees/s");
    text += Row("gyro scale", found.gyroScale, 100.0, 2, "%");
    text += Line("sensor height",
                 fmt::format("{:.3f} m, sd {:.3f}", found.sensorHeight, found.sensorHeightSigma));
    // The estimate says how much too early epochs are stamped: the antenna is late by the opposite.
    text += Line("antenna delay", fmt::format("{:.1f} ms, sd {:.1f}", -1000.0 * found.delay,
                                              1000.0 * found.delaySigma));
    return text + MagnetometerText("magnetometer A", found.a)
           + MagnetometerText("magnetometer B", found.b);
}

} // namespace

int CalibrateOnTheSpot(const SpotOptions& options)
{
    const std::string sidecar = SpotSidecarOf(options.out);
    tables::KeepApart({"-", options.out, RecordOf(options.out), sidecar}, {options.log});
    CheckRecordName(options.out);
    CheckSidecarName(options.out);
    const SpotSidecar found{ResultOf(options), options.poleLength, options.sensorType, NowUtc()};
    const std::string refusal = Refusal(options, found.result);
    const nlohmann::ordered_json json = SpotJson(found, refusal);
    tables::WriteFile("-", options.json ? JsonText(json) : TextOf(options, found.result));
    if (!refusal.empty()) {
        if (!options.out.empty())
            tables::Tell("{}: not written, because the calibration cannot be used\n", options.out);
        return kNegative;
    }
    if (options.out.empty()) return kDone;
    tables::OutputFiles files;
    files.Write(sidecar, JsonText(json));
    SaveWithRecord(files, options.out, CalibrationOf(found.result), {}, {"spot", "usable"});
    files.Finish();
    return kDone;
}

} // namespace cli
