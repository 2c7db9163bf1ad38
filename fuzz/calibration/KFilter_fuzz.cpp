// SPDX-License-Identifier: MIT
//
// The Kalman filter of any orders and matrices, set in any sequence: the bits of its formulas with every
// product computed while all numbers are finite, a shape that does not fit changes nothing, and a copy
// goes on like the original.
#include "calibration/KFilter.h"
#include "framework/core/MessageBox.h"
#include "fuzz/Input.h"

#include <initializer_list>
#include <optional>

namespace {

using fuzz::AreSame;
using fuzz::Input;
using fuzz::Require;

CSZMatrix MatrixOf(Input& input, int rows, int cols, bool covariance)
{
    CSZMatrix matrix(rows, cols);
    const int kind = input.Below(covariance ? 3 : 5);
    if (kind == 0) matrix.setDiagonal(1.0);
    if (kind == 1)
        for (int i = 0; i < std::min(rows, cols); ++i)
            matrix.SetData(i, i, covariance ? input.Between(0.0, 20.0) : input.Number());
    if (kind == 2) {
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < cols; ++c)
                matrix.SetData(r, c, input.Ended() ? 0.25 * (r - c) : input.Number());
        if (covariance) matrix = matrix * matrix.matTran();
    }
    if (kind == 3) matrix.SetData(input.Below(rows), input.Below(cols), input.Number());
    return matrix; // kind 4: zeros
}

bool IsFinite(const CSZMatrix& matrix)
{
    for (int r = 0; r < matrix.getRowSize(); ++r)
        for (int c = 0; c < matrix.getColSize(); ++c)
            if (!std::isfinite(matrix.GetData(r, c))) return false;
    return true;
}

void RequireSame(const CSZMatrix& a, const CSZMatrix& b)
{
    Require(a.getRowSize() == b.getRowSize() && a.getColSize() == b.getColSize());
    for (int r = 0; r < a.getRowSize(); ++r)
        for (int c = 0; c < a.getColSize(); ++c)
            Require(AreSame(a.GetData(r, c), b.GetData(r, c)));
}

// The formulas of the filter.
struct Model
{
    CSZMatrix Phi, B, Gamma, H, D, R, Q, x, P;
    bool isFinite = true; // so far

    CSZMatrix Step(const CSZMatrix& z, const CSZMatrix& u)
    {
        const CSZMatrix I(Phi.getRowSize(), Phi.getRowSize(), MatIdentity);
        const CSZMatrix noise = Gamma * Q * Gamma.matTran();
        const CSZMatrix predicted = Phi * P * Phi.matTran() + noise;
        const CSZMatrix S = H * predicted * H.matTran() + R;
        const CSZMatrix inverse = S.matInv();
        const CSZMatrix K = predicted * H.matTran() * inverse;
        P = (I - K * H) * predicted;
        const CSZMatrix before = Phi * x + B * u;
        x = before + K * (z - D * u - H * before);
        using Pointers = std::initializer_list<const CSZMatrix*>; // copies would take longer
        for (const CSZMatrix* m :
             Pointers{&noise, &predicted, &S, &inverse, &K, &P, &before, &x, &z, &u})
            isFinite = isFinite && IsFinite(*m);
        return x;
    }

    bool HasFiniteMatrices() const
    {
        for (const CSZMatrix* m : {&Phi, &B, &Gamma, &H, &D, &R, &Q, &x, &P})
            if (!IsFinite(*m)) return false;
        return true;
    }
};

struct Orders
{
    int n, m; // of state and measurement
};

void SetAnew(CKFilter& filter, Model& model, const Orders& o, Input& input)
{
    switch (input.Below(4)) {
    case 0:
        model.x = MatrixOf(input, o.n, 1, false);
        model.P = MatrixOf(input, o.n, o.n, true);
        Require(filter.SetInitialData(model.x, model.P) == 1);
        break;
    case 1:
        model.R = MatrixOf(input, o.m, o.m, true);
        model.Q = MatrixOf(input, o.m, o.m, true);
        Require(filter.SetNoise(model.R, model.Q) == 1);
        break;
    case 2:
        model.P = MatrixOf(input, o.n, 1, false);
        Require(filter.SetInitialVariance(model.P) == 1);
        break;
    default:
        break;
    }
    model.isFinite = model.isFinite && model.HasFiniteMatrices();
}

// Nothing of this changes the filter.
void Misuse(CKFilter& filter, const Orders& o)
{
    const CSZMatrix square(o.n, o.n), other(o.n + 1, o.n), input(o.n, o.m);
    const CSZMatrix measurement(o.m, o.n), small(o.m, o.m), column(o.n, 1), tall(o.m + 1, o.n);
    Require(filter.SetSystemMatrix(square, square, input, measurement, tall) == 0);
    Require(filter.SetSystemMatrix(other, square, input, measurement, measurement) == 0);
    Require(filter.SetNoise(small, CSZMatrix(o.m, o.m + 1)) == 0);
    Require(filter.SetInitialData(column, other) == 0);
    Require(filter.SetInitialVariance(CSZMatrix(o.n + 1, 1)) == 0);
    const CSZMatrix wrong(o.m + 1, 1, MatOnes);
    RequireSame(filter.Filter(wrong, column), wrong);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool isSilent = [] {
        framework::SetMessageBoxHandler([](const wchar_t*, const wchar_t*, unsigned) { return 0; });
        return true;
    }();
    Require(isSilent);
    Input input(data, size);
    const Orders o{1 + input.Below(8), 1 + input.Below(8)};
    const bool isSmoother = input.Below(2) == 0 && o.n == o.m;
    Model model;
    model.Phi = isSmoother ? CSZMatrix(o.n, o.n, MatIdentity) : MatrixOf(input, o.n, o.n, false);
    model.B = isSmoother ? CSZMatrix(o.n, o.n) : MatrixOf(input, o.n, o.n, false);
    model.Gamma = MatrixOf(input, o.n, o.m, false);
    model.H = isSmoother ? CSZMatrix(o.m, o.n, MatIdentity) : MatrixOf(input, o.m, o.n, false);
    model.D = isSmoother ? CSZMatrix(o.m, o.n) : MatrixOf(input, o.m, o.n, false);
    model.R = MatrixOf(input, o.m, o.m, true);
    model.Q = MatrixOf(input, o.m, o.m, true);
    model.x = MatrixOf(input, o.n, 1, false);
    model.P = MatrixOf(input, o.n, o.n, true);
    model.isFinite = model.HasFiniteMatrices();

    const bool copies = fuzz::IsOneIn(8, data, size);
    CKFilter filter;
    filter.SetMatrixOrder(o.n, o.m);
    Require(filter.SetSystemMatrix(model.Phi, model.B, model.Gamma, model.H, model.D) == 1);
    Require(filter.SetNoise(model.R, model.Q) == 1);
    Require(filter.SetInitialData(model.x, model.P) == 1);
    for (int step = 2 + input.Below(4); step > 0; --step) {
        SetAnew(filter, model, o, input);
        if (input.Below(4) == 0) Misuse(filter, o);
        const CSZMatrix z = MatrixOf(input, o.m, 1, false);
        const CSZMatrix u = MatrixOf(input, o.n, 1, false);
        std::optional<CKFilter> copy;
        if (copies) copy.emplace(filter);
        const CSZMatrix estimate = filter.Filter(z, u);
        if (copy) RequireSame(copy->Filter(z, u), estimate);
        const CSZMatrix expected = model.Step(z, u);
        Require(estimate.getRowSize() == o.n && estimate.getColSize() == 1);
        if (!model.isFinite) return 0;
        RequireSame(estimate, expected);
    }
    return 0;
}
