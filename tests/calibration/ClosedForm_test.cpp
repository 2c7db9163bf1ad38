// SPDX-License-Identifier: MIT
//
// The closed-form correction from given conics and a line.
#include "tests/calibration/AdjustTools.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr unsigned kExclamation = 0x30;

// Conics of x² + (t·x + s·y)² and s²·x² + (w·x + g·z)² about (cx, cy) and (qx, qz)

CSZMatrix ConicAbout(double A, double B, double C, double cu, double cv)
{
    const double p0 = A / (A + C), p1 = B / (A + C);
    return ColumnOf({p0, p1, -(2 * p0 * cu + p1 * cv), -(p1 * cu + 2 * (1 - p0) * cv), 0});
}

TEST(ClosedForm, FindsTheWeightsOfKnownConics)
{
    constexpr struct
    {
        double t, s, w, g;
    } cases[] = {
        {0.2,  1.1, 0.3,  0.9},
        {-0.2, 1.1, 0.3,  0.9},
        {0.2,  0.8, -0.4, 1.3}
    };
    for (const auto& [t, s, w, g] : cases) {
        Incline_MagneticCorrectParameter P;
        P.b = 17;
        const double qx = 30, qz = -20, k = 0.1, l1 = 5, cx = 50, cy = -70;
        const CSZMatrix q = ConicAbout(s * s + w * w, 2 * w * g, g * g, qx, qz);
        ASSERT_EQ(ReachAdjust().MagCorrPara(ConicAbout(1 + t * t, 2 * t * s, s * s, cx, cy), q,
                                            ColumnOf({k, l1, 0}), P),
                  1);
        EXPECT_NEAR(P.a, s, 1e-12);
        EXPECT_NEAR(P.d, w, 1e-12);
        EXPECT_NEAR(P.e, g, 1e-12);
        EXPECT_EQ(P.b, 17) << "left as it was";
        EXPECT_NEAR(P.x0, cx, 1e-9);
        EXPECT_NEAR(P.y0, cy, 1e-9);
        const double h = (g * g * l1 / (1 - k) + t * w / s) / (2 * g);
        EXPECT_NEAR(P.c, h, 1e-10);
        const double q0 = q.GetData(0, 0), q2 = q.GetData(2, 0), q3 = q.GetData(3, 0);
        const double square = s * s + w * w;
        const double first = h * square * (q2 / q0 + 2 * cy);
        const double last = 2 * (t * s + h * w) * (w * cy + q3 * square / (2 * g * q0));
        EXPECT_NEAR(P.z0, (first - last) / (2 * t * s * g), 1e-7);
    }
}

TEST(ClosedForm, RefusesConicsThatAreNoEllipse)
{
    const CSZMatrix ellipse = ConicAbout(1.04, 0.4, 1, 0, 0), hyperbola = ColumnOf({2, 0, 0, 0, 0});
    const Box box{L"Collected data is incorrect!", L"Warning", kExclamation};
    for (const bool horizontal : {true, false}) {
        RecordedBoxes boxes;
        Incline_MagneticCorrectParameter P;
        P.x0 = 3;
        EXPECT_EQ(ReachAdjust().MagCorrPara(horizontal ? hyperbola : ellipse,
                                            horizontal ? ellipse : hyperbola, ColumnOf({0, 0, 0}),
                                            P),
                  0);
        EXPECT_EQ(boxes.shown, std::vector<Box>{box});
        EXPECT_EQ(P.x0, 3);
        EXPECT_EQ(P.b, 1);
    }
}

// The bound of the discriminant 4·p0·(1 − p0) − p1² is below 0: a parabola passes, and its center
// lies nowhere.
TEST(ClosedForm, TakesAParabolaForAnEllipse)
{
    const CSZMatrix ellipse = ConicAbout(1.04, 0.4, 1, 0, 0);
    const CSZMatrix parabola = ColumnOf({0.5, 1, -1, -2, 0});
    for (const bool horizontal : {true, false}) {
        RecordedBoxes boxes;
        Incline_MagneticCorrectParameter P;
        EXPECT_EQ(ReachAdjust().MagCorrPara(horizontal ? parabola : ellipse,
                                            horizontal ? ellipse : parabola, ColumnOf({0, 0, 0}),
                                            P),
                  1);
        EXPECT_TRUE(boxes.shown.empty());
        EXPECT_FALSE(std::isfinite(P.z0));
    }
}

} // namespace
