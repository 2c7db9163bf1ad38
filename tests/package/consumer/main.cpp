// SPDX-License-Identifier: MIT
//
// A consumer of the package: fails to build where a library, its headers or what it needs itself are
// missing. With FULL it links every library that needs no screen, else the core alone.
#include "framework/core/Version.h"
#include "geometry/MagneticConvert.h"

#if defined(FULL)
#include "field/North.h"
#include "quality/ParameterFile.h"
#endif

#include <cstdio>

#if !TILTPOLE_VERSION_AT_LEAST(0, 0, 9) || !TILTPOLE_VERSION_AT_LEAST(0, 1, 0)                     \
    || TILTPOLE_VERSION_AT_LEAST(0, 1, 1) || TILTPOLE_VERSION_AT_LEAST(0, 2, 0)                    \
    || TILTPOLE_VERSION_AT_LEAST(1, 0, 0)
#error "the headers are not of version 0.1.0, or their version is not compared as versions are"
#endif

int main()
{
    CMagneticConvert convert;
    convert.m_Points.Add({0.0, 0.0, 500.0, 800.0});
    convert.m_Points.Add({100.0, 0.0, 600.0, 800.0});
    if (convert.CalFourParameter() != 1) return 1;
    double x = 3.0;
    double y = 4.0;
    convert.XYtoXY(x, y);
    std::printf("tiltpole %s: %.1f %.1f\n", TILTPOLE_VERSION_STRING, x, y);
#if defined(FULL)
    CInclineSensor_Position pole;
    const bool read = quality::LoadParameters("no such file", pole).empty();
    const field::Field north = field::MagneticFieldAt({80.0, 0.0, 0.0}, 2025.0);
    std::printf("parameters %s, dip %.2f\n", read ? "read" : "not read", north.dip);
#endif
    return 0;
}
