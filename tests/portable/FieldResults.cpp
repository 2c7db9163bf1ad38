// SPDX-License-Identifier: MIT
#include "field/DisturbanceMonitor.h"
#include "field/ExactAttitude.h"
#include "field/Geodesy.h"
#include "field/North.h"
#include "field/Occupation.h"
#include "field/SpotCalibration.h"
#include "simulation/Occupation.h"
#include "tests/field/SimulatedOccupations.h"
#include "tests/portable/LibraryResults.h"
#include "tests/portable/Print.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace portable {

namespace {

using simulation::OccupationMotion;

constexpr double kLength = 2.0; // of the pole [m]
constexpr double kTurn = 360.0; // [degrees]

void Print(const std::string& name, const field::SensorVector& v, double size)
{
    for (const double value : {v.x, v.y, v.z})
        Number(name, value, size);
}

void Print(const std::string& name, const xyhCoordinate& p, double size)
{
    for (const double value : {p.x, p.y, p.h})
        Number(name, value, size);
}

void PrintAttitudes()
{
    for (int i = 0; i < 200; ++i) {
        field::Tilt tilt;
        tilt.pitch = -60.0 + 0.61 * i;
        tilt.roll = 55.0 - 0.53 * i;
        tilt.meaning = i % 2 == 0 ? field::PitchRoll::Slopes : field::PitchRoll::Turns;
        tilt.sensorType = 1 + i % 3;
        const std::string name = Name("attitude", i);
        const double heading = field::MagneticHeading(tilt, {300.0 - 3.0 * i, 2.0 * i, -450.0});
        Number(name + ".heading", heading, kTurn);
        Print(name, field::ExactTip({500.0, 300.0, 100.0}, kLength, tilt, 1.8 * i), 500.0);
        const field::Geodetic from{-89.0 + 0.89 * i, 179.9 - 1.79 * i, 10.0 * i};
        const field::Geodetic to = field::Offset(from, 0.4 - 0.004 * i, 0.01 * i, -1.9);
        Number(name + ".latitude", to.latitude, 90.0);
        Number(name + ".longitude", to.longitude, 180.0);
        Print(name + ".step", field::Difference(from, to), 6.4e6);
    }
}

void Print(const std::string& name, const field::OccupationEstimate& e, const xyhCoordinate& tip)
{
    Decision(name + ".advice", static_cast<int>(e.advice));
    Decision(name + ".reason", static_cast<int>(e.reason));
    Decision(name + ".has_tip", e.hasTip);
    for (const int count : {e.epochs, e.doubtful, e.rejected, e.gaps})
        Decision(name + ".count", count);
    Bytes(name + ".text", field::OccupationText(e));
    if (!e.hasTip) return;
    Print(name + ".tip", xyhCoordinate{e.tip.x - tip.x, e.tip.y - tip.y, e.tip.h - tip.h}, kLength);
    for (const double value : {e.ellipseMajor, e.ellipseMinor, e.heightHalfInterval})
        Number(name + ".region", value, 1.0);
    for (const double value :
         {e.heading, e.headingSigma, e.lean, e.turnSpread, e.ellipseAzimuth, e.magneticDifference})
        Number(name + ".angle", value, kTurn);
    Print(name + ".gyro", e.gyroBias, 1.0);
    for (const double value : {e.delay, e.delaySigma, e.disturbedPart, e.varianceFactor,
                               e.planResidual, e.heightResidual, e.ownMotionFit})
        Number(name + ".figure", value, 1.0);
    for (const double value :
         {e.tipStep, e.tipStepAt, e.lengthError, e.lengthSigma, e.sensorHeight})
        Number(name + ".check", value, kLength);
}

// At the test places of the model, whose published values the sum in stand-in/ has to find.
void PrintMagneticFields()
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/tests/data/wmm2025_places.txt");
    int place = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        std::istringstream words(line);
        std::vector<double> row(11);
        for (double& value : row)
            words >> value;
        const field::Field f = field::MagneticFieldAt({row[2], row[3], 1000.0 * row[1]}, row[0]);
        const std::string name = Name("magnetic", place++);
        for (const double value : {f.declination, f.dip})
            Number(name + ".angle", value, kTurn);
        for (const double value : {f.strength, f.horizontal, f.declinationSigma})
            Number(name + ".size", value);
        if (std::fabs(f.strength - row[8]) < 1e-3 && std::fabs(f.declination - row[10]) < 0.006)
            continue;
        std::fprintf(stderr, "%s: %g nT, %g degrees\n", line.c_str(), f.strength, f.declination);
        std::exit(1);
    }
    Decision("magnetic.places", place);
}

// Motions with nothing wrong, a slip, a wrong length, jumps and a magnet.
simulation::OccupationPlan PlanOf(OccupationMotion motion, int fault)
{
    simulation::OccupationPlan plan;
    plan.points = 1;
    plan.start = {500.0, 300.0, 100.0}; // small: tips keep their digits
    plan.motion = simulation::UsualMotion(motion);
    if (fault == 1)
        plan.motion.slips.push_back({
            .at = 3.0, .by = {0.04, 0.0, 0.0}
        });
    if (fault == 2) plan.poleError = 0.06;
    if (fault == 3)
        plan.jumps.push_back({
            .from = 2.0, .to = 3.0, .by = {0.3, 0.1, 0.2}
        });
    if (fault == 4)
        plan.magnets.push_back({.from = 1.0, .to = 4.0, .strength = 200.0, .azimuth = 70.0});
    return plan;
}

void PrintOccupations()
{
    int point = 0;
    for (const OccupationMotion motion : {OccupationMotion::LeanIn, OccupationMotion::OppositeLeans,
                                          OccupationMotion::Rock, OccupationMotion::Hold})
        for (int fault = 0; fault < 5; ++fault) {
            const std::string name = Name("occupation", point++);
            field_tests::OccupyEach(PlanOf(motion, fault), static_cast<std::uint64_t>(point),
                                    [&](field::Occupation& occupation, const xyhCoordinate& tip) {
                                        Print(name, occupation.Estimate(), tip);
                                        Print(name + ".no_gyros", occupation.EstimateWithoutGyros(),
                                              tip);
                                    });
        }
}

void Print(const std::string& name, const field::SpotMagnetometer& m)
{
    Decision(name + ".found", m.found);
    if (!m.found) return;
    Print(name + ".hard_iron", m.hardIron.value, 500.0);
    Print(name + ".hard_iron_sigma", m.hardIron.sigma, 1.0);
    for (const auto& row : m.softIron)
        for (const double value : row)
            Number(name + ".soft_iron", value, 1.0);
    for (const double value : {m.bias, m.biasSigma, m.dip, m.dipSigma})
        Number(name + ".angle", value, kTurn);
    for (const double value : {m.strength, m.strengthSigma, m.residual})
        Number(name + ".counts", value, 500.0);
}

void PrintSpots()
{
    for (int set = 0; set < 4; ++set) {
        simulation::OccupationPlan plan =
            PlanOf(set == 3 ? OccupationMotion::Rock : OccupationMotion::Free, set == 2 ? 1 : 0);
        if (set == 1) plan.spread.hardIron = 40.0;
        if (set == 3) plan.motion.duration = 20.0;
        field::SpotCalibration calibration({});
        for (const simulation::OccupationRow& row :
             simulation::SimulateOccupations(field_tests::UsualSensor(), {}, plan,
                                             static_cast<std::uint64_t>(set))
                 .rows) {
            const PoseSensorData& s = row.sample;
            field::InertialSample sample;
            sample.seconds = row.truth.pose.seconds;
            sample.rate = {s.dGyro_x, s.dGyro_y, s.dGyro_z};
            sample.acceleration = {s.dAcc_x, s.dAcc_y, s.dAcc_z};
            sample.magnetic = {s.dMag_x, s.dMag_y, s.dMag_z};
            calibration.Add(sample, {s.dMag_x_2, s.dMag_y_2, s.dMag_z_2});
            if (!row.antenna) continue;
            field::AntennaEpoch epoch;
            epoch.seconds = sample.seconds;
            epoch.position = field_tests::CoordinateOf(*row.antenna);
            calibration.Add(epoch);
        }
        const field::SpotResult found = calibration.Estimate();
        const std::string name = Name("spot", set);
        Decision(name + ".reason", static_cast<int>(found.reason));
        Bytes(name + ".text", field::SpotText(found));
        Decision(name + ".samples", found.samples);
        if (!found.hasValues) continue;
        Number(name + ".axis", found.axisX, 1.0);
        Number(name + ".axis", found.axisY, 1.0);
        Print(name + ".accelerometer", found.accelerometerBias.value, 1.0);
        Print(name + ".gyro", found.gyroBias.value, 1.0);
        Print(name + ".scale", found.gyroScale.value, 1.0);
        Print(name + ".tip", found.tip, 500.0);
        for (const double value : {found.sensorHeight, found.delay, found.turned, found.leanSpread,
                                   found.lengthError, found.tipStep})
            Number(name + ".figure", value, kTurn);
        Print(name + ".a", found.a);
        Print(name + ".b", found.b);
    }
}

void PrintDisturbances()
{
    field::DisturbanceMonitor monitor({.strength = 500.0, .dip = 66.0});
    const auto log = simulation::SimulateOccupations(field_tests::UsualSensor(), {},
                                                     PlanOf(OccupationMotion::LeanIn, 4), 3);
    int i = 0;
    for (const simulation::OccupationRow& row : log.rows) {
        const PoseSensorData& s = row.sample;
        field::MonitorSample now;
        now.seconds = row.truth.pose.seconds;
        now.tilt.pitch = s.dPitch;
        now.tilt.roll = s.dRoll;
        now.a = {s.dMag_x, s.dMag_y, s.dMag_z};
        now.b = field::SensorVector{-s.dMag_x_2, -s.dMag_y_2, s.dMag_z_2};
        const field::MonitorVerdict verdict = monitor.Add(now);
        const std::string name = Name("monitor", i++);
        Decision(name + ".suspect", verdict.suspect);
        Decision(name + ".disturbed", verdict.disturbed);
        Number(name + ".score", verdict.score, 1.0);
        Number(name + ".dip", verdict.shape.dip, 90.0);
    }
    for (const field::DisturbedSpan& span : monitor.Spans())
        Bytes("monitor.span", field::TextOf(span));
}

} // namespace

void PrintField()
{
    PrintAttitudes();
    PrintMagneticFields();
    PrintOccupations();
    PrintSpots();
    PrintDisturbances();
}

} // namespace portable
