// SPDX-License-Identifier: MIT
#include "quality/calibration/TiltEffect.h"

#include "quality/calibration/EightValues.h"

#include <algorithm>

namespace tiltpole::quality {
namespace {

using ::quality::TiltError;

// Pitch and roll.
using Tilt2 = Eigen::Vector2d;

double Shrunk(double value, double deviation)
{
    const double squares = value * value;
    return squares > 0.0 ? value * std::max(0.0, 1.0 - deviation * deviation / squares) : 0.0;
}

Tilt2 Shrunk(const TiltError& e)
{
    return {Shrunk(e.pitch, e.pitchDeviation), Shrunk(e.roll, e.rollDeviation)};
}

void TakeOff(std::vector<PoseSensorData>& samples, const Tilt2& offset, const Tilt2& drift)
{
    const double last = std::max(static_cast<double>(samples.size()) - 1.0, 1.0);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Tilt2 off = offset + (static_cast<double>(i) / last - 0.5) * drift;
        samples[i].dPitch -= off[0];
        samples[i].dRoll -= off[1];
    }
}

double DifferenceOf(const SphereFit& fit, const SphereFit& other, int sensorType,
                    Magnetometer which)
{
    return Compare(fit.correction, 0.0, other.correction, other.elevationHorizontal,
                   HeadingGrid(sensorType, which))
        .rms;
}

} // namespace

std::optional<std::array<TiltEffect, 2>> TiltEffectOf(const CalibrationTurns& turns, int sensorType,
                                                      const JointModel& model,
                                                      const ::quality::GyroTilt& seen)
{
    const Tilt2 step = Shrunk(seen.step);
    const Tilt2 drift = Shrunk(seen.drift);
    const Tilt2 horizontal = Shrunk(seen.offset) - step / 2.0;
    const Tilt2 vertical = Shrunk(seen.offset) + step / 2.0;

    // The fit again, and its difference.
    const auto refit = [&](const Tilt2& kept, double TiltEffect::*effect,
                           std::array<TiltEffect, 2>& effects) {
        CalibrationTurns right = turns;
        TakeOff(right.horizontal, horizontal - kept, drift);
        TakeOff(right.vertical, vertical - kept, drift);
        const JointModel other = FitBoth(right, sensorType);
        if (other.outcome != JointFitOutcome::Fitted) return false;
        effects[0].*effect = DifferenceOf(model.a, other.a, sensorType, Magnetometer::A);
        effects[1].*effect = DifferenceOf(model.b, other.b, sensorType, Magnetometer::B);
        return true;
    };
    std::array<TiltEffect, 2> effects;
    const bool changes = !step.isZero(0.0) || !drift.isZero(0.0);
    if (changes && !refit(vertical + drift / 2.0, &TiltEffect::inUse, effects)) return {};
    if (!refit(Tilt2::Zero(), &TiltEffect::trueTilt, effects)) return {};
    return effects;
}

} // namespace tiltpole::quality
