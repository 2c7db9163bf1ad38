// SPDX-License-Identifier: MIT
//
// CInclineSensor_Filter_XY: records the turn about the z axis until all directions were seen, and
// leaves out what does not belong to it.
#include "calibration/InclineSensor_Filter_XY.h"

#include "Turn.h"

#include <cstdio>
#include <memory>

int main()
{
    CInclineSensor_Filter_XY filter;
    for (const PoseSensorData& sample : turn::Record(turn::Axis::Z)) {
        filter.Add(new PoseSensorData(sample)); // the filter deletes it
        if (filter.IsRecordOK()) break;
    }
    std::printf("%d %% of the directions\n", filter.GetRecordRate());

    const PoseSensorCenterParameter center = filter.GetCenterPar();
    std::printf("center %.0f %.0f, radius %.0f counts\n", center.dX, center.dY, center.dRadius);

    // The array is ours, the samples in it stay the filter's.
    const std::unique_ptr<CInclineSensor_Filter_XY::Samples> kept(filter.Filter());
    std::printf("%d samples to calibrate with\n", kept ? static_cast<int>(kept->GetSize()) : 0);
}
