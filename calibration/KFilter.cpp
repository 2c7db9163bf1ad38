// SPDX-License-Identifier: MIT
#include "calibration/KFilter.h"

#include "framework/core/MessageBox.h"
#include "matrix/detail/Kernels.h"
#include "matrix/detail/Scratch.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

namespace matrix = tiltpole::matrix;

namespace {

constexpr int kOrderWithoutHeap = 6; // matrices up to this order cannot fail to be allocated

bool HasShape(const CSZMatrix& matrix, int rows, int columns)
{
    return matrix.getRowSize() == rows && matrix.getColSize() == columns;
}

bool IsZeroBesideDiagonal(const CSZMatrix& matrix)
{
    for (int r = 0; r < matrix.getRowSize(); ++r)
        for (int c = 0; c < matrix.getColSize(); ++c)
            if (r != c && matrix.GetData(r, c) != 0.0) return false;
    return true;
}

// Whether every element equals `diagonal` on and 0 beside the main diagonal.
bool IsDiagonal(const CSZMatrix& matrix, double diagonal)
{
    const int square = std::min(matrix.getRowSize(), matrix.getColSize());
    for (int i = 0; i < square; ++i)
        if (matrix.GetData(i, i) != diagonal) return false;
    return IsZeroBesideDiagonal(matrix);
}

const double* Elements(const CSZMatrix& matrix)
{
    return &matrix(0, 0);
}

// Only infinities and NaN have an exponent of ones; adding one to it carries into the sign. Done in
// integers, which the compiler vectorizes.
bool AreFinite(const double* values, int count)
{
    constexpr std::uint64_t kWithoutSign = ~std::uint64_t{0} >> 1U;
    constexpr std::uint64_t kExponentStep = std::uint64_t{1} << 52U;
    std::uint64_t carries = 0;
    for (int i = 0; i < count; ++i)
        carries |= (std::bit_cast<std::uint64_t>(values[i]) & kWithoutSign) + kExponentStep;
    return carries <= kWithoutSign;
}

} // namespace

void CKFilter::Factor::Set(const CSZMatrix& value)
{
    matrix = value;
    transpose = value.matTran();
    isIdentity = value.getRowSize() == value.getColSize() && IsDiagonal(value, 1.0);
    isZero = IsDiagonal(value, 0.0);
}

// One step on plain arrays. Sums run in the order of the matrix operators.
class CKFilter::Step
{
public:
    explicit Step(const CKFilter& filter)
        : m_Space(kBlocks * LargestBlock(filter)), m_Filter(filter),
          m_Largest(LargestBlock(filter)), m_n(filter.m_nState), m_m(filter.m_nMeasurement)
    {}

    bool HasMemory() { return m_Space.Data() != nullptr; }

    // Computes the new estimate. With shortcuts it is exact only where all numbers are finite.
    void Advance(const double* z, const double* u, bool shortcuts)
    {
        m_Shortcuts = shortcuts;
        Predict();
        UpdateCovariance();
        UpdateState(z, u);
    }

    bool IsFinite() { return AreFinite(State(), m_n) && AreFinite(Covariance(), m_n * m_n); }
    double* State() { return Block(0); }
    double* Covariance() { return Block(1); }

private:
    static constexpr std::size_t kBlocks = 8;
    static constexpr std::size_t kInside = 36; // elements of a block that needs no heap

    static std::size_t LargestBlock(const CKFilter& filter)
    {
        const auto order =
            static_cast<std::size_t>(std::max(filter.m_nState, filter.m_nMeasurement));
        return order * order;
    }
    double* Block(std::size_t i) { return m_Space.Data() + i * m_Largest; }
    double* Predicted() { return Block(2); }
    double* Gain() { return Block(3); }

    bool IsLeftOut(const Factor& factor) const { return m_Shortcuts && factor.isIdentity; }

    // A · X, X with `columns` columns; the result is in `space` or X itself.
    const double* Times(const Factor& A, const double* X, int columns, double* space) const
    {
        if (IsLeftOut(A)) return X;
        matrix::Multiply(Elements(A.matrix), X, space, A.matrix.getRowSize(), A.matrix.getColSize(),
                         columns);
        return space;
    }

    // X · Aᵀ, X with `rows` rows.
    const double* TimesTranspose(const double* X, int rows, const Factor& A, double* space) const
    {
        if (IsLeftOut(A)) return X;
        matrix::Multiply(X, Elements(A.transpose), space, rows, A.matrix.getColSize(),
                         A.matrix.getRowSize());
        return space;
    }

    // A · x for a column x, computed as the row xᵀ · Aᵀ, which vectorizes.
    const double* Apply(const Factor& A, const double* x, double* space) const
    {
        return TimesTranspose(x, 1, A, space);
    }

    static double Dot(const double* a, const double* b, int count)
    {
        double sum = 0.0;
        for (int k = 0; k < count; ++k)
            sum += a[k] * b[k];
        return sum;
    }

    // P⁻ = Φ·P·Φᵀ + Γ·Q·Γᵀ. A column in place of P does not fit Φᵀ: its product is zero.
    void Predict()
    {
        const double* added = Elements(m_Filter.m_AddedNoise);
        const int count = m_n * m_n;
        if (m_Filter.m_Covariance.getColSize() != m_n) {
            std::transform(added, added + count, Predicted(), [](double q) { return 0.0 + q; });
            return;
        }
        const Factor& Phi = m_Filter.m_Transition;
        const double* left = Times(Phi, Elements(m_Filter.m_Covariance), m_n, Block(4));
        const double* product = TimesTranspose(left, m_n, Phi, Block(5));
        std::transform(product, product + count, added, Predicted(), std::plus<>());
    }

    // S = H·P⁻·Hᵀ + R, K = P⁻·Hᵀ·S⁻¹, P = (I − K·H)·P⁻
    void UpdateCovariance()
    {
        const Factor& H = m_Filter.m_Measurement;
        double* inverse = Block(6);
        const double* left = Times(H, Predicted(), m_n, Block(4));
        const double* product = TimesTranspose(left, m_m, H, Block(5));
        const double* noise = Elements(m_Filter.m_MeasurementNoise);
        for (int i = 0; i < m_m * m_m; ++i)
            inverse[i] = product[i] + noise[i];
        matrix::Invert(inverse, m_m, matrix::PivotFloor::SmallestNormal);
        const double* right = TimesTranspose(Predicted(), m_n, H, Block(4));
        matrix::Multiply(right, inverse, Gain(), m_n, m_m, m_m);

        const double* seen = Gain();
        if (!IsLeftOut(H)) {
            matrix::Multiply(Gain(), Elements(H.matrix), Block(4), m_n, m_m, m_n);
            seen = Block(4);
        }
        double* unseen = Block(5);
        for (int i = 0; i < m_n * m_n; ++i)
            unseen[i] = 0.0 - seen[i];
        for (int i = 0; i < m_n * m_n; i += m_n + 1)
            unseen[i] = 1.0 - seen[i];
        matrix::Multiply(unseen, Predicted(), Covariance(), m_n, m_n, m_n);
    }

    // x⁻ = Φ·x + B·u, x = x⁻ + K·(z − D·u − H·x⁻)
    void UpdateState(const double* z, const double* u)
    {
        double* before = Block(4);
        const double* moved = Apply(m_Filter.m_Transition, Elements(m_Filter.m_State), before);
        std::copy(moved, moved + m_n, before);
        Shift(before, m_n, m_Filter.m_Control, u, 1.0);

        double* residual = Block(6);
        std::copy(z, z + m_m, residual);
        Shift(residual, m_m, m_Filter.m_MeasurementControl, u, -1.0);
        const double* expected = Apply(m_Filter.m_Measurement, before, Block(5));
        for (int i = 0; i < m_m; ++i)
            residual[i] -= expected[i];
        const double* gain = Gain();
        for (int i = 0; i < m_n; ++i, gain += m_m)
            State()[i] = before[i] + Dot(gain, residual, m_m);
    }

    // x ± A·u
    void Shift(double* x, int count, const Factor& A, const double* u, double sign)
    {
        if (m_Shortcuts && A.isZero) return;
        const double* shift = Apply(A, u, Block(7));
        for (int i = 0; i < count; ++i)
            x[i] += sign * shift[i];
    }

    matrix::Scratch<double, kBlocks * kInside> m_Space;
    const CKFilter& m_Filter;
    std::size_t m_Largest; // elements of a block
    int m_n, m_m;
    bool m_Shortcuts = true;
};

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
    NoteSeparateStates();
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
    NoteSeparateStates();
    return 1;
}

int CKFilter::SetInitialData(CSZMatrix x0, CSZMatrix P0)
{
    if (!HasShape(x0, m_nState, 1) || !HasShape(P0, m_nState, m_nState)) return 0;

    m_State = x0;
    m_Covariance = P0;
    NoteSeparateStates();
    return 1;
}

int CKFilter::SetInitialVariance(CSZMatrix variance)
{
    if (!HasShape(variance, m_nState, 1)) return 0;

    m_Covariance = variance;
    NoteSeparateStates();
    return 1;
}

int CKFilter::SetNoise(CSZMatrix R, CSZMatrix Q)
{
    if (!HasShape(R, m_nMeasurement, m_nMeasurement)) return 0;
    if (!HasShape(Q, m_nMeasurement, m_nMeasurement)) return 0;

    m_MeasurementNoise = R;
    m_ProcessNoise = Q;
    KeepProcessNoise();
    NoteSeparateStates();
    return 1;
}

void CKFilter::KeepProcessNoise()
{
    m_AddedNoise = m_NoiseInput * m_ProcessNoise * m_NoiseInput.matTran();
}

void CKFilter::NoteSeparateStates()
{
    m_hasSeparateStates = m_Transition.isIdentity && m_Measurement.isIdentity && m_Control.isZero
                          && m_MeasurementControl.isZero;
    for (const CSZMatrix* noise : {&m_Covariance, &m_MeasurementNoise, &m_AddedNoise})
        m_hasSeparateStates = m_hasSeparateStates && HasShape(*noise, m_nState, m_nState)
                              && IsZeroBesideDiagonal(*noise);
}

// The step for separate states: its formulas reduced to the diagonals. The inverse of a diagonal
// matrix with full pivots is exactly the reciprocals. 0.0 + turns a negative zero positive, as the
// sums of the products do.
// Returns false, with nothing changed, where a pivot would be refused or a number is not finite.
bool CKFilter::StepSeparately(const double* z)
{
    const int n = m_nState;
    matrix::Scratch<double, 12> space(2 * static_cast<std::size_t>(n));
    double* const state = space.Data();
    if (state == nullptr) return false;
    double* const variance = state + n;
    const double* before = Elements(m_State);
    bool regular = true;
    for (int i = 0, ii = 0; i < n; ++i, ii += n + 1) {
        const double predicted = Elements(m_Covariance)[ii] + Elements(m_AddedNoise)[ii];
        const double seen = predicted + Elements(m_MeasurementNoise)[ii];
        regular &= std::isnormal(seen);
        const double gain = 0.0 + predicted * (1.0 / seen);
        variance[i] = 0.0 + (1.0 - gain) * predicted;
        state[i] = before[i] + (0.0 + gain * (z[i] - before[i]));
    }
    if (!regular || !AreFinite(state, 2 * n)) return false;
    for (int i = 0; i < n; ++i) {
        m_State(i, 0) = state[i];
        m_Covariance(i, i) = variance[i];
    }
    return true;
}

bool CKFilter::HasWholeModel() const
{
    const int n = m_nState;
    const int m = m_nMeasurement;
    if (std::max(n, m) <= kOrderWithoutHeap) return true;
    const auto fits = [](const Factor& factor, int rows, int columns) {
        return HasShape(factor.matrix, rows, columns) && HasShape(factor.transpose, columns, rows);
    };
    return fits(m_Transition, n, n) && fits(m_Control, n, n) && fits(m_Measurement, m, n)
           && fits(m_MeasurementControl, m, n) && HasShape(m_AddedNoise, n, n)
           && HasShape(m_MeasurementNoise, m, m) && HasShape(m_State, n, 1)
           && m_Covariance.getRowSize() == n;
}

CSZMatrix CKFilter::Filter(CSZMatrix z, CSZMatrix u, [[maybe_unused]] int reserved)
{
    if (!HasShape(z, m_nMeasurement, 1) || !HasShape(u, m_nState, 1) || !HasWholeModel()) {
        MessageBoxW(nullptr, L"Filter Failure!", L"Warning", MB_ICONEXCLAMATION);
        return z;
    }
    // 0·inf and 0·NaN are not 0: where such numbers occur, every product is computed.
    const bool finiteControl = AreFinite(Elements(u), m_nState);
    if (m_hasSeparateStates && finiteControl && StepSeparately(Elements(z))) return m_State;
    m_hasSeparateStates = false;
    Step step(*this);
    if (!step.HasMemory()) return m_State;
    CSZMatrix covariance;
    const bool isColumn = m_Covariance.getColSize() != m_nState; // see SetInitialVariance
    if (isColumn && !covariance.Alloc(m_nState, m_nState)) return m_State;
    if (finiteControl) step.Advance(Elements(z), Elements(u), true);
    if (!finiteControl || !step.IsFinite()) step.Advance(Elements(z), Elements(u), false);
    std::copy_n(step.State(), m_nState, &m_State(0, 0));
    if (isColumn) m_Covariance = std::move(covariance);
    std::copy_n(step.Covariance(), m_nState * m_nState, &m_Covariance(0, 0));
    return m_State;
}
