// SPDX-License-Identifier: MIT
//
// The extremes and sums of the readings of a turn, from which its center is computed.
#pragma once

#include "positioning/PoseSensorData.h"

namespace tiltpole::calibration {

/// Extreme samples and sums of a sequence of samples, updated sample by sample. The first of equals
/// is kept, and a NaN reading never replaces another.
template <class Plane>
struct TurnExtent
{
    const PoseSensorData* leastX = nullptr;
    const PoseSensorData* greatestX = nullptr;
    const PoseSensorData* leastSecond = nullptr;
    const PoseSensorData* greatestSecond = nullptr;
    double axisSum = 0.0; // of the readings along the turn's axis [counts]
    int count = 0;

    void Include(const PoseSensorData& sample)
    {
        axisSum += sample.*Plane::Axis;
        if (count++ == 0) {
            leastX = greatestX = leastSecond = greatestSecond = &sample;
            return;
        }
        if (sample.dMag_x < leastX->dMag_x) leastX = &sample;
        if (sample.dMag_x > greatestX->dMag_x) greatestX = &sample;
        if (sample.*Plane::Second < leastSecond->*Plane::Second) leastSecond = &sample;
        if (sample.*Plane::Second > greatestSecond->*Plane::Second) greatestSecond = &sample;
    }

    bool IsExtreme(const PoseSensorData* sample) const
    {
        return sample == leastX || sample == greatestX || sample == leastSecond
               || sample == greatestSecond;
    }

    double MiddleX() const { return (leastX->dMag_x + greatestX->dMag_x) / 2; }
    double MiddleSecond() const
    {
        return (leastSecond->*Plane::Second + greatestSecond->*Plane::Second) / 2;
    }
};

} // namespace tiltpole::calibration
