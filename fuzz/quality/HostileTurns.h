// SPDX-License-Identifier: MIT
//
// Two turns of a distorted pole, as well made as the input says, some of whose values are replaced.
#pragma once

#include "fuzz/Input.h"
#include "quality/Calibration.h"

#include <array>

namespace fuzz {

/// A gain of each axis, a share of x in the others, and an offset.
struct Iron
{
    double gain[3], share[2], offset[3];

    std::array<double, 3> Raw(double x, double y, double z) const
    {
        return {gain[0] * x + offset[0], gain[1] * y + share[0] * x + offset[1],
                gain[2] * z + share[1] * x + offset[2]};
    }
};

inline Iron IronOf(Input& input)
{
    Iron iron{};
    for (double& gain : iron.gain)
        gain = input.Between(0.8, 1.25);
    for (double& share : iron.share)
        share = input.Between(-0.1, 0.1);
    for (double& offset : iron.offset)
        offset = input.Between(-300.0, 300.0);
    return iron;
}

/// One of the values of a sample that a calibration reads becomes any number.
inline void Damage(PoseSensorData& sample, Input& input)
{
    double* const fields[] = {&sample.dPitch, &sample.dRoll,    &sample.dMag_x,   &sample.dMag_y,
                              &sample.dMag_z, &sample.dMag_x_2, &sample.dMag_y_2, &sample.dMag_z_2,
                              &sample.dAcc_x, &sample.dAcc_z,   &sample.dGyro_y,  &sample.dGyro_z};
    double& value = *fields[input.Below(12)];
    value = input.Below(2) == 0 ? input.Number() : value + input.Between(-200.0, 200.0);
}

/// A turn about z, or, for a pole laid down to the north, about y.
inline std::vector<PoseSensorData> TurnOf(const Iron (&iron)[2], bool vertical, Input& input)
{
    constexpr double kDegrees = 57.29577951308232;
    const int count = input.Below(8) == 0 ? input.Below(24) : 24 + input.Below(48);
    const double reach = input.Below(8) == 0 ? input.Between(0.0, 7.0) : 6.4;  // [rad]
    const double wobble = input.Below(4) == 0 ? input.Between(0.0, 0.3) : 0.0; // [rad]
    const bool moves = input.Below(2) == 0; // it has accelerations and gyros
    std::vector<PoseSensorData> turn;
    for (int i = 0; i < count; ++i) {
        const double angle = reach * i / std::max(1, count - 1);
        const double lean = vertical ? angle : wobble * std::sin(3.0 * angle);
        const double heading = vertical ? wobble * std::sin(2.0 * angle) : angle;
        // North, west, up, turned by the heading and then about the y axis.
        const double ahead = 210.0 * std::cos(heading), left = 210.0 * std::sin(heading);
        const double up = -450.0;
        const double x = ahead * std::cos(lean) - up * std::sin(lean);
        const double z = ahead * std::sin(lean) + up * std::cos(lean);
        const auto a = iron[0].Raw(x, left, z);
        const auto b = iron[1].Raw(-x, -left, z);
        PoseSensorData s;
        s.nHour = 10;
        s.nSecond = i / 5 % 60;
        s.nMinute = i / 300;
        s.dMag_x = a[0];
        s.dMag_y = a[1];
        s.dMag_z = a[2];
        s.dMag_x_2 = b[0];
        s.dMag_y_2 = b[1];
        s.dMag_z_2 = b[2];
        const double sine = std::clamp(-std::sin(lean), -1.0, 1.0);
        s.dPitch = kDegrees * std::asin(sine);
        s.dRoll = std::cos(lean) < 0.0 ? 180.0 : 0.0;
        if (moves) {
            s.dAcc_x = -std::sin(lean);
            s.dAcc_z = std::cos(lean);
            (vertical ? s.dGyro_y : s.dGyro_z) = 20.0;
        }
        if (!input.Ended() && input.Below(16) == 1) Damage(s, input);
        turn.push_back(s);
    }
    return turn;
}

inline quality::CalibrationTurns TurnsOf(Input& input)
{
    const Iron iron[2] = {IronOf(input), IronOf(input)};
    quality::CalibrationTurns turns;
    turns.horizontal = TurnOf(iron, false, input);
    turns.vertical = TurnOf(iron, true, input);
    return turns;
}

} // namespace fuzz
