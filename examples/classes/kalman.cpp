// SPDX-License-Identifier: MIT
//
// CKFilter: a distance and its speed from distances alone, once a second.
#include "calibration/KFilter.h"

#include <cstdio>

int main()
{
    const CSZMatrix transition(2, 2, 4, 1.0, 1.0, 0.0, 1.0); // distance += speed
    const CSZMatrix none(2, 2, MatZeros);
    const CSZMatrix noise(2, 1, 2, 0.5, 1.0); // an acceleration drives both
    const CSZMatrix measured(1, 2, 2, 1.0, 0.0);

    CKFilter filter;
    filter.SetMatrixOrder(2, 1);
    filter.SetSystemMatrix(transition, none, noise, measured, CSZMatrix(1, 2, MatZeros));
    filter.SetNoise(CSZMatrix(1, 1, 1, 0.01), CSZMatrix(1, 1, 1, 0.0001));
    filter.SetInitialData(CSZMatrix(2, 1, MatZeros), CSZMatrix(2, 2, 4, 100.0, 0.0, 0.0, 100.0));

    const double distances[] = {0.9, 2.1, 2.9, 4.1, 5.0, 5.9, 7.1}; // 1 m/s, off by 10 cm
    CSZMatrix state;
    for (const double distance : distances)
        state = filter.Filter(CSZMatrix(1, 1, 1, distance), CSZMatrix(2, 1, MatZeros));
    std::printf("distance %.2f m, speed %.2f m/s\n", state.GetData(0, 0), state.GetData(1, 0));
}
