// SPDX-License-Identifier: MIT
//
// The least squares of an occupation: Gauss-Newton over the unknowns of Model.h.
#pragma once

#include "field/occupation/Gravity.h"
#include "field/occupation/Model.h"
#include "field/occupation/Normal.h"

#include <Eigen/Core>

#include <vector>

namespace tiltpole::field {

/// What is known beforehand: standard deviations, and the magnetometer's word on the heading.
struct FitSetup
{
    double poleLength = 2.0;
    double planSigma = 0.0;     // of an antenna epoch, independent from second to second [m]
    double heightSigma = 0.0;   // [m]
    double antennaFactor = 1.0; // of the variances of the antenna epochs, by their residuals
    double biasSigma = 0.0;     // [rad/s]
    double axisSigma = 0.0;     // [rad]
    Eigen::Vector2d axis = Eigen::Vector2d::Zero(); // of the pole in the sensor: tangents, as known
    double forceSigma = 0.0;   // of the direction of the mean force without own motion [rad]
    double delaySigma = 0.0;   // 0: the delay is left at 0 [s]
    double lever = 0.0;        // height of the sensor above the tip, 0: own motion stays [m]
    double seenMotion = 0.0;   // what is left of it: OwnMotion::rest or ::all [g]
    double ownMotion = 0.0;    // the same with what some seconds may hide [g]
    bool magnetic = false;     // whether the magnetometer is asked
    double north = 0.0;        // angle of magnetic north from north towards west [rad]
    double headingSigma = 0.0; // [rad]
    double headingShare = 1.0; // of the time in which the magnetometer was not disturbed
};

/// An antenna epoch in the fit.
struct EpochRow
{
    const Epoch* epoch = nullptr;
    Pose3 pose;
    AntennaJacobian jacobian = AntennaJacobian::Zero();
    Eigen::Vector3d residual = Eigen::Vector3d::Zero(); // predicted − observed [m]
    Eigen::Vector3d pole = Eigen::Vector3d::Zero();     // unit vector, tip to antenna
    Eigen::Vector3d weight = Eigen::Vector3d::Zero();   // [1/m²]
    double doubt = 1.0; // factor of the weight, below 1 for an epoch that stands out

    EpochRow(const Epoch& of, const Pose3& at) : epoch(&of), pose(at) {}
};

struct Fit
{
    bool converged = false;
    int passes = 0;
    State state;
    NormalMatrix covariance = NormalMatrix::Zero(); // before scaling by the residuals
    double misfit = 0.0;                            // weighted sum of squares, priors included
    double antennaMisfit = 0.0;                     // the antenna's part, by stated variances
    double antennaFactor = 1.0;                     // as in the setup
    double slowMisfit = 0.0;  // that of the means of each second, by stated variances
    double slowFreedom = 0.0; // its observations beyond what the unknowns take up
    double freedom = 0.0;     // observations beyond the unknowns of the antenna
    double span = 0.0;        // of the readings [s]
    Eigen::Vector2d tilt = Eigen::Vector2d::Zero(); // of the mean force against the vertical [rad]
    double tiltSigma = 0.0;                         // stated, of each [rad]
    double magneticResidual = 0.0; // heading by the magnetometer minus that of the estimate [rad]
    double turnSpread = 0.0;       // rms of the pole's directions about their mean [rad]
};

/// The fit keeps its memory from run to run: nothing is allocated after the construction.
class Fitter
{
public:
    explicit Fitter(std::size_t epochs);

    /// @param track  at least two nodes and one epoch within them
    const Fit& Run(const Track& track, const FitSetup& setup);
    const Fit& Result() const { return m_fit; }
    const std::vector<EpochRow>& Rows() const { return m_rows; }
    /// Part of an observation that an epoch is: those of a second are one.
    double Share() const { return m_share; }

    /// Of the last pass; factored where the fit ended.
    const NormalEquations& Normal() const { return m_normal; }

private:
    void Start(const Track& track, const FitSetup& setup);
    void AddAntenna(const FitSetup& setup, const Track& track, bool weigh);
    void AddForce(const FitSetup& setup);
    void AddHeading(const FitSetup& setup);
    void SetSlowMisfit();
    void AddPriors(const FitSetup& setup, const Track& track);

    std::vector<EpochRow> m_rows;
    double m_share = 1.0;
    MeanForce m_force;
    Eigen::Vector3d m_magnetic = Eigen::Vector3d::Zero();
    Eigen::Matrix3d m_middle = Eigen::Matrix3d::Zero(); // J in the middle of the window
    NormalEquations m_normal;
    Fit m_fit;
};

} // namespace tiltpole::field
