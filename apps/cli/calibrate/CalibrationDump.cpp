// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrationDump.h"

#include "apps/tables/ReadFile.h"
#include "apps/tables/SampleLog.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "quality/CalibrationReport.h"
#include "survey/Reading.h"
#include <fmt/format.h>

namespace cli {

namespace survey = tiltpole::survey;
using survey::Magnetometer;

namespace {

// Access to the fits of the solver.
struct Fits : CInclineSensor_MagneticAdjust
{
    using CInclineSensor_MagneticAdjust::EllipseFit;
    using CInclineSensor_MagneticAdjust::LineFit;
};

CSZMatrix Column(const std::vector<PoseSensorData>& samples, Magnetometer which,
                 double survey::Reading::*axis)
{
    CSZMatrix column(static_cast<int>(samples.size()), 1);
    for (std::size_t i = 0; i < samples.size(); ++i)
        column(static_cast<int>(i), 0) = ReadingOf(samples[i], which).*axis;
    return column;
}

std::string FitsOf(const std::vector<PoseSensorData>& samples, Magnetometer which)
{
    Fits fits;
    CSZMatrix conic;
    CSZMatrix line;
    const CSZMatrix x = Column(samples, which, &survey::Reading::x);
    const CSZMatrix y = Column(samples, which, &survey::Reading::y);
    const CSZMatrix z = Column(samples, which, &survey::Reading::z);
    const bool ellipse = fits.EllipseFit(x, y, conic) == 1;
    const bool lines = fits.LineFit(x, z, line) == 1 && fits.LineFit(y, z, line) == 1;
    const char* verdict = !ellipse ? "the ellipse fit fails: the horizontal turn is at fault"
                          : !lines
                              ? "the line fits fail: the horizontal turn is at fault"
                              : "all fits of the horizontal turn succeed: if this magnetometer "
                                "failed, the vertical turn is at fault, which the dump does not "
                                "contain";
    return fmt::format("  magnetometer {}: {}\n", which == Magnetometer::A ? 'A' : 'B', verdict);
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
    tables::SampleLog::Options options;
    options.mostBytes = tables::kMostInMemory;
    options.onBadRow = [&attempts](const std::string& message) {
        // Only the header of the next attempt may stand between samples.
        if (message.find("'dPitch'") == std::string::npos) throw tables::InputError(message);
        attempts.emplace_back();
    };
    tables::SampleLog log(path, std::move(options));
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
    for (const Magnetometer which : {Magnetometer::A, Magnetometer::B})
        text += FitsOf(samples, which);
    return text;
}

} // namespace cli
