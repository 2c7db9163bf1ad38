// SPDX-License-Identifier: MIT
//
// The library's own matrix and a by-value version, behind the operations of Peers.h.
#pragma once

#include "matrix/SZMatrix.h"
#include "tests/reference/LiteralMatrix.h"

namespace contenders {

// The library's own class.
struct Ours
{
    using Matrix = CSZMatrix;
    static Matrix Make(const literal::Matrix& m)
    {
        return {m.elements.data(), static_cast<int>(m.elements.size()), m.rows, m.cols};
    }
    static Matrix Product(const Matrix& a, const Matrix& b) { return a * b; }
    static Matrix Sum(const Matrix& a, const Matrix& b) { return a + b; }
    static Matrix Transpose(const Matrix& a) { return a.matTran(); }
    static Matrix Inverse(const Matrix& a) { return a.matInv(); }
    static Matrix Cholesky(const Matrix& a)
    {
        Matrix L;
        a.cholesky(L);
        return L;
    }
    static Matrix Eigenvectors(const Matrix& a)
    {
        Matrix V;
        Matrix D;
        a.Jacobi(V, D, 1e-9);
        return V;
    }
    static Matrix Normal(const Matrix& a) { return a.matTran() * a; }
};

// The same rules element by element, results built apart and returned by value.
struct ByValue
{
    using Matrix = literal::Matrix;
    static Matrix Make(const literal::Matrix& m) { return m; }
    static Matrix Product(const Matrix& a, const Matrix& b) { return literal::Product(a, b); }
    static Matrix Sum(const Matrix& a, const Matrix& b)
    {
        Matrix sum(a.rows, a.cols);
        for (int r = 0; r < a.rows; ++r)
            for (int c = 0; c < a.cols; ++c)
                sum.Set(r, c, a.Get(r, c) + b.Get(r, c));
        return sum;
    }
    static Matrix Transpose(const Matrix& a) { return literal::Transpose(a); }
    static Matrix Inverse(const Matrix& a) { return literal::Inverted(a); }
    static Matrix Cholesky(const Matrix& a) { return literal::Cholesky(a).first; }
    static Matrix Eigenvectors(const Matrix& a) { return literal::Jacobi(a, 1e-9)->vectors; }
    static Matrix Normal(const Matrix& a) { return Product(Transpose(a), a); }
};

} // namespace contenders
