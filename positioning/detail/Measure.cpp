// SPDX-License-Identifier: MIT
#include "positioning/detail/Measure.h"

namespace tiltpole::positioning {

namespace {

constexpr double kPlumb = 1e-6; // [rad], each tilt angle

} // namespace

// The elevation and the azimuth are converted to degrees and back, because the operations of the
// class return degrees: skipping this would change the last digits of nearly plumb poles.
Measured MeasureByFormulas(int sensorType, const Observation& sample)
{
    const SensorAxes axes = survey::AxesOf(sensorType);
    const double pitch = survey::Deg2Rad(sample.pitch);
    const double roll = survey::Deg2Rad(sample.roll);
    const Pose pose = survey::PoseOfRadians(pitch, roll);

    Measured m{};
    m.headingA = NormalizedHeading(pose, sample.a, Magnetometer::A, axes, sample.bias.a);
    m.headingB = NormalizedHeading(pose, sample.b, Magnetometer::B, axes, sample.bias.b);
    m.headingLessTilt = survey::AdjustedAzimuth(m.headingA - TiltDirectionOf(pose, axes));
    m.trust = Trust::Everything;

    const auto [u, v] = TiltAnglesOf(pitch, roll, axes);
    m.leans = !(std::fabs(u) < kPlumb && std::fabs(v) < kPlumb);
    if (!m.leans) {
        m.step = {-0.0, -0.0, -sample.length}; // adding -0.0 preserves the sign of a zero
        return m;
    }
    const double k1 = ProjectionAngleOf(pitch, roll, axes);
    const double azimuth = ProjectionAzimuthOf(m.headingA, k1, pitch, roll, sensorType);
    m.step = StepOf(sample.length, survey::Deg2Rad(ElevationOf(pitch, roll, axes)),
                    survey::Deg2Rad(azimuth));
    return m;
}

} // namespace tiltpole::positioning
