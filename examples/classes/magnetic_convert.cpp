// SPDX-License-Identifier: MIT
//
// CMagneticConvert: a plane transform fitted to points that are known in two systems.
#include "geometry/MagneticConvert.h"

#include <cstdio>

int main()
{
    CMagneticConvert convert;
    convert.m_Points.Add({0.0, 0.0, 500.0, 800.0}); // source x, y and target x, y [m]
    convert.m_Points.Add({100.0, 0.0, 500.0, 900.0});
    convert.m_Points.Add({100.0, 100.0, 400.0, 900.0});
    if (convert.CalFourParameter() != 1) return 1;

    const Magnetic_FourParameter found = convert.GetFourParameter();
    std::printf("scale %.6f, rotation %.6f rad, shift %.1f %.1f m\n", found.dScale, found.dRotate,
                found.dDx, found.dDy);
    double x = 10.0;
    double y = 20.0;
    convert.XYtoXY(x, y);
    std::printf("(10, 20) is (%.1f, %.1f)", x, y);
    convert.XYtoXY1(x, y); // and back
    std::printf(" and back (%.1f, %.1f)\n", x, y);
}
