// SPDX-License-Identifier: MIT
//
// A point as a live pole stores it, from a receiver's lines and poses of its own.
#pragma once

#include "field/North.h"
#include "field/job/JobRecord.h"
#include "field/nmea/EpochReader.h"
#include "field/nmea/Sentence.h"
#include "field/tip/Covariance.h"
#include "field/tip/TipSolver.h"

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

namespace field::test {

inline constexpr std::chrono::milliseconds kPeriod{100}; // of epochs

/// The parameter file that leaves readings as they are.
inline std::string PlainCalibration()
{
    std::string text;
    for (const char* magnetometer : {"A", "B"})
        for (const char* key : {"a", "b", "c", "d", "e", "x0", "y0", "z0"}) {
            const bool scale = std::string(key) == "b" || std::string(key) == "e";
            text += std::string("[Magnetic") + magnetometer + "." + key + "]"
                    + (scale ? "1.0" : "0.0") + "\r\n";
        }
    for (const char* key : {"CoorTrans.dX", "CoorTrans.dY", "CoorTrans.dZ", "MagneticBiasAngle_A",
                            "MagneticBiasAngle_B"})
        text += std::string("[") + key + "]0.0\r\n";
    return text;
}

inline Setup PoleSetup()
{
    Setup setup;
    setup.poleLength = 2.0;
    setup.phaseCenter = 0.1165;
    setup.sensorType = 2;
    setup.delay = 0.120;
    setup.delaySigma = 0.007;
    setup.headingSigma = 1.2;
    setup.calibration.complete = true;
    setup.calibration.bytes = PlainCalibration();
    return setup;
}

/// GGA, RMC and GST of 2026-11-22 13:07:58 and n tenths of a second.
inline std::string ReceiverLines(int n)
{
    namespace inner = tiltpole::field;
    const std::string utc = "130758." + std::to_string(n) + "0";
    return inner::Framed(
               "GNGGA," + utc
               + ",4733.9633191,N,01900.5012567,E,4,12,0.72,193.4440,M,39.4290,M,1.0,0207")
           + inner::Framed("GNRMC," + utc
                           + ",A,4733.9633191,N,01900.5012567,E,0.01,,221126,5.8,E,R,V")
           + inner::Framed("GNGST," + utc + ",,0.0080,0.0080,0.0,0.0080,0.0080,0.0150");
}

/// When the receiver says so, as declinations need it.
inline double Year()
{
    const std::chrono::sys_days day{std::chrono::year{2026} / 11 / 22};
    return DecimalYear(day, 13 * 3600.0 + 7 * 60.0 + 58.2);
}

/// The pose at a moment: the pole falls forward by `rate` [degrees/s].
inline PoseSample PoseAt(Instant moment, double rate)
{
    PoseSample pose;
    pose.moment = moment;
    const double seconds = std::chrono::duration<double>(moment).count();
    pose.data.dPitch = 8.0 + rate * seconds;
    pose.data.dRoll = 5.0;
    pose.heading = 40.0;
    return pose;
}

/// `count` epochs, ten a second, as the bridge reports them.
inline std::vector<Report> ReportsOf(const Setup& setup, int count, double rate = 0.0)
{
    namespace inner = tiltpole::field;
    const inner::TipSolver solver(setup);
    std::vector<Report> reports;
    for (int n = 0; n < count; ++n) {
        Report report;
        inner::EpochReader reader;
        reader.Feed(ReceiverLines(n), Instant{});
        reader.Tick(std::chrono::seconds{1});
        report.epoch = reader.Take().at(0);
        report.epoch.moment = (n + 1) * Instant{kPeriod};
        const inner::TipSolution solution =
            solver.Solve(report.epoch, PoseAt(report.epoch.moment, rate), Year());
        report.tip = solution.tip;
        report.tip->sigma = inner::TipCovariance(solver, *report.tip,
                                                 inner::ErrorsOf(setup, solution.model, 0.0, {}));
        report.verdict.state = State::Store;
        reports.push_back(std::move(report));
    }
    return reports;
}

/// The same, stored as point `name` under the number 7.
inline JobRecord StoredPoint(const Setup& setup, int count, double rate = 0.0)
{
    JobRecord record = JobRecordOf(ReportsOf(setup, count, rate), JobTime{});
    record.point.id = 7;
    record.point.name = "P12";
    record.point.code = "KERB";
    record.point.gate = "store";
    return record;
}

} // namespace field::test
