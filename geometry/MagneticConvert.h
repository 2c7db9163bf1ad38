// SPDX-License-Identifier: MIT
/// @class CMagneticConvert
/// Four-parameter similarity transform of the plane, fitted to point pairs or set directly:
///
///     x' = k·(cos θ·x − sin θ·y) + dx
///     y' = k·(sin θ·x + cos θ·y) + dy
///
///     x, y, dx, dy   plane coordinates and translations [m]
///     k              scale, a factor; θ   rotation [radians], from +x towards +y
///
///     CMagneticConvert convert;
///     convert.m_Points.Add({0.0, 0.0, 500.0, 800.0}); // source x, y and target x, y
///     convert.m_Points.Add({100.0, 0.0, 600.0, 800.0});
///     if (convert.CalFourParameter() == 1) convert.XYtoXY(x, y); // x + 500, y + 800
///
/// Two pairs or more with different source points determine the transform.
#pragma once

#include "framework/core/core.h"

/// The transform. A new record is the identity.
struct Magnetic_FourParameter
{
    double dScale = 1.0;  ///< k
    double dRotate = 0.0; ///< θ [radians]
    double dDx = 0.0;     ///< translation [m]
    double dDy = 0.0;
    double dX0 = 0.0; ///< rotation center of the forward conversion [m]
    double dY0 = 0.0;
};

/// One point in both systems [m]. The last four are work fields: the fit overwrites them with the
/// coordinates less their means.
struct FourParameterPoint
{
    double xSource = 0.0;
    double ySource = 0.0;
    double xTarget = 0.0;
    double yTarget = 0.0;
    double uSource = 0.0;
    double vSource = 0.0;
    double uTarget = 0.0;
    double vTarget = 0.0;
};

class TILTPOLE_API CMagneticConvert
{
    Magnetic_FourParameter m_parameters;

public:
    /// The point pairs of the fit; filled and emptied by the host.
    CArray<FourParameterPoint> m_Points;

    /// Least-squares fit to the pairs. Source points that all coincide (one pair does) give the
    /// identity. The rotation center does not change.
    /// @return 1, or 0 without pairs: the parameters then stay as they are
    int CalFourParameter();

    /// The order of the arguments is not that of the record.
    void SetFourParameter(double dDx, double dDy, double dRotate, double dScale, double dX0,
                          double dY0);
    Magnetic_FourParameter GetFourParameter() const { return m_parameters; }

    /// Forward, in place [m]. A rotation center other than (0, 0) adds
    /// k·((1 − cos θ)·x0 + sin θ·y0 + (1 − k)·x0) to x and
    /// k·((1 − cos θ)·y0 − sin θ·x0 + (1 − k)·y0) to y.
    void XYtoXY(double& x, double& y) const
    {
        const Magnetic_FourParameter& p = m_parameters;
        double newX = 0.0;
        double newY = 0.0;
        if (m_hasCenter) { // most have none: its two sums would be an eighth of the work
            newX = p.dScale * (m_ofX[0] * x + m_ofY[0] * y + m_center[0]) + p.dDx;
            newY = p.dScale * (m_ofX[1] * x + m_ofY[1] * y + m_center[1]) + p.dDy;
        } else {
            newX = p.dScale * (m_ofX[0] * x + m_ofY[0] * y) + p.dDx;
            newY = p.dScale * (m_ofX[1] * x + m_ofY[1] * y) + p.dDy;
        }
        x = newX;
        y = newY;
    }

    /// Backward, in place [m]: undoes a forward conversion with the rotation center (0, 0), and
    /// ignores the center. A zero scale gives no finite result.
    void XYtoXY1(double& x, double& y) const
    {
        const double newX = m_back[0] + (x * m_ofX[0] + y * m_ofX[1]) * m_perScale;
        const double newY = m_back[1] + (x * m_ofY[0] + y * m_ofY[1]) * m_perScale;
        x = newX;
        y = newY;
    }

private:
    void Prepare();

    // What the conversions need of the parameters, worked out when these change. Pairs belong to
    // the two coordinates of a result, so that both are computed at once.
    double m_ofX[2] = {1.0, 0.0}; // cos θ, sin θ: what x adds to the turned coordinates
    double m_ofY[2] = {0.0, 1.0}; // −sin θ, cos θ
    double m_center[2] = {};
    double m_back[2] = {};
    double m_perScale = 1.0;
    bool m_hasCenter = false;
};
