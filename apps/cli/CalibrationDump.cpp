// SPDX-License-Identifier: MIT
#include "apps/cli/CalibrationDump.h"

#include "apps/cli/SampleLog.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "quality/CalibrationReport.h"
#include <fmt/format.h>

namespace cli {

namespace {

// The solver's own fits, one at a time.
struct Fits : CInclineSensor_MagneticAdjust
{
    using CInclineSensor_MagneticAdjust::EllipseFit;
    using CInclineSensor_MagneticAdjust::LineFit;
};

CSZMatrix Column(const std::vector<PoseSensorData>& samples, double PoseSensorData::*field)
{
    CSZMatrix column(static_cast<int>(samples.size()), 1);
    for (std::size_t i = 0; i < samples.size(); ++i)
        column(static_cast<int>(i), 0) = samples[i].*field;
    return column;
}

struct Axes
{
    char name;
    double PoseSensorData::*x;
    double PoseSensorData::*y;
    double PoseSensorData::*z;
};

constexpr Axes kAxes[] = {
    {'A', &PoseSensorData::dMag_x,   &PoseSensorData::dMag_y,   &PoseSensorData::dMag_z  },
    {'B', &PoseSensorData::dMag_x_2, &PoseSensorData::dMag_y_2, &PoseSensorData::dMag_z_2}
};

std::string FitsOf(const std::vector<PoseSensorData>& samples, const Axes& axes)
{
    Fits fits;
    CSZMatrix conic;
    CSZMatrix line;
    const CSZMatrix x = Column(samples, axes.x);
    const CSZMatrix y = Column(samples, axes.y);
    const CSZMatrix z = Column(samples, axes.z);
    const bool ellipse = fits.EllipseFit(x, y, conic) == 1;
    const bool lines = fits.LineFit(x, z, line) == 1 && fits.LineFit(y, z, line) == 1;
    const char* verdict = !ellipse ? "the ellipse fit fails: the horizontal turn is to blame"
                          : !lines
                              ? "the line fits fail: the horizontal turn is to blame"
                              : "all fits of the horizontal turn succeed: if this magnetometer "
                                "failed, the vertical turn is to blame, which a dump does not "
                                "hold";
    return fmt::format("  magnetometer {}: {}\n", axes.name, verdict);
}

std::string SectorsOf(const quality::TurnFigures& turn)
{
    std::string names;
    for (const quality::MissingSector& sector : turn.missing)
        names += (names.empty() ? "" : ", ") + sector.Name();
    return names.empty() ? "none" : names;
}

} // namespace

std::vector<std::vector<PoseSensorData>> ReadDump(const std::string& path)
{
    std::vector<std::vector<PoseSensorData>> attempts(1);
    SampleLog log(path, {.onBadRow = [&attempts](const std::string& message) {
                      // The next attempt's header is no sample; any other row that is none is not
                      // expected.
                      if (message.find("'dPitch'") == std::string::npos) throw InputError(message);
                      attempts.emplace_back();
                  }});
    while (log.Next())
        attempts.back().push_back(log.Pose());
    std::erase_if(attempts, [](const auto& attempt) { return attempt.empty(); });
    return attempts;
}

std::string DescribeAttempt(const std::vector<PoseSensorData>& samples, int sensorType)
{
    quality::CalibrationRun run;
    run.sensorType = sensorType;
    run.recorded.horizontal = run.used.horizontal = samples;
    const quality::CalibrationReport report = quality::AssessCalibration(run);
    const quality::TurnFigures& turn = report.horizontal;
    const PoseSensorData& first = samples.front();
    std::string text = fmt::format("Horizontal turn of {:02d}:{:02d}:{:02d}, {} samples\n",
                                   first.nHour, first.nMinute, first.nSecond, samples.size());
    text += fmt::format("  covered {:.0f} degrees, missing: {}\n", turn.covered, SectorsOf(turn));
    text += fmt::format("  raw readings off their circle: A {:.1f} %, B {:.1f} %\n",
                        100.0 * turn.circleA, 100.0 * turn.circleB);
    text += fmt::format("  spread of the raw field strength: A {:.1f} %, B {:.1f} %\n",
                        100.0 * report.a.spreadBefore, 100.0 * report.b.spreadBefore);
    for (const Axes& axes : kAxes)
        text += FitsOf(samples, axes);
    return text;
}

} // namespace cli
