// SPDX-License-Identifier: MIT
/// @file
/// A discrete linear Kalman filter with a control input into state and measurement.
///
///     x(i) = Φ·x(i−1) + B·u + Γ·w      w ~ (0, Q)
///     z(i) = H·x(i)   + D·u + v        v ~ (0, R)
///
///     state order n, measurement order m; Φ, B, P: n x n; H, D: m x n; Γ: n x m; Q, R: m x m
///     units are the host's; domain: any numbers, NaN and infinity spread as the formulas say
///
///     CKFilter filter;
///     filter.SetMatrixOrder(n, m);
///     filter.SetSystemMatrix(Phi, B, Gamma, H, D);
///     filter.SetNoise(R, Q);
///     filter.SetInitialData(x0, P0);
///     CSZMatrix estimate = filter.Filter(z, u);   // once per measurement
#pragma once

#include "framework/core/Export.h"
#include "matrix/SZMatrix.h"

/// The set operations return 1, or 0 with nothing changed when a shape does not fit. A copy has the
/// orders, the model and the current estimate. Orders up to 6 need no heap; a larger filter for
/// which memory was short refuses every measurement until its order and model are set again.
class TILTPOLE_API CKFilter
{
public:
    /// Orders 0: every measurement is refused until SetMatrixOrder.
    CKFilter() = default;

    // Copies only: a filter that was moved from would keep its orders without the matrices.
    CKFilter(const CKFilter&) = default;
    CKFilter& operator=(const CKFilter&) = default;
    ~CKFilter() = default;

    /// Gives every matrix its shape and fills it with zeros, also where the orders stay the same.
    /// An order below 1 is stored, but leaves the matrices of that order as they were.
    void SetMatrixOrder(int stateOrder, int measurementOrder);

    /// @param Phi    transition of the state, n x n
    /// @param B      control into the state, n x n
    /// @param Gamma  process noise into the state, n x m
    /// @param H      state to measurement, m x n
    /// @param D      control into the measurement, m x n
    int SetSystemMatrix(CSZMatrix Phi, CSZMatrix B, CSZMatrix Gamma, CSZMatrix H, CSZMatrix D);

    /// State, n x 1, and its covariance, n x n.
    int SetInitialData(CSZMatrix x0, CSZMatrix P0);

    /// Stores an n x 1 column in place of the covariance. The next step multiplies by it unchanged:
    /// for n above 1 its product with Φᵀ does not fit and counts as zero, so that step starts from
    /// the process noise alone.
    int SetInitialVariance(CSZMatrix variance);

    /// Measurement noise, m x m, and process noise, m x m.
    int SetNoise(CSZMatrix R, CSZMatrix Q);

    /// Predicts and updates by one step:
    ///
    ///   P⁻ = Φ·P·Φᵀ + Γ·Q·Γᵀ       S = H·P⁻·Hᵀ + R       K = P⁻·Hᵀ·S⁻¹
    ///   P  = (I − K·H)·P⁻           x⁻ = Φ·x + B·u        x = x⁻ + K·(z − D·u − H·x⁻)
    ///
    /// A singular S is not detected.
    /// @param z         measurement, m x 1
    /// @param u         control, n x 1
    /// @param reserved  not used
    /// @return the state, n x 1; the old one where memory is too short for a step. With z or u of
    ///         another shape the message "Filter Failure!" is shown, the filter does not change and
    ///         z is returned
    CSZMatrix Filter(CSZMatrix z, CSZMatrix u, int reserved = 0);

private:
    // A matrix of the model and its properties. Products with an identity or a zero factor are left
    // out; the results are the same as long as all numbers are finite.
    struct Factor
    {
        CSZMatrix matrix;
        CSZMatrix transpose;
        bool isIdentity = false;
        bool isZero = false;

        void Set(const CSZMatrix& value);
    };
    class Step;

    bool HasWholeModel() const;
    void KeepProcessNoise();
    void NoteSeparateStates();
    bool StepSeparately(const double* z);

    int m_nState = 0;
    int m_nMeasurement = 0;
    Factor m_Transition;
    Factor m_Control;
    Factor m_Measurement;
    Factor m_MeasurementControl;
    CSZMatrix m_NoiseInput;
    CSZMatrix m_MeasurementNoise;
    CSZMatrix m_ProcessNoise;
    CSZMatrix m_State;
    CSZMatrix m_Covariance;
    CSZMatrix m_AddedNoise; // Γ·Q·Γᵀ, the same in every step
    // Φ = H = I, B = D = 0 and P, R, Γ·Q·Γᵀ diagonal; P then stays so, and the states are
    // independent of each other.
    bool m_hasSeparateStates = false;
};
