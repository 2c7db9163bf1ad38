#include "calibration/KFilter.h"

#include "framework/core/MessageBox.h"

#include <cmath>

namespace {

bool HasShape(const CSZMatrix& matrix, int rows, int columns)
{
    return matrix.getRowSize() == rows && matrix.getColSize() == columns;
}

// Whether every element equals `diagonal` on and 0 beside the main diagonal.
bool IsDiagonal(const CSZMatrix& matrix, double diagonal)
{
    for (int r = 0; r < matrix.getRowSize(); ++r)
        for (int c = 0; c < matrix.getColSize(); ++c)
            if (matrix.GetData(r, c) != (r == c ? diagonal : 0.0)) return false;
    return true;
}

bool IsFinite(const CSZMatrix& matrix)
{
    double sum = 0;
    for (int r = 0; r < matrix.getRowSize(); ++r)
        for (int c = 0; c < matrix.getColSize(); ++c)
            sum += matrix.GetData(r, c) * 0.0;
    return sum == 0.0;
}

} // namespace

void CKFilter::Factor::Set(const CSZMatrix& value)
{
    matrix = value;
    transpose = value.matTran();
    isIdentity = value.getRowSize() == value.getColSize() && IsDiagonal(value, 1.0);
    isZero = IsDiagonal(value, 0.0);
}

// A · X
CSZMatrix CKFilter::Factor::Times(const CSZMatrix& right, bool shortcuts) const
{
    if (shortcuts && isIdentity && right.getRowSize() == matrix.getColSize()) return right;
    return matrix * right;
}

// X · A
CSZMatrix CKFilter::Factor::After(const CSZMatrix& left, bool shortcuts) const
{
    if (shortcuts && isIdentity && left.getColSize() == matrix.getRowSize()) return left;
    return left * matrix;
}

// X · Aᵀ
CSZMatrix CKFilter::Factor::TransposeAfter(const CSZMatrix& left, bool shortcuts) const
{
    if (shortcuts && isIdentity && left.getColSize() == matrix.getColSize()) return left;
    return left * transpose;
}

void CKFilter::SetMatrixOrder(int stateOrder, int measurementOrder)
{
    const int n = m_nState = stateOrder;
    const int m = m_nMeasurement = measurementOrder;
    const auto shape = [](Factor& factor, int rows, int columns) {
        CSZMatrix matrix;
        if (matrix.Alloc(rows, columns)) factor.Set(matrix);
    };
    shape(m_Transition, n, n);
    shape(m_Control, n, n);
    shape(m_Measurement, m, n);
    shape(m_MeasurementControl, m, n);
    m_NoiseInput.Alloc(n, m);
    m_MeasurementNoise.Alloc(m, m);
    m_ProcessNoise.Alloc(m, m);
    m_State.Alloc(n, 1);
    m_Covariance.Alloc(n, n);
    KeepProcessNoise();
}

int CKFilter::SetSystemMatrix(CSZMatrix Phi, CSZMatrix B, CSZMatrix Gamma, CSZMatrix H, CSZMatrix D)
{
    const int n = m_nState;
    const int m = m_nMeasurement;
    if (!HasShape(Phi, n, n) || !HasShape(B, n, n)) return 0;
    if (!HasShape(Gamma, n, m) || !HasShape(H, m, n) || !HasShape(D, m, n)) return 0;

    m_Transition.Set(Phi);
    m_Control.Set(B);
    m_Measurement.Set(H);
    m_MeasurementControl.Set(D);
    m_NoiseInput = Gamma;
    KeepProcessNoise();
    return 1;
}

int CKFilter::SetInitialData(CSZMatrix x0, CSZMatrix P0)
{
    if (!HasShape(x0, m_nState, 1) || !HasShape(P0, m_nState, m_nState)) return 0;

    m_State = x0;
    m_Covariance = P0;
    return 1;
}

int CKFilter::SetInitialVariance(CSZMatrix variance)
{
    if (!HasShape(variance, m_nState, 1)) return 0;

    m_Covariance = variance;
    return 1;
}

int CKFilter::SetNoise(CSZMatrix R, CSZMatrix Q)
{
    if (!HasShape(R, m_nMeasurement, m_nMeasurement)) return 0;
    if (!HasShape(Q, m_nMeasurement, m_nMeasurement)) return 0;

    m_MeasurementNoise = R;
    m_ProcessNoise = Q;
    KeepProcessNoise();
    return 1;
}

void CKFilter::KeepProcessNoise()
{
    m_AddedNoise = m_NoiseInput * m_ProcessNoise * m_NoiseInput.matTran();
}

CSZMatrix CKFilter::Filter(CSZMatrix z, CSZMatrix u, [[maybe_unused]] int reserved)
{
    if (!HasShape(z, m_nMeasurement, 1) || !HasShape(u, m_nState, 1)) {
        MessageBoxW(nullptr, L"Filter Failure!", L"Warning", MB_ICONEXCLAMATION);
        return z;
    }
    Estimate next = Advance(z, u, true);
    // 0·inf and 0·nan are not 0: where such numbers turn up, every product is formed.
    if (!IsFinite(next.state) || !IsFinite(next.covariance) || !IsFinite(u))
        next = Advance(z, u, false);
    m_State = std::move(next.state);
    m_Covariance = std::move(next.covariance);
    return m_State;
}

CKFilter::Estimate CKFilter::Advance(const CSZMatrix& z, const CSZMatrix& u, bool shortcuts) const
{
    const Factor& Phi = m_Transition;
    const Factor& H = m_Measurement;
    const bool controlled = !shortcuts || !m_Control.isZero;
    const bool measuredControl = !shortcuts || !m_MeasurementControl.isZero;

    const CSZMatrix predicted =
        Phi.TransposeAfter(Phi.Times(m_Covariance, shortcuts), shortcuts) + m_AddedNoise;
    const CSZMatrix innovation =
        H.TransposeAfter(H.Times(predicted, shortcuts), shortcuts) + m_MeasurementNoise;
    const CSZMatrix gain = H.TransposeAfter(predicted, shortcuts) * innovation.matInv();
    const CSZMatrix identity(m_nState, m_nState, MatIdentity);

    Estimate next;
    next.covariance = (identity - H.After(gain, shortcuts)) * predicted;
    next.state = Phi.Times(m_State, shortcuts);
    if (controlled) next.state += m_Control.matrix * u;
    CSZMatrix residual = z;
    if (measuredControl) residual -= m_MeasurementControl.matrix * u;
    residual -= H.Times(next.state, shortcuts);
    next.state += gain * residual;
    return next;
}
