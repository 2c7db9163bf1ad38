// SPDX-License-Identifier: MIT
//
// The matrix operations beside Eigen, Armadillo (Matrix_peers.cpp) and a by-value version, in one
// run:
//
//   matrix_benchmarks --benchmark_filter='Inverse.*/6'
//
// Names read operation/contender/n. JacobiFloor is the arithmetic of the eigen-solver alone: as
// many line rotations as the solver makes, on bare arrays.
#include "benchmarks/matrix/Contenders.h"
#include "benchmarks/matrix/Operations.h"

using namespace contenders;

namespace {

const bool kRegistered = [] {
    for (const int n : {3, 4, 6, 12, 40}) {
        Operations<Ours>::Register("ours", n);
        Operations<ByValue>::Register("by-value", n);
    }
    for (const int n : {20, 100, 200, 1000}) {
        Operations<Ours>::RegisterNormal("ours", n);
        Operations<ByValue>::RegisterNormal("by-value", n);
    }
    return true;
}();

} // namespace
