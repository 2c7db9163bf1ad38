// SPDX-License-Identifier: MIT
#include "field/bridge/OccupationInput.h"

#include "field/Geodesy.h"
#include "survey/Correction.h"
#include "survey/Reading.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tiltpole::field {

using ::field::AntennaEpoch;
using ::field::InertialSample;
using ::field::OccupationSetup;
using ::field::Setup;
using Seconds = std::chrono::duration<double>;

OccupationSetup OccupationSetupOf(const Setup& setup, double declination)
{
    OccupationSetup occupation;
    occupation.poleLength = setup.poleLength + setup.phaseCenter;
    occupation.sensorType = setup.sensorType;
    const double offset = setup.calibration.sensor.GetMagneticBiasAngle_A();
    const bool byModel = setup.north == ::field::NorthSource::Model;
    occupation.magneticBias = byModel ? offset - declination : offset;
    occupation.headingSigma = std::max(occupation.headingSigma, setup.headingSigma);
    occupation.delaySigma = setup.delaySigma;
    occupation.poleSigma = std::max(occupation.poleSigma, setup.lengthSigma);
    return occupation;
}

InertialSample InertialSampleOf(const Setup& setup, const ::field::PoseSample& pose, bool disturbed)
{
    const PoseSensorData& data = pose.data;
    const survey::Reading a = survey::Corrected(setup.calibration.sensor.GetMagneticCorrectPar_A(),
                                                survey::ReadingOf(data, survey::Magnetometer::A));
    InertialSample sample;
    sample.seconds = Seconds(pose.moment).count();
    sample.rate = {data.dGyro_x, data.dGyro_y, data.dGyro_z};
    sample.acceleration = {data.dAcc_x, data.dAcc_y, data.dAcc_z};
    sample.magnetic = {a.x, a.y, a.z};
    sample.tilt.pitch = data.dPitch;
    sample.tilt.roll = data.dRoll;
    sample.disturbed = disturbed;
    return sample;
}

AntennaEpoch AntennaEpochOf(const ::field::Geodetic& origin, const ::field::Epoch& epoch)
{
    constexpr double kLeastSigma = 0.001; // [m]
    AntennaEpoch given;
    given.seconds = Seconds(epoch.moment).count();
    given.position = ::field::Difference(origin, epoch.antenna);
    given.planSigma = std::max(kLeastSigma, std::sqrt(0.5 * (epoch.sigma.nn + epoch.sigma.ee)));
    given.heightSigma = std::max(kLeastSigma, std::sqrt(epoch.sigma.hh));
    return given;
}

::field::Covariance3 CovarianceOf(const ::field::OccupationEstimate& estimate)
{
    const auto& c = estimate.covariance;
    return {c[0][0], c[0][1], c[1][1], c[0][2], c[1][2], c[2][2]};
}

} // namespace tiltpole::field
