// SPDX-License-Identifier: MIT
//
// The models of the Kalman filter that are timed. Argument 0: a general model, 1: identities, no
// control and diagonal covariances, as the screening uses, 2: the same with a full covariance of the
// state.
#pragma once

#include <benchmark/benchmark.h>

#include <random>

namespace kalman {

constexpr int kOrder = 6;

struct Model
{
    double Phi[36], B[36], Gamma[36], H[36], D[36], R[36], Q[36], P[36], x[6], z[6], u[6];

    explicit Model(const benchmark::State& state)
    {
        const bool identities = state.range(0) != 0;
        std::mt19937 random(3);
        std::uniform_real_distribution<double> value(-0.4, 0.4);
        for (int i = 0; i < 36; ++i) {
            const double one = i % 7 == 0;
            for (double* matrix : {Phi, Gamma, H})
                matrix[i] = identities ? one : one + value(random);
            for (double* matrix : {B, D})
                matrix[i] = identities ? 0 : value(random);
            R[i] = Q[i] = 16 * one;
            P[i] = 25 * one + (state.range(0) == 2 ? 5 : 0);
        }
        for (int i = 0; i < 6; ++i) {
            x[i] = 100 * value(random);
            z[i] = x[i] + value(random);
            u[i] = identities ? 0 : value(random);
        }
    }
};

} // namespace kalman
