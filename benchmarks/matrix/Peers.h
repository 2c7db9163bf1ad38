// SPDX-License-Identifier: MIT
//
// The matrix libraries that are compared, each behind the same handful of operations. Every result
// is a new object, as an expression in a program gives it.
#pragma once

#include "tests/reference/LiteralMatrix.h"

#include <Eigen/Dense>
#include <armadillo>

namespace contenders {

template <class M>
struct EigenOf
{
    using Matrix = M;
    static Matrix Make(const literal::Matrix& m)
    {
        Matrix out(m.rows, m.cols);
        for (int r = 0; r < m.rows; ++r)
            for (int c = 0; c < m.cols; ++c)
                out(r, c) = m.Get(r, c);
        return out;
    }
    static Matrix Product(const Matrix& a, const Matrix& b) { return a * b; }
    static Matrix Sum(const Matrix& a, const Matrix& b) { return a + b; }
    static Matrix Transpose(const Matrix& a) { return a.transpose(); }
    static Matrix Inverse(const Matrix& a) { return a.inverse(); }
    static Matrix Cholesky(const Matrix& a) { return a.llt().matrixL(); }
    static Matrix Eigenvectors(const Matrix& a)
    {
        return Eigen::SelfAdjointEigenSolver<Matrix>(a).eigenvectors();
    }
    static Eigen::MatrixXd Normal(const Matrix& a) { return a.transpose() * a; }
};

using EigenDynamic = EigenOf<Eigen::MatrixXd>;
template <int N>
using EigenFixed = EigenOf<Eigen::Matrix<double, N, N>>;

struct Armadillo
{
    using Matrix = arma::mat;
    static Matrix Make(const literal::Matrix& m)
    {
        Matrix out(static_cast<arma::uword>(m.rows), static_cast<arma::uword>(m.cols));
        for (int r = 0; r < m.rows; ++r)
            for (int c = 0; c < m.cols; ++c)
                out(static_cast<arma::uword>(r), static_cast<arma::uword>(c)) = m.Get(r, c);
        return out;
    }
    static Matrix Product(const Matrix& a, const Matrix& b) { return a * b; }
    static Matrix Sum(const Matrix& a, const Matrix& b) { return a + b; }
    static Matrix Transpose(const Matrix& a) { return a.t(); }
    static Matrix Inverse(const Matrix& a) { return arma::inv(a); }
    static Matrix Cholesky(const Matrix& a) { return arma::chol(a, "lower"); }
    static Matrix Eigenvectors(const Matrix& a)
    {
        arma::vec values;
        Matrix vectors;
        arma::eig_sym(values, vectors, a);
        return vectors;
    }
    static Matrix Normal(const Matrix& a) { return a.t() * a; }
};

} // namespace contenders
